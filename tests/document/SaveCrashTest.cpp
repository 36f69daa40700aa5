#include "support/DocumentFixtures.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <chrono>
#include <thread>

#include <signal.h>

// A writer killed at any moment of a save leaves a file that is either the old or the new
// version, never a broken one.
class SaveCrashTest : public QObject
{
    Q_OBJECT

private slots:
    void killedWriterLeavesAWholeFile();
};

void SaveCrashTest::killedWriterLeavesAWholeFile()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("crash.pdf"));
    // Big enough that a write takes a few milliseconds, so that kills land inside writes.
    constexpr int Pages = 300;
    DocumentFixtures::writeBlankPDF(path, Pages, 40);
    QRandomGenerator random(20261121);

    constexpr int Rounds = 12;
    for (int round = 0; round < Rounds; ++round) {
        // The writer's versions: the file as it is now, and with one page more.
        const int before = DocumentFixtures::pageCountOf(path);
        QVERIFY(before >= Pages);
        QProcess writer;
        writer.start(
            QStringLiteral(FOLIDOC_DOCUMENT_HELPER), { QStringLiteral("save-loop"), path });
        QVERIFY(writer.waitForStarted());
        // Let it finish a few saves, so that the next one is somewhere on its way.
        const int saves = 1 + int(random.bounded(4));
        QByteArray output;
        QTRY_VERIFY_WITH_TIMEOUT(
            (output += writer.readAllStandardOutput()).count("saved") >= saves, 30000);
        // A random moment inside the save that follows; not a wait for anything.
        std::this_thread::sleep_for(std::chrono::microseconds(random.bounded(3000)));
        ::kill(pid_t(writer.processId()), SIGKILL);
        QVERIFY(writer.waitForFinished(10000));
        QCOMPARE(writer.exitStatus(), QProcess::CrashExit);

        const int pages = DocumentFixtures::pageCountOf(path);
        QVERIFY2(pages == before || pages == before + 1,
            qPrintable(QStringLiteral("round %1: the file has %2 pages").arg(round).arg(pages)));
    }
    // A killed writer may leave its hidden temporary file, never a second visible one.
    const QStringList visible = QDir(dir.path()).entryList(QDir::Files, QDir::Name);
    QCOMPARE(visible, QStringList { QStringLiteral("crash.pdf") });
}

QTEST_GUILESS_MAIN(SaveCrashTest)
#include "SaveCrashTest.moc"
