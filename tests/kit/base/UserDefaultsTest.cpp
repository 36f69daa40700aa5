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

private Q_SLOTS:
    void init();
    void valuesKeepTheirTypesThroughTheFile_data();
    void valuesKeepTheirTypesThroughTheFile();
    void typedReadsConvert_data();
    void typedReadsConvert();
    void registeredDefaultsLieUnderUserValues();
    void anotherWritersChangesAreSeen();

private:
    // Points the store at a fresh folder, as a new user's config folder.
    void redirect();

    std::unique_ptr<QTemporaryDir> m_config;
};

void UserDefaultsTest::redirect()
{
    m_config = std::make_unique<QTemporaryDir>();
    QVERIFY(m_config->isValid());
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_config->path()));
}

void UserDefaultsTest::init()
{
    redirect();
    QCOMPARE(UserDefaults::storePath(), m_config->path() + "/Folidoc/Folidoc.conf");
}

void UserDefaultsTest::valuesKeepTheirTypesThroughTheFile_data()
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

void UserDefaultsTest::valuesKeepTheirTypesThroughTheFile()
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

void UserDefaultsTest::typedReadsConvert_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<qint64>("integer");
    QTest::addColumn<double>("real");
    QTest::addColumn<bool>("boolean");
    QTest::addColumn<QString>("string");

    QTest::newRow("int") << QVariant(3) << qint64(3) << 3.0 << true << "3";
    QTest::newRow("zero") << QVariant(0) << qint64(0) << 0.0 << false << "0";
    QTest::newRow("double") << QVariant(2.75) << qint64(2) << 2.75 << true << "2.75";
    QTest::newRow("negative double") << QVariant(-2.75) << qint64(-2) << -2.75 << true << "-2.75";
    QTest::newRow("true") << QVariant(true) << qint64(1) << 1.0 << true << "1";
    QTest::newRow("string 2.5") << QVariant("2.5") << qint64(2) << 2.5 << true << "2.5";
    QTest::newRow("string 1") << QVariant("1") << qint64(1) << 1.0 << true << "1";
    QTest::newRow("string with prefix")
        << QVariant("  -7px") << qint64(-7) << -7.0 << true << "  -7px";
    QTest::newRow("string YES") << QVariant("YES") << qint64(0) << 0.0 << true << "YES";
    QTest::newRow("string true") << QVariant("true") << qint64(0) << 0.0 << true << "true";
    QTest::newRow("string no") << QVariant("no") << qint64(0) << 0.0 << false << "no";
    QTest::newRow("string 00") << QVariant("00") << qint64(0) << 0.0 << false << "00";
    QTest::newRow("bytes") << QVariant(QByteArray("12")) << qint64(0) << 0.0 << false << "";
    QTest::newRow("list") << QVariant(QVariantList { 1 }) << qint64(0) << 0.0 << false << "";
    QTest::newRow("missing") << QVariant() << qint64(0) << 0.0 << false << "";
}

void UserDefaultsTest::typedReadsConvert()
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
    QCOMPARE(defaults.floatForKey("Key"), float(real));
    QCOMPARE(defaults.boolForKey("Key"), boolean);
    QCOMPARE(defaults.stringForKey("Key"), string);
    QCOMPARE(defaults.dataForKey("Key").isEmpty(), stored.typeId() != QMetaType::QByteArray);
    QCOMPARE(defaults.arrayForKey("Key").isEmpty(), stored.typeId() != QMetaType::QVariantList);
    QVERIFY(defaults.dictionaryForKey("Key").isEmpty());
}

void UserDefaultsTest::registeredDefaultsLieUnderUserValues()
{
    UserDefaults defaults;
    defaults.registerDefaults({ { "Zoom", 1.5 }, { "ShowSidebar", true } });
    defaults.registerDefaults({ { "Zoom", 2 } });
    QCOMPARE(defaults.doubleForKey("Zoom"), 2.0);
    QCOMPARE(defaults.boolForKey("ShowSidebar"), true);

    defaults.setBool(false, "ShowSidebar");
    QCOMPARE(defaults.boolForKey("ShowSidebar"), false);
    defaults.setObject(QVariant(), "ShowSidebar");
    QCOMPARE(defaults.boolForKey("ShowSidebar"), true);
    defaults.setInteger(4, "Zoom");
    QCOMPARE(defaults.integerForKey("Zoom"), qint64(4));
    defaults.removeObjectForKey("Zoom");
    QCOMPARE(defaults.integerForKey("Zoom"), qint64(2));

    // Registered values never reach the file.
    const QSettings file(UserDefaults::storePath(), QSettings::IniFormat);
    QVERIFY(!file.contains("Zoom"));
    QVERIFY(!file.contains("ShowSidebar"));
}

void UserDefaultsTest::anotherWritersChangesAreSeen()
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
    QCOMPARE(defaults.integerForKey("Zoom"), qint64(3));
    QCOMPARE(defaults.doubleForKey("Zoom"), 3.0);
    QCOMPARE(defaults.boolForKey("On"), true);
    QCOMPARE(defaults.arrayForKey("Recent"), QVariantList({ "a.pdf", "b.pdf" }));
    QVERIFY(defaults.synchronize());
}

QTEST_GUILESS_MAIN(UserDefaultsTest)
#include "UserDefaultsTest.moc"
