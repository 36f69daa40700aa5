#include <kit/base/Pasteboard.h>

#include <QClipboard>
#include <QColor>
#include <QGuiApplication>
#include <QMimeData>
#include <QSize>
#include <QTest>

namespace {

const QString inkType = QStringLiteral("Folidoc.Pasteboard.Annotation.Ink");
const QString noteType = QStringLiteral("Folidoc.Pasteboard.Annotation.Note");
const QByteArray pdfBytes("%PDF-1.4\n%\xe2\xe3\xcf\xd3\n");

QVariantMap inkPropertyList()
{
    return { { QStringLiteral("Color"), QColor(Qt::red) },
        { QStringLiteral("Points"), QVariantList { 1.5, 2.5, 3.5 } },
        { QStringLiteral("Page"), 3 } };
}

} // namespace

class PasteboardTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { Pasteboard::general().clearContents(); }

    void writesAccumulateUntilClear()
    {
        Pasteboard &board = Pasteboard::general();
        QVERIFY(board.types().isEmpty());
        QVERIFY(board.setString(QStringLiteral("Zoë's note")));
        QVERIFY(board.setPropertyList(inkPropertyList(), inkType));
        QVERIFY(board.setData(pdfBytes, Pasteboard::PDFType));

        const QStringList types = board.types();
        QVERIFY(types.contains(Pasteboard::StringType));
        QVERIFY(types.contains(inkType));
        QVERIFY(types.contains(Pasteboard::PDFType));
        QCOMPARE(board.stringForType(), QStringLiteral("Zoë's note"));
        QCOMPARE(board.propertyListForType(inkType), QVariant(inkPropertyList()));
        QCOMPARE(board.dataForType(Pasteboard::PDFType), pdfBytes);
        // Other programs see the same contents through the system clipboard.
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("Zoë's note"));
        QCOMPARE(
            QGuiApplication::clipboard()->mimeData()->data(inkType), board.dataForType(inkType));

        const int before = board.changeCount();
        board.clearContents();
        QCOMPARE(board.changeCount(), before + 1);
        QVERIFY(board.types().isEmpty());
        QVERIFY(!board.canReadType(inkType));
        QVERIFY(board.stringForType().isNull());
        QVERIFY(!board.propertyListForType(inkType).isValid());

        QVERIFY(board.setData(QByteArrayLiteral("x"), noteType));
        QCOMPARE(board.types(), QStringList { noteType });
    }

    void urlsRoundTrip()
    {
        Pasteboard &board = Pasteboard::general();
        const QList<QUrl> urls { QUrl::fromLocalFile(QStringLiteral("/tmp/a b.pdf")),
            QUrl(QStringLiteral("https://example.org/x?y=1")) };
        QVERIFY(board.writeURLs(urls));
        QVERIFY(board.canReadType(Pasteboard::URLType));
        QCOMPARE(board.readURLs(), urls);
        QCOMPARE(board.readFirstObjectOfTypes({ Pasteboard::URLType }), QVariant(urls.first()));
    }

    void firstAvailableTypeFollowsTheCallersOrder_data()
    {
        QTest::addColumn<QStringList>("wanted");
        QTest::addColumn<QString>("found");
        QTest::newRow("custom first") << QStringList { inkType, Pasteboard::StringType } << inkType;
        QTest::newRow("string first")
            << QStringList { Pasteboard::StringType, inkType } << Pasteboard::StringType;
        QTest::newRow("skips absent")
            << QStringList { noteType, Pasteboard::PNGType, inkType } << inkType;
        QTest::newRow("none present")
            << QStringList { noteType, Pasteboard::TIFFType } << QString();
        QTest::newRow("empty list") << QStringList() << QString();
    }
    void firstAvailableTypeFollowsTheCallersOrder()
    {
        QFETCH(QStringList, wanted);
        QFETCH(QString, found);
        Pasteboard &board = Pasteboard::general();
        board.setPropertyList(inkPropertyList(), inkType);
        board.setString(QStringLiteral("text"));
        QCOMPARE(board.availableTypeFromArray(wanted), found);
        QCOMPARE(board.availableTypeFromArray(wanted).isNull(), found.isNull());
    }

    void readFirstObjectGivesTypedValues_data()
    {
        QTest::addColumn<QStringList>("wanted");
        QTest::addColumn<QVariant>("expected");
        QTest::newRow("property list")
            << QStringList { noteType, inkType } << QVariant(inkPropertyList());
        QTest::newRow("string") << QStringList { Pasteboard::StringType, inkType }
                                << QVariant(QStringLiteral("hello"));
        QTest::newRow("raw bytes") << QStringList { Pasteboard::PDFType } << QVariant(pdfBytes);
        QTest::newRow("nothing") << QStringList { noteType } << QVariant();
    }
    void readFirstObjectGivesTypedValues()
    {
        QFETCH(QStringList, wanted);
        QFETCH(QVariant, expected);
        Pasteboard &board = Pasteboard::general();
        board.setPropertyList(inkPropertyList(), inkType);
        board.setString(QStringLiteral("hello"));
        board.setData(pdfBytes, Pasteboard::PDFType);
        QCOMPARE(board.readFirstObjectOfTypes(wanted), expected);
    }

    void foreignContentsAreReadableButNotMixedIn()
    {
        Pasteboard &board = Pasteboard::general();
        board.setPropertyList(inkPropertyList(), inkType);
        // Another program takes the clipboard with plain text only.
        QGuiApplication::clipboard()->setText(QStringLiteral("from elsewhere"));
        QVERIFY(!board.canReadType(inkType));
        QVERIFY(board.canReadType(Pasteboard::StringType));
        QCOMPARE(board.stringForType(), QStringLiteral("from elsewhere"));

        board.setData(pdfBytes, Pasteboard::PDFType);
        QVERIFY(!board.canReadType(Pasteboard::StringType));
        QCOMPARE(board.types(), QStringList { Pasteboard::PDFType });
    }

    void unarchivableValuesAreNotWritten()
    {
        Pasteboard &board = Pasteboard::general();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Archiver: ")));
        QVERIFY(!board.setPropertyList(QVariant(QSize(1, 1)), inkType));
        QVERIFY(!board.canReadType(inkType));
    }
};

QTEST_MAIN(PasteboardTest)
#include "PasteboardTest.moc"
