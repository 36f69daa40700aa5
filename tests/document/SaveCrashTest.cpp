#include "support/DocumentFixtures.h"
#include "support/DocumentTestEnvironment.h"
#include "support/Unprivileged.h"

#include <app/Alert.h>
#include <app/FDDefaults.h>
#include <app/FDFilePanel.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <view/FDPDFView.h>

#include <support/TestTools.h>

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <map>

#include <sys/stat.h>
#include <sys/time.h>
#include <sys/xattr.h>

namespace {

const QByteArray PositionAttribute = "user.com.Scrollwick.PDFView.LastPosition";

// What the user has on disk: the bytes, the mode and every attribute.
struct FileState
{
    QByteArray bytes;
    mode_t mode = 0;
    std::map<QByteArray, QByteArray> attributes;
};

FileState stateOf(const QString &path)
{
    FileState state;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        state.bytes = file.readAll();
    const QByteArray native = QFile::encodeName(path);
    struct stat status = {};
    if (::stat(native.constData(), &status) == 0)
        state.mode = status.st_mode & 07777;
    char names[4096];
    const ssize_t length = ::listxattr(native.constData(), names, sizeof names);
    for (const QByteArray &name :
        QByteArray(names, int(std::max<ssize_t>(length, 0))).split('\0')) {
        char value[256];
        const ssize_t size = ::getxattr(native.constData(), name.constData(), value, sizeof value);
        if (!name.isEmpty() && size >= 0)
            state.attributes[name] = QByteArray(value, int(size));
    }
    return state;
}

// A file the user cares about: unusual permissions, a tag and a reading position of its own.
FileState writeUserFile(const QString &path, int pages)
{
    DocumentFixtures::writeBlankPDF(path, pages);
    const QByteArray native = QFile::encodeName(path);
    if (::chmod(native.constData(), 0640) != 0
        || ::setxattr(native.constData(), "user.xdg.tags", "work", 4, 0) != 0
        || ::setxattr(native.constData(), PositionAttribute.constData(), "old-position", 12, 0)
            != 0)
        qFatal("cannot prepare %s", qPrintable(path));
    return stateOf(path);
}

// "old" or "new" when the file is one of the two versions whole, with what the user gave it;
// otherwise what is wrong.
QString versionOf(const QString &path, const FileState &old, int oldPages)
{
    const FileState now = stateOf(path);
    if (now.mode != old.mode)
        return QStringLiteral("the mode went from %1 to %2")
            .arg(old.mode, 0, 8)
            .arg(now.mode, 0, 8);
    if (now.bytes == old.bytes)
        return now.attributes == old.attributes ? QStringLiteral("old")
                                                : QStringLiteral("old bytes, other attributes");
    if (DocumentFixtures::pageCountOf(path) != oldPages + 1)
        return QStringLiteral("neither version");
    std::map<QByteArray, QByteArray> attributes = now.attributes;
    // The position goes on after the bytes; a failure there keeps the one the file had.
    if (attributes[PositionAttribute] == "new-position")
        attributes[PositionAttribute] = "old-position";
    return attributes == old.attributes ? QStringLiteral("new")
                                        : QStringLiteral("new bytes, other attributes");
}

QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

// Sets a file's modification time minutes into the past.
void age(const QString &path, int minutes)
{
    const timeval now { std::time(nullptr) - minutes * 60, 0 };
    const timeval times[2] = { now, now };
    if (::utimes(QFile::encodeName(path).constData(), times) != 0)
        qFatal("cannot age %s", qPrintable(path));
}

struct HelperRun
{
    QProcess::ExitStatus status = QProcess::NormalExit;
    QByteArray errors;
};

// The helper saves a change to path under the interposer; kind "" counts without faults.
HelperRun saveUnderFaults(
    const QString &path, const QString &cache, const QString &kind = {}, int at = -1)
{
    QProcess helper;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(FOLIDOC_DISK_FAULT_INTERPOSER));
    environment.insert(QStringLiteral("ASAN_OPTIONS"),
        environment.value(QStringLiteral("ASAN_OPTIONS"))
            + QStringLiteral(":verify_asan_link_order=0"));
    environment.insert(QStringLiteral("FOLIDOC_FAULT_FOLDER"), QFileInfo(path).absolutePath());
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), cache);
    if (!kind.isEmpty()) {
        environment.insert(QStringLiteral("FOLIDOC_FAULT_KIND"), kind);
        environment.insert(QStringLiteral("FOLIDOC_FAULT_AT"), QString::number(at));
    }
    helper.setProcessEnvironment(environment);
    helper.start(QStringLiteral(FOLIDOC_DOCUMENT_HELPER), { QStringLiteral("save-once"), path });
    if (!helper.waitForFinished(60000))
        qFatal("the helper did not end");
    return { helper.exitStatus(), helper.readAllStandardError() };
}

} // namespace

// A save that meets a fault of the disk or of the process leaves the user's file as the old or
// the new version, whole, with its permissions and attributes; what could not be written is
// kept, and what a killed writer left is cleared away later.
class SaveCrashTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        FOLIDOC_REQUIRE_USER_ATTRIBUTES();
        FDDefaults::registerDefaults();
    }

    void faultAtEachDiskWrite_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("at");
        // One save without faults tells how many times it stores something.
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("count.pdf"));
        writeUserFile(path, 2);
        const HelperRun run = saveUnderFaults(path, dir.filePath(QStringLiteral("cache")));
        const QRegularExpressionMatch count
            = QRegularExpression(QStringLiteral("disk writes: (\\d+)")).match(run.errors);
        const int writes = count.hasMatch() ? count.captured(1).toInt() : 0;
        // Create, write, sync, rename and the position at least.
        if (writes < 5)
            qFatal("the interposer saw %d writes: %s", writes, run.errors.constData());
        const std::pair<const char *, const char *> kinds[] = { { "full", "disk full" },
            { "once", "disk full for a moment" }, { "kill", "killed" } };
        for (const auto &[kind, description] : kinds) {
            for (int at = 0; at < writes; ++at)
                QTest::addRow("%s at write %d", description, at) << QString::fromLatin1(kind) << at;
        }
    }

    void faultAtEachDiskWrite()
    {
        QFETCH(QString, kind);
        QFETCH(int, at);
        QTemporaryDir dir;
        QTemporaryDir cache;
        const QString path = dir.filePath(QStringLiteral("user.pdf"));
        const FileState old = writeUserFile(path, 2);

        const HelperRun run = saveUnderFaults(path, cache.path(), kind, at);

        const QString version = versionOf(path, old, 2);
        QVERIFY2(version == QLatin1String("old") || version == QLatin1String("new"),
            qPrintable(
                version + QStringLiteral("; helper said: ") + QString::fromUtf8(run.errors)));
        if (kind == QLatin1String("kill")) {
            QCOMPARE(run.status, QProcess::CrashExit);
            // What the killed save left goes with the next open, once it is old enough.
            for (const QString &name : entriesOf(dir.path()))
                age(dir.filePath(name), 2 * 60);
            DocumentFixtures::open(path);
        } else if (version == QLatin1String("old") && kind == QLatin1String("full")) {
            // The edits are not lost: a warning names the copy that holds them.
            QVERIFY2(run.errors.contains("[WARN] "), run.errors.constData());
            QStringList copies;
            for (QDirIterator it(cache.path(), { QStringLiteral("*.pdf") }, QDir::Files,
                     QDirIterator::Subdirectories);
                 it.hasNext();)
                copies.append(it.next());
            QCOMPARE(copies.size(), 1);
            QVERIFY(run.errors.contains(QFile::encodeName(copies[0])));
            QCOMPARE(DocumentFixtures::pageCountOf(copies[0]), 3);
        }
        QCOMPARE(entriesOf(dir.path()), QStringList { QStringLiteral("user.pdf") });
    }

    void leftoversOfAKilledSaveGoAtTheNextOpenOrSave_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("minutesOld");
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<bool>("removed");

        QTest::newRow("half a save, two hours old")
            << ".user.pdf.a1B2c3" << 120 << QByteArray("%PDF-1.7\n1 0 obj") << true;
        QTest::newRow("killed before writing") << ".user.pdf.ZZ09az" << 120 << QByteArray() << true;
        QTest::newRow("another process saving now")
            << ".user.pdf.a1B2c3" << 5 << QByteArray("%PDF-1.7") << false;
        QTest::newRow("not a PDF") << ".user.pdf.a1B2c3" << 120 << QByteArray("my notes") << false;
        QTest::newRow("not our suffix")
            << ".user.pdf.backup2" << 120 << QByteArray("%PDF-1.7") << false;
        QTest::newRow("another file's")
            << ".other.pdf.a1B2c3" << 120 << QByteArray("%PDF-1.7") << false;
    }

    void leftoversOfAKilledSaveGoAtTheNextOpenOrSave()
    {
        QFETCH(QString, name);
        QFETCH(int, minutesOld);
        QFETCH(QByteArray, contents);
        QFETCH(bool, removed);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("user.pdf"));
        DocumentFixtures::writeBlankPDF(path, 1);
        const QString leftover = dir.filePath(name);
        const auto leaveBehind = [&] {
            QFile file(leftover);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size());
            file.close();
            age(leftover, minutesOld);
        };

        leaveBehind();
        const auto document = DocumentFixtures::open(path);
        QCOMPARE(!QFileInfo::exists(leftover), removed);

        leaveBehind();
        DocumentFixtures::appendBlankPages(*document, 1);
        document->save();
        QTRY_COMPARE_WITH_TIMEOUT(PDFSavingService::shared().numberOfTasks(), 0, 30000);
        QCOMPARE(!QFileInfo::exists(leftover), removed);
        QCOMPARE(DocumentFixtures::pageCountOf(path), 2);
    }

    void fileChangedBetweenEditAndSave_data()
    {
        QTest::addColumn<QString>("change");
        // The button pressed in a question about the changed file, and the file the panel gives.
        QTest::addColumn<int>("answer");
        QTest::addColumn<QString>("panelAnswer");
        // "old", "edited" or "replacement".
        QTest::addColumn<QString>("fileAfter");
        QTest::addColumn<int>("pagesShown");
        QTest::addColumn<bool>("unsavedAfter");

        QTest::newRow("folder made read-only") << "read-only" << 0 << ""
                                               << "old" << 3 << false;
        QTest::newRow("file deleted") << "deleted" << 0 << ""
                                      << "edited" << 3 << false;
        QTest::newRow("file replaced, edits saved elsewhere")
            << "replaced" << int(Alert::FirstButtonReturn) << "elsewhere.pdf"
            << "replacement" << 3 << false;
        QTest::newRow("file replaced, save panel cancelled")
            << "replaced" << int(Alert::FirstButtonReturn) << ""
            << "replacement" << 3 << true;
        QTest::newRow("file replaced, overwritten")
            << "replaced" << int(Alert::SecondButtonReturn) << ""
            << "edited" << 3 << false;
        QTest::newRow("file replaced, reloaded")
            << "replaced" << int(Alert::ThirdButtonReturn) << ""
            << "replacement" << 5 << false;
    }

    void fileChangedBetweenEditAndSave()
    {
        QFETCH(QString, change);
        QFETCH(int, answer);
        QFETCH(QString, panelAnswer);
        QFETCH(QString, fileAfter);
        QFETCH(int, pagesShown);
        QFETCH(bool, unsavedAfter);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("user.pdf"));
        const FileState old = writeUserFile(path, 2);
        QList<AlertRequest> alerts;
        Alert::setHandlerForTesting([&](const AlertRequest &request) {
            alerts.append(request);
            return answer ? answer : int(Alert::FirstButtonReturn);
        });
        FDFilePanel::setHandlerForTesting([&](const FilePanelRequest &) {
            return panelAnswer.isEmpty() ? QUrl() : QUrl::fromLocalFile(dir.filePath(panelAnswer));
        });
        FDPDFView view;
        view.resize(600, 500);
        view.loadDocument(QUrl::fromLocalFile(path));
        view.show();
        QTRY_VERIFY(view.fdDocument() && !view.isLoading());
        const std::shared_ptr<FDDocument> document = view.fdDocument();
        DocumentFixtures::appendBlankPages(*document, 1);

        std::unique_ptr<Unprivileged> unprivileged;
        QByteArray replacement;
        if (change == QLatin1String("read-only")) {
            Unprivileged::giveAway(dir.path());
            Unprivileged::giveAway(path);
            QVERIFY(QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner));
            unprivileged = std::make_unique<Unprivileged>();
        } else if (change == QLatin1String("deleted")) {
            QVERIFY(QFile::remove(path));
        } else {
            // Another program writes its own version beside the file and renames it into place.
            const QString theirs = dir.filePath(QStringLiteral("theirs.tmp"));
            DocumentFixtures::writeBlankPDF(theirs, 5);
            replacement = stateOf(theirs).bytes;
            QVERIFY(
                ::rename(QFile::encodeName(theirs).constData(), QFile::encodeName(path).constData())
                == 0);
        }
        document->save();
        QTRY_COMPARE_WITH_TIMEOUT(PDFSavingService::shared().numberOfTasks(), 0, 30000);
        unprivileged.reset();
        QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        Alert::setHandlerForTesting({});
        FDFilePanel::setHandlerForTesting({});

        if (fileAfter == QLatin1String("old")) {
            QCOMPARE(versionOf(path, old, 2), QStringLiteral("old"));
            QCOMPARE(alerts.size(), 1); // after three attempts
            QVERIFY(alerts[0].messageText.contains(QStringLiteral("user.pdf")));
        } else if (fileAfter == QLatin1String("edited")) {
            QCOMPARE(DocumentFixtures::pageCountOf(path), 3);
            QCOMPARE(alerts.size(), change == QLatin1String("replaced") ? 1 : 0);
        } else {
            QCOMPARE(stateOf(path).bytes, replacement);
            QCOMPARE(alerts.size(), 1);
        }
        if (change == QLatin1String("replaced"))
            QCOMPARE(alerts[0].buttons.size(), 3);
        if (!panelAnswer.isEmpty())
            QCOMPARE(DocumentFixtures::pageCountOf(dir.filePath(panelAnswer)), 3);
        QCOMPARE(view.document()->pageCount(), pagesShown);
        QCOMPARE(view.fdDocument()->numberOfChanges() > 0, unsavedAfter);
        QVERIFY(
            !entriesOf(dir.path()).join(QLatin1Char(' ')).contains(QLatin1String(".user.pdf.")));
    }
};

int main(int argc, char **argv)
{
    DocumentTestEnvironment::isolate();
    QApplication application(argc, argv);
    SaveCrashTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "SaveCrashTest.moc"
