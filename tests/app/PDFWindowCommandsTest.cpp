#include "support/AppWindow.h"

#include <annotation/FDAnnotationSquare.h>
#include <app/FDDefaults.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <app/PDFWindowMenus.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/base/UndoManager.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>
#include <kit/tabs/EditCommandResponder.h>
#include <kit/tabs/TabStripModel.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QAction>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QtTest>

class PDFWindowCommandsTest;
using Step = std::function<void(PDFWindowCommandsTest &)>;
using Observe = std::function<QVariant(PDFWindowCommandsTest &)>;
Q_DECLARE_METATYPE(Step)
Q_DECLARE_METATYPE(Observe)

namespace {

// A widget that takes some edit commands itself, as the pages editor and the lists do.
class ResponderWidget : public QWidget, public EditCommandResponder
{
public:
    using QWidget::QWidget;
    bool respondsToEditCommand(const QString &command) const override
    {
        return command == QLatin1String("delete:") || command == QLatin1String("selectAll:");
    }
    bool validateEditCommand(const QString &) const override { return hasItems; }
    void performEditCommand(const QString &command) override { performed << command; }

    bool hasItems = true;
    QStringList performed;
};

} // namespace

class PDFWindowCommandsTest : public QObject
{
    Q_OBJECT

public:
    QPointer<PDFWindowController> window;
    QPointer<PDFContents> tab;
    FDPDFView *view() const { return tab->primaryPDFView(); }
    // A value of the document whose change registers its inverse with the window's manager,
    // as the view's edits do.
    int value = 0;
    void setValue(int newValue)
    {
        tab->undoManager()->registerUndo(
            static_cast<XPDFView *>(view()), [this, old = value] { setValue(old); });
        tab->undoManager()->setActionName(QStringLiteral("Add Note"));
        value = newValue;
    }

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        value = 0;
        const QString path = m_dir.filePath(QStringLiteral("Commands.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(3, 20, 0), path));
        window = AppWindow::makeWindow();
        tab = qobject_cast<PDFContents *>(
            window->openPDFDocumentWithURL(QUrl::fromLocalFile(path), false, true));
        QVERIFY(tab);
        QTRY_VERIFY(view()->document() && !view()->isLoading());
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        view()->setFocus();
        QTRY_VERIFY(view()->hasFocus());
    }

    void cleanup() { QVERIFY(AppWindow::closeWindow(window)); }

    void commandsAreValidatedWhenTriggered_data()
    {
        QTest::addColumn<Step>("whenMenusAreShown");
        QTest::addColumn<Step>("thenPressed");
        QTest::addColumn<QKeySequence>("key"); // empty: the item is triggered
        QTest::addColumn<QString>("command");
        QTest::addColumn<Observe>("observe");
        QTest::addColumn<bool>("acts");
        using T = PDFWindowCommandsTest;

        const Step nothing = [](T &) {};
        const Step changeDocument
            = [](T &t) { t.view()->fdDocument()->setNumberOfOtherChanges(1); };
        const Step enterPagesEditor = [](T &t) { t.tab->setIsPagesEditingMode(true); };
        const Step leavePagesEditor = [](T &t) { t.tab->setIsPagesEditingMode(false); };
        const Step split = [](T &t) { t.tab->setSplitMode(PDFSplitViewMode::vertical); };
        const Step unsplit = [](T &t) { t.tab->setSplitMode(PDFSplitViewMode::none); };
        const Step edit = [](T &t) {
            t.setValue(1);
            t.finishTurn();
        };
        const Step editAndUndo = [](T &t) {
            t.setValue(1);
            t.finishTurn();
            t.tab->undoManager()->undo();
        };
        const Step selectText = [](T &t) { t.view()->selectAll(); };
        // A square drawn in the view, which selects it: one undo step of the window.
        const Step drawSquare = [](T &t) {
            const auto square = std::make_shared<FDAnnotationSquare>();
            square->initWithBounds(QRectF(100, 100, 80, 60));
            t.view()->addAnnotation(square, t.view()->document()->pageAtIndex(0));
            t.finishTurn();
        };

        const Observe changes
            = [](T &t) { return QVariant(t.view()->fdDocument()->numberOfChanges()); };
        const Observe scale = [](T &t) { return QVariant(t.view()->scaleFactor()); };
        const Observe tool = [](T &t) { return QVariant(int(t.tab->toolMode())); };
        const Observe page = [](T &t) {
            return QVariant(t.view()->document()->indexForPage(t.view()->currentPage()));
        };
        const Observe sidebar = [](T &t) { return QVariant(t.tab->isSidebarHidden()); };
        const Observe place
            = [](T &t) { return QVariant::fromValue<QObject *>(t.view()->parentWidget()); };
        const Observe edited = [](T &t) { return QVariant(t.value); };
        const Observe selection = [](T &t) {
            const auto selected = t.view()->currentSelection();
            return QVariant(selected ? selected->string() : QString());
        };
        const Observe clipboard = [](T &) { return QVariant(QApplication::clipboard()->text()); };
        const Observe annotations = [](T &t) {
            return QVariant(qsizetype(t.view()->document()->pageAtIndex(0)->annotations().size()));
        };
        const Observe tabs = [](T &t) { return QVariant(t.window->tabStripModel()->count()); };

        const QKeySequence ctrlS(Qt::CTRL | Qt::Key_S);
        QTest::newRow("Save: off when shown, on when pressed")
            << nothing << changeDocument << ctrlS << "PDF_saveDocument:" << changes << true;
        QTest::newRow("Save: on when shown, off in the pages editor")
            << changeDocument << enterPagesEditor << ctrlS << "PDF_saveDocument:" << changes
            << false;
        QTest::newRow("Zoom In in the pages editor")
            << nothing << enterPagesEditor << QKeySequence(Qt::CTRL | Qt::Key_Equal)
            << "PDF_onZoomIn:" << scale << false;
        QTest::newRow("Zoom In after the pages editor")
            << enterPagesEditor << leavePagesEditor << QKeySequence(Qt::CTRL | Qt::Key_Equal)
            << "PDF_onZoomIn:" << scale << true;
        QTest::newRow("a tool in the pages editor")
            << nothing << enterPagesEditor << QKeySequence(Qt::ALT | Qt::Key_9)
            << "PDF_onChangeToolMode:" << tool << false;
        QTest::newRow("a tool after the pages editor")
            << enterPagesEditor << leavePagesEditor << QKeySequence(Qt::CTRL | Qt::Key_3)
            << "PDF_onChangeToolMode:" << tool << true;
        QTest::newRow("Last Page after the pages editor")
            << enterPagesEditor << leavePagesEditor << QKeySequence(Qt::CTRL | Qt::Key_End)
            << "PDF_onGoToLastPage:" << page << true;
        QTest::newRow("Sidebar after the pages editor")
            << enterPagesEditor << leavePagesEditor << QKeySequence(Qt::Key_F9)
            << "PDF_onShowSidebar:" << sidebar << true;
        QTest::newRow("Swap Views once the split is gone")
            << split << unsplit << QKeySequence() << "PDF_onSplitViewSwap:" << place << false;
        QTest::newRow("Swap Views while split")
            << split << nothing << QKeySequence() << "PDF_onSplitViewSwap:" << place << true;
        QTest::newRow("Undo: nothing when shown, an edit when pressed")
            << nothing << edit << QKeySequence(Qt::CTRL | Qt::Key_Z) << "undo:" << edited << true;
        QTest::newRow("Redo by Ctrl+Y")
            << nothing << editAndUndo << QKeySequence(Qt::CTRL | Qt::Key_Y) << "redo:" << edited
            << true;
        QTest::newRow("Redo by Ctrl+Shift+Z")
            << nothing << editAndUndo << QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)
            << "redo:" << edited << true;
        QTest::newRow("Select All in the view")
            << nothing << nothing << QKeySequence(Qt::CTRL | Qt::Key_A) << "selectAll:" << selection
            << true;
        QTest::newRow("Copy: no text when shown, selected when pressed")
            << nothing << selectText << QKeySequence(Qt::CTRL | Qt::Key_C) << "copy:" << clipboard
            << true;
        QTest::newRow("Delete: nothing selected when shown, a square when pressed")
            << nothing << drawSquare << QKeySequence(Qt::Key_Delete) << "delete:" << annotations
            << true;
        QTest::newRow("Undo takes back the square the view drew")
            << nothing << drawSquare << QKeySequence(Qt::CTRL | Qt::Key_Z) << "undo:" << annotations
            << true;
        QTest::newRow("Close Tab") << nothing << nothing << QKeySequence(Qt::CTRL | Qt::Key_W)
                                   << "performCloseTabAction:" << tabs << true;
    }

    // Menus are looked through in one state, then the state changes and the command is triggered
    // with no menu shown in between: the command acts exactly when it is on now.
    void commandsAreValidatedWhenTriggered()
    {
        QFETCH(Step, whenMenusAreShown);
        QFETCH(Step, thenPressed);
        QFETCH(QKeySequence, key);
        QFETCH(QString, command);
        QFETCH(Observe, observe);
        QFETCH(bool, acts);
        QApplication::clipboard()->clear();
        UserDefaults::standard().setInteger(0, FDDefaults::SavingPrompt);

        whenMenusAreShown(*this);
        lookThroughTheMenus();
        thenPressed(*this);
        QVERIFY(item(command));
        QCOMPARE(window->validateMenuItem(item(command)), acts);
        const QVariant before = observe(*this);
        pressOrTrigger(key, command);
        QCOMPARE(observe(*this) != before, acts);
    }

    void toolKeysPickTheTools()
    {
        const int ctrl = Qt::CTRL;
        const int alt = Qt::ALT;
        const QList<std::pair<int, int>> keys { { ctrl | Qt::Key_2, PDFToolModeAreaSelection },
            { ctrl | Qt::Key_3, PDFToolModeHand }, { ctrl | Qt::Key_4, PDFToolModeZoom },
            { alt | Qt::Key_1, PDFToolModeAnnHighlight },
            { alt | Qt::Key_2, PDFToolModeAnnUnderline },
            { alt | Qt::Key_3, PDFToolModeAnnStrikeOut },
            { alt | Qt::Key_4, PDFToolModeAnnFreeText }, { alt | Qt::Key_5, PDFToolModeAnnText },
            { alt | Qt::Key_6, PDFToolModeAnnCircle }, { alt | Qt::Key_7, PDFToolModeAnnSquare },
            { alt | Qt::Key_8, PDFToolModeAnnLine }, { alt | Qt::Key_9, PDFToolModeAnnInk },
            { alt | Qt::Key_0, PDFToolModeEraser } };
        for (const auto &[key, tool] : keys) {
            QTest::keySequence(view(), QKeySequence(key));
            QCOMPARE(int(tab->toolMode()), tool);
            // The menu shows the tool picked, and Ctrl+1 goes back to selecting text.
            QVERIFY(window->validateMenuItem(item(QStringLiteral("PDF_onChangeToolMode:"), tool)));
            QVERIFY(item(QStringLiteral("PDF_onChangeToolMode:"), tool)->isChecked());
            QTest::keySequence(view(), QKeySequence(Qt::CTRL | Qt::Key_1));
            QCOMPARE(int(tab->toolMode()), int(PDFToolModeTextSelection));
        }
    }

    void editCommandsGoToTheFocusAndUpItsParents_data()
    {
        QTest::addColumn<QString>("focus"); // "field", "responder", "inside responder"
        QTest::addColumn<bool>("responderHasItems");
        QTest::addColumn<QString>("fieldText");
        QTest::addColumn<QStringList>("performed");
        QTest::addColumn<int>("valueAfterUndo");
        // The field edits its own text and keeps its own undo; the document's step stays.
        QTest::newRow("a text field") << "field" << true << "" << QStringList() << 1;
        QTest::newRow("a responder")
            << "responder" << true << "Query" << QStringList { "selectAll:", "delete:" } << 0;
        QTest::newRow("a child of a responder") << "inside responder" << true << "Query"
                                                << QStringList { "selectAll:", "delete:" } << 0;
        // A responder that is off keeps the command: the view behind it does not select.
        QTest::newRow("a responder that is off")
            << "responder" << false << "Query" << QStringList() << 0;
    }

    void editCommandsGoToTheFocusAndUpItsParents()
    {
        QFETCH(QString, focus);
        QFETCH(bool, responderHasItems);
        QFETCH(QString, fieldText);
        QFETCH(QStringList, performed);
        QFETCH(int, valueAfterUndo);
        setValue(1);
        finishTurn();
        auto *const field = new QLineEdit(QStringLiteral("Query"), tab->container());
        field->setGeometry(0, 0, 200, 24);
        field->show();
        auto *const responder = new ResponderWidget(tab->container());
        responder->hasItems = responderHasItems;
        responder->setGeometry(0, 30, 200, 100);
        auto *const inner = new QWidget(responder);
        inner->setFocusPolicy(Qt::StrongFocus);
        inner->setGeometry(0, 0, 50, 50);
        responder->setFocusPolicy(Qt::StrongFocus);
        responder->show();
        QWidget *const target = focus == QLatin1String("field") ? field
            : focus == QLatin1String("responder")               ? static_cast<QWidget *>(responder)
                                                                : inner;
        target->setFocus();
        QTRY_VERIFY(target->hasFocus());

        for (const QKeySequence &key :
            { QKeySequence(Qt::CTRL | Qt::Key_A), QKeySequence(Qt::Key_Delete) })
            QTest::keySequence(target, key);
        QCOMPARE(field->text(), fieldText);
        QCOMPARE(responder->performed, performed);
        QVERIFY(!view()->currentSelection() || view()->currentSelection()->string().isEmpty());
        QTest::keySequence(target, QKeySequence(Qt::CTRL | Qt::Key_Z));
        QCOMPARE(value, valueAfterUndo);
        if (focus == QLatin1String("field"))
            QCOMPARE(field->text(), QStringLiteral("Query"));
    }

    void undoItemsAreNamedByTheStepShowItsTabAndCloseWithIt()
    {
        QMenu *const editMenu = qobject_cast<QMenu *>(item(QStringLiteral("undo:"))->parent());
        QVERIFY(editMenu);
        const auto titles = [&] {
            window->menus()->validateMenu(editMenu);
            return QStringList { item(QStringLiteral("undo:"))->text(),
                item(QStringLiteral("redo:"))->text() };
        };
        QCOMPARE(titles(), (QStringList { "Undo", "Redo" }));
        QVERIFY(!item(QStringLiteral("undo:"))->isEnabled());
        setValue(1);
        finishTurn();
        QCOMPARE(titles(), (QStringList { "Undo Add Note", "Redo" }));

        // With another tab in front, the undo brings the edited document forward and undoes there.
        TabStripModel *const model = window->tabStripModel();
        model->selectTabContentsAt(0, true);
        QVERIFY(model->getSelectedTabContents() != tab);
        item(QStringLiteral("undo:"))->trigger();
        QCOMPARE(model->getSelectedTabContents(), tab.data());
        QCOMPARE(value, 0);
        QCOMPARE(titles(), (QStringList { "Undo", "Redo Add Note" }));
        QVERIFY(item(QStringLiteral("redo:"))->isEnabled());

        // The steps of a closed tab go with it: nothing is left that could reach the document the
        // view let go of.
        UndoManager *const undo = window->undoManager();
        QCOMPARE(tab->undoManager(), undo);
        setValue(1);
        finishTurn();
        QVERIFY(undo->canUndo());
        window->tabStripModel()->closeTabContentsAtIndex(
            window->tabStripModel()->getIndexOfTabContents(tab), TabStripModel::CloseUserGesture);
        QVERIFY(!tab || window->tabStripModel()->getIndexOfTabContents(tab) < 0);
        QVERIFY(!undo->canUndo());
        undo->undo();
        QCOMPARE(value, 1);
    }

private:
    QAction *item(const QString &command, int tag = -1) const
    {
        return window->menus()->actionForCommand(command, tag);
    }
    // Opens and closes every menu, as a person looking through the menu bar does (what a
    // menu tells as it pops up and goes; a real popup would take the window's focus here).
    // An item is triggered below as a click on it would, without its menu being shown anew.
    void lookThroughTheMenus()
    {
        for (QAction *entry : window->menuBar()->actions()) {
            QMenu *const menu = entry->menu();
            emit menu->aboutToShow();
            emit menu->aboutToHide();
        }
    }
    void pressOrTrigger(const QKeySequence &key, const QString &command)
    {
        if (key.isEmpty())
            item(command)->trigger();
        else
            QTest::keySequence(QApplication::focusWidget() ? QApplication::focusWidget()
                                                           : static_cast<QWidget *>(window),
                key);
        QCoreApplication::processEvents();
    }
    void finishTurn() { QCoreApplication::processEvents(); }

    QTemporaryDir m_dir;
};

FOLIDOC_APP_TEST_MAIN(PDFWindowCommandsTest)

#include "PDFWindowCommandsTest.moc"
