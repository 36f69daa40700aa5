// The program as a person starts it from a terminal or the desktop: options, files named by
// path or URL, what it says on standard error, and which running Folidoc gets the files.

#include "support/AppFixtures.h"
#include "support/AppWindow.h"

#include <app/FDFileDiagnosis.h>
#include <app/FDSingleInstance.h>
#include <document/support/Unprivileged.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

class CommandLineTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        QVERIFY(AppFixtures::writeColourPDF(path(QStringLiteral("paper.pdf")), Qt::white));
        QVERIFY(AppFixtures::writeColourPDF(path(QStringLiteral("My Paper #1.pdf")), Qt::white));
        QFile damaged(path(QStringLiteral("damaged.pdf")));
        QVERIFY(damaged.open(QIODevice::WriteOnly));
        damaged.write("%PDF-1.7\n%\xe2\xe3\xcf\xd3\n");
    }

    void helpAndVersionNeedNoDisplayNorRunningFolidoc_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("err");
        const QString usage = QStringLiteral("Usage: folidoc [options] [files...]");
        const QString version = QStringLiteral("Folidoc " FOLIDOC_VERSION "\n");
        QTest::newRow("--help") << QStringList { "--help" } << 0 << usage << "";
        QTest::newRow("-h among files") << QStringList { "paper.pdf", "-h" } << 0 << usage << "";
        QTest::newRow("--version") << QStringList { "--version" } << 0 << version << "";
        QTest::newRow("-v") << QStringList { "-v" } << 0 << version << "";
        QTest::newRow("unknown option") << QStringList { "--frobnicate", "paper.pdf" } << 2 << ""
                                        << "folidoc: Unknown option 'frobnicate'.\nTry 'folidoc "
                                           "--help' for more information.\n";
    }
    void helpAndVersionNeedNoDisplayNorRunningFolidoc()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        // An X program without a display dies as soon as it makes its application object.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        const Outcome outcome = launch(arguments, environment);
        QCOMPARE(outcome.status, status);
        if (out.isEmpty())
            QCOMPARE(outcome.out, QString());
        else
            QVERIFY2(outcome.out.startsWith(out), qPrintable(outcome.out));
        QCOMPARE(outcome.err, err);
        if (outcome.out.startsWith(QLatin1String("Usage")))
            QVERIFY(outcome.out.contains(QLatin1String("--new-window")));
    }

    void launchArgumentsReachTheRunningFolidoc_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("names"); // in the test's folder
        QTest::addColumn<bool>("newWindow");
        QTest::addColumn<QString>("err");
        const QString paper = path(QStringLiteral("My Paper #1.pdf"));
        // As the desktop's recent-files record writes it, and starts the program with it.
        QTest::newRow("desktop's file URL")
            << QStringList { QUrl::fromLocalFile(paper).toString(QUrl::FullyEncoded) }
            << QStringList { "My Paper #1.pdf" } << false << "";
        QTest::newRow("file URL naming this computer")
            << QStringList { QStringLiteral("file://localhost") + path("paper.pdf") }
            << QStringList { "paper.pdf" } << false << "";
        QTest::newRow("path relative to the working folder")
            << QStringList { "sub/../paper.pdf", paper }
            << QStringList { "paper.pdf", "My Paper #1.pdf" } << false << "";
        QTest::newRow("--new-window") << QStringList { "--new-window", "paper.pdf" }
                                      << QStringList { "paper.pdf" } << true << "";
        QTest::newRow("web address")
            << QStringList { "https://example.org/a.pdf", "paper.pdf" }
            << QStringList { "paper.pdf" } << false
            << "folidoc: https://example.org/a.pdf: Only local files can be opened\n";
        QTest::newRow("file of another computer")
            << QStringList { "file://elsewhere/a.pdf" } << QStringList() << false
            << "folidoc: file://elsewhere/a.pdf: Not a file on this computer\n";
        QTest::newRow("missing file, still shown with its alert")
            << QStringList { "missing.pdf" } << QStringList { "missing.pdf" } << false
            << "folidoc: " + path("missing.pdf") + ": No such file\n";
        // The launching process reads the file itself only when it hands the file over.
        QTest::newRow("damaged file, explained before it is handed over")
            << QStringList { "damaged.pdf" } << QStringList { "damaged.pdf" } << false
            << "folidoc: " + path("damaged.pdf") + ": Damaged beyond repair\n";
    }
    void launchArgumentsReachTheRunningFolidoc()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, names);
        QFETCH(bool, newWindow);
        QFETCH(QString, err);
        // This test is the running Folidoc of display :61.
        qputenv("DISPLAY", ":61");
        qunsetenv("WAYLAND_DISPLAY");
        FDSingleInstance running;
        QList<FDSingleInstance::Request> received;
        QVERIFY(
            running.listen([&](const FDSingleInstance::Request &request) { received << request; }));
        const Outcome outcome = launch(arguments, onDisplay(QStringLiteral(":61")));
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.err, err);
        QStringList paths;
        for (const QString &name : std::as_const(names))
            paths << path(name);
        QCOMPARE(received, (QList<FDSingleInstance::Request> { { paths, newWindow } }));
    }

    void aFileThatCannotBeOpenedIsExplained_data()
    {
        QTest::addColumn<QByteArray>("content"); // "-" for no file, "/" for a folder
        QTest::addColumn<bool>("readable");
        QTest::addColumn<QString>("problem");
        QFile pdf(path(QStringLiteral("paper.pdf")));
        QVERIFY(pdf.open(QIODevice::ReadOnly));
        const QByteArray good = pdf.readAll();
        QTest::newRow("a PDF file") << good << true << "";
        QTest::newRow("no file") << QByteArray("-") << true << "No such file";
        QTest::newRow("a folder") << QByteArray("/") << true << "Is a folder";
        QTest::newRow("a text file") << QByteArray("Dear reader,\n") << true << "Not a PDF file";
        QTest::newRow("an empty file") << QByteArray() << true << "Not a PDF file";
        QTest::newRow("a PDF cut off in its first object")
            << good.left(40) << true << "Damaged beyond repair";
        QTest::newRow("a PDF of another user") << good << false << "Permission denied";
    }
    void aFileThatCannotBeOpenedIsExplained()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, readable);
        QFETCH(QString, problem);
        if (!readable && ::geteuid() != 0)
            QSKIP("only root can ask as another user");
        QTemporaryDir folder;
        // Open to others, so that only the file's own permission decides.
        QVERIFY(QFile::setPermissions(
            folder.path(), QFile::permissions(folder.path()) | QFile::ReadOther | QFile::ExeOther));
        const QString file = folder.filePath(QStringLiteral("file.pdf"));
        if (content == "/") {
            QVERIFY(QDir().mkpath(file));
        } else if (content != "-") {
            QFile out(file);
            QVERIFY(out.open(QIODevice::WriteOnly));
            out.write(content);
            out.close();
            QVERIFY(QFile::setPermissions(file,
                readable ? QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther
                         : QFile::ReadOwner | QFile::WriteOwner));
        }
        // Root reads every file: the question is asked as another user.
        std::optional<Unprivileged> guard;
        if (!readable)
            guard.emplace();
        QCOMPARE(FDFileDiagnosis::problemWithFile(file), problem);
    }

private:
    struct Outcome
    {
        int status = -1;
        QString out;
        QString err;
    };
    Outcome launch(const QStringList &arguments, const QProcessEnvironment &environment)
    {
        QProcess program;
        program.setProcessEnvironment(environment);
        program.setWorkingDirectory(m_folder.path());
        QSignalSpy finished(&program, &QProcess::finished);
        program.start(QStringLiteral(FOLIDOC_PROGRAM), arguments);
        // The event loop runs meanwhile: the running Folidoc may be this test.
        if (!finished.wait(20000)) {
            program.kill();
            program.waitForFinished();
            return {};
        }
        return { program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -2,
            QString::fromLocal8Bit(program.readAllStandardOutput()),
            QString::fromLocal8Bit(program.readAllStandardError()) };
    }
    static QProcessEnvironment onDisplay(const QString &display)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("DISPLAY"), display);
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        return environment;
    }
    QString path(const QString &name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

FOLIDOC_APP_TEST_MAIN(CommandLineTest)

#include "CommandLineTest.moc"
