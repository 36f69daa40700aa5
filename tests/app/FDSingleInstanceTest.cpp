#include "support/AppTestEnvironment.h"

#include <app/FDSingleInstance.h>

#include <QProcess>
#include <QtTest>

#include <unistd.h>

class FDSingleInstanceTest : public QObject
{
    Q_OBJECT

private slots:
    void aSecondProcessHandsItsPathsToTheFirst();
    void withNobodyListeningNothingIsForwarded();
    void aSocketLeftByACrashIsTakenOver();

private:
    static QString uniqueName(const char *what)
    {
        return QStringLiteral("folidoc-test-%1-%2").arg(getpid()).arg(QLatin1String(what));
    }
    static int runChild(const QString &mode, const QString &name, const QStringList &arguments)
    {
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("FOLIDOC_TEST_CHILD"), mode);
        environment.insert(QStringLiteral("FOLIDOC_INSTANCE_NAME"), name);
        child.setProcessEnvironment(environment);
        QSignalSpy finished(&child, &QProcess::finished);
        child.start(QCoreApplication::applicationFilePath(), arguments);
        // The parent's event loop runs meanwhile: it is the one answering.
        if (!finished.wait(20000))
            return -1;
        return child.exitStatus() == QProcess::NormalExit ? child.exitCode() : -2;
    }
};

void FDSingleInstanceTest::aSecondProcessHandsItsPathsToTheFirst()
{
    const QString name = uniqueName("forward");
    FDSingleInstance first(name);
    QList<QStringList> received;
    QVERIFY(first.listen([&](const QStringList &paths) { received << paths; }));
    const QStringList paths { QStringLiteral("/tmp/a b.pdf"), QStringLiteral("/tmp/ü,2.pdf") };
    QCOMPARE(runChild(QStringLiteral("forward"), name, paths), 0);
    QCOMPARE(received, QList<QStringList> { paths });
}

void FDSingleInstanceTest::withNobodyListeningNothingIsForwarded()
{
    const FDSingleInstance nobody(uniqueName("nobody"));
    QVERIFY(!nobody.forwardToRunningInstance({ QStringLiteral("/tmp/x.pdf") }, 500));
}

void FDSingleInstanceTest::aSocketLeftByACrashIsTakenOver()
{
    const QString name = uniqueName("stale");
    QCOMPARE(runChild(QStringLiteral("crash"), name, {}), -2);
    FDSingleInstance heir(name);
    QStringList received;
    QVERIFY(heir.listen([&](const QStringList &paths) { received = paths; }));
    QCOMPARE(runChild(QStringLiteral("forward"), name, { QStringLiteral("/p.pdf") }), 0);
    QCOMPARE(received, QStringList { QStringLiteral("/p.pdf") });
}

// Child modes: "forward" forwards its arguments; "crash" listens and dies without closing the
// socket.
static int runChildMode(const QString &mode)
{
    const QString name = qEnvironmentVariable("FOLIDOC_INSTANCE_NAME");
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    FDSingleInstance instance(name);
    if (mode == QLatin1String("forward"))
        return instance.forwardToRunningInstance(arguments) ? 0 : 3;
    instance.listen([](const QStringList &) {});
    abort();
}

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QApplication app(argc, argv);
    const QString mode = qEnvironmentVariable("FOLIDOC_TEST_CHILD");
    if (!mode.isEmpty())
        return runChildMode(mode);
    FDSingleInstanceTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "FDSingleInstanceTest.moc"
