#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <document/PDFPage+XExtensions.h>

#include "support/DocumentFixtures.h"
#include "support/Unprivileged.h"

#include <app/Alert.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Every change notification of the document, with the total the document read at that moment.
struct ChangeRecord
{
    QString name;
    const void *sender;
    int numberOfChanges;
};

} // namespace

class FDDocumentTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void titles_data();
    void titles();
    void bigFileStartsAt1001Pages();
    void setNumberOfChangesRule_data();
    void setNumberOfChangesRule();
    void resetPostsBothNotificationsFromTheView();
    void pageOperationsCountOnePageChangeEach();
    void everyPageIsAnFDPageWithALastingIdentity();
    void pageIndexOfPagesInAndOutOfDocuments();
    void unreadableFileGivesNoDocument();
    void inheritedInitialisersStopTheProcess_data();
    void inheritedInitialisersStopTheProcess();
    void permissionAlertOncePerDocumentAfterDelay();

private:
    void record(const FDDocument &document);
    QString fixture(const QString &name, int pages);
    // Lets the main queue run until a turn queued now after the given delay has run.
    static void waitPast(double seconds);

    std::unique_ptr<QTemporaryDir> m_dir;
    QList<ChangeRecord> m_records;
    int m_alerts = 0;
    QList<AlertRequest> m_alertRequests;
};

void FDDocumentTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_records.clear();
    m_alerts = 0;
    m_alertRequests.clear();
    Alert::setHandlerForTesting([this](const AlertRequest &request) {
        ++m_alerts;
        m_alertRequests.append(request);
        return 1000;
    });
}

void FDDocumentTest::cleanup()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    Alert::setHandlerForTesting({});
}

void FDDocumentTest::record(const FDDocument &document)
{
    for (const QString &name :
        { FDDocument::DocumentAnnDidChangeNotification,
            FDDocument::DocumentPageDidChangeNotification, FDDocument::URLDidChangeNotification }) {
        NotificationCenter::defaultCenter().addObserver(
            this, name, nullptr, [this, &document](const Notification &notification) {
                m_records.append(
                    { notification.name, notification.sender, document.numberOfChanges() });
            });
    }
}

QString FDDocumentTest::fixture(const QString &name, int pages)
{
    const QString path = m_dir->filePath(name);
    DocumentFixtures::writeBlankPDF(path, pages);
    return path;
}

void FDDocumentTest::waitPast(double seconds)
{
    bool passed = false;
    MainQueue::asyncAfter(seconds, [&passed] { passed = true; });
    QTRY_VERIFY_WITH_TIMEOUT(passed, int(seconds * 1000) + 5000);
}

void FDDocumentTest::titles_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("digest");
    QTest::newRow("no URL") << QUrl() << "Untitled"
                            << "(empty)";
    QTest::newRow("plain") << QUrl::fromLocalFile("/home/u/Report.pdf") << "Report"
                           << "Report";
    QTest::newRow("two dots") << QUrl::fromLocalFile("/tmp/a.b.pdf") << "a.b"
                              << "a.b";
    QTest::newRow("no extension") << QUrl::fromLocalFile("/tmp/notes") << "notes"
                                  << "notes";
    QTest::newRow("space") << QUrl::fromLocalFile("/tmp/My File.pdf") << "My File"
                           << "My File";
}

void FDDocumentTest::titles()
{
    QFETCH(QUrl, url);
    QFETCH(QString, title);
    QFETCH(QString, digest);
    auto document = std::make_shared<FDDocument>();
    QVERIFY(document->init());
    document->setFileURL(url);
    QCOMPARE(document->title(), title);
    QCOMPARE(FDDocument::digestTitleFrom(url), digest);
}

void FDDocumentTest::bigFileStartsAt1001Pages()
{
    const auto document = DocumentFixtures::open(fixture(QStringLiteral("big.pdf"), 1000));
    QVERIFY(!document->isBigFile());
    DocumentFixtures::appendBlankPages(*document, 1);
    QCOMPARE(document->pageCount(), 1001);
    QVERIFY(document->isBigFile());
}

void FDDocumentTest::setNumberOfChangesRule_data()
{
    QTest::addColumn<QList<int>>("before");
    QTest::addColumn<int>("value");
    QTest::addColumn<QList<int>>("after");
    QTest::newRow("non-zero folds the total into other")
        << QList<int> { 1, 2, 3 } << 5 << QList<int> { 1, 2, 6 };
    QTest::newRow("a clean document stays clean")
        << QList<int> { 0, 0, 0 } << 7 << QList<int> { 0, 0, 0 };
    QTest::newRow("negative is a flag too")
        << QList<int> { 2, 0, 0 } << -1 << QList<int> { 2, 0, 2 };
    QTest::newRow("zero resets everything")
        << QList<int> { 4, 5, 6 } << 0 << QList<int> { 0, 0, 0 };
}

void FDDocumentTest::setNumberOfChangesRule()
{
    QFETCH(QList<int>, before);
    QFETCH(int, value);
    QFETCH(QList<int>, after);
    auto document = std::make_shared<FDDocument>();
    QVERIFY(document->init());
    document->setNumberOfAnnotationChanges(before[0]);
    document->setNumberOfPageChanges(before[1]);
    document->setNumberOfOtherChanges(before[2]);
    document->setNumberOfChanges(value);
    QCOMPARE((QList<int> { document->numberOfAnnotationChanges(), document->numberOfPageChanges(),
                 document->numberOfOtherChanges() }),
        after);
}

void FDDocumentTest::resetPostsBothNotificationsFromTheView()
{
    ViewDelegate view;
    const auto document
        = DocumentFixtures::open(fixture(QStringLiteral("reset.pdf"), 2), view.delegate());
    QCOMPARE(document->pdfView(), view.view());
    document->setNumberOfAnnotationChanges(2);
    document->setNumberOfOtherChanges(4);
    record(*document);

    document->setNumberOfChanges(0);

    QCOMPARE(m_records.size(), 2);
    QCOMPARE(m_records[0].name, FDDocument::DocumentAnnDidChangeNotification);
    QCOMPARE(m_records[1].name, FDDocument::DocumentPageDidChangeNotification);
    for (const ChangeRecord &change : std::as_const(m_records)) {
        QCOMPARE(change.sender, static_cast<const void *>(view.view()));
        QCOMPARE(change.numberOfChanges, 0); // a title drawn now loses its mark
    }

    m_records.clear();
    document->setPdfView(nullptr);
    document->setNumberOfAnnotationChanges(1);
    QCOMPARE(m_records.size(), 1);
    QCOMPARE(m_records[0].sender, nullptr);
}

void FDDocumentTest::pageOperationsCountOnePageChangeEach()
{
    const auto document = DocumentFixtures::open(fixture(QStringLiteral("pages.pdf"), 3));
    record(*document);
    const auto first = document->pageAtIndex(0);
    const auto last = document->pageAtIndex(2);

    document->exchangePageAtIndex(0, 2);
    QCOMPARE(document->pageAtIndex(0), last);
    QCOMPARE(document->numberOfPageChanges(), 1);
    document->removePageAtIndex(2);
    QCOMPARE(document->pageCount(), 2);
    QCOMPARE(document->numberOfPageChanges(), 2);
    document->insertPage(first, 1);
    QCOMPARE(document->pageAtIndex(1), first);
    QCOMPARE(document->numberOfPageChanges(), 3);

    QCOMPARE(document->numberOfChanges(), 3);
    QCOMPARE(m_records.size(), 3);
    for (const ChangeRecord &change : std::as_const(m_records))
        QCOMPARE(change.name, FDDocument::DocumentPageDidChangeNotification);
}

void FDDocumentTest::everyPageIsAnFDPageWithALastingIdentity()
{
    const QString path = fixture(QStringLiteral("identity.pdf"), 3);
    ViewDelegate view;
    const auto withView = DocumentFixtures::open(path, view.delegate());
    const auto alone = DocumentFixtures::open(path);
    QSet<QString> uuids;
    for (const auto &document : { withView, alone }) {
        for (int index = 0; index < document->pageCount(); ++index) {
            const auto page = std::dynamic_pointer_cast<FDPage>(document->pageAtIndex(index));
            QVERIFY2(page, "every page of an FDDocument is an FDPage");
            QCOMPARE(page->uuid(), page->uuid());
            QCOMPARE(page->uuid(), page->uuid().toUpper());
            uuids.insert(page->uuid());
        }
    }
    QCOMPARE(uuids.size(), 6);

    // A page that moves to another document is the same object with the same identity.
    const auto moving = std::dynamic_pointer_cast<FDPage>(withView->pageAtIndex(1));
    const QString uuid = moving->uuid();
    moving->setIsBookmarked(true);
    alone->insertPage(moving, 0);
    QCOMPARE(alone->pageAtIndex(0), moving);
    QCOMPARE(withView->pageCount(), 2);
    QCOMPARE(moving->uuid(), uuid);
    QVERIFY(moving->isBookmarked());
}

void FDDocumentTest::pageIndexOfPagesInAndOutOfDocuments()
{
    const auto document = DocumentFixtures::open(fixture(QStringLiteral("index.pdf"), 3));
    const auto third = document->pageAtIndex(2);
    QCOMPARE(pageIndex(*third), 2);
    document->removePageAtIndex(2);
    QCOMPARE(pageIndex(*third), -1);
    const auto loose = std::make_shared<FDPage>();
    QVERIFY(loose->init());
    QCOMPARE(pageIndex(*loose), -1);
}

void FDDocumentTest::unreadableFileGivesNoDocument()
{
    const QString path = m_dir->filePath(QStringLiteral("garbage.pdf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("%PDF-1.7 this is not really a PDF");
    file.close();
    auto document = std::make_shared<FDDocument>();
    QVERIFY(!document->initWithURL(QUrl::fromLocalFile(path), {}));
    QVERIFY(!document->errorString().isEmpty());
    QCOMPARE(m_alerts, 0);

    auto untitled = std::make_shared<FDDocument>();
    QVERIFY(untitled->initWithURL(QUrl(), {}));
    QCOMPARE(untitled->pageCount(), 0);
    QCOMPARE(untitled->title(), QStringLiteral("Untitled"));
}

void FDDocumentTest::inheritedInitialisersStopTheProcess_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("initWithURL") << "document-init-url";
    QTest::newRow("initWithData") << "document-init-data";
}

void FDDocumentTest::inheritedInitialisersStopTheProcess()
{
    QFETCH(QString, command);
    QProcess helper;
    helper.start(QStringLiteral(FOLIDOC_DOCUMENT_HELPER), { command });
    QVERIFY(helper.waitForFinished(30000));
    QVERIFY(helper.exitStatus() == QProcess::CrashExit);
    QVERIFY(helper.readAllStandardError().contains("not implemented"));
}

void FDDocumentTest::permissionAlertOncePerDocumentAfterDelay()
{
    const QString readOnly = fixture(QStringLiteral("locked.pdf"), 1);
    const QString writable = fixture(QStringLiteral("open.pdf"), 1);
    QVERIFY(
        QFile::setPermissions(readOnly, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    Unprivileged::giveAway(m_dir->path());
    Unprivileged::giveAway(readOnly);
    Unprivileged::giveAway(writable);
    const Unprivileged unprivileged;

    const auto lockedDocument = DocumentFixtures::open(readOnly);
    const auto openDocument = DocumentFixtures::open(writable);
    QElapsedTimer clock;
    clock.start();
    lockedDocument->setNumberOfAnnotationChanges(1);
    openDocument->setNumberOfAnnotationChanges(1);
    QCOMPARE(lockedDocument->numberOfAnnotationChanges(), 1); // the edit itself is not refused
    QCOMPARE(m_alerts, 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_alerts, 1, 5000);
    QVERIFY2(clock.elapsed() >= 550, "the alert waits for the gesture to end");
    QCOMPARE(m_alertRequests[0].style, AlertRequest::Critical);
    QCOMPARE(m_alertRequests[0].messageText,
        QStringLiteral("You don’t have permission to save the file \"%1\".").arg(readOnly));
    QCOMPARE(m_alertRequests[0].informativeText,
        QStringLiteral("To view or change permissions, open the file's properties in your file "
                       "manager."));

    lockedDocument->setNumberOfAnnotationChanges(2);
    lockedDocument->setNumberOfPageChanges(1);
    waitPast(0.7);
    QCOMPARE(m_alerts, 1);
}

QTEST_MAIN(FDDocumentTest)
#include "FDDocumentTest.moc"
