#include "support/AppTestEnvironment.h"

#include <app/FDDefaults.h>
#include <kit/base/UserDefaults.h>

#include <QProcess>
#include <QtTest>

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

class FDDefaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppTestEnvironment::clearStore();
        FDDefaults::registerDefaults();
    }

    void storedValueWinsAtEveryLaunch()
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

    void impossibleEnumerationValueStopsTheProcess_data()
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

    void impossibleEnumerationValueStopsTheProcess()
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
};

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
