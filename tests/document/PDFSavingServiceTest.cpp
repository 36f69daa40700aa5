#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <document/Task.h>
#include <document/TaskExcutor.h>

#include "support/DocumentFixtures.h"
#include "support/Unprivileged.h"

#include <app/Alert.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <sys/xattr.h>

class PDFSavingServiceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void quickSavesWhileOneRunsKeepOnlyTheLast();
    void bigAndSmallFilesRunAtOnce();
    void refusedWriteGivesThreeAttemptsAndOneAlert();
    void reopeningDuringSaveTakesTheSameDocument();
    void saveAsWritesToTheNewPlaceAndUntitledIsRefused();
    void saveThroughALinkKeepsWhatTheUserHad();

private:
    QString fixture(const QString &name, int pages);
    QStringList folderEntries() const;
    static PDFSavingService &service() { return PDFSavingService::shared(); }

    std::unique_ptr<QTemporaryDir> m_dir;
    QList<AlertRequest> m_alerts;
};

void PDFSavingServiceTest::initTestCase()
{
    QTemporaryDir probe;
    if (::setxattr(QFile::encodeName(probe.path()).constData(), "user.probe", "1", 1, 0) != 0)
        QSKIP("this file system refuses extended attributes in the user namespace");
}

void PDFSavingServiceTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_alerts.clear();
    Alert::setHandlerForTesting([this](const AlertRequest &request) {
        m_alerts.append(request);
        return 1000;
    });
    QCOMPARE(service().numberOfTasks(), 0);
}

void PDFSavingServiceTest::cleanup()
{
    QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 60000);
    Alert::setHandlerForTesting({});
}

QString PDFSavingServiceTest::fixture(const QString &name, int pages)
{
    const QString path = m_dir->filePath(name);
    DocumentFixtures::writeBlankPDF(path, pages);
    return path;
}

QStringList PDFSavingServiceTest::folderEntries() const
{
    return QDir(m_dir->path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

void PDFSavingServiceTest::quickSavesWhileOneRunsKeepOnlyTheLast()
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

void PDFSavingServiceTest::bigAndSmallFilesRunAtOnce()
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

    QCOMPARE(service().fastExcutor().runningTasks().count(), 3);
    QCOMPARE(service().slowExcutor().runningTasks().count(), 1);
    QCOMPARE(service().fastExcutor().queue().activeThreadCount(), 3);
    QCOMPARE(service().slowExcutor().queue().activeThreadCount(), 1);
    QCOMPARE(service().numberOfTasks(), 4);
    QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 60000);
    for (int index = 0; index < 3; ++index)
        QCOMPARE(DocumentFixtures::pageCountOf(paths[index]), 3);
    QCOMPARE(DocumentFixtures::pageCountOf(paths[3]), 1001);
}

void PDFSavingServiceTest::refusedWriteGivesThreeAttemptsAndOneAlert()
{
    const QString path = fixture(QStringLiteral("refused.pdf"), 1);
    const QByteArray original = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    Unprivileged::giveAway(m_dir->path());
    Unprivileged::giveAway(path);
    QVERIFY(QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::ExeOwner));
    const auto unprivileged = std::make_unique<Unprivileged>();

    ViewDelegate view;
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

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), original);
    QCOMPARE(folderEntries(), QStringList { QStringLiteral("refused.pdf") });
    QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void PDFSavingServiceTest::reopeningDuringSaveTakesTheSameDocument()
{
    const QString path = fixture(QStringLiteral("reopen.pdf"), 2);
    const QUrl url = QUrl::fromLocalFile(path);
    std::weak_ptr<FDDocument> weakDocument;
    {
        ViewDelegate closingTab;
        const auto document = DocumentFixtures::open(path, closingTab.delegate());
        DocumentFixtures::appendBlankPages(*document, 3);
        // The tab closes: the view lets go, and a changed document goes to the service.
        document->setPdfView(nullptr);
        document->save();
        weakDocument = document;
    }
    QVERIFY2(!weakDocument.expired(), "the task keeps the closed tab's document alive");

    ViewDelegate newTab;
    const std::shared_ptr<FDDocument> taken = service().getDocumentByURL(url);
    QCOMPARE(taken, weakDocument.lock());
    QCOMPARE(taken->pageCount(), 5);
    taken->resetWith(newTab.delegate());
    QCOMPARE(taken->pdfView(), newTab.view());
    QVERIFY(!service().getDocumentByURL(QUrl::fromLocalFile(m_dir->filePath("other.pdf"))));

    QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 30000);
    QVERIFY(!service().getDocumentByURL(url));
    QCOMPARE(DocumentFixtures::pageCountOf(path), 5);
}

void PDFSavingServiceTest::saveAsWritesToTheNewPlaceAndUntitledIsRefused()
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
void PDFSavingServiceTest::saveThroughALinkKeepsWhatTheUserHad()
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
    document->setXattrItemsToSave(
        QList<FDXAttrItem> { { QStringLiteral("com.Scrollwick.PDFView.LastPosition"), position } });
    DocumentFixtures::appendBlankPages(*document, 2);

    document->save();
    QTRY_COMPARE_WITH_TIMEOUT(service().numberOfTasks(), 0, 30000);

    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(DocumentFixtures::pageCountOf(target), 3);
    QCOMPARE(folderEntries(), (QStringList { QStringLiteral("link.pdf"), QStringLiteral("real") }));
    struct stat status
    {
    };
    QCOMPARE(::stat(native.constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0604));
    char value[64] = {};
    QCOMPARE(::getxattr(native.constData(), "user.xdg.tags", value, sizeof value), ssize_t(4));
    const ssize_t length = ::getxattr(
        native.constData(), "user.com.Scrollwick.PDFView.LastPosition", value, sizeof value);
    QCOMPARE(QByteArray(value, int(length)), position);
}

QTEST_MAIN(PDFSavingServiceTest)
#include "PDFSavingServiceTest.moc"
