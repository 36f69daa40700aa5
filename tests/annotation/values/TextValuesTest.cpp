// Numbers and bytes as text: page-label counters, hexadecimal, and scanning text.

#include <annotation/values/NSData+XExtensions.h>
#include <annotation/values/NSNumber+XExtensions.h>
#include <annotation/values/NSScanner+XExtensions.h>

#include <QTest>

class TextValuesTest : public QObject
{
    Q_OBJECT

private slots:
    void romanNumerals_data()
    {
        QTest::addColumn<quint64>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << quint64(0) << "";
        QTest::newRow("4 and 9 subtract") << quint64(49) << "xlix";
        QTest::newRow("1994") << quint64(1994) << "mcmxciv";
        QTest::newRow("3888") << quint64(3888) << "mmmdccclxxxviii";
        QTest::newRow("four m's") << quint64(4000) << "mmmm";
        QTest::newRow("largest") << quint64(4999) << "mmmmcmxcix";
    }
    void romanNumerals()
    {
        QFETCH(quint64, value);
        QFETCH(QString, text);
        QCOMPARE(romanNumeralValue(value), text);
    }

    void letterCounters_data()
    {
        QTest::addColumn<quint64>("value");
        QTest::addColumn<QString>("alpha");
        QTest::addColumn<QString>("greek");
        const auto greek = [](char16_t c, int times) { return QString(QChar(c)).repeated(times); };
        QTest::newRow("zero") << quint64(0) << QString() << QString();
        QTest::newRow("first") << quint64(1) << "a" << greek(945, 1);
        QTest::newRow("final sigma passed over") << quint64(18) << "r" << greek(963, 1);
        QTest::newRow("omega") << quint64(24) << "x" << greek(969, 1);
        QTest::newRow("greek wraps") << quint64(25) << "y" << greek(945, 2);
        QTest::newRow("letters wrap") << quint64(28) << "bb" << greek(948, 2);
        QTest::newRow("third round") << quint64(53) << "aaa" << greek(949, 3);
        // A page label's start value comes from the file; it must not make a huge string.
        QTest::newRow("absurd") << (quint64(1) << 40) << QString() << QString();
    }
    void letterCounters()
    {
        QFETCH(quint64, value);
        QFETCH(QString, alpha);
        QFETCH(QString, greek);
        QCOMPARE(alphaCounterValue(value), alpha);
        QCOMPARE(greekCounterValue(value), greek);
    }

    void bytesFromHexText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("separated, mixed case") << "0a 0B" << QByteArray("\x0a\x0b", 2);
        QTest::newRow("separators inside pairs") << "d:e-A d" << QByteArray("\xde\xad");
        QTest::newRow("odd length keeps former low nibble") << "abc" << QByteArray("\xab\xcb");
        QTest::newRow("lone digit") << "c" << QByteArray("\xc0");
        QTest::newRow("non-ASCII passed over")
            << QStringLiteral("\u00e91\u4e00f") << QByteArray("\x1f");
        QTest::newRow("no digits") << "xyz" << QByteArray();
    }
    void bytesFromHexText()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, bytes);
        QCOMPARE(initWithHexString(text), bytes);
        QCOMPARE(initWithHexString(hexString(bytes)), bytes);
    }

    void scanAndPeek_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("skipBlanks");
        QTest::addColumn<int>("start");
        QTest::addColumn<bool>("found");
        QTest::addColumn<QChar>("character");
        QTest::addColumn<int>("afterScan");
        QTest::newRow("blanks skipped") << "  ab" << true << 0 << true << QChar('a') << 3;
        QTest::newRow("newlines and no-break spaces")
            << QStringLiteral("\n\u00a0\u2028x") << true << 0 << true << QChar('x') << 4;
        QTest::newRow("nothing skipped") << "  ab" << false << 0 << true << QChar(' ') << 1;
        QTest::newRow("only blanks left") << "a   " << true << 1 << false << QChar() << 1;
        QTest::newRow("at the end") << "ab" << true << 2 << false << QChar() << 2;
    }
    void scanAndPeek()
    {
        QFETCH(QString, text);
        QFETCH(bool, skipBlanks);
        QFETCH(int, start);
        QFETCH(bool, found);
        QFETCH(QChar, character);
        QFETCH(int, afterScan);
        Scanner scanner(text);
        if (!skipBlanks)
            scanner.setCharactersToBeSkipped({});
        scanner.setScanLocation(start);

        QChar peeked;
        QCOMPARE(scanner.peekCharacter(&peeked), found);
        QCOMPARE(scanner.scanLocation(), qsizetype(start));
        QChar scanned;
        QCOMPARE(scanner.scanCharacter(&scanned), found);
        QCOMPARE(scanner.scanLocation(), qsizetype(afterScan));
        if (found) {
            QCOMPARE(peeked, character);
            QCOMPARE(scanned, character);
        }
    }

    void onlyBlankTextHoldsNothing()
    {
        const CharacterSet visible = nonWhitespaceAndNewlineCharacterSet();
        QVERIFY(containsCharacterFromSet(u" word ", visible));
        QVERIFY(!containsCharacterFromSet(u" \t\r\n\u00a0\u3000", visible));
    }
};

QTEST_APPLESS_MAIN(TextValuesTest)
#include "TextValuesTest.moc"
