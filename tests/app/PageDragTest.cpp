#include "support/AppFixtures.h"
#include "support/AppWindow.h"

#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <document/PDFSavingService.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <pages/PDFCollectionView.h>
#include <pages/PDFPagePromiseMimeData.h>
#include <pages/PDFPagesEditor.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>

#include <QClipboard>
#include <QDir>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QByteArray taggedPages(const QByteArray &tag, int count)
{
    return PdfFixtures::build(AppFixtures::taggedPages(tag, count));
}

// A page tree whose root lists itself among its kids, over the pages "One" and "Two".
QByteArray loopingTree()
{
    const auto page = [](const QByteArray &content) {
        return "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Resources << /Font << /F1 "
               "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> >> >> /Contents "
            + content + " 0 R >>";
    };
    const auto text = [](const QByteArray &word) {
        const QByteArray content = "BT /F1 24 Tf 50 150 Td (" + word + ") Tj ET";
        return "<< /Length " + QByteArray::number(content.size()) + " >>\nstream\n" + content
            + "\nendstream";
    };
    return PdfFixtures::fromObjects({ "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R 5 0 R 2 0 R] /Count 3 >>", page("4"), text("One"), page("6"),
        text("Two") });
}

bool passesQpdfCheck(const QString &qpdf, const QString &path)
{
    return TestTools::run(qpdf, { QStringLiteral("--check"), path }).exitCode == 0;
}

using Rows = QList<int>;

} // namespace

class PageDragTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        m_windows = { AppWindow::makeWindow(), AppWindow::makeWindow() };
    }

    void cleanup()
    {
        for (QPointer<PDFWindowController> &window : m_windows)
            QVERIFY(AppWindow::closeWindow(window));
        m_windows.clear();
    }

    void dragsWithinAPaneReorderTheFile_data()
    {
        QTest::addColumn<bool>("looping");
        QTest::addColumn<Rows>("selected");
        QTest::addColumn<int>("pressed"); // the item the drag starts from
        QTest::addColumn<int>("dropIndex");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<Rows>("selectedAfter");
        QTest::newRow("pages 1 and 2 before page 5")
            << false << Rows { 0, 1 } << 1 << 4 << "a3 a4 a1 a2 a5" << Rows { 2, 3 };
        QTest::newRow("nothing selected: the pressed page, first")
            << false << Rows {} << 4 << 0 << "a5 a1 a2 a3 a4" << Rows { 0 };
        QTest::newRow("the first page to the end")
            << false << Rows { 0 } << 0 << 5 << "a2 a3 a4 a5 a1" << Rows { 4 };
        QTest::newRow("scattered pages forward")
            << false << Rows { 0, 2 } << 2 << 4 << "a2 a4 a1 a3 a5" << Rows { 2, 3 };
        QTest::newRow("pages on both sides of the drop")
            << false << Rows { 1, 4 } << 4 << 3 << "a1 a3 a2 a5 a4" << Rows { 2, 3 };
        QTest::newRow("onto their own place")
            << false << Rows { 1, 2 } << 1 << 3 << "a1 a2 a3 a4 a5" << Rows { 1, 2 };
        QTest::newRow("a page tree that loops")
            << true << Rows { 1 } << 1 << 0 << "Two One" << Rows { 0 };
    }

    void dragsWithinAPaneReorderTheFile()
    {
        QFETCH(bool, looping);
        QFETCH(Rows, selected);
        QFETCH(int, pressed);
        QFETCH(int, dropIndex);
        QFETCH(QString, expected);
        QFETCH(Rows, selectedAfter);
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        PDFContents *const tab = openTab(
            0, QStringLiteral("Within.pdf"), looping ? loopingTree() : taggedPages("a", 5));
        QVERIFY(tab);
        PDFPagesEditor *const editor = editorOf(tab);
        PDFCollectionView *const pane = editor->collectionView();
        // A bookmark of a moved page stays with it: the page never leaves its document for good.
        const auto document = tab->primaryPDFView()->fdDocument();
        const auto marked = std::dynamic_pointer_cast<FDPage>(document->pageAtIndex(pressed));
        QVERIFY(document->addBookmarkWith(marked, QStringLiteral("Moved")));
        pane->selectRows(selected);
        std::unique_ptr<QMimeData> data(editor->collectionViewWillBeginDrag(pane, { pressed }));
        QVERIFY(drop(pane, data.get(), dropIndex));
        editor->collectionViewDragDidEnd(pane);
        QCOMPARE(pane->selectedRows(), selectedAfter);
        QCOMPARE(savedOrder(tab), expected);
        QVERIFY(passesQpdfCheck(qpdf, pathOf(tab)));
        QCOMPARE(document->bookmarks().size(), 1);
        QCOMPARE(document->bookmarks().first()->page(), marked);
        // A drag inside the application never goes through a file.
        QVERIFY(static_cast<PDFPagePromiseMimeData *>(data.get())->writtenPath().isEmpty());
    }

    void dragsBetweenTabsAndWindowsMoveThePages_data()
    {
        QTest::addColumn<QString>("place");
        QTest::newRow("the other pane of a split tab") << "pane";
        QTest::newRow("another tab") << "tab";
        QTest::newRow("another window") << "window";
    }

    void dragsBetweenTabsAndWindowsMoveThePages()
    {
        QFETCH(QString, place);
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        PDFContents *const source = openTab(0, QStringLiteral("From.pdf"), taggedPages("a", 5));
        QVERIFY(source);
        PDFCollectionView *const from = editorOf(source)->collectionView();
        PDFCollectionView *to = nullptr;
        std::shared_ptr<FDDocument> target;
        if (place == QLatin1String("pane")) {
            const QString path = m_dir.filePath(QStringLiteral("Right.pdf"));
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(taggedPages("b", 3)) > 0);
            file.close();
            source->setIsPagesEditingMode(false);
            source->setSplitMode(PDFSplitViewMode::horizontal);
            source->secondaryPDFView()->loadDocument(QUrl::fromLocalFile(path));
            QTRY_VERIFY(source->secondaryPDFView()->fdDocument()
                && !source->secondaryPDFView()->isLoading());
            source->setIsPagesEditingMode(true);
            target = source->secondaryPDFView()->fdDocument();
            to = editorOf(source)->secondaryCollectionView();
            QTRY_COMPARE(to->model()->rowCount(), 3);
        } else {
            PDFContents *const tab = openTab(place == QLatin1String("tab") ? 0 : 1,
                QStringLiteral("To.pdf"), taggedPages("b", 3));
            QVERIFY(tab);
            target = documentOf(tab);
            to = editorOf(tab)->collectionView();
        }
        // A bookmark of a page that leaves for another document goes with the page.
        const auto document = documentOf(source);
        QVERIFY(document->addBookmarkWith(
            std::dynamic_pointer_cast<FDPage>(document->pageAtIndex(1)), QStringLiteral("Gone")));
        // The drag starts on page 3, outside the selection of pages 2 and 4: the selection goes.
        from->selectRows({ 1, 3 });
        std::unique_ptr<QMimeData> data(editorOf(source)->collectionViewWillBeginDrag(from, { 2 }));
        QVERIFY(drop(to, data.get(), 1));
        editorOf(source)->collectionViewDragDidEnd(from);
        QCOMPARE(from->model()->rowCount(), 3);
        QCOMPARE(to->selectedRows(), (Rows { 1, 2 }));
        QCOMPARE(savedOrder(document), QStringLiteral("a1 a3 a5"));
        QCOMPARE(savedOrder(target), QStringLiteral("b1 a2 a4 b2 b3"));
        QVERIFY(document->bookmarks().isEmpty());
        QVERIFY(passesQpdfCheck(qpdf, pathOf(source)));
        QVERIFY(passesQpdfCheck(qpdf, target->fileURL().toLocalFile()));
    }

    void theFileIsWrittenOnlyWhenAReceiverAsks()
    {
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        PDFContents *const tab = openTab(0, QStringLiteral("Base.pdf"), taggedPages("a", 5));
        QVERIFY(tab);
        PDFCollectionView *const pane = editorOf(tab)->collectionView();
        const QString path = QStandardPaths::writableLocation(QStandardPaths::CacheLocation)
            + QStringLiteral("/Promises/Base-0,2.pdf");
        QFile::remove(path);
        pane->selectRows({ 2, 0 });
        std::unique_ptr<QMimeData> data(editorOf(tab)->collectionViewWillBeginDrag(pane, { 0 }));
        QCOMPARE(data->formats(),
            (QStringList { PDFPagesEditor::PageMarkerType, QStringLiteral("text/uri-list") }));
        // Over the window, where files dropped open as tabs, pages are no file.
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, data.get(), Qt::LeftButton, {});
        QApplication::sendEvent(m_windows[0], &enter);
        QVERIFY(!enter.isAccepted());
        QVERIFY(!QFileInfo::exists(path));
        // The file manager asks for the list at the drop: one file of both pages, in their order.
        QCOMPARE(data->data(QStringLiteral("text/uri-list")),
            QUrl::fromLocalFile(path).toEncoded() + "\r\n");
        QCOMPARE(data->urls(), QList<QUrl> { QUrl::fromLocalFile(path) });
        editorOf(tab)->collectionViewDragDidEnd(pane);
        QCOMPARE(AppFixtures::pageTags(path), (QStringList { "a1", "a3" }));
        QVERIFY(passesQpdfCheck(qpdf, path));
        QCOMPARE(tab->primaryPDFView()->fdDocument()->numberOfChanges(), 0);
    }

    void dropsFromOutsideTakePdfFilesAndImagesOnly_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<int>("dropIndex");
        QTest::addColumn<QString>("expected"); // empty: refused
        QTest::newRow("a text file") << QStringList { "notes.txt" } << 1 << "";
        QTest::newRow("a folder") << QStringList { "folder" } << 1 << "";
        QTest::newRow("text named .pdf") << QStringList { "fake.pdf" } << 1 << "";
        QTest::newRow("a PDF before page 2") << QStringList { "Two.pdf" } << 1 << "a1 t1 t2 a2 a3";
        QTest::newRow("a PDF and an image among others, at the end") << QStringList { "notes.txt",
            "Two.pdf", "picture.png" } << 3 << "a1 a2 a3 t1 t2 image 2:1";
    }

    void dropsFromOutsideTakePdfFilesAndImagesOnly()
    {
        QFETCH(QStringList, files);
        QFETCH(int, dropIndex);
        QFETCH(QString, expected);
        writeFiles();
        PDFContents *const tab = openTab(0, QStringLiteral("Target.pdf"), taggedPages("a", 3));
        QVERIFY(tab);
        QList<QUrl> urls;
        for (const QString &file : files)
            urls << QUrl::fromLocalFile(m_dir.filePath(file));
        QMimeData data;
        data.setUrls(urls);
        QCOMPARE(drop(editorOf(tab)->collectionView(), &data, dropIndex), !expected.isEmpty());
        QCOMPARE(savedOrder(tab), expected.isEmpty() ? QStringLiteral("a1 a2 a3") : expected);
    }

    void pasteTakesFilesBeforeCopiedPages_data()
    {
        QTest::addColumn<Rows>("copied"); // pages copied in the editor first
        QTest::addColumn<QString>("clipboard"); // then put on the clipboard by another program
        QTest::addColumn<QString>("expected"); // empty: nothing to paste
        QTest::newRow("files of another program win") << Rows { 0 } << "file:Two.pdf"
                                                      << "a1 a2 t1 t2 a3";
        QTest::newRow("our own copy") << Rows { 0, 2 } << ""
                                      << "a1 a2 a1 a3 a3";
        QTest::newRow("text of another program") << Rows { 2 } << "text:words"
                                                 << "a1 a2 a3 a3";
        QTest::newRow("no page files, nothing copied") << Rows {} << "file:notes.txt"
                                                       << "";
    }

    void pasteTakesFilesBeforeCopiedPages()
    {
        QFETCH(Rows, copied);
        QFETCH(QString, clipboard);
        QFETCH(QString, expected);
        writeFiles();
        PDFContents *const tab = openTab(0, QStringLiteral("Paste.pdf"), taggedPages("a", 3));
        QVERIFY(tab);
        PDFPagesEditor *const editor = editorOf(tab);
        QApplication::clipboard()->clear();
        editor->collectionView()->selectRows(copied);
        editor->copySelection();
        if (clipboard.startsWith(QLatin1String("file:"))) {
            auto *const data = new QMimeData;
            data->setUrls({ QUrl::fromLocalFile(m_dir.filePath(clipboard.mid(5))) });
            QApplication::clipboard()->setMimeData(data);
        } else if (clipboard.startsWith(QLatin1String("text:"))) {
            QApplication::clipboard()->setText(clipboard.mid(5));
        }
        editor->collectionView()->selectRows({ 1 });
        QCOMPARE(editor->canPaste(), !expected.isEmpty());
        editor->paste();
        QCOMPARE(savedOrder(tab), expected.isEmpty() ? QStringLiteral("a1 a2 a3") : expected);
    }

private:
    // A tab of a new file of these bytes in the pages editor; null when it did not open.
    PDFContents *openTab(int window, const QString &name, const QByteArray &bytes);
    PDFPagesEditor *editorOf(PDFContents *tab) const;
    // A drop of data on pane before the item at index, as the pointer makes it: answers
    // whether the grid showed its indicator and accepted the drop.
    bool drop(PDFCollectionView *pane, QMimeData *data, int index);
    // The pages of the tab's file once the saves have ended.
    QString savedOrder(PDFContents *tab) const { return savedOrder(documentOf(tab)); }
    QString savedOrder(const std::shared_ptr<FDDocument> &document) const;
    static std::shared_ptr<FDDocument> documentOf(PDFContents *tab);
    static QString pathOf(PDFContents *tab);

    void writeFiles()
    {
        QFile pdf(m_dir.filePath(QStringLiteral("Two.pdf")));
        QVERIFY(pdf.open(QIODevice::WriteOnly) && pdf.write(taggedPages("t", 2)) > 0);
        QImage picture(40, 20, QImage::Format_RGB32);
        picture.fill(Qt::darkGreen);
        QVERIFY(picture.save(m_dir.filePath(QStringLiteral("picture.png"))));
        for (const QString &name : { QStringLiteral("notes.txt"), QStringLiteral("fake.pdf") }) {
            QFile text(m_dir.filePath(name));
            QVERIFY(text.open(QIODevice::WriteOnly) && text.write("plain words\n") > 0);
        }
        QVERIFY(QDir(m_dir.path()).mkpath(QStringLiteral("folder")));
    }

    QTemporaryDir m_dir;
    QList<QPointer<PDFWindowController>> m_windows;
};

PDFContents *PageDragTest::openTab(int window, const QString &name, const QByteArray &bytes)
{
    QFile file(m_dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return nullptr;
    file.close();
    PDFContents *const tab
        = AppWindow::openTab(m_windows[window], QUrl::fromLocalFile(file.fileName()));
    if (!tab)
        return nullptr;
    tab->setIsPagesEditingMode(true);
    return QTest::qWaitFor([&] { return editorOf(tab)->collectionView()->isVisible(); }) ? tab
                                                                                         : nullptr;
}

PDFPagesEditor *PageDragTest::editorOf(PDFContents *tab) const
{
    return tab->container()->pagesEditorController();
}

std::shared_ptr<FDDocument> PageDragTest::documentOf(PDFContents *tab)
{
    return tab->primaryPDFView()->fdDocument();
}

QString PageDragTest::pathOf(PDFContents *tab)
{
    return documentOf(tab)->fileURL().toLocalFile();
}

QString PageDragTest::savedOrder(const std::shared_ptr<FDDocument> &document) const
{
    if (!QTest::qWaitFor([&] {
            return document->numberOfChanges() == 0
                && PDFSavingService::shared().numberOfTasks() == 0;
        }))
        return QStringLiteral("not saved");
    return AppFixtures::pageTags(document->fileURL().toLocalFile()).join(QLatin1Char(' '));
}

bool PageDragTest::drop(PDFCollectionView *pane, QMimeData *data, int index)
{
    const int count = pane->model()->rowCount();
    const QModelIndex item = pane->model()->index(std::min(index, count - 1), 0);
    pane->scrollTo(item);
    const QRect rect = pane->visualRect(item);
    const QPoint point = index < count ? QPoint(rect.left() + 5, rect.center().y())
                                       : QPoint(rect.right() - 5, rect.center().y());
    const Qt::DropActions actions = Qt::MoveAction | Qt::CopyAction;
    QDragEnterEvent enter(point, actions, data, Qt::LeftButton, {});
    QApplication::sendEvent(pane->viewport(), &enter);
    if (!enter.isAccepted() || pane->dropIndicatorRect().isEmpty())
        return false;
    // The bar stands in the gap before the item, or after the last one.
    const QRect bar = pane->dropIndicatorRect();
    if (index < count ? bar.right() > rect.left() : bar.left() < rect.right())
        return false;
    QDropEvent dropped(point, actions, data, Qt::LeftButton, {});
    QApplication::sendEvent(pane->viewport(), &dropped);
    return dropped.isAccepted() && pane->dropIndicatorRect().isEmpty();
}

FOLIDOC_APP_TEST_MAIN(PageDragTest)

#include "PageDragTest.moc"
