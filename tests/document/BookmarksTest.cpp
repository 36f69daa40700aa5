// Bookmarks as a user meets them: kept in page order with a notification for each change, saved
// into the file as a hidden outline branch that other readers see and the outline never shows,
// read back on every load, and migrated once from the legacy extended attribute.

#include <document/Common.h>
#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <document/PDFPage+XExtensions.h>
#include <document/PDFSavingService.h>
#include <document/TaskExcutor.h>

#include "support/DocumentFixtures.h"

#include <kit/base/Archiver.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFOutline.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString Legacy = QStringLiteral("com.brimbook.bookmarks");
const QString Migrated = QStringLiteral("com.brimbook.bookmarks.migrated");

// Every bookmark notification: what happened ("Add"), "Index", and the title of the "Bookmark".
class BookmarkRecorder
{
public:
    explicit BookmarkRecorder(const void *sender)
    {
        for (const QString &name :
            { FDDocument::BookmarkDidAddNotification, FDDocument::BookmarkDidRemoveNotification,
                FDDocument::BookmarkDidChangeNotification }) {
            NotificationCenter::defaultCenter().addObserver(
                this, name, sender, [this](const Notification &notification) {
                    const auto bookmark = notification.userInfo.value(QStringLiteral("Bookmark"))
                                              .value<std::shared_ptr<FDBookmark>>();
                    records.append(
                        QStringLiteral("%1 %2 %3")
                            .arg(notification.name.mid(int(qstrlen("PDFDocument_BookmarkDid"))))
                            .arg(notification.userInfo.value(QStringLiteral("Index")).toInt())
                            .arg(bookmark ? bookmark->title() : QStringLiteral("?")));
                });
        }
    }
    ~BookmarkRecorder() { NotificationCenter::defaultCenter().removeObserver(this); }
    QStringList records;
};

QStringList titles(const FDDocument &document)
{
    QStringList list;
    for (const auto &bookmark : document.bookmarks())
        list.append(
            QStringLiteral("%1@%2").arg(bookmark->title()).arg(pageIndex(*bookmark->page())));
    return list;
}

QStringList outlineLabels(const FDDocument &document)
{
    QStringList labels;
    if (const auto root = document.outlineRoot()) {
        for (int index = 0; index < root->numberOfChildren(); ++index)
            labels.append(root->childAtIndex(index)->label());
    }
    return labels;
}

// "title@page" of an outline item as qpdf reads it; the bookmarks root adds "[kid, ...]".
QString qpdfItem(const QJsonObject &item)
{
    const QString title = item.value(QStringLiteral("title")).toString();
    if (title != FDDocument::BookmarksRootLabel)
        return title
            + QStringLiteral("@%1").arg(item.value(QStringLiteral("destpageposfrom1")).toInt() - 1);
    QStringList kids;
    for (const QJsonValue &kid : item.value(QStringLiteral("kids")).toArray())
        kids.append(qpdfItem(kid.toObject()));
    return title + QLatin1Char('[') + kids.join(QStringLiteral(", ")) + QLatin1Char(']');
}

// The top outline items of the file as qpdf reads them.
QStringList qpdfOutline(const QString &qpdf, const QString &path)
{
    const auto result = TestTools::run(
        qpdf, { QStringLiteral("--json"), QStringLiteral("--json-key=outlines"), path });
    QStringList top;
    const QJsonObject json = QJsonDocument::fromJson(result.out).object();
    for (const QJsonValue &item : json.value(QStringLiteral("outlines")).toArray())
        top.append(qpdfItem(item.toObject()));
    return top;
}

std::shared_ptr<FDPage> fdPage(const FDDocument &document, int index)
{
    return std::dynamic_pointer_cast<FDPage>(document.pageAtIndex(index));
}

QByteArray legacyArchive(const QList<QPair<QVariant, QVariant>> &entries)
{
    QVariantList list;
    for (const auto &[name, page] : entries) {
        QVariantMap entry;
        if (name.isValid())
            entry.insert(QStringLiteral("name"), name);
        if (page.isValid())
            entry.insert(QStringLiteral("page"), page);
        list.append(entry);
    }
    return Archiver::archivedData(list);
}

} // namespace

class BookmarksTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { FOLIDOC_REQUIRE_USER_ATTRIBUTES(); }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }
    void cleanup()
    {
        QTRY_COMPARE_WITH_TIMEOUT(PDFSavingService::shared().numberOfTasks(), 0, 30000);
    }

    void addingKeepsPageOrder_data()
    {
        QTest::addColumn<QList<int>>("pages");
        QTest::addColumn<QStringList>("notified");
        QTest::newRow("7 2 5") << QList<int> { 7, 2, 5 }
                               << QStringList { "Add 0 p7", "Add 0 p2", "Add 1 p5" };
        QTest::newRow("5 7 2") << QList<int> { 5, 7, 2 }
                               << QStringList { "Add 0 p5", "Add 1 p7", "Add 0 p2" };
    }
    void addingKeepsPageOrder()
    {
        QFETCH(QList<int>, pages);
        QFETCH(QStringList, notified);
        ViewDelegate view;
        const auto document
            = DocumentFixtures::open(fixture(QStringLiteral("order.pdf"), 8), view.delegate());
        BookmarkRecorder recorder(view.view());

        for (const int index : std::as_const(pages))
            QVERIFY(document->addBookmarkWith(
                fdPage(*document, index), QStringLiteral("p%1").arg(index)));
        QCOMPARE(titles(*document), (QStringList { "p2@2", "p5@5", "p7@7" }));
        QCOMPARE(recorder.records, notified);
        QCOMPARE(document->numberOfPageChanges(), 3);
        QVERIFY(fdPage(*document, 5)->isBookmarked());
        QVERIFY(!fdPage(*document, 4)->isBookmarked());
        QCOMPARE(document->bookmarkFor(document->pageAtIndex(5))->title(), QStringLiteral("p5"));
        QVERIFY(!document->bookmarkFor(document->pageAtIndex(4)));

        // A page has one bookmark at most: a second one changes and posts nothing.
        QVERIFY(!document->addBookmarkWith(fdPage(*document, 5), QStringLiteral("again")));
        QCOMPARE(recorder.records.size(), 3);
        QCOMPARE(document->numberOfPageChanges(), 3);
        QCOMPARE(titles(*document), (QStringList { "p2@2", "p5@5", "p7@7" }));
    }

    void removingAndRetitlingNotify()
    {
        ViewDelegate view;
        const auto document
            = DocumentFixtures::open(fixture(QStringLiteral("edit.pdf"), 4), view.delegate());
        QVERIFY(document->addBookmarkWith(fdPage(*document, 1), QStringLiteral("one")));
        QVERIFY(document->addBookmarkWith(fdPage(*document, 3), QStringLiteral("three")));
        BookmarkRecorder recorder(view.view());
        const auto three = document->bookmarks().at(1);

        document->updateBookmark(three, QStringLiteral("Three"));
        document->removeBookmark(document->bookmarks().at(0));
        QCOMPARE(recorder.records, (QStringList { "Change 1 Three", "Remove 0 one" }));
        QCOMPARE(titles(*document), QStringList { "Three@3" });
        QVERIFY(!fdPage(*document, 1)->isBookmarked());
        QCOMPARE(document->numberOfPageChanges(), 4);

        // A bookmark that is not in the list changes nothing.
        auto stranger = std::make_shared<FDBookmark>();
        stranger->initWithTitle(QStringLiteral("stranger"), fdPage(*document, 0));
        document->removeBookmark(stranger);
        document->updateBookmark(stranger, QStringLiteral("renamed"));
        QCOMPARE(recorder.records.size(), 2);
        QCOMPARE(document->numberOfPageChanges(), 4);

        // A page taken out and put back in the same turn (a move) keeps its bookmark; one that
        // stays out loses it on the next turn, with the notification.
        const auto page = fdPage(*document, 3);
        document->removePageAtIndex(3);
        document->insertPage(page, 0);
        QTest::qWait(0);
        QCOMPARE(titles(*document), QStringList { "Three@0" });
        document->removePageAtIndex(0);
        QCOMPARE(document->bookmarks().size(), 1);
        QTRY_VERIFY(document->bookmarks().isEmpty());
        QCOMPARE(recorder.records.last(), QStringLiteral("Remove 0 Three"));
        QVERIFY(!page->isBookmarked());
    }

    void savedBookmarksComeBackAndStayOutOfTheOutline_data()
    {
        QTest::addColumn<bool>("withOutline");
        QTest::addColumn<QList<int>>("pages");
        QTest::addColumn<QStringList>("inFile");
        QTest::newRow("ordinary outline")
            << true << QList<int> { 3, 0 }
            << QStringList { "My Bookmarks[Mark 0@0, Mark 3@3]", "Chapter One@0", "Chapter Two@2" };
        QTest::newRow("no outline")
            << false << QList<int> { 2 } << QStringList { "My Bookmarks[Mark 2@2]" };
        QTest::newRow("no outline, no bookmark")
            << false << QList<int>() << QStringList { "My Bookmarks[]" };
    }
    void savedBookmarksComeBackAndStayOutOfTheOutline()
    {
        QFETCH(bool, withOutline);
        QFETCH(QList<int>, pages);
        QFETCH(QStringList, inFile);
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        PdfFixtures::Document description = PdfFixtures::textPages(4, 1, 0);
        if (withOutline)
            description.outline = { { QStringLiteral("Chapter One"), 0, {}, 0, true, {} },
                { QStringLiteral("Chapter Two"), 2, {}, 0, true, {} } };
        const QString path = fixture(QStringLiteral("saved.pdf"), description);
        const QStringList ordinary
            = withOutline ? QStringList { "Chapter One", "Chapter Two" } : QStringList();

        QStringList expected;
        {
            ViewDelegate view;
            const auto document = DocumentFixtures::open(path, view.delegate());
            for (const int index : std::as_const(pages))
                document->addBookmarkWith(
                    fdPage(*document, index), QStringLiteral("Mark %1").arg(index));
            expected = titles(*document);
            // Saved twice: the branch is written once, and the outline never shows it.
            for (int save = 0; save < 2; ++save) {
                document->setNumberOfOtherChanges(1);
                saveAndWait(*document);
                QCOMPARE(outlineLabels(*document), ordinary);
                QCOMPARE(qpdfOutline(qpdf, path), inFile);
            }
            // A document without an outline keeps the root the first save made, empty.
            QVERIFY(document->outlineRoot());
        }

        ViewDelegate view;
        const auto reopened = DocumentFixtures::open(path, view.delegate());
        QCOMPARE(titles(*reopened), expected);
        QCOMPARE(outlineLabels(*reopened), ordinary);
        for (int index = 0; index < reopened->pageCount(); ++index)
            QCOMPARE(fdPage(*reopened, index)->isBookmarked(), pages.contains(index));
        QCOMPARE(reopened->numberOfChanges(), 0);
    }

    void legacyAttributeIsMigratedOnce_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QStringList>("migrated");
        QTest::addColumn<bool>("replaced");
        const QVariant none;
        QTest::newRow("list with bad entries")
            << legacyArchive({ { QStringLiteral("Intro"), QStringLiteral("2") },
                   { QStringLiteral("Bad number"), QStringLiteral("two") },
                   { QStringLiteral("No page"), none }, { none, QStringLiteral("1") },
                   { QStringLiteral("Past the end"), QStringLiteral("9") },
                   { QStringLiteral("Number, not text"), 1 },
                   { QStringLiteral("Start"), QStringLiteral("0") } })
            << QStringList { "Intro@2", "Start@0" } << true;
        QTest::newRow("empty list")
            << Archiver::archivedData(QVariantList()) << QStringList() << true;
        QTest::newRow("not an archive")
            << QByteArray("bplist00\x01\x02", 10) << QStringList() << false;
        QTest::newRow("not a list")
            << Archiver::archivedData(QStringLiteral("Intro")) << QStringList() << false;
        QTest::newRow("list of other things")
            << Archiver::archivedData(QVariantList { QStringLiteral("Intro"), 2 }) << QStringList()
            << false;
    }
    void legacyAttributeIsMigratedOnce()
    {
        QFETCH(QByteArray, stored);
        QFETCH(QStringList, migrated);
        QFETCH(bool, replaced);
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        const QString path = fixture(QStringLiteral("legacy.pdf"), 3);
        const QUrl url = QUrl::fromLocalFile(path);
        FDSetXAttr(url, Legacy, stored);
        const QByteArray original = [&] {
            QFile file(path);
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        }();

        {
            ViewDelegate view;
            // Each save resets the counters, which posts this once.
            int saves = 0;
            NotificationCenter::defaultCenter().addObserver(view.view(),
                FDDocument::DocumentAnnDidChangeNotification, view.view(),
                [&saves](const Notification &) { ++saves; });
            const auto document = DocumentFixtures::open(path, view.delegate());
            QCOMPARE(titles(*document), migrated);
            // The ribbon waits for the load that reads them from the file.
            for (int index = 0; index < document->pageCount(); ++index)
                QVERIFY(!fdPage(*document, index)->isBookmarked());
            QCOMPARE(document->numberOfPageChanges(), migrated.isEmpty() ? 0 : 1);
            QCOMPARE(FDGetXAttr(url, Legacy).has_value(), !replaced);
            QCOMPARE(FDGetXAttr(url, Migrated), replaced ? std::optional(stored) : std::nullopt);
            // The save comes by itself on the next turn, once.
            QCOMPARE(saves, 0);
            QTest::qWait(100);
            QTRY_COMPARE_WITH_TIMEOUT(PDFSavingService::shared().numberOfTasks(), 0, 30000);
            QCOMPARE(saves, migrated.isEmpty() ? 0 : 1);
            QCOMPARE(document->numberOfChanges(), 0);
        }

        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        if (migrated.isEmpty()) {
            QCOMPARE(file.readAll(), original);
            return;
        }
        QCOMPARE(
            qpdfOutline(qpdf, path), QStringList { "My Bookmarks[" + migrated.join(", ") + "]" });
        // The next load finds the bookmarks in the file and has nothing left to migrate.
        ViewDelegate view;
        const auto reopened = DocumentFixtures::open(path, view.delegate());
        QCOMPARE(titles(*reopened), migrated);
        QVERIFY(fdPage(*reopened, 2)->isBookmarked());
        QCOMPARE(reopened->numberOfChanges(), 0);
        QCOMPARE(FDGetXAttr(url, Migrated), std::optional(stored));
        QTest::qWait(100);
        QCOMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    }

    void reopeningDuringASaveKeepsOneRoot()
    {
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        PdfFixtures::Document description = PdfFixtures::textPages(3, 1, 0);
        description.outline = { { QStringLiteral("Chapter One"), 0, {}, 0, true, {} } };
        const QString path = fixture(QStringLiteral("reopen.pdf"), description);
        const QUrl url = QUrl::fromLocalFile(path);
        std::weak_ptr<FDDocument> document;
        {
            ViewDelegate closing;
            const auto closed = DocumentFixtures::open(path, closing.delegate());
            closed->addBookmarkWith(fdPage(*closed, 1), QStringLiteral("Kept"));
            // The tab closes: the document goes to the saving service without its view, and its
            // bytes are made on the saving queue with the branch in the tree.
            closed->setPdfView(nullptr);
            closed->save();
            QCOMPARE(PDFSavingService::shared().fastExcutor().runningTasks().count(), 1);
            document = closed;
        }
        QVERIFY2(!document.expired(), "the task keeps the closed tab's document alive");

        // The file is opened again while that save runs, and saved again.
        ViewDelegate view;
        const auto taken = PDFSavingService::shared().getDocumentByURL(url);
        QCOMPARE(taken, document.lock());
        taken->resetWith(view.delegate());
        QCOMPARE(taken->pdfView(), view.view());
        QCOMPARE(titles(*taken), QStringList { "Kept@1" });
        QVERIFY(fdPage(*taken, 1)->isBookmarked());
        // Once that save has ended the service lets go, and the outline shows no bookmarks root.
        QTRY_COMPARE_WITH_TIMEOUT(PDFSavingService::shared().numberOfTasks(), 0, 30000);
        QVERIFY(!PDFSavingService::shared().getDocumentByURL(url));
        QCOMPARE(outlineLabels(*taken), QStringList { "Chapter One" });
        QCOMPARE(
            qpdfOutline(qpdf, path), (QStringList { "My Bookmarks[Kept@1]", "Chapter One@0" }));

        QVERIFY(taken->addBookmarkWith(fdPage(*taken, 2), QStringLiteral("Added")));
        for (int save = 0; save < 2; ++save) {
            taken->setNumberOfOtherChanges(1);
            saveAndWait(*taken);
            QCOMPARE(outlineLabels(*taken), QStringList { "Chapter One" });
            QCOMPARE(qpdfOutline(qpdf, path),
                (QStringList { "My Bookmarks[Kept@1, Added@2]", "Chapter One@0" }));
        }
    }

private:
    QString fixture(const QString &name, const PdfFixtures::Document &description)
    {
        const QString path = m_dir->filePath(name);
        if (!PdfFixtures::write(description, path))
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }
    QString fixture(const QString &name, int pages)
    {
        return fixture(name, PdfFixtures::textPages(pages, 1, 0));
    }
    static void saveAndWait(FDDocument &document)
    {
        document.save();
        QTRY_COMPARE_WITH_TIMEOUT(PDFSavingService::shared().numberOfTasks(), 0, 30000);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_MAIN(BookmarksTest)
#include "BookmarksTest.moc"
