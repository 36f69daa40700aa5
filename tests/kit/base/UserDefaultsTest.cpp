#include <kit/base/UserDefaults.h>

#include <QColor>
#include <QDateTime>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class UserDefaultsTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_config;

    // Points the store at a fresh folder, as a new user's config folder.
    void redirect()
    {
        m_config = std::make_unique<QTemporaryDir>();
        QVERIFY(m_config->isValid());
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_config->path()));
    }

private Q_SLOTS:
    void init()
    {
        redirect();
        QCOMPARE(UserDefaults::storePath(), m_config->path() + "/Folidoc/Folidoc.conf");
    }

    void valuesKeepTheirTypesThroughTheFile_data()
    {
        QTest::addColumn<QVariant>("value");
        const QDateTime when(QDate(2024, 2, 29), QTime(13, 5, 7, 250), Qt::UTC);
        QTest::newRow("int") << QVariant(3);
        QTest::newRow("large integer") << QVariant(qint64(1) << 40);
        QTest::newRow("double") << QVariant(0.1);
        QTest::newRow("bool") << QVariant(false);
        QTest::newRow("string of digits") << QVariant(QString("3"));
        QTest::newRow("string with @") << QVariant(QString("@Variant(x)"));
        QTest::newRow("bytes") << QVariant(QByteArray("\0\x01@ByteArray(", 14));
        QTest::newRow("one-element list") << QVariant(QVariantList { 7 });
        QTest::newRow("list") << QVariant(QVariantList { 1, 2.5, "x", true });
        QTest::newRow("map") << QVariant(QVariantMap {
            { "Index", 2 }, { "On", true }, { "Nested", QVariantList { QByteArray("b") } } });
        QTest::newRow("date") << QVariant(when);
        QTest::newRow("colour") << QVariant(QColor(10, 20, 30, 40));
    }

    void valuesKeepTheirTypesThroughTheFile()
    {
        QFETCH(QVariant, value);
        UserDefaults writer;
        writer.setObject(value, "Key");
        writer.setObject("other", "Neighbour");

        // Another config folder with a copy of the file: what is read comes from the bytes on disk.
        const QString written = UserDefaults::storePath();
        const auto writtenFolder = std::move(m_config);
        redirect();
        QVERIFY(QDir().mkpath(QFileInfo(UserDefaults::storePath()).path()));
        QVERIFY(QFile::copy(written, UserDefaults::storePath()));

        const UserDefaults reader;
        const QVariant read = reader.objectForKey("Key");
        QCOMPARE(read.typeId(), value.typeId());
        QCOMPARE(read, value);
        QCOMPARE(reader.stringForKey("Neighbour"), QString("other"));
    }

    void typedReadsConvert_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<qint64>("integer");
        QTest::addColumn<double>("real");
        QTest::addColumn<bool>("boolean");
        QTest::addColumn<QString>("string");
        const auto row = [](const char *name, const QVariant &stored, qint64 integer, double real,
                             bool boolean, const char *string) {
            QTest::newRow(name) << stored << integer << real << boolean << QString(string);
        };
        row("int", 3, 3, 3.0, true, "3");
        row("zero", 0, 0, 0.0, false, "0");
        row("double", -2.75, -2, -2.75, true, "-2.75");
        row("true", true, 1, 1.0, true, "1");
        row("string 2.5", "2.5", 2, 2.5, true, "2.5");
        row("string with prefix", "  -7px", -7, -7.0, true, "  -7px");
        row("string YES", "YES", 0, 0.0, true, "YES");
        row("string true", "true", 0, 0.0, true, "true");
        row("string 00", "00", 0, 0.0, false, "00");
        row("bytes", QByteArray("12"), 0, 0.0, false, "");
        row("list", QVariantList { 1 }, 0, 0.0, false, "");
        row("missing", QVariant(), 0, 0.0, false, "");
    }

    void typedReadsConvert()
    {
        QFETCH(QVariant, stored);
        QFETCH(qint64, integer);
        QFETCH(double, real);
        QFETCH(bool, boolean);
        QFETCH(QString, string);
        UserDefaults defaults;
        defaults.setObject(stored, "Key");
        QCOMPARE(defaults.integerForKey("Key"), integer);
        QCOMPARE(defaults.doubleForKey("Key"), real);
        QCOMPARE(defaults.boolForKey("Key"), boolean);
        QCOMPARE(defaults.stringForKey("Key"), string);
        QCOMPARE(defaults.dataForKey("Key").isEmpty(), stored.typeId() != QMetaType::QByteArray);
        QCOMPARE(defaults.arrayForKey("Key").isEmpty(), stored.typeId() != QMetaType::QVariantList);
        QVERIFY(defaults.dictionaryForKey("Key").isEmpty());
    }

    // Typed values whose bytes lie (found by fuzzing the store): each reads as absent, falling
    // back to the registered default, and the rest of the file still reads.
    void damagedTypedValuesReadAsAbsent_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        // A QDataStream list claiming 3.5 billion elements, which its reader reserves before
        // reading one: 113 GB asked of the allocator, which stops the sanitizer build.
        QTest::newRow("list of billions")
            << QByteArray("\0\0\0\x09\0\xd2\0\0\0\0\0\0\x02\0\0\0\0\x05", 18);
        QTest::newRow("archive cut short") << QByteArray("\x01\x0e\0\0\x10\0", 6);
        QTest::newRow("empty") << QByteArray();
    }

    void damagedTypedValuesReadAsAbsent()
    {
        QFETCH(QByteArray, bytes);
        QVERIFY(QDir().mkpath(QFileInfo(UserDefaults::storePath()).path()));
        {
            QSettings settings(UserDefaults::storePath(), QSettings::IniFormat);
            settings.setValue("Key", QVariantMap { { "Folidoc.TypedValue", bytes } });
            settings.setValue("Neighbour", "other");
        }
        UserDefaults defaults;
        defaults.registerDefaults({ { "Key", 5 } });
        QCOMPARE(defaults.integerForKey("Key"), 5);
        QVERIFY(defaults.arrayForKey("Key").isEmpty());
        QCOMPARE(defaults.stringForKey("Neighbour"), QString("other"));
    }

    // A hand-edited or damaged file: QSettings would decode "@Variant" values with a reader that
    // believes the counts they claim, so those that claim more than they hold leave the file.
    void damagedVariantLinesAreTakenOutAndTheRestKept_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<bool>("kept");
        QTest::newRow("list of two billion")
            << QByteArray(R"x(Bad=@Variant(\0\0\0\t\x7f\xff\xff\xff))x") << false;
        QTest::newRow("string list of a billion, quoted")
            << QByteArray(R"x(Bad="@Variant(\0\0\0\v@\0\0\0)")x") << false;
        QTest::newRow("map nested past any sense") << QByteArray(
            R"x(Bad=@Variant(\0\0\0\b\0\0\0\x1\0\0\0\0\0\0\0\b\0\0\0\x1\0\0\0\0\0\0\0\b\xff\xff\xff\xff))x")
                                                   << false;
        QTest::newRow("a type no store writes")
            << QByteArray(R"x(Bad=@Variant(\0\0\0\x7f\0\0\0\x4Qt::X))x") << false;
        QTest::newRow("cut short") << QByteArray(R"x(Bad=@Variant(\0\0\0\n\0\0\0\x10\0)x") << false;
        QTest::newRow("a small real list")
            << QByteArray(R"x(Bad=@Variant(\0\0\0\t\0\0\0\x1\0\0\0\x2\0\0\0\x5))x") << true;
        QTest::newRow("a comma list, not a variant") << QByteArray("Bad=@Variant(x, y)") << true;
    }

    void damagedVariantLinesAreTakenOutAndTheRestKept()
    {
        QFETCH(QByteArray, line);
        QFETCH(bool, kept);
        UserDefaults &defaults = UserDefaults::standard();
        defaults.setObject(QVariantList { 1, "two", 3.5 }, "Mixed");
        defaults.setObject(QVariantMap { { "a", QStringList { "x", "y" } } }, "Nested");
        defaults.setObject(
            QStringLiteral("semi;colon, comma = equals \"quoted\" \u00e9\u4e2d"), "Text");
        QFile file(UserDefaults::storePath());
        QVERIFY(file.open(QIODevice::Append));
        file.write(line + "\nAfter=still here\n");
        file.close();

        QCOMPARE(defaults.objectForKey("Bad").isValid(), kept);
        QCOMPARE(defaults.stringForKey("After"), QString("still here"));
        QCOMPARE(defaults.arrayForKey("Mixed"), QVariantList({ 1, "two", 3.5 }));
        QCOMPARE(defaults.dictionaryForKey("Nested").value("a").toStringList(),
            QStringList({ "x", "y" }));
        QCOMPARE(defaults.stringForKey("Text"),
            QStringLiteral("semi;colon, comma = equals \"quoted\" \u00e9\u4e2d"));
        // Writing afterwards goes through QSettings, which reads the file again first.
        defaults.setInteger(7, "Later");
        QCOMPARE(defaults.integerForKey("Later"), qint64(7));
    }

    void registeredDefaultsLieUnderUserValues()
    {
        UserDefaults defaults;
        defaults.registerDefaults({ { "Zoom", 1.5 }, { "ShowSidebar", true } });
        defaults.registerDefaults({ { "Zoom", 2 } });
        QCOMPARE(defaults.doubleForKey("Zoom"), 2.0);
        QCOMPARE(defaults.boolForKey("ShowSidebar"), true);

        defaults.setBool(false, "ShowSidebar");
        QCOMPARE(defaults.boolForKey("ShowSidebar"), false);
        defaults.setInteger(4, "Zoom");
        QCOMPARE(defaults.integerForKey("Zoom"), qint64(4));
        defaults.removeObjectForKey("Zoom");
        defaults.setObject(QVariant(), "ShowSidebar");
        QCOMPARE(defaults.integerForKey("Zoom"), qint64(2));
        QCOMPARE(defaults.boolForKey("ShowSidebar"), true);
        // Registered values never reach the file.
        QVERIFY(QSettings(UserDefaults::storePath(), QSettings::IniFormat).allKeys().isEmpty());
    }

    void anotherWritersChangesAreSeen()
    {
        UserDefaults &defaults = UserDefaults::standard();
        defaults.setDouble(1.0, "Zoom");
        {
            QSettings other(UserDefaults::storePath(), QSettings::IniFormat);
            other.setValue("Zoom", 1.25);
        }
        QCOMPARE(defaults.doubleForKey("Zoom"), 1.25);

        // Another process rewriting the file by hand: plain INI text, lists as comma lists.
        QFile file(UserDefaults::storePath());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("[General]\nZoom=3\nRecent=a.pdf, b.pdf\nOn=true\n");
        file.close();
        QCOMPARE(defaults.doubleForKey("Zoom"), 3.0);
        QCOMPARE(defaults.boolForKey("On"), true);
        QCOMPARE(defaults.arrayForKey("Recent"), QVariantList({ "a.pdf", "b.pdf" }));
        QVERIFY(defaults.synchronize());
    }
};

QTEST_GUILESS_MAIN(UserDefaultsTest)
#include "UserDefaultsTest.moc"
