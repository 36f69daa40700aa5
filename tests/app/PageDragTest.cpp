#include "support/AppTestEnvironment.h"

#include <app/Alert.h>
#include <app/FDDefaults.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <document/PDFSavingService.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/tabs/TabStripModel.h>
#include <pages/PDFCollectionView.h>
#include <pages/PDFPagePromiseMimeData.h>
#include <pages/PDFPagesEditor.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>
#include <view/FDPDFView.h>

#include <QClipboard>
#include <QDir>
#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QMimeData>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Pages with "Page N" as their first words and a square whose contents are tag and N, so that a
// file read back tells where every page of which document went, with its annotation.
PdfFixtures::Document taggedPages(const QByteArray &tag, int count)
{
    PdfFixtures::Document document = PdfFixtures::textPages(count, 3, 0);
    for (int index = 0; index < document.pages.size(); ++index) {
        document.pages[index].annotations.append({ "/Subtype /Square /Rect [100 100 200 200] "
                                                   "/C [1 0 0] /Contents ("
                + tag + QByteArray::number(index + 1) + ")",
            {}, {} });
    }
    return document;
}

// The annotation contents of each page of a file, in page order: "a1 a2 b1 ...".
QString orderOf(const QString &path)
{
    const auto document = std::make_shared<PDFDocument>();
    if (!document->initWithURL(QUrl::fromLocalFile(path)))
        return document->errorString();
    QStringList pages;
    for (int index = 0; index < document->pageCount(); ++index) {
        QStringList notes;
        for (const auto &annotation : document->pageAtIndex(index)->annotations())
            notes << annotation->contents();
        pages << notes.join(QLatin1Char(','));
    }
    return pages.join(QLatin1Char(' '));
}

// A page tree whose root lists itself among its kids, over pages "One" and "Two".
QByteArray loopingTree()
{
    const auto page = [](int content) {
        return "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Resources << /Font << /F1 "
               "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> >> >> /Contents "
            + QByteArray::number(content) + " 0 R >>";
    };
    const auto text = [](const QByteArray &word) {
        const QByteArray content = "BT /F1 24 Tf 50 150 Td (" + word + ") Tj ET";
        return "<< /Length " + QByteArray::number(content.size()) + " >>\nstream\n" + content
            + "\nendstream";
    };
    return PdfFixtures::fromObjects({ "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R 5 0 R 2 0 R] /Count 3 >>", page(4), text("One"), page(6),
        text("Two") });
}

QList<int> rows(std::initializer_list<int> list)
{
    return QList<int>(list);
}

} // namespace

class PageDragTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void movedPagesLandBeforeTheDropPlace_data();
    void movedPagesLandBeforeTheDropPlace();
    void dragsWithinAPaneReorderTheFile_data();
    void dragsWithinAPaneReorderTheFile();
    void dragsBetweenTabsAndWindowsMoveThePages_data();
    void dragsBetweenTabsAndWindowsMoveThePages();
    void theDraggedSetIsTheSelection();
    void theFileIsWrittenOnlyWhenAReceiverAsks();
    void dropsFromOutsideTakePdfFilesAndImagesOnly_data();
    void dropsFromOutsideTakePdfFilesAndImagesOnly();
    void pasteTakesFilesBeforeCopiedPages_data();
    void pasteTakesFilesBeforeCopiedPages();
    void aLoopingPageTreeDoesNotHangAMove();

private:
    PDFContents *openTab(
        PDFWindowController *window, const QString &name, const QByteArray &tag, int count = 5);
    PDFCollectionView *paneOf(PDFContents *tab) const;
    // Drives a drop of data on pane before the item at index, as the pointer would; answers
    // whether the grid accepted it.
    bool drop(PDFCollectionView *pane, QMimeData *data, int index);
    QPoint pointBefore(PDFCollectionView *pane, int index) const;
    QString pathOf(PDFContents *tab) const;

    QTemporaryDir m_dir;
    QList<QPointer<PDFWindowController>> m_windows;
};

void PageDragTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
    PDFContents::registerAsDocumentContents();
}

void PageDragTest::init()
{
    AppTestEnvironment::clearStore();
    FDDefaults::registerDefaults();
    Alert::setHandlerForTesting(
        [](const AlertRequest &) { return int(Alert::SecondButtonReturn); });
    for (int index = 0; index < 2; ++index) {
        auto *const window = TabWindowController::create<PDFWindowController>();
        window->resize(900, 700);
        window->openNewTab();
        window->show();
        m_windows << window;
    }
}

void PageDragTest::cleanup()
{
    for (const QPointer<PDFWindowController> &window : std::as_const(m_windows)) {
        TabStripModel *const model = window ? window->tabStripModel() : nullptr;
        for (int index = 0; model && index < model->count(); ++index) {
            auto *const tab = qobject_cast<PDFContents *>(model->getTabContentsAtIndex(index));
            if (tab && tab->primaryPDFView()->fdDocument())
                tab->primaryPDFView()->fdDocument()->setNumberOfChanges(0);
        }
        delete window.data();
    }
    m_windows.clear();
    QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
}

PDFContents *PageDragTest::openTab(
    PDFWindowController *window, const QString &name, const QByteArray &tag, int count)
{
    const QString path = m_dir.filePath(name);
    QFile::remove(path);
    if (!PdfFixtures::write(taggedPages(tag, count), path))
        return nullptr;
    auto *const tab = qobject_cast<PDFContents *>(
        window->openPDFDocumentWithURL(QUrl::fromLocalFile(path), true, true));
    const bool loaded = tab && QTest::qWaitFor([tab] {
        return tab->primaryPDFView()->document() && !tab->primaryPDFView()->isLoading();
    });
    if (!loaded)
        return nullptr;
    tab->setIsPagesEditingMode(true);
    return tab;
}

PDFCollectionView *PageDragTest::paneOf(PDFContents *tab) const
{
    return tab->container()->pagesEditorController()->collectionView();
}

QString PageDragTest::pathOf(PDFContents *tab) const
{
    return tab->primaryPDFView()->fdDocument()->fileURL().toLocalFile();
}

QPoint PageDragTest::pointBefore(PDFCollectionView *pane, int index) const
{
    const int count = pane->model()->rowCount();
    if (count == 0)
        return QPoint(5, 5);
    if (index >= count) {
        const QRect last = pane->visualRect(pane->model()->index(count - 1, 0));
        return QPoint(last.right() - 5, last.center().y());
    }
    const QRect item = pane->visualRect(pane->model()->index(index, 0));
    return QPoint(item.left() + 5, item.center().y());
}

bool PageDragTest::drop(PDFCollectionView *pane, QMimeData *data, int index)
{
    pane->scrollTo(pane->model()->index(std::min(index, pane->model()->rowCount() - 1), 0));
    const QPoint point = pointBefore(pane, index);
    const Qt::DropActions actions = Qt::MoveAction | Qt::CopyAction;
    QDragEnterEvent enter(point, actions, data, Qt::LeftButton, {});
    QApplication::sendEvent(pane->viewport(), &enter);
    if (!enter.isAccepted())
        return false;
    QDragMoveEvent move(point, actions, data, Qt::LeftButton, {});
    QApplication::sendEvent(pane->viewport(), &move);
    if (pane->dropIndicatorRect().isEmpty())
        return false;
    QDropEvent dropped(point, actions, data, Qt::LeftButton, {});
    QApplication::sendEvent(pane->viewport(), &dropped);
    return dropped.isAccepted() && pane->dropIndicatorRect().isEmpty();
}

void PageDragTest::movedPagesLandBeforeTheDropPlace_data()
{
    QTest::addColumn<QList<int>>("dragged");
    QTest::addColumn<int>("dropIndex");
    QTest::addColumn<bool>("sameDocument");
    QTest::addColumn<int>("expected");
    QTest::newRow("pages 1 and 2 before page 5") << rows({ 0, 1 }) << 4 << true << 2;
    QTest::newRow("the same, from another document") << rows({ 0, 1 }) << 4 << false << 4;
    QTest::newRow("backward: nothing above") << rows({ 3, 4 }) << 1 << true << 1;
    QTest::newRow("onto its own place, after") << rows({ 1, 2 }) << 3 << true << 1;
    QTest::newRow("onto its own place, before") << rows({ 1, 2 }) << 1 << true << 1;
    QTest::newRow("around the drop place") << rows({ 1, 4 }) << 3 << true << 2;
    QTest::newRow("to the end") << rows({ 0, 2 }) << 5 << true << 3;
}

void PageDragTest::movedPagesLandBeforeTheDropPlace()
{
    QFETCH(QList<int>, dragged);
    QFETCH(int, dropIndex);
    QFETCH(bool, sameDocument);
    QFETCH(int, expected);
    QCOMPARE(PDFPagesEditor::moveInsertionIndex(dragged, dropIndex, sameDocument), expected);
}

void PageDragTest::dragsWithinAPaneReorderTheFile_data()
{
    QTest::addColumn<QList<int>>("dragged");
    QTest::addColumn<int>("dropIndex");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QList<int>>("selectedAfter");
    QTest::newRow("pages 1 and 2 before page 5")
        << rows({ 0, 1 }) << 4 << "a3 a4 a1 a2 a5" << rows({ 2, 3 });
    QTest::newRow("the last page first") << rows({ 4 }) << 0 << "a5 a1 a2 a3 a4" << rows({ 0 });
    QTest::newRow("the first page last") << rows({ 0 }) << 5 << "a2 a3 a4 a5 a1" << rows({ 4 });
    QTest::newRow("scattered pages forward")
        << rows({ 0, 2 }) << 4 << "a2 a4 a1 a3 a5" << rows({ 2, 3 });
    QTest::newRow("pages on both sides of the drop")
        << rows({ 1, 4 }) << 3 << "a1 a3 a2 a5 a4" << rows({ 2, 3 });
    QTest::newRow("onto their own place")
        << rows({ 1, 2 }) << 3 << "a1 a2 a3 a4 a5" << rows({ 1, 2 });
}

void PageDragTest::dragsWithinAPaneReorderTheFile()
{
    QFETCH(QList<int>, dragged);
    QFETCH(int, dropIndex);
    QFETCH(QString, expected);
    QFETCH(QList<int>, selectedAfter);
    FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
    PDFContents *const tab = openTab(m_windows[0], QStringLiteral("Within.pdf"), "a");
    QVERIFY(tab);
    PDFCollectionView *const pane = paneOf(tab);
    QTRY_VERIFY(pane->isVisible());
    // A bookmark of a moved page stays with it, as the page never leaves its document for good.
    const auto document = tab->primaryPDFView()->fdDocument();
    const auto marked = std::dynamic_pointer_cast<FDPage>(document->pageAtIndex(dragged.first()));
    QVERIFY(document->addBookmarkWith(marked, QStringLiteral("Moved")));
    document->setNumberOfChanges(0);
    pane->selectRows(dragged);
    PDFPagesEditor *const editor = tab->container()->pagesEditorController();
    QMimeData *const data = editor->collectionViewWillBeginDrag(pane, dragged);
    QVERIFY(data);
    QVERIFY(drop(pane, data, dropIndex));
    editor->collectionViewDragDidEnd(pane);
    QCOMPARE(pane->selectedRows(), selectedAfter);
    QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    QTest::qWait(0);
    QCOMPARE(document->bookmarks().size(), 1);
    QCOMPARE(document->bookmarks().first()->page(), marked);
    QCOMPARE(orderOf(pathOf(tab)), expected);
    const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), pathOf(tab) });
    QVERIFY2(check.exitCode == 0, check.out.constData());
    // A drag inside the application never goes through a file.
    QVERIFY(static_cast<PDFPagePromiseMimeData *>(data)->writtenPath().isEmpty());
    delete data;
}

void PageDragTest::dragsBetweenTabsAndWindowsMoveThePages_data()
{
    QTest::addColumn<bool>("otherWindow");
    QTest::newRow("another tab") << false;
    QTest::newRow("another window") << true;
}

void PageDragTest::dragsBetweenTabsAndWindowsMoveThePages()
{
    QFETCH(bool, otherWindow);
    FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
    PDFContents *const source = openTab(m_windows[0], QStringLiteral("From.pdf"), "a");
    PDFContents *const target
        = openTab(m_windows[otherWindow ? 1 : 0], QStringLiteral("To.pdf"), "b", 3);
    QVERIFY(source && target);
    PDFCollectionView *const from = paneOf(source);
    PDFCollectionView *const to = paneOf(target);
    QTRY_VERIFY(to->isVisible());
    const auto sourceDocument = source->primaryPDFView()->fdDocument();
    int sourceNotices = 0;
    QObject observer;
    NotificationCenter::defaultCenter().addObserver(&observer,
        FDDocument::DocumentPageDidChangeNotification, source->primaryPDFView(),
        [&](const Notification &) { ++sourceNotices; });

    // A bookmark of a page that leaves for another document goes with the page.
    QVERIFY(sourceDocument->addBookmarkWith(
        std::dynamic_pointer_cast<FDPage>(sourceDocument->pageAtIndex(1)), QStringLiteral("Gone")));
    sourceDocument->setNumberOfChanges(0);
    // The drag starts on page 4 while pages 2 and 4 are selected: both go.
    from->selectRows({ 1, 3 });
    PDFPagesEditor *const editor = source->container()->pagesEditorController();
    std::unique_ptr<QMimeData> data(editor->collectionViewWillBeginDrag(from, { 3 }));
    QVERIFY(data);
    QVERIFY(drop(to, data.get(), 1));
    editor->collectionViewDragDidEnd(from);
    NotificationCenter::defaultCenter().removeObserver(&observer);

    QCOMPARE(from->model()->rowCount(), 3);
    QCOMPARE(to->model()->rowCount(), 5);
    QCOMPARE(to->selectedRows(), rows({ 1, 2 }));
    QVERIFY(sourceNotices >= 2);
    QTRY_VERIFY(sourceDocument->bookmarks().isEmpty());
    QTRY_COMPARE(sourceDocument->numberOfChanges(), 0);
    QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    QCOMPARE(orderOf(pathOf(source)), QStringLiteral("a1 a3 a5"));
    QCOMPARE(orderOf(pathOf(target)), QStringLiteral("b1 a2 a4 b2 b3"));
    for (PDFContents *const tab : { source, target }) {
        const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), pathOf(tab) });
        QVERIFY2(check.exitCode == 0, check.out.constData());
    }
}

void PageDragTest::theDraggedSetIsTheSelection()
{
    PDFContents *const tab = openTab(m_windows[0], QStringLiteral("Set.pdf"), "a");
    QVERIFY(tab);
    PDFCollectionView *const pane = paneOf(tab);
    PDFPagesEditor *const editor = tab->container()->pagesEditorController();
    QTRY_VERIFY(pane->isVisible());
    // With no selection the item the drag started from goes alone.
    pane->clearSelection();
    std::unique_ptr<QMimeData> data(editor->collectionViewWillBeginDrag(pane, { 4 }));
    QVERIFY(drop(pane, data.get(), 0));
    editor->collectionViewDragDidEnd(pane);
    QCOMPARE(tab->primaryPDFView()->fdDocument()->pageAtIndex(0)->annotations().front()->contents(),
        QStringLiteral("a5"));
    // After the drag ends, a drop of its data is an outside drop of nothing readable.
    QVERIFY(!drop(pane, data.get(), 2));
}

void PageDragTest::theFileIsWrittenOnlyWhenAReceiverAsks()
{
    FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
    PDFContents *const tab = openTab(m_windows[0], QStringLiteral("Base.pdf"), "a");
    QVERIFY(tab);
    PDFCollectionView *const pane = paneOf(tab);
    PDFPagesEditor *const editor = tab->container()->pagesEditorController();
    QTRY_VERIFY(pane->isVisible());
    const QString folder
        = QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + "/Promises";
    QDir(folder).removeRecursively();
    pane->selectRows({ 2, 0 });
    std::unique_ptr<QMimeData> data(editor->collectionViewWillBeginDrag(pane, { 0 }));
    QVERIFY(data->hasFormat(PDFPagesEditor::PageMarkerType));
    QVERIFY(data->formats().contains(QStringLiteral("text/uri-list")));
    QVERIFY(!QFileInfo::exists(folder + "/Base-0,2.pdf"));

    // The file manager asks for the list at the drop: one file of both pages, in their order.
    const QByteArray list = data->data(QStringLiteral("text/uri-list"));
    const QString path = folder + "/Base-0,2.pdf";
    QCOMPARE(list, QUrl::fromLocalFile(path).toEncoded() + "\r\n");
    QCOMPARE(data->urls(), QList<QUrl> { QUrl::fromLocalFile(path) });
    QCOMPARE(orderOf(path), QStringLiteral("a1 a3"));
    const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), path });
    QVERIFY2(check.exitCode == 0, check.out.constData());
    editor->collectionViewDragDidEnd(pane);
    // The source is untouched by a drag out.
    QCOMPARE(tab->primaryPDFView()->fdDocument()->pageCount(), 5);
    QCOMPARE(tab->primaryPDFView()->fdDocument()->numberOfChanges(), 0);
}

void PageDragTest::dropsFromOutsideTakePdfFilesAndImagesOnly_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<int>("dropIndex");
    QTest::addColumn<QString>("expected"); // empty: refused
    QTest::newRow("a text file alone") << QStringList { "notes.txt" } << 1 << "";
    QTest::newRow("a folder alone") << QStringList { "folder" } << 1 << "";
    QTest::newRow("a file named .pdf that is text") << QStringList { "fake.pdf" } << 1 << "";
    QTest::newRow("a PDF file before page 2")
        << QStringList { "Two.pdf" } << 1 << "a1 t1 t2 a2 a3 a4 a5";
    QTest::newRow("a PDF among other files, at the end")
        << QStringList { "notes.txt", "Two.pdf", "picture.png" } << 5 << "a1 a2 a3 a4 a5 t1 t2 ";
}

void PageDragTest::dropsFromOutsideTakePdfFilesAndImagesOnly()
{
    QFETCH(QStringList, files);
    QFETCH(int, dropIndex);
    QFETCH(QString, expected);
    PDFContents *const tab = openTab(m_windows[0], QStringLiteral("Target.pdf"), "a");
    QVERIFY(tab);
    PDFCollectionView *const pane = paneOf(tab);
    QTRY_VERIFY(pane->isVisible());
    QVERIFY(PdfFixtures::write(taggedPages("t", 2), m_dir.filePath(QStringLiteral("Two.pdf"))));
    QImage picture(40, 30, QImage::Format_RGB32);
    picture.fill(Qt::darkGreen);
    QVERIFY(picture.save(m_dir.filePath(QStringLiteral("picture.png"))));
    for (const QString &name : { QStringLiteral("notes.txt"), QStringLiteral("fake.pdf") }) {
        QFile text(m_dir.filePath(name));
        QVERIFY(text.open(QIODevice::WriteOnly));
        text.write("plain words\n");
    }
    QDir(m_dir.path()).mkpath(QStringLiteral("folder"));
    QList<QUrl> urls;
    for (const QString &file : files)
        urls << QUrl::fromLocalFile(m_dir.filePath(file));
    QMimeData data;
    data.setUrls(urls);
    QCOMPARE(drop(pane, &data, dropIndex), !expected.isEmpty());
    QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    QCOMPARE(
        orderOf(pathOf(tab)), expected.isEmpty() ? QStringLiteral("a1 a2 a3 a4 a5") : expected);
}

void PageDragTest::pasteTakesFilesBeforeCopiedPages_data()
{
    QTest::addColumn<QList<int>>("copied"); // pages copied in the editor first
    QTest::addColumn<QString>("clipboard"); // then put on the clipboard by another program
    QTest::addColumn<QString>("expected"); // empty: nothing to paste
    QTest::newRow("files of another program win") << rows({ 0 }) << "file:Two.pdf"
                                                  << "a1 a2 t1 t2 a3 a4 a5";
    QTest::newRow("our own copy: the copied pages") << rows({ 0, 3 }) << ""
                                                    << "a1 a2 a1 a4 a3 a4 a5";
    QTest::newRow("text of another program: the copied pages") << rows({ 4 }) << "text:words"
                                                               << "a1 a2 a5 a3 a4 a5";
    QTest::newRow("no pages among the files, none copied") << QList<int>() << "file:notes.txt"
                                                           << "";
}

void PageDragTest::pasteTakesFilesBeforeCopiedPages()
{
    QFETCH(QList<int>, copied);
    QFETCH(QString, clipboard);
    QFETCH(QString, expected);
    PDFContents *const tab = openTab(m_windows[0], QStringLiteral("Paste.pdf"), "a");
    QVERIFY(tab);
    PDFCollectionView *const pane = paneOf(tab);
    PDFPagesEditor *const editor = tab->container()->pagesEditorController();
    QTRY_VERIFY(pane->isVisible());
    QVERIFY(PdfFixtures::write(taggedPages("t", 2), m_dir.filePath(QStringLiteral("Two.pdf"))));
    QFile text(m_dir.filePath(QStringLiteral("notes.txt")));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write("plain words\n");
    text.close();
    QApplication::clipboard()->clear();
    if (!copied.isEmpty()) {
        pane->selectRows(copied);
        editor->copySelection();
    }
    if (clipboard.startsWith(QLatin1String("file:"))) {
        auto *const data = new QMimeData;
        data->setUrls({ QUrl::fromLocalFile(m_dir.filePath(clipboard.mid(5))) });
        QApplication::clipboard()->setMimeData(data);
    } else if (clipboard.startsWith(QLatin1String("text:"))) {
        QApplication::clipboard()->setText(clipboard.mid(5));
    }
    pane->selectRows({ 1 });
    QCOMPARE(editor->canPaste(), !expected.isEmpty());
    editor->paste();
    QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    QCOMPARE(
        orderOf(pathOf(tab)), expected.isEmpty() ? QStringLiteral("a1 a2 a3 a4 a5") : expected);
    if (!expected.isEmpty())
        QCOMPARE(pane->selectedRows().first(), 2);
}

void PageDragTest::aLoopingPageTreeDoesNotHangAMove()
{
    FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
    const QString path = m_dir.filePath(QStringLiteral("Loop.pdf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(loopingTree());
    file.close();
    auto *const tab = qobject_cast<PDFContents *>(
        m_windows[0]->openPDFDocumentWithURL(QUrl::fromLocalFile(path), true, true));
    QVERIFY(tab);
    QTRY_VERIFY(tab->primaryPDFView()->document() && !tab->primaryPDFView()->isLoading());
    tab->setIsPagesEditingMode(true);
    PDFCollectionView *const pane = paneOf(tab);
    QTRY_VERIFY(pane->isVisible());
    QCOMPARE(pane->model()->rowCount(), 2);
    QElapsedTimer clock;
    clock.start();
    PDFPagesEditor *const editor = tab->container()->pagesEditorController();
    pane->selectRows({ 1 });
    std::unique_ptr<QMimeData> data(editor->collectionViewWillBeginDrag(pane, { 1 }));
    QVERIFY(drop(pane, data.get(), 0));
    QVERIFY(data->data(QStringLiteral("text/uri-list")).size() > 0);
    editor->collectionViewDragDidEnd(pane);
    QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    QVERIFY2(clock.elapsed() < 10000, "the move took too long");
    const auto document = std::make_shared<PDFDocument>();
    QVERIFY(document->initWithURL(QUrl::fromLocalFile(path)));
    QCOMPARE(document->pageCount(), 2);
    QCOMPARE(document->pageAtIndex(0)->string().trimmed(), QStringLiteral("Two"));
    QCOMPARE(document->pageAtIndex(1)->string().trimmed(), QStringLiteral("One"));
    const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), path });
    QVERIFY2(check.exitCode == 0, check.out.constData());
}

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QApplication app(argc, argv);
    PageDragTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "PageDragTest.moc"
