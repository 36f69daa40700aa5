#include "support/AppTestEnvironment.h"

#include <annotation/AnnotationDefaultsKeys.h>
#include <app/FDDefaults.h>
#include <kit/base/Archiver.h>
#include <kit/base/UserDefaults.h>

#include <QColor>
#include <QProcess>
#include <QtTest>

class FDDefaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppTestEnvironment::clearStore();
        FDDefaults::registerDefaults();
    }

    void newUserGetsTheTable_data();
    void newUserGetsTheTable();
    void storedValueWinsAtEveryLaunch();
    void impossibleEnumerationValueStopsTheProcess_data();
    void impossibleEnumerationValueStopsTheProcess();
};

void FDDefaultsTest::newUserGetsTheTable_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("expected");
    const QColor yellow(255, 255, 0), red(255, 68, 60), clear(0, 0, 0, 0);
    namespace Ann = AnnotationDefaultsKeys;
    const QList<std::pair<QString, QVariant>> rows {
        { FDDefaults::LaunchWith, 1 },
        { FDDefaults::SavingPrompt, 0 },
        { FDDefaults::DisableHistory, 0 },
        { FDDefaults::DefaultScaleMode, 0 },
        { FDDefaults::RememberCurrentTheme, 1 },
        { FDDefaults::CurrentTheme, 5 },
        { FDDefaults::RememberLastPosition, 1 },
        { FDDefaults::AlwaysShowSidebar, 0 },
        { Ann::HighlightColor, yellow },
        { Ann::UnderlineColor, red },
        { Ann::StrikeOutColor, red },
        { Ann::FreeTextFontName, QStringLiteral("Helvetica") },
        { Ann::FreeTextFontSize, 12 },
        { Ann::FreeTextColor, red },
        { Ann::FreeTextBackgroundColor, clear },
        { Ann::TextIconType, 0 },
        { Ann::InkColor, red },
        { Ann::InkLineWidth, 3 },
        { Ann::LineColor, red },
        { Ann::LineLineWidth, 3 },
        { Ann::LineLineType, 0 },
        { Ann::LineArrowType, 2 },
        { Ann::CircleColor, red },
        { Ann::CircleInteriorColor, clear },
        { Ann::CircleLineWidth, 3 },
        { Ann::CircleLineType, 0 },
        { Ann::SquareColor, red },
        { Ann::SquareInteriorColor, clear },
        { Ann::SquareLineWidth, 3 },
        { Ann::SquareLineType, 0 },
    };
    for (const auto &[key, value] : rows)
        QTest::newRow(qPrintable(key)) << key << value;
}

void FDDefaultsTest::newUserGetsTheTable()
{
    QFETCH(QString, key);
    QFETCH(QVariant, expected);
    UserDefaults &store = UserDefaults::standard();
    if (expected.metaType().id() == QMetaType::QColor) {
        const QVariant colour = Archiver::unarchive(store.dataForKey(key));
        QCOMPARE(colour.value<QColor>().rgba(), expected.value<QColor>().rgba());
    } else if (expected.metaType().id() == QMetaType::QString) {
        QCOMPARE(store.stringForKey(key), expected.toString());
    } else {
        QCOMPARE(store.integerForKey(key), expected.toLongLong());
        // Widths and types are read back as floats by the annotation kinds.
        QCOMPARE(store.floatForKey(key), expected.toFloat());
    }
}

void FDDefaultsTest::storedValueWinsAtEveryLaunch()
{
    UserDefaults &store = UserDefaults::standard();
    store.setInteger(0, FDDefaults::LaunchWith);
    store.setInteger(1, FDDefaults::SavingPrompt);
    store.setInteger(2, FDDefaults::DefaultScaleMode);
    store.setObject(QStringLiteral("Ada"), FDDefaults::UserName);
    store.synchronize();
    FDDefaults::registerDefaults(); // the next launch registers the table again
    QCOMPARE(FDDefaults::launchWith(), FDLaunchWith::none);
    QCOMPARE(FDDefaults::savingPrompt(), FDSavingPrompt::prompt);
    QCOMPARE(FDDefaults::defaultScaleMode(), PDFViewScaleMode::fitPage);
    QCOMPARE(FDDefaults::userName(), QStringLiteral("Ada"));
    store.removeObjectForKey(FDDefaults::LaunchWith);
    QCOMPARE(FDDefaults::launchWith(), FDLaunchWith::lastOpenedWindows);
}

void FDDefaultsTest::impossibleEnumerationValueStopsTheProcess_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("value");
    QTest::addColumn<bool>("stops");
    QTest::newRow("LaunchWith 2 by hand") << FDDefaults::LaunchWith << 2 << true;
    QTest::newRow("LaunchWith -1") << FDDefaults::LaunchWith << -1 << true;
    QTest::newRow("SavingPrompt 3") << FDDefaults::SavingPrompt << 3 << true;
    QTest::newRow("DefaultScaleMode 3") << FDDefaults::DefaultScaleMode << 3 << true;
    QTest::newRow("LaunchWith 1 is fine") << FDDefaults::LaunchWith << 1 << false;
    QTest::newRow("DefaultScaleMode 2 is fine") << FDDefaults::DefaultScaleMode << 2 << false;
}

void FDDefaultsTest::impossibleEnumerationValueStopsTheProcess()
{
    QFETCH(QString, key);
    QFETCH(int, value);
    QFETCH(bool, stops);
    UserDefaults::standard().setInteger(value, key);
    UserDefaults::standard().synchronize();

    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("FOLIDOC_TEST_CHILD"), key);
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), {});
    QVERIFY(child.waitForFinished(30000));
    const QString errors = QString::fromLocal8Bit(child.readAllStandardError());
    if (stops) {
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QVERIFY2(errors.contains(QStringLiteral("\"%1\" holds %2").arg(key).arg(value)),
            qPrintable(errors));
    } else {
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
    }
}

// The child reads one enumeration as the application does at launch.
static int runChild(const QString &key)
{
    FDDefaults::registerDefaults();
    if (key == FDDefaults::LaunchWith)
        return static_cast<int>(FDDefaults::launchWith()) * 0;
    if (key == FDDefaults::SavingPrompt)
        return static_cast<int>(FDDefaults::savingPrompt()) * 0;
    return static_cast<int>(FDDefaults::defaultScaleMode()) * 0;
}

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QCoreApplication app(argc, argv);
    const QString childKey = qEnvironmentVariable("FOLIDOC_TEST_CHILD");
    if (!childKey.isEmpty())
        return runChild(childKey);
    FDDefaultsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "FDDefaultsTest.moc"
