#include "support/AppTestEnvironment.h"

#include <app/FDSingleInstance.h>
#include <document/support/Unprivileged.h>

#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using Environment = QMap<QString, QString>; // an empty value unsets the variable
Q_DECLARE_METATYPE(Environment)

class FDSingleInstanceTest : public QObject
{
    Q_OBJECT

private slots:
    void aSecondProcessHandsItsRequestToTheFirst_data()
    {
        QTest::addColumn<QStringList>("paths");
        QTest::addColumn<bool>("newWindow");
        QTest::newRow("files for the main window") << QStringList { QStringLiteral("/tmp/a b.pdf"),
            QStringLiteral("/tmp/ü,2.pdf") } << false;
        QTest::newRow("files for a new window") << QStringList { QStringLiteral("/c.pdf") } << true;
        QTest::newRow("a bare launch") << QStringList() << false;
    }
    void aSecondProcessHandsItsRequestToTheFirst()
    {
        QFETCH(QStringList, paths);
        QFETCH(bool, newWindow);
        const QString name = uniqueName(QTest::currentDataTag());
        FDSingleInstance first(name);
        QList<FDSingleInstance::Request> received;
        QVERIFY(
            first.listen([&](const FDSingleInstance::Request &request) { received << request; }));
        QStringList arguments = paths;
        if (newWindow)
            arguments.prepend(QStringLiteral("--new-window"));
        QCOMPARE(runChild(QStringLiteral("forward"), name, arguments), 0);
        QCOMPARE(received, (QList<FDSingleInstance::Request> { { paths, newWindow } }));
    }

    void aSocketLeftByACrashIsTakenOver()
    {
        const QString name = uniqueName("stale");
        QCOMPARE(runChild(QStringLiteral("crash"), name, {}), -2);
        FDSingleInstance heir(name);
        QVERIFY(QFile::exists(heir.socketPath()));
        QStringList received;
        QVERIFY(heir.listen(
            [&](const FDSingleInstance::Request &request) { received = request.paths; }));
        QCOMPARE(runChild(QStringLiteral("forward"), name, { QStringLiteral("/p.pdf") }), 0);
        QCOMPARE(received, QStringList { QStringLiteral("/p.pdf") });
    }

    void aBrokenMessageIsDroppedAndTheNextLaunchIsHeard_data()
    {
        QTest::addColumn<QByteArray>("sent");
        QTest::newRow("size past the limit") << QByteArray::fromHex("7fffffff") + "junk";
        QTest::newRow("paths that do not parse") << QByteArray::fromHex("00000004ffffffff");
        QTest::newRow("cut short") << QByteArray::fromHex("0000004000000001");
    }
    void aBrokenMessageIsDroppedAndTheNextLaunchIsHeard()
    {
        QFETCH(QByteArray, sent);
        const QString name = uniqueName("broken");
        QList<FDSingleInstance::Request> received;
        QString path;
        {
            FDSingleInstance first(name);
            QVERIFY(first.listen(
                [&](const FDSingleInstance::Request &request) { received << request; }));
            path = first.socketPath();
            QLocalSocket rogue;
            rogue.connectToServer(path);
            QVERIFY(rogue.waitForConnected(2000));
            rogue.write(sent);
            QVERIFY(rogue.waitForBytesWritten(2000));
            rogue.disconnectFromServer();
            QCOMPARE(runChild(QStringLiteral("forward"), name, { QStringLiteral("/1.pdf") }), 0);
            QCOMPARE(received.size(), 1);
            QCOMPARE(received.at(0).paths, QStringList { QStringLiteral("/1.pdf") });
        }
        // A process that ends normally leaves no socket behind.
        QVERIFY(!QFile::exists(path));
    }

    void eachDisplayHasItsOwnInstance_data()
    {
        QTest::addColumn<Environment>("running");
        QTest::addColumn<Environment>("launch");
        QTest::addColumn<bool>("handedOver");
        const auto on = [](const QString &x, const QString &wayland) {
            return Environment { { QStringLiteral("DISPLAY"), x },
                { QStringLiteral("WAYLAND_DISPLAY"), wayland } };
        };
        const QString longPath(60, QLatin1Char('w'));
        QTest::newRow("same X display") << on(":7", "") << on(":7", "") << true;
        QTest::newRow("another X display") << on(":7", "") << on(":8", "") << false;
        QTest::newRow("same Wayland session")
            << on(":0", "wayland-1") << on(":0", "wayland-1") << true;
        QTest::newRow("another Wayland session")
            << on(":0", "wayland-1") << on(":0", "wayland-2") << false;
        QTest::newRow("a session named by a long path")
            << on("", longPath + "/wayland-0") << on("", longPath + "/wayland-1") << false;
    }
    void eachDisplayHasItsOwnInstance()
    {
        QFETCH(Environment, running);
        QFETCH(Environment, launch);
        QFETCH(bool, handedOver);
        QProcess server;
        QVERIFY(startServer(server, QStringLiteral("serve"), running));
        const int status
            = runChild(QStringLiteral("forward"), launch, { QStringLiteral("/d.pdf") });
        QCOMPARE(status, handedOver ? 0 : 3);
        if (handedOver) {
            // It may have ended while this process waited for the launch.
            QVERIFY(server.state() == QProcess::NotRunning || server.waitForFinished(10000));
            QVERIFY(server.readAllStandardOutput().contains("/d.pdf"));
        } else {
            // The launch would have become a process of its own; the running one heard nothing.
            QVERIFY(!server.waitForFinished(300));
            QVERIFY(!server.readAllStandardOutput().contains("/d.pdf"));
            stop(server);
        }
    }

    void aPlaceOfAnotherUserIsRefused_data()
    {
        QTest::addColumn<QString>("place");
        QTest::addColumn<bool>("needsRoot");
        QTest::newRow("runtime folder of another user") << "foreign runtime" << true;
        QTest::newRow("runtime folder anyone may write") << "open runtime" << false;
        QTest::newRow("own folder made by another user") << "foreign fallback" << true;
        QTest::newRow("own folder is a link") << "linked fallback" << false;
        QTest::newRow("socket of another user") << "foreign socket" << true;
    }
    void aPlaceOfAnotherUserIsRefused()
    {
        QFETCH(QString, place);
        QFETCH(bool, needsRoot);
        if (needsRoot && ::geteuid() != 0)
            QSKIP("only root can hand a file to another user");
        QTemporaryDir temporary;
        const QString root = temporary.path();
        const QByteArray savedRuntime = qgetenv("XDG_RUNTIME_DIR");
        const QByteArray savedTemp = qgetenv("TMPDIR");
        const auto restore = qScopeGuard([&] {
            qputenv("XDG_RUNTIME_DIR", savedRuntime);
            qputenv("TMPDIR", savedTemp);
        });
        const QString runtime = root + QStringLiteral("/runtime");
        QVERIFY(QDir().mkpath(runtime));
        ::chmod(QFile::encodeName(runtime).constData(), 0700);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
        const QString own = root + QStringLiteral("/folidoc-%1").arg(::geteuid());
        QLocalServer foreignServer;
        if (place == QLatin1String("foreign runtime")) {
            Unprivileged::giveAway(runtime);
        } else if (place == QLatin1String("open runtime")) {
            ::chmod(QFile::encodeName(runtime).constData(), 0777);
        } else if (place == QLatin1String("foreign fallback")) {
            qunsetenv("XDG_RUNTIME_DIR");
            qputenv("TMPDIR", QFile::encodeName(root));
            QVERIFY(QDir().mkpath(own));
            Unprivileged::giveAway(own);
        } else if (place == QLatin1String("linked fallback")) {
            qunsetenv("XDG_RUNTIME_DIR");
            qputenv("TMPDIR", QFile::encodeName(root));
            QVERIFY(QFile::link(runtime, own));
        } else {
            // Someone else's server under the very name: a launch must not talk to it.
            QVERIFY(foreignServer.listen(runtime + QStringLiteral("/folidoc-refused")));
            Unprivileged::giveAway(foreignServer.fullServerName());
        }

        FDSingleInstance instance(QStringLiteral("folidoc-refused"));
        QVERIFY(!instance.forwardToRunningInstance({ { QStringLiteral("/secret.pdf") } }, 1000));
        QVERIFY(!instance.listen([](const FDSingleInstance::Request &) {}));
        if (foreignServer.isListening()) {
            QVERIFY(!foreignServer.waitForNewConnection(200));
            QVERIFY(QFile::exists(foreignServer.fullServerName()));
        }
    }

    void aProcessOfAnotherUserGetsNothing()
    {
        if (::geteuid() != 0)
            QSKIP("only root can run a process as another user");
        // The other user's server listens in a folder of its own; its socket is then moved to where
        // ours would be and made to look like ours. Only the process on the other end tells.
        QTemporaryDir foreign(QDir::tempPath() + QStringLiteral("/folidoc-foreign-XXXXXX"));
        ::chmod(QFile::encodeName(foreign.path()).constData(), 0755);
        Unprivileged::giveAway(foreign.path());
        const QString foreignSocket = foreign.path() + QStringLiteral("/socket");
        QProcess server;
        QVERIFY(startServer(server, QStringLiteral("serve-as-nobody"),
            { { QStringLiteral("FOLIDOC_INSTANCE_NAME"), foreignSocket } }));
        FDSingleInstance instance(uniqueName("impostor"));
        const QString ours = instance.socketPath();
        QCOMPARE(::rename(QFile::encodeName(foreignSocket).constData(),
                     QFile::encodeName(ours).constData()),
            0);
        QCOMPARE(::chown(QFile::encodeName(ours).constData(), ::geteuid(), ::getegid()), 0);

        QVERIFY(!instance.forwardToRunningInstance({ { QStringLiteral("/secret.pdf") } }, 2000));
        QVERIFY(!server.waitForFinished(300));
        QVERIFY(!server.readAllStandardOutput().contains("secret"));
        stop(server);
    }

private:
    static QString uniqueName(const char *what)
    {
        return QStringLiteral("folidoc-test-%1-%2").arg(getpid()).arg(QLatin1String(what));
    }
    static QProcessEnvironment childEnvironment(const QString &mode, const Environment &changes)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("FOLIDOC_TEST_CHILD"), mode);
        for (auto it = changes.begin(); it != changes.end(); ++it) {
            if (it.value().isEmpty())
                environment.remove(it.key());
            else
                environment.insert(it.key(), it.value());
        }
        return environment;
    }
    static int runChild(
        const QString &mode, const Environment &changes, const QStringList &arguments)
    {
        QProcess child;
        child.setProcessEnvironment(childEnvironment(mode, changes));
        QSignalSpy finished(&child, &QProcess::finished);
        child.start(QCoreApplication::applicationFilePath(), arguments);
        // The parent's event loop runs meanwhile: it may be the one answering.
        if (!finished.wait(20000))
            return -1;
        return child.exitStatus() == QProcess::NormalExit ? child.exitCode() : -2;
    }
    static int runChild(const QString &mode, const QString &name, const QStringList &arguments)
    {
        return runChild(mode, { { QStringLiteral("FOLIDOC_INSTANCE_NAME"), name } }, arguments);
    }
    // A child that listens until it receives one request, which it prints.
    static bool startServer(QProcess &server, const QString &mode, const Environment &changes)
    {
        server.setProcessEnvironment(childEnvironment(mode, changes));
        server.start(QCoreApplication::applicationFilePath(), {});
        QByteArray said;
        while (!said.contains('\n') && server.waitForReadyRead(10000))
            said += server.readAllStandardOutput();
        return said.startsWith("listening");
    }
    static void stop(QProcess &process)
    {
        process.kill();
        process.waitForFinished();
    }
};

// Child modes: "forward" forwards its arguments ("--new-window" first asks for a new window) and
// answers 0 when they were taken, else 3; "serve" and "serve-as-nobody" listen until one request
// came and print it; "crash" listens and dies without closing the socket.
static int runChildMode(const QString &mode)
{
    const QString name = qEnvironmentVariable("FOLIDOC_INSTANCE_NAME");
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (mode == QLatin1String("forward")) {
        const bool newWindow = arguments.removeAll(QStringLiteral("--new-window")) > 0;
        const FDSingleInstance instance(
            name.isEmpty() ? FDSingleInstance::defaultServerName() : name);
        return instance.forwardToRunningInstance({ arguments, newWindow }) ? 0 : 3;
    }
    std::unique_ptr<Unprivileged> guard;
    if (mode == QLatin1String("serve-as-nobody"))
        guard = std::make_unique<Unprivileged>();
    FDSingleInstance instance(name.isEmpty() ? FDSingleInstance::defaultServerName() : name);
    const bool listening = instance.listen([](const FDSingleInstance::Request &request) {
        std::printf("%s\n", qPrintable(request.paths.join(QLatin1Char(' '))));
        std::fflush(stdout);
        QCoreApplication::exit(0);
    });
    if (mode == QLatin1String("crash"))
        abort();
    std::printf(listening ? "listening\n" : "refused\n");
    std::fflush(stdout);
    QTimer::singleShot(20000, [] { QCoreApplication::exit(4); });
    return QCoreApplication::exec();
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
