// Typing into free text boxes and notes of a real document tab: the in-place field and the note's
// popover, each way of ending them, the saved text, and empty boxes removed as one undo step.

#include "support/AppWindow.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/PDFSavingService.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/tabs/TabStripModel.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>
#include <view/editors/FDAnnFreeTextEditor.h>
#include <view/editors/FDAnnTextEditor.h>

#include <QApplication>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

namespace {

void turn()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

// The contents of the annotations of a subtype in a PDF's bytes, read by a fresh engine.
QStringList savedContents(const QByteArray &bytes, const QString &type)
{
    auto document = std::make_shared<PDFDocument>();
    if (!document->initWithData(bytes))
        return { QStringLiteral("(unreadable)") };
    QStringList found;
    for (const auto &annotation : document->pageAtIndex(0)->annotations()) {
        if (annotation->type() == type)
            found << annotation->contents();
    }
    return found;
}

// Counts the mouse presses that reach the object it filters.
class PressCounter : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::MouseButtonPress)
            ++count;
        return false;
    }
};

} // namespace

class TextEditorsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        m_window = AppWindow::makeWindow({ 900, 900 });
        QApplication::setActiveWindow(m_window);
        openTab();
    }

    void cleanup() { QVERIFY(AppWindow::closeWindow(m_window)); }

    void freeTextIsTypedInPlaceAndEndsByEveryRoad_data()
    {
        QTest::addColumn<QString>("road");
        QTest::newRow("Escape") << "escape";
        QTest::newRow("a press elsewhere") << "press";
        QTest::newRow("another selection") << "select";
        QTest::newRow("closing the tab") << "close";
    }

    void freeTextIsTypedInPlaceAndEndsByEveryRoad()
    {
        QFETCH(QString, road);
        const auto other = m_view->addAnnotationWithType(
            QStringLiteral("Square"), m_view->document()->pageAtIndex(0), QRectF(400, 100, 60, 60));
        const auto box = addAndWaitForEditor(QStringLiteral("FreeText"));
        QVERIFY(box);
        auto *const editor = qobject_cast<FDAnnFreeTextEditor *>(m_view->annEditor());
        QVERIFY(editor);
        QTextEdit *const field = editor->textField();
        QVERIFY(field->isVisible());
        QCOMPARE(field->parentWidget(), m_view->viewport());
        QVERIFY(isEditing(*box));
        // The field lies over the box.
        const QRect over = m_view->convertRectFromPage(box->bounds(), box->page()).toAlignedRect();
        QCOMPARE(field->geometry(), over);

        PressCounter pressesOnPage;
        QTest::keyClicks(field, QStringLiteral("Hello"));
        QTest::keyClick(field, Qt::Key_Return);
        QTest::keyClicks(field, QStringLiteral("World"));
        QTest::keyClick(field, Qt::Key_Tab);
        QTest::keyClicks(field, QStringLiteral("!"));
        const QString typed = QStringLiteral("Hello\nWorld\t!");
        // Each keystroke is already in the annotation.
        QCOMPARE(box->contents(), typed);

        if (road == QLatin1String("escape")) {
            QTest::keyClick(field, Qt::Key_Escape);
        } else if (road == QLatin1String("press")) {
            m_view->viewport()->installEventFilter(&pressesOnPage);
            const QPointF elsewhere = m_view->convertPointFromPage(QPointF(430, 130), box->page());
            QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, elsewhere.toPoint());
        } else if (road == QLatin1String("select")) {
            m_view->setSelectedAnn(other);
        } else {
            TabStripModel *const model = m_window->tabStripModel();
            // A tab that stays keeps the window open.
            model->appendTabContents(m_window->createBlankTabContents(), false);
            QVERIFY(model->closeTabContentsAtIndex(
                model->getIndexOfTabContents(m_tab), TabStripModel::CloseUserGesture));
            QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
            QFile file(m_path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(
                savedContents(file.readAll(), QStringLiteral("FreeText")), QStringList { typed });
            return;
        }
        turn();
        QVERIFY(!m_view->annEditor());
        QVERIFY(!isEditing(*box));
        QVERIFY(box->page());
        QCOMPARE(box->contents(), typed);
        QCOMPARE(saved(QStringLiteral("FreeText")), QStringList { typed });
        // A press elsewhere still reaches the page it was aimed at.
        if (road == QLatin1String("press"))
            QCOMPARE(pressesOnPage.count, 1);
        if (road != QLatin1String("select"))
            QVERIFY(m_view->hasFocus() || !QApplication::focusWidget());
    }

    void emptyTextsAreRemovedAsOneUndoStep_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<bool>("kept");
        QTest::addColumn<QString>("text");
        QTest::newRow("free text left empty") << "FreeText" << false << "";
        QTest::newRow("free text of blanks") << "FreeText" << false << "  \n ";
        QTest::newRow("note left empty") << "Text" << false << "";
        QTest::newRow("note of one space") << "Text" << true << " ";
    }

    void emptyTextsAreRemovedAsOneUndoStep()
    {
        QFETCH(QString, type);
        QFETCH(QString, text);
        QFETCH(bool, kept);
        UndoManager *const undo = m_window->undoManager();
        undo->removeAllActions();
        const auto annotation = addAndWaitForEditor(type);
        QVERIFY(annotation);
        turn();
        QWidget *const field = type == QLatin1String("Text")
            ? static_cast<QWidget *>(
                qobject_cast<FDAnnTextEditor *>(m_view->annEditor())->popover()->textView())
            : qobject_cast<FDAnnFreeTextEditor *>(m_view->annEditor())->textField();
        for (const QChar character : text) {
            if (character == QLatin1Char('\n'))
                QTest::keyClick(field, Qt::Key_Return);
            else
                QTest::keyClicks(field, QString(character));
        }
        // Ended by a press elsewhere on the page.
        const QPointF elsewhere
            = m_view->convertPointFromPage(QPointF(500, 200), annotation->page());
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, elsewhere.toPoint());
        turn();
        QVERIFY(!m_view->annEditor());
        QCOMPARE(annotation->page() != nullptr, kept);
        if (kept) {
            QCOMPARE(annotation->contents(), text);
            return;
        }
        QCOMPARE(undo->undoActionName(), QStringLiteral("Delete Annotation"));
        // One undo brings the box back; the add is a step of its own before it.
        undo->undo();
        turn();
        QVERIFY(annotation->page());
        m_view->commitEditing();
        turn();
    }

    void noteIsTypedInItsPopover_data()
    {
        QTest::addColumn<QString>("road");
        QTest::newRow("Escape") << "escape";
        QTest::newRow("a press elsewhere") << "press";
        QTest::newRow("the remove button") << "remove";
    }

    void noteIsTypedInItsPopover()
    {
        QFETCH(QString, road);
        const auto note = addAndWaitForEditor(QStringLiteral("Text"));
        QVERIFY(note);
        const QDateTime before = note->modificationDate();
        auto *const editor = qobject_cast<FDAnnTextEditor *>(m_view->annEditor());
        QVERIFY(editor);
        PopoverAnnTextEditor *const popover = editor->popover();
        QVERIFY(popover->isVisible());
        QCOMPARE(popover->palette().color(QPalette::Window), QColor(252, 243, 188));
        QTest::keyClicks(popover->textView(), QStringLiteral("Remember"));
        QCOMPARE(note->contents(), QStringLiteral("Remember"));
        QTest::qWait(20);
        if (road == QLatin1String("escape")) {
            QTest::keyClick(popover->textView(), Qt::Key_Escape);
        } else if (road == QLatin1String("press")) {
            const QPointF elsewhere = m_view->convertPointFromPage(QPointF(500, 200), note->page());
            QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, elsewhere.toPoint());
        } else {
            popover->removeButton()->click();
        }
        turn();
        QVERIFY(!m_view->annEditor());
        QVERIFY(!isEditing(*note));
        if (road == QLatin1String("remove")) {
            QVERIFY(!note->page());
            QVERIFY(saved(QStringLiteral("Text")).isEmpty());
            return;
        }
        QVERIFY(note->page());
        QVERIFY(note->modificationDate() > before);
        QCOMPARE(saved(QStringLiteral("Text")), QStringList { QStringLiteral("Remember") });
    }

    void openFieldFollowsTheAnnotationBar()
    {
        const auto box = addAndWaitForEditor(QStringLiteral("FreeText"));
        QVERIFY(box);
        QTextEdit *const field
            = qobject_cast<FDAnnFreeTextEditor *>(m_view->annEditor())->textField();
        QTest::keyClicks(field, QStringLiteral("Kept"));
        box->setColor(QColor(255, 200, 0));
        QCOMPARE(field->palette().color(QPalette::Base), QColor(255, 200, 0));
        QCOMPARE(field->toPlainText(), QStringLiteral("Kept"));
        box->setBounds(QRectF(100, 300, 200, 50));
        QCOMPARE(field->geometry(),
            m_view->convertRectFromPage(box->bounds(), box->page()).toAlignedRect());
        m_view->commitEditing();
    }

private:
    void openTab()
    {
        static int files = 0;
        m_path = m_dir.filePath(QStringLiteral("notes%1.pdf").arg(++files));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(1, 5, 0), m_path));
        m_tab = AppWindow::openTab(m_window, QUrl::fromLocalFile(m_path));
        QVERIFY(m_tab);
        m_view = m_tab->primaryPDFView();
        m_view->goToPage(m_view->document()->pageAtIndex(0));
        turn();
    }
    std::shared_ptr<PDFAnnotation> addAndWaitForEditor(const QString &type);
    QStringList saved(const QString &type) const
    {
        return savedContents(m_view->document()->dataRepresentation(), type);
    }

    QTemporaryDir m_dir;
    QString m_path;
    QPointer<PDFWindowController> m_window;
    QPointer<PDFContents> m_tab;
    FDPDFView *m_view = nullptr;
};

std::shared_ptr<PDFAnnotation> TextEditorsTest::addAndWaitForEditor(const QString &type)
{
    const auto page = m_view->document()->pageAtIndex(0);
    const QRectF bounds
        = type == QLatin1String("Text") ? QRectF(200, 500, 0, 0) : QRectF(200, 500, 160, 40);
    const auto annotation = m_view->addAnnotationWithType(type, page, bounds);
    // The editor opens once the event that made the annotation is over.
    if (!QTest::qWaitFor([this] { return m_view->annEditor() != nullptr; }))
        return nullptr;
    return annotation;
}

FOLIDOC_APP_TEST_MAIN(TextEditorsTest)
#include "TextEditorsTest.moc"
