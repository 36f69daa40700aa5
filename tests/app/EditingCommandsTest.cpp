// Copy, cut and paste of annotations in real document tabs, through the real clipboard; the
// context menu's groups; the area selection as PDF, TIFF and PNG.

#include "support/AppWindow.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>
#include <view/FDPDFView.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

namespace {

const QString SquareType = QStringLiteral("Folidoc.Pasteboard.Annotation.Square");
const QRectF firstLine(72, 716, 300, 14); // page 0's first line of text

void turn()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

// Width and height from a baseline TIFF's first directory; an invalid size when it is not one.
QSize tiffSize(const QByteArray &bytes)
{
    if (bytes.size() < 8 || !bytes.startsWith("II*"))
        return {};
    const auto u16 = [&](qsizetype at) {
        return at + 2 <= bytes.size() ? qFromLittleEndian<quint16>(bytes.constData() + at) : 0;
    };
    const auto u32 = [&](qsizetype at) {
        return at + 4 <= bytes.size() ? qFromLittleEndian<quint32>(bytes.constData() + at) : 0u;
    };
    const qsizetype directory = u32(4);
    QSize size;
    for (int entry = 0; entry < u16(directory); ++entry) {
        const qsizetype at = directory + 2 + 12 * entry;
        const int value = u16(at + 2) == 3 ? u16(at + 8) : int(u32(at + 8));
        if (u16(at) == 256)
            size.setWidth(value);
        else if (u16(at) == 257)
            size.setHeight(value);
    }
    return size;
}

} // namespace

class EditingCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        QGuiApplication::clipboard()->clear();
        m_window = AppWindow::makeWindow({ 900, 1000 });
    }

    void cleanup() { QVERIFY(AppWindow::closeWindow(m_window)); }

    void pastesMakeAStaircaseThatThePointerResets()
    {
        PDFContents *const tab = openTab(PdfFixtures::textPages(2, 10, 0));
        QVERIFY(tab);
        FDPDFView *const view = tab->primaryPDFView();
        const auto page = view->document()->pageAtIndex(0);
        const auto square
            = view->addAnnotationWithType(QStringLiteral("Square"), page, QRectF(100, 200, 80, 40));
        QVERIFY(square);
        square->setColor(QColor(0, 128, 255));
        QVERIFY(perform(view, QStringLiteral("copy:")));
        QVERIFY(QGuiApplication::clipboard()->mimeData()->hasFormat(SquareType));

        pointAt(view, QPointF(300, 600));
        const QPointF pointer = view->convertPointToPage(view->mouseLocation(), page);
        for (int paste = 0; paste < 3; ++paste)
            QVERIFY(perform(view, QStringLiteral("paste:")));
        const auto all = squares(view);
        QCOMPARE(int(all.size()), 4);
        for (int paste = 0; paste < 3; ++paste) {
            const QRectF bounds = all[size_t(paste + 1)]->bounds();
            // The first at the pointer by its top-left corner, each next one 10 points down-right.
            QCOMPARE(bounds.size(), QSizeF(80, 40));
            QCOMPARE(bounds.left(), pointer.x() + 10 * paste);
            QCOMPARE(bounds.bottom(), pointer.y() - 10 * paste);
        }
        QCOMPARE(view->selectedAnn(), all.back());
        QVERIFY(view->fdDocument()->numberOfChanges() > 0);
        // What is saved holds the last one where it was put, in the copied colour.
        auto reread = std::make_shared<PDFDocument>();
        QVERIFY(reread->initWithData(view->document()->dataRepresentation()));
        std::shared_ptr<PDFAnnotation> saved;
        for (const auto &annotation : reread->pageAtIndex(0)->annotations()) {
            if (annotation->type() == QLatin1String("Square"))
                saved = annotation;
        }
        QVERIFY(saved);
        QVERIFY(std::abs(saved->bounds().left() - all.back()->bounds().left()) < 1.5);
        QVERIFY(std::abs(saved->bounds().bottom() - all.back()->bounds().bottom()) < 1.5);
        QCOMPARE(saved->color().rgb(), QColor(0, 128, 255).rgb());

        // One pixel of pointer movement starts again at the pointer, and asking whether Paste is on
        // is enough to notice it.
        pointAt(view, QPointF(301, 600));
        const QPointF moved = view->convertPointToPage(view->mouseLocation(), page);
        QVERIFY(view->validateEditCommand(QStringLiteral("paste:")));
        QCOMPARE(view->pasteCounter(), 0);
        QVERIFY(perform(view, QStringLiteral("paste:")));
        QCOMPARE(squares(view).back()->bounds().topLeft(), QPointF(moved.x(), moved.y() - 40));

        // Off the view, on the menu bar's side of it: the top-left corner at the middle of the
        // page shown.
        view->goToPage(view->document()->pageAtIndex(1));
        QCursor::setPos(view->viewport()->mapToGlobal(QPoint(10, -40)));
        QVERIFY(perform(view, QStringLiteral("paste:")));
        const auto pasted = view->selectedAnn();
        QVERIFY(pasted);
        QCOMPARE(pasted->page(), view->currentPage());
        QCOMPARE(pasted->page(), view->document()->pageAtIndex(1));
        QCOMPARE(pasted->bounds(), QRectF(306, 396 - 40, 80, 40));
    }

    void cutIsOneUndoStep()
    {
        PDFContents *const tab = openTab(PdfFixtures::textPages(1, 5, 0));
        QVERIFY(tab);
        FDPDFView *const view = tab->primaryPDFView();
        UndoManager *const undo = m_window->undoManager();
        const auto square = view->addAnnotationWithType(
            QStringLiteral("Square"), view->document()->pageAtIndex(0), QRectF(100, 200, 60, 30));
        turn();
        undo->removeAllActions();
        // The window's keys reach the view with the focus.
        QApplication::setActiveWindow(m_window);
        view->setFocus();
        QTRY_VERIFY(view->hasFocus());
        QTest::keyClick(view, Qt::Key_X, Qt::ControlModifier);
        turn();
        QVERIFY(squares(view).empty());
        QVERIFY(QGuiApplication::clipboard()->mimeData()->hasFormat(SquareType));
        QCOMPARE(undo->undoActionName(), QStringLiteral("Delete Annotation"));
        QTest::keyClick(view, Qt::Key_Z, Qt::ControlModifier);
        turn();
        QCOMPARE(squares(view).size(), size_t(1));
        QVERIFY(!undo->canUndo());
        // And Ctrl+V pastes it again at the pointer.
        pointAt(view, QPointF(300, 300));
        QTest::keyClick(view, Qt::Key_V, Qt::ControlModifier);
        turn();
        QCOMPARE(squares(view).size(), size_t(2));
        // Nothing selected: nothing to cut.
        view->setSelectedAnn(nullptr);
        QVERIFY(!view->validateEditCommand(QStringLiteral("cut:")));
    }

    void textTravelsAsText_data()
    {
        QTest::addColumn<bool>("fromHighlight");
        QTest::newRow("a copied highlight") << true;
        QTest::newRow("text of another program") << false;
    }

    void textTravelsAsText()
    {
        QFETCH(bool, fromHighlight);
        PDFContents *const tab = openTab(PdfFixtures::textPages(1, 5, 0));
        QVERIFY(tab);
        FDPDFView *const view = tab->primaryPDFView();
        const auto page = view->document()->pageAtIndex(0);
        QString text = QStringLiteral("Plain words from elsewhere, long enough to wrap in a box "
                                      "that is a third of the page wide.");
        if (fromHighlight) {
            view->setCurrentSelection(page->selectionForRect(firstLine));
            QVERIFY(view->onAddHighlight());
            const auto highlight = page->annotations().back();
            text = highlight->contents();
            QVERIFY(!text.isEmpty());
            view->setSelectedAnn(highlight);
            QVERIFY(perform(view, QStringLiteral("copy:")));
            const QMimeData *const data = QGuiApplication::clipboard()->mimeData();
            QVERIFY(!data->hasFormat(QStringLiteral("Folidoc.Pasteboard.Annotation.Markup")));
        } else {
            QGuiApplication::clipboard()->setText(text);
        }
        QCOMPARE(QGuiApplication::clipboard()->text(), text);

        pointAt(view, QPointF(100, 500));
        const QPointF pointer = view->convertPointToPage(view->mouseLocation(), page);
        QVERIFY(perform(view, QStringLiteral("paste:")));
        const auto box = page->annotations().back();
        QVERIFY(isFreeText(*box));
        QCOMPARE(box->contents(), text);
        QCOMPARE(box->bounds().width(), 612.0 / 3);
        QCOMPARE(box->bounds().bottom(), pointer.y());
        QCOMPARE(box->bounds().left(), pointer.x());
        // Wrapped into several lines when long, one line when short.
        QVERIFY(box->bounds().height() > 8);
        if (!fromHighlight)
            QVERIFY(box->bounds().height() > 30);
    }

    void contextMenuGroups_data()
    {
        QTest::addColumn<QString>("clickOn");
        QTest::addColumn<QStringList>("commands");
        QTest::newRow("a square") << "square"
                                  << QStringList {
                                         "copy:", "delete:", "onAddBookmark:", "onAddOutline:"
                                     };
        QTest::newRow("a link") << "link"
                                << QStringList {
                                       "openLink:", "copyLink:", "onAddBookmark:", "onAddOutline:"
                                   };
        QTest::newRow("selected text") << "text"
                                       << QStringList { "copy:", "onAddHighlight", "onAddUnderline",
                                              "onAddStrikeout", "onAddBookmark:", "onAddOutline:" };
        QTest::newRow("an empty place") << "empty"
                                        << QStringList { "paste:", "onAddText:", "onAddFreeText:",
                                               "onAddBookmark:", "onAddOutline:" };
    }

    void contextMenuGroups()
    {
        QFETCH(QString, clickOn);
        QFETCH(QStringList, commands);
        PdfFixtures::Document document = PdfFixtures::textPages(1, 5, 0);
        const QString url = QStringLiteral("https://example.org/a/long/path/to/some/page.html");
        document.pages[0].links.append({ QRectF(72, 100, 100, 20), url, -1, {} });
        PDFContents *const tab = openTab(document);
        QVERIFY(tab);
        FDPDFView *const view = tab->primaryPDFView();
        const auto page = std::dynamic_pointer_cast<FDPage>(view->document()->pageAtIndex(0));
        const auto square
            = view->addAnnotationWithType(QStringLiteral("Square"), page, QRectF(300, 300, 60, 30));
        view->setSelectedAnn(nullptr);
        QPointF pagePoint(400, 600);
        if (clickOn == QLatin1String("square"))
            pagePoint = QPointF(330, 300.5);
        else if (clickOn == QLatin1String("link"))
            pagePoint = QPointF(120, 110);
        else if (clickOn == QLatin1String("text"))
            view->setCurrentSelection(page->selectionForRect(firstLine));
        page->setIsBookmarked(true);
        QGuiApplication::clipboard()->setText(QStringLiteral("Here"));
        std::unique_ptr<QMenu> menu(
            view->menuForEvent(view->convertPointFromPage(pagePoint, page)));
        QStringList found;
        QMap<QString, QAction *> byCommand;
        for (QAction *const action : menu->actions()) {
            if (!action->isSeparator()) {
                found << action->objectName();
                byCommand.insert(action->objectName(), action);
            }
        }
        QCOMPARE(found, commands);
        // The page has a bookmark: adding one is off.
        QVERIFY(!byCommand.value(QStringLiteral("onAddBookmark:"))->isEnabled());
        if (clickOn == QLatin1String("square"))
            QCOMPARE(view->selectedAnn(), square);
        if (clickOn == QLatin1String("link")) {
            QCOMPARE(byCommand.value(QStringLiteral("openLink:"))->text(),
                QStringLiteral("Open Link: \"") + url.left(40) + QStringLiteral("...\""));
            byCommand.value(QStringLiteral("copyLink:"))->trigger();
            QCOMPARE(QGuiApplication::clipboard()->text(), url);
        }
        if (clickOn == QLatin1String("empty")) {
            // A paste from the menu lands at the click, wherever the pointer is.
            byCommand.value(QStringLiteral("paste:"))->trigger();
            const auto box = page->annotations().back();
            QVERIFY(isFreeText(*box));
            QVERIFY(std::abs(box->bounds().left() - pagePoint.x()) < 1.5);
            QVERIFY(std::abs(box->bounds().bottom() - pagePoint.y()) < 1.5);
        }
    }

    void areaCopyGivesPDFAndImages_data()
    {
        QTest::addColumn<bool>("printable");
        QTest::newRow("printing allowed") << true;
        QTest::newRow("printing forbidden") << false;
    }

    void areaCopyGivesPDFAndImages()
    {
        QFETCH(bool, printable);
        PDFContents *tab = nullptr;
        if (printable) {
            tab = openTab(PdfFixtures::textPages(1, 5, 0));
        } else {
            // The owner forbids printing; the file opens without a password.
            FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
            const QString plain = m_dir.filePath(QStringLiteral("plain.pdf"));
            const QString locked = m_dir.filePath(QStringLiteral("locked.pdf"));
            QVERIFY(PdfFixtures::write(PdfFixtures::textPages(1, 5, 0), plain));
            TestTools::run(
                qpdf, { "--encrypt", "", "owner", "256", "--print=none", "--", plain, locked });
            tab = AppWindow::openTab(m_window, QUrl::fromLocalFile(locked));
        }
        QVERIFY(tab);
        FDPDFView *const view = tab->primaryPDFView();
        QCOMPARE(view->document()->allowsPrinting(), printable);
        tab->setToolMode(PDFToolModeAreaSelection);
        view->setCurrentSelectionPage(view->document()->pageAtIndex(0));
        view->setCurrentSelectionRect(QRectF(72.4, 600, 200, 150));
        QVERIFY(perform(view, QStringLiteral("copy:")));
        const QMimeData *const data = QGuiApplication::clipboard()->mimeData();

        QCOMPARE(data->hasFormat(QStringLiteral("application/pdf")), printable);
        if (printable) {
            auto pdf = std::make_shared<PDFDocument>();
            QVERIFY(pdf->initWithData(data->data(QStringLiteral("application/pdf"))));
            QCOMPARE(pdf->pageCount(), 1);
            const QRectF box = pdf->pageAtIndex(0)->boundsForBox(PDFDisplayBox::CropBox);
            QCOMPARE(box.size(), QSizeF(201, 150));
        }
        const QImage png = QImage::fromData(data->data(QStringLiteral("image/png")), "PNG");
        QCOMPARE(png.size(), QSize(201, 150));
        // The first line of text lies in the area: the picture is not blank.
        bool inked = false;
        for (int y = 0; y < png.height() && !inked; ++y) {
            for (int x = 0; x < png.width() && !inked; ++x)
                inked = qGray(png.pixel(x, y)) < 128 && qAlpha(png.pixel(x, y)) > 0;
        }
        QVERIFY(inked);
        QCOMPARE(tiffSize(data->data(QStringLiteral("image/tiff"))), QSize(201, 150));
    }

private:
    PDFContents *openTab(const PdfFixtures::Document &document);
    void pointAt(FDPDFView *view, const QPointF &pagePoint);
    static bool perform(FDPDFView *view, const QString &command);
    static std::vector<std::shared_ptr<PDFAnnotation>> squares(FDPDFView *view);

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
};

PDFContents *EditingCommandsTest::openTab(const PdfFixtures::Document &document)
{
    static int files = 0;
    const QString path = m_dir.filePath(QStringLiteral("document%1.pdf").arg(++files));
    if (!PdfFixtures::write(document, path))
        return nullptr;
    PDFContents *const tab = AppWindow::openTab(m_window, QUrl::fromLocalFile(path));
    if (tab)
        tab->primaryPDFView()->goToPage(tab->primaryPDFView()->document()->pageAtIndex(0));
    return tab;
}

void EditingCommandsTest::pointAt(FDPDFView *view, const QPointF &pagePoint)
{
    const auto page = view->document()->pageAtIndex(0);
    const QPointF viewPoint = view->convertPointFromPage(pagePoint, page);
    QCursor::setPos(view->viewport()->mapToGlobal(viewPoint.toPoint()));
    QCOMPARE(view->mouseLocation(), QPointF(viewPoint.toPoint()));
}

// As the window sends an edit command: validated, then performed.
bool EditingCommandsTest::perform(FDPDFView *view, const QString &command)
{
    if (!view->validateEditCommand(command))
        return false;
    view->performEditCommand(command);
    turn();
    return true;
}

std::vector<std::shared_ptr<PDFAnnotation>> EditingCommandsTest::squares(FDPDFView *view)
{
    std::vector<std::shared_ptr<PDFAnnotation>> found;
    for (const auto &annotation : view->document()->pageAtIndex(0)->annotations()) {
        if (isSquare(*annotation))
            found.push_back(annotation);
    }
    return found;
}

FOLIDOC_APP_TEST_MAIN(EditingCommandsTest)
#include "EditingCommandsTest.moc"
