#include <document/Common.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <document/Task.h>
#include <document/TaskExcutor.h>

#include "support/DocumentFixtures.h"
#include "support/DocumentTestEnvironment.h"
#include "support/Unprivileged.h"

#include <app/Alert.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>

#include <support/TestTools.h>

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>
#include <QWidget>
#include <QtTest>

#include <sys/stat.h>
#include <sys/time.h>
#include <sys/xattr.h>

namespace {

QString s_cacheFolder;

QStringList unsavedCopies()
{
    QStringList copies;
    for (QDirIterator it(
             s_cacheFolder, { QStringLiteral("*.pdf") }, QDir::Files, QDirIterator::Subdirectories);
         it.hasNext();)
        copies.append(it.next());
    return copies;
}

void dropUnsavedCopies()
{
    for (const QString &copy : unsavedCopies())
        QFile::remove(copy);
}

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// All zeros when the file is missing, which no compared field of a real file is.
struct stat statOf(const QByteArray &native)
{
    struct stat status = {};
    ::stat(native.constData(), &status);
    return status;
}

} // namespace

class PDFSavingServiceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { FOLIDOC_REQUIRE_USER_ATTRIBUTES(); }

    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        answerAlertsWith(1000);
        QCOMPARE(service().numberOfTasks(), 0);
    }

    void cleanup()
    {
        QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 60000);
        Alert::setHandlerForTesting({});
    }

    void quickSavesWhileOneRunsKeepOnlyTheLast()
    {
        ViewDelegate view;
        const QString path = fixture(QStringLiteral("quick.pdf"), 1);
        const auto document = DocumentFixtures::open(path, view.delegate());
        const TaskExcutor &fast = service().fastExcutor();

        DocumentFixtures::appendBlankPages(*document, 1);
        document->save();
        QCOMPARE(document->numberOfChanges(), 0); // clean as soon as the task exists
        DocumentFixtures::appendBlankPages(*document, 1);
        document->save();
        DocumentFixtures::appendBlankPages(*document, 2);
        document->save();

        QCOMPARE(fast.runningTasks().count(), 1);
        QCOMPARE(fast.pendingTasks().count(), 1);
        QCOMPARE(service().numberOfTasks(), 2);
        QCOMPARE(fast.runningTasks().first()->numberOfChanges(), 1);
        QCOMPARE(fast.pendingTasks().first()->numberOfChanges(), 2); // the middle request is gone
        QCOMPARE(document->numberOfChanges(), 0);

        QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 30000);
        QCOMPARE(DocumentFixtures::pageCountOf(path), 5);
        QCOMPARE(m_alerts.size(), 0);
        QCOMPARE(folderEntries(), QStringList { QStringLiteral("quick.pdf") });
    }

    void bigAndSmallFilesRunAtOnce()
    {
        QList<std::shared_ptr<FDDocument>> documents;
        QStringList paths;
        for (int index = 0; index < 3; ++index) {
            paths.append(fixture(QStringLiteral("small%1.pdf").arg(index), 2));
            documents.append(DocumentFixtures::open(paths.last()));
        }
        paths.append(fixture(QStringLiteral("big.pdf"), 1000));
        documents.append(DocumentFixtures::open(paths.last()));

        for (const auto &document : std::as_const(documents)) {
            DocumentFixtures::appendBlankPages(*document, 1);
            document->save();
        }

        QCOMPARE(service().fastExcutor().queue().activeThreadCount(), 3);
        QCOMPARE(service().slowExcutor().queue().activeThreadCount(), 1);
        QCOMPARE(service().numberOfTasks(), 4);
        QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 60000);
        for (int index = 0; index < 3; ++index)
            QCOMPARE(DocumentFixtures::pageCountOf(paths[index]), 3);
        QCOMPARE(DocumentFixtures::pageCountOf(paths[3]), 1001);
    }

    void refusedWriteGivesThreeAttemptsAndOneAlert()
    {
        const QString path = fixture(QStringLiteral("refused.pdf"), 1);
        const QByteArray original = bytesOf(path);
        Unprivileged::giveAway(m_dir->path());
        Unprivileged::giveAway(path);
        QVERIFY(QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::ExeOwner));
        const auto unprivileged = std::make_unique<Unprivileged>();

        ViewDelegate view;
        QWidget window; // the alert's place
        window.show();
        const auto document = DocumentFixtures::open(path, view.delegate());
        DocumentFixtures::appendBlankPages(*document, 1); // the file itself is writable: no warning
        document->save();
        const std::shared_ptr<Task> task = service().fastExcutor().runningTasks().first();

        QTRY_COMPARE_WITH_TIMEOUT(m_alerts.size(), 1, 30000);
        QCOMPARE(task->numberOfFailure(), 3);
        QCOMPARE(service().numberOfTasks(), 0);
        QVERIFY(m_alerts[0].messageText.contains(QStringLiteral("refused.pdf")));
        // No later change: the document stays clean, as the task took its count.
        QCOMPARE(document->numberOfChanges(), 0);
        bool settled = false;
        MainQueue::async([&settled] { settled = true; });
        QTRY_VERIFY(settled);
        QCOMPARE(m_alerts.size(), 1);

        QCOMPARE(bytesOf(path), original);
        QCOMPARE(folderEntries(), QStringList { QStringLiteral("refused.pdf") });
        QFile::setPermissions(
            m_dir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void saveAsWritesToTheNewPlaceAndUntitledIsRefused()
    {
        auto untitled = std::make_shared<FDDocument>();
        QVERIFY(untitled->init());
        untitled->setNumberOfOtherChanges(2);
        QVERIFY(!service().addTask(untitled));
        QCOMPARE(untitled->numberOfChanges(), 2);

        const QString path = fixture(QStringLiteral("first.pdf"), 1);
        const QString copy = m_dir->filePath(QStringLiteral("second.pdf"));
        ViewDelegate view;
        const auto document = DocumentFixtures::open(path, view.delegate());
        QList<const void *> senders;
        NotificationCenter::defaultCenter().addObserver(this, FDDocument::URLDidChangeNotification,
            nullptr,
            [&senders](const Notification &notification) { senders.append(notification.sender); });
        DocumentFixtures::appendBlankPages(*document, 1);

        document->saveAs(QUrl::fromLocalFile(copy));
        NotificationCenter::defaultCenter().removeObserver(this);

        QCOMPARE(senders, QList<const void *> { view.view() });
        QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 30000);
        QCOMPARE(DocumentFixtures::pageCountOf(copy), 2);
        QCOMPARE(DocumentFixtures::pageCountOf(path), 1);
    }

    // The file is reached through a link; the target keeps its mode and its other attributes.
    void saveThroughALinkKeepsWhatTheUserHad()
    {
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("real")));
        const QString target = fixture(QStringLiteral("real/target.pdf"), 1);
        const QByteArray native = QFile::encodeName(target);
        QCOMPARE(::chmod(native.constData(), 0604), 0);
        QCOMPARE(::setxattr(native.constData(), "user.xdg.tags", "work", 4, 0), 0);
        const QString link = m_dir->filePath(QStringLiteral("link.pdf"));
        QVERIFY(QFile::link(QStringLiteral("real/target.pdf"), link));
        const auto document = DocumentFixtures::open(link);
        const QByteArray position("0,0.000000,792.000000,1.000000");
        document->setXattrItemsToSave(QList<FDXAttrItem> {
            { QStringLiteral("com.Scrollwick.PDFView.LastPosition"), position } });
        DocumentFixtures::appendBlankPages(*document, 2);

        document->save();
        QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 30000);

        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(DocumentFixtures::pageCountOf(target), 3);
        QCOMPARE(
            folderEntries(), (QStringList { QStringLiteral("link.pdf"), QStringLiteral("real") }));
        QCOMPARE(statOf(native).st_mode & 07777, mode_t(0604));
        char value[64] = {};
        QCOMPARE(::getxattr(native.constData(), "user.xdg.tags", value, sizeof value), ssize_t(4));
        const ssize_t length = ::getxattr(
            native.constData(), "user.com.Scrollwick.PDFView.LastPosition", value, sizeof value);
        QCOMPARE(QByteArray(value, int(length)), position);
    }

    void failedTaskEndsAndKeepsTheEdits_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<bool>("window");
        QTest::newRow("bytes can't be made, no window") << "no bytes" << false;
        QTest::newRow("bytes can't be made, a window") << "no bytes" << true;
        QTest::newRow("folder gone, no window") << "folder gone" << false;
        QTest::newRow("folder gone, a window") << "folder gone" << true;
    }

    // A closed tab's document that can't be written ends its task, so that quitting goes on, and
    // what can still be had of it is kept in the cache folder.
    void failedTaskEndsAndKeepsTheEdits()
    {
        QFETCH(QString, fault);
        QFETCH(bool, window);
        QWidget shown;
        if (window)
            shown.show();
        dropUnsavedCopies();
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
        const QString path = fixture(QStringLiteral("folder/closed.pdf"), 2);
        const QByteArray original = bytesOf(path);
        {
            std::shared_ptr<FDDocument> document;
            if (fault == QLatin1String("no bytes")) {
                // A document whose file could not be read has nothing to write.
                document = std::make_shared<FDDocument>();
                document->setFileURL(QUrl::fromLocalFile(path));
                document->setNumberOfOtherChanges(1);
            } else {
                document = DocumentFixtures::open(path);
                DocumentFixtures::appendBlankPages(*document, 1);
                // Another program moves the folder away while the tab closes.
                QVERIFY(
                    QDir(m_dir->path()).rename(QStringLiteral("folder"), QStringLiteral("moved")));
            }
            QVERIFY(service().addTask(document));
        }
        QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 30000);

        QCOMPARE(m_alerts.size(), window ? 1 : 0);
        const QStringList copies = unsavedCopies();
        QCOMPARE(copies.size(), fault == QLatin1String("folder gone") ? 1 : 0);
        // Nothing wrote a file where the user's was, or in its stead.
        QCOMPARE(bytesOf(path), fault == QLatin1String("no bytes") ? original : QByteArray());
        if (!copies.isEmpty()) {
            QCOMPARE(DocumentFixtures::pageCountOf(copies[0]), 3);
            if (window)
                QVERIFY(m_alerts[0].messageText.contains(copies[0]));
        }
    }

    void fileChangedByAnotherProgramIsNotWrittenOver_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("window");
        QTest::addColumn<bool>("asked");
        QTest::newRow("modification time") << "touched" << true << true;
        QTest::newRow("size") << "appended" << true << true;
        QTest::newRow("inode") << "replaced" << true << true;
        QTest::newRow("only our own saves before") << "saved" << true << false;
        QTest::newRow("no window to ask in") << "replaced" << false << false;
    }

    void fileChangedByAnotherProgramIsNotWrittenOver()
    {
        QFETCH(QString, change);
        QFETCH(bool, window);
        QFETCH(bool, asked);
        QWidget shown;
        if (window)
            shown.show();
        dropUnsavedCopies();
        const QString path = fixture(QStringLiteral("shared.pdf"), 2);
        const QByteArray native = QFile::encodeName(path);
        ViewDelegate view;
        const auto document = DocumentFixtures::open(path, view.delegate());
        if (change == QLatin1String("touched")) {
            const timeval later { std::time(nullptr) + 10, 0 };
            const timeval times[2] = { later, later };
            QCOMPARE(::utimes(native.constData(), times), 0);
        } else if (change == QLatin1String("appended")) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::Append));
            file.write("% a comment another program added\n");
        } else if (change == QLatin1String("replaced")) {
            const QString theirs = m_dir->filePath(QStringLiteral("theirs.pdf"));
            DocumentFixtures::writeBlankPDF(theirs, 4);
            QCOMPARE(::rename(QFile::encodeName(theirs).constData(), native.constData()), 0);
        } else {
            // Each save of ours moves the file to a new inode; the next one must know it.
            for (int round = 0; round < 2; ++round) {
                DocumentFixtures::appendBlankPages(*document, 1);
                document->save();
                QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 30000);
            }
        }
        const QByteArray before = bytesOf(path);
        const int pagesBefore = document->pageCount();
        answerAlertsWith(0); // unanswered, as an alert closed without a choice

        DocumentFixtures::appendBlankPages(*document, 1);
        document->save();
        QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 30000);

        QCOMPARE(m_alerts.size(), asked ? 1 : 0);
        if (asked) {
            QVERIFY(m_alerts[0].messageText.contains(QStringLiteral("shared.pdf")));
            QCOMPARE(m_alerts[0].buttons.size(), 3);
        }
        if (change == QLatin1String("saved")) {
            QCOMPARE(DocumentFixtures::pageCountOf(path), pagesBefore + 1);
            return;
        }
        QCOMPARE(bytesOf(path), before);
        // The edits stay in the open document, counted as unsaved.
        QCOMPARE(document->pageCount(), pagesBefore + 1);
        QVERIFY(document->numberOfChanges() > 0);
        const QStringList copies = unsavedCopies();
        QCOMPARE(copies.size(), window ? 0 : 1);
        if (!window)
            QCOMPARE(DocumentFixtures::pageCountOf(copies[0]), pagesBefore + 1);
    }

    void attributesAloneLeaveTheBytesAndTime_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("writable") << "writable";
        QTest::newRow("read-only, not ours to mark") << "read-only";
        QTest::newRow("behind a save of the same file") << "saving";
    }

    void attributesAloneLeaveTheBytesAndTime()
    {
        QFETCH(QString, file);
        const QString path = fixture(QStringLiteral("read.pdf"), 2);
        const QUrl url = QUrl::fromLocalFile(path);
        const QByteArray native = QFile::encodeName(path);
        const QString name = QStringLiteral("com.Scrollwick.PDFView.LastPosition");
        std::unique_ptr<Unprivileged> unprivileged;
        if (file == QLatin1String("read-only")) {
            Unprivileged::giveAway(m_dir->path());
            Unprivileged::giveAway(path);
            QCOMPARE(::chmod(native.constData(), 0444), 0);
            unprivileged = std::make_unique<Unprivileged>();
        }
        const auto document = DocumentFixtures::open(path);
        const struct stat before = statOf(native);
        QVERIFY(before.st_ino != 0);
        const QByteArray bytes = bytesOf(path);
        if (file == QLatin1String("saving")) {
            DocumentFixtures::appendBlankPages(*document, 1);
            document->save();
        }
        document->setXattrItemsToSave(QList<FDXAttrItem> { { name, QByteArray("1,0,0,1") } });

        QVERIFY(service().addAttributesTask(document));
        if (file == QLatin1String("saving")) {
            // One writer at a time: the attributes wait for the bytes.
            QCOMPARE(service().fastExcutor().runningTasks().count(), 1);
            QCOMPARE(service().fastExcutor().pendingTasks().count(), 1);
        }
        QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 30000);
        unprivileged.reset();

        QCOMPARE(m_alerts.size(), 0);
        QCOMPARE(FDGetXAttr(url, name),
            file == QLatin1String("read-only") ? std::nullopt
                                               : std::optional<QByteArray>("1,0,0,1"));
        if (file == QLatin1String("saving")) {
            QCOMPARE(DocumentFixtures::pageCountOf(path), 3);
            return;
        }
        const struct stat after = statOf(native);
        QCOMPARE(bytesOf(path), bytes);
        QCOMPARE(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
        QCOMPARE(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
        QCOMPARE(after.st_ino, before.st_ino);
    }

private:
    QString fixture(const QString &name, int pages)
    {
        const QString path = m_dir->filePath(name);
        DocumentFixtures::writeBlankPDF(path, pages);
        return path;
    }
    void answerAlertsWith(int choice)
    {
        m_alerts.clear();
        Alert::setHandlerForTesting([this, choice](const AlertRequest &request) {
            m_alerts.append(request);
            return choice;
        });
    }
    QStringList folderEntries() const
    {
        return QDir(m_dir->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    static PDFSavingService &service() { return PDFSavingService::shared(); }

    std::unique_ptr<QTemporaryDir> m_dir;
    QList<AlertRequest> m_alerts;
};

int main(int argc, char **argv)
{
    s_cacheFolder = DocumentTestEnvironment::isolate();
    QApplication application(argc, argv);
    PDFSavingServiceTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "PDFSavingServiceTest.moc"
