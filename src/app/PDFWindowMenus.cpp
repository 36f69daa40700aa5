#include "PDFWindowMenus.h"

#include "FDRecentDocuments.h"
#include "PDFWindowController.h"

#include <view/PDFToolMode.h>

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>

#include <algorithm>

QList<QKeySequence> PDFWindowMenus::standardKeys(
    QKeySequence::StandardKey key, const QKeySequence &fallback)
{
    const QList<QKeySequence> bound = QKeySequence::keyBindings(key);
    return bound.isEmpty() ? QList<QKeySequence> { fallback } : bound;
}

PDFWindowMenus::PDFWindowMenus(PDFWindowController *window, QMenuBar *menuBar)
    : QObject(window)
    , m_window(window)
    , m_menuBar(menuBar)
{
    fillFileMenu();
    fillEditMenu();
    fillViewMenu();
    fillToolsMenu();
    fillGoMenu();
    fillWindowMenu();
    fillHelpMenu();
}

QList<QKeySequence> PDFWindowMenus::keys(
    const QList<QKeySequence> &first, const QList<QKeySequence> &more)
{
    QList<QKeySequence> all = first;
    for (const QKeySequence &key : more) {
        if (!all.contains(key))
            all.append(key);
    }
    return all;
}

QMenu *PDFWindowMenus::addMenu(const QString &title)
{
    QMenu *const menu = m_menuBar->addMenu(title);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { validateMenu(menu); });
    return menu;
}

void PDFWindowMenus::validateKeys()
{
    const QList<QAction *> actions = allActions();
    for (QAction *action : actions) {
        if (!action->shortcuts().isEmpty())
            action->setEnabled(m_window->validateMenuItem(action));
    }
}

QAction *PDFWindowMenus::add(QMenu *menu, const QString &title, const QString &command, int tag,
    const QList<QKeySequence> &keys)
{
    QAction *const action = menu->addAction(title);
    action->setObjectName(command);
    action->setData(tag);
    action->setShortcuts(keys);
    action->setShortcutContext(Qt::WindowShortcut);
    // Items whose command has a state show it with a check mark.
    static const QStringList stateful { QStringLiteral("PDF_onChangeToolMode:"),
        QStringLiteral("PDF_onChangeDisplayMode:"), QStringLiteral("PDF_onChangeSplitMode:"),
        QStringLiteral("PDF_onChangeSidebarMode:"), QStringLiteral("PDF_onZoom100:"),
        QStringLiteral("PDF_onZoomFitWidth:"), QStringLiteral("PDF_onZoomFitPage:"),
        QStringLiteral("onChangeTheme:"), QStringLiteral("toggleFullScreen:") };
    action->setCheckable(stateful.contains(command));
    connect(action, &QAction::triggered, m_window,
        [window = m_window, action] { window->performCommand(action); });
    return action;
}

void PDFWindowMenus::validateMenu(QMenu *menu)
{
    if (menu == m_recentMenu)
        fillRecentMenu();
    const QList<QAction *> actions = menu->actions();
    for (QAction *action : actions) {
        if (QMenu *const submenu = action->menu()) {
            // A submenu none of whose items can run is greyed out as a whole.
            validateMenu(submenu);
            const QList<QAction *> items = submenu->actions();
            action->setEnabled(std::any_of(items.begin(), items.end(),
                [](const QAction *item) { return !item->isSeparator() && item->isEnabled(); }));
        } else if (!action->isSeparator()) {
            action->setEnabled(m_window->validateMenuItem(action));
        }
    }
}

QAction *PDFWindowMenus::actionForCommand(const QString &command, int tag) const
{
    const QList<QAction *> actions = allActions();
    for (QAction *action : actions) {
        if (action->objectName() == command && (tag < 0 || action->data().toInt() == tag))
            return action;
    }
    return nullptr;
}

QList<QAction *> PDFWindowMenus::allActions() const
{
    QList<QAction *> found;
    const QList<QMenu *> menus = m_menuBar->findChildren<QMenu *>();
    for (const QMenu *menu : menus) {
        const QList<QAction *> actions = menu->actions();
        for (QAction *action : actions) {
            if (!action->isSeparator() && !action->menu())
                found.append(action);
        }
    }
    return found;
}

void PDFWindowMenus::fillFileMenu()
{
    QMenu *const file = addMenu(tr("&File"));
    add(file, tr("New Tab"), QStringLiteral("newDocument:"), 0,
        standardKeys(QKeySequence::AddTab, QKeySequence(Qt::CTRL | Qt::Key_T)));
    add(file, tr("New Document"), QStringLiteral("onNew:"), 0,
        standardKeys(QKeySequence::New, QKeySequence(Qt::CTRL | Qt::Key_N)));
    add(file, tr("Open…"), QStringLiteral("openDocument:"), 0,
        standardKeys(QKeySequence::Open, QKeySequence(Qt::CTRL | Qt::Key_O)));
    m_recentMenu = file->addMenu(tr("Open Recent"));
    fillRecentMenu();
    file->addSeparator();
    add(file, tr("Save"), QStringLiteral("PDF_saveDocument:"), 0,
        standardKeys(QKeySequence::Save, QKeySequence(Qt::CTRL | Qt::Key_S)));
    add(file, tr("Save As…"), QStringLiteral("PDF_saveDocumentAs:"), 0,
        standardKeys(QKeySequence::SaveAs, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S)));
    add(file, tr("Show in File Manager"), QStringLiteral("PDF_showInFinder:"));
    file->addSeparator();
    add(file, tr("Print…"), QStringLiteral("PDF_print:"), 0,
        standardKeys(QKeySequence::Print, QKeySequence(Qt::CTRL | Qt::Key_P)));
    add(file, tr("Print Without Annotations…"), QStringLiteral("PDF_printWithoutAnnotations:"));
    file->addSeparator();
    add(file, tr("Close Tab"), QStringLiteral("performCloseTabAction:"), 0,
        standardKeys(QKeySequence::Close, QKeySequence(Qt::CTRL | Qt::Key_W)));
    add(file, tr("Close Window"), QStringLiteral("performCloseWindowAction:"), 0,
        { QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_W) });
    add(file, tr("Quit"), QStringLiteral("terminate:"), 0,
        standardKeys(QKeySequence::Quit, QKeySequence(Qt::CTRL | Qt::Key_Q)));
}

void PDFWindowMenus::fillRecentMenu()
{
    m_recentMenu->clear();
    const QList<QUrl> urls = FDRecentDocuments::recentDocumentURLs();
    const QString home = QDir::homePath();
    for (int index = 0; index < urls.size(); ++index) {
        const QUrl &url = urls[index];
        const QString path = url.isLocalFile() ? url.toLocalFile() : url.toDisplayString();
        QString folder = QFileInfo(path).path();
        if (folder == home || folder.startsWith(home + QLatin1Char('/')))
            folder.replace(0, home.size(), QStringLiteral("~"));
        // A "&" in a name is a character, not the mark of a mnemonic.
        QString title = QStringLiteral("%1 — %2").arg(QFileInfo(path).fileName(), folder);
        title.replace(QLatin1Char('&'), QLatin1String("&&"));
        QAction *const item
            = add(m_recentMenu, title, QStringLiteral("openRecentDocument:"), index);
        item->setToolTip(path);
        // The list may change before the click; the item keeps the document it shows.
        item->setProperty("url", url);
    }
    if (!urls.isEmpty())
        m_recentMenu->addSeparator();
    add(m_recentMenu, tr("Clear"), QStringLiteral("clearRecentDocuments:"));
}

void PDFWindowMenus::fillEditMenu()
{
    QMenu *const edit = addMenu(tr("&Edit"));
    add(edit, tr("Undo"), QStringLiteral("undo:"), 0,
        standardKeys(QKeySequence::Undo, QKeySequence(Qt::CTRL | Qt::Key_Z)));
    add(edit, tr("Redo"), QStringLiteral("redo:"), 0,
        keys(standardKeys(QKeySequence::Redo, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)),
            { QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z),
                QKeySequence(Qt::CTRL | Qt::Key_Y) }));
    edit->addSeparator();
    add(edit, tr("Cut"), QStringLiteral("cut:"), 0,
        standardKeys(QKeySequence::Cut, QKeySequence(Qt::CTRL | Qt::Key_X)));
    add(edit, tr("Copy"), QStringLiteral("copy:"), 0,
        standardKeys(QKeySequence::Copy, QKeySequence(Qt::CTRL | Qt::Key_C)));
    add(edit, tr("Paste"), QStringLiteral("paste:"), 0,
        standardKeys(QKeySequence::Paste, QKeySequence(Qt::CTRL | Qt::Key_V)));
    add(edit, tr("Delete"), QStringLiteral("delete:"), 0,
        standardKeys(QKeySequence::Delete, QKeySequence(Qt::Key_Delete)));
    add(edit, tr("Select All"), QStringLiteral("selectAll:"), 0,
        standardKeys(QKeySequence::SelectAll, QKeySequence(Qt::CTRL | Qt::Key_A)));
    edit->addSeparator();
    add(edit, tr("Find…"), QStringLiteral("performFindPanelAction:"), 0,
        standardKeys(QKeySequence::Find, QKeySequence(Qt::CTRL | Qt::Key_F)));
    edit->addSeparator();
    add(edit, tr("Preferences…"), QStringLiteral("onShowPrefWindow:"), 0,
        standardKeys(QKeySequence::Preferences, QKeySequence(Qt::CTRL | Qt::Key_Comma)));
}

void PDFWindowMenus::fillViewMenu()
{
    QMenu *const view = addMenu(tr("&View"));
    add(view, tr("Single Page Continuous"), QStringLiteral("PDF_onChangeDisplayMode:"), 0);
    add(view, tr("Two Pages Continuous"), QStringLiteral("PDF_onChangeDisplayMode:"), 1);
    view->addSeparator();
    add(view, tr("Actual Size"), QStringLiteral("PDF_onZoom100:"), 0,
        { QKeySequence(Qt::CTRL | Qt::Key_0) });
    add(view, tr("Fit Width"), QStringLiteral("PDF_onZoomFitWidth:"));
    add(view, tr("Fit Page"), QStringLiteral("PDF_onZoomFitPage:"));
    add(view, tr("Zoom In"), QStringLiteral("PDF_onZoomIn:"), 0,
        keys(standardKeys(QKeySequence::ZoomIn, QKeySequence(Qt::CTRL | Qt::Key_Plus)),
            { QKeySequence(Qt::CTRL | Qt::Key_Equal) }));
    add(view, tr("Zoom Out"), QStringLiteral("PDF_onZoomOut:"), 0,
        standardKeys(QKeySequence::ZoomOut, QKeySequence(Qt::CTRL | Qt::Key_Minus)));
    view->addSeparator();
    add(view, tr("Sidebar"), QStringLiteral("PDF_onShowSidebar:"), 0,
        { QKeySequence(Qt::Key_F9), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_S) });
    QMenu *const sidebar = view->addMenu(tr("Sidebar Contents"));
    const QString sidebarMode = QStringLiteral("PDF_onChangeSidebarMode:");
    add(sidebar, tr("Thumbnails"), sidebarMode, 0,
        { QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_1) });
    add(sidebar, tr("Table of Contents"), sidebarMode, 1,
        { QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_2) });
    add(sidebar, tr("Annotations"), sidebarMode, 2,
        { QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_3) });
    add(sidebar, tr("Bookmarks"), sidebarMode, 3, { QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_4) });
    QMenu *const split = view->addMenu(tr("Split View"));
    add(split, tr("No Split"), QStringLiteral("PDF_onChangeSplitMode:"), 0);
    add(split, tr("Split Horizontally"), QStringLiteral("PDF_onChangeSplitMode:"), 1);
    add(split, tr("Split Vertically"), QStringLiteral("PDF_onChangeSplitMode:"), 2);
    split->addSeparator();
    add(split, tr("Swap Views"), QStringLiteral("PDF_onSplitViewSwap:"));
    add(view, tr("Edit Pages"), QStringLiteral("PDF_onShowPagesEditor:"), 0,
        { QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_P) });
    view->addSeparator();
    // F11 on every desktop, and the desktop's own key where it has another.
    QList<QKeySequence> fullScreenKeys { QKeySequence(Qt::Key_F11) };
    for (const QKeySequence &key : QKeySequence::keyBindings(QKeySequence::FullScreen)) {
        if (!fullScreenKeys.contains(key))
            fullScreenKeys.append(key);
    }
    add(view, tr("Full Screen"), QStringLiteral("toggleFullScreen:"), 0, fullScreenKeys);
    QMenu *const theme = view->addMenu(tr("Theme"));
    add(theme, tr("Red"), QStringLiteral("onChangeTheme:"), 0);
    add(theme, tr("Green"), QStringLiteral("onChangeTheme:"), 1);
    add(theme, tr("Blue"), QStringLiteral("onChangeTheme:"), 2);
    add(theme, tr("Sunset"), QStringLiteral("onChangeTheme:"), 3);
    add(theme, tr("Night"), QStringLiteral("onChangeTheme:"), 4);
}

void PDFWindowMenus::fillToolsMenu()
{
    QMenu *const tools = addMenu(tr("&Tools"));
    const QString command = QStringLiteral("PDF_onChangeToolMode:");
    const auto key = [](int modifiers, int digit) {
        return QList<QKeySequence> { QKeySequence(modifiers | (Qt::Key_0 + digit)) };
    };
    const int ctrl = Qt::CTRL;
    const int alt = Qt::ALT;
    add(tools, tr("Select Text"), command, PDFToolModeTextSelection, key(ctrl, 1));
    add(tools, tr("Select Area"), command, PDFToolModeAreaSelection, key(ctrl, 2));
    add(tools, tr("Hand"), command, PDFToolModeHand, key(ctrl, 3));
    add(tools, tr("Zoom"), command, PDFToolModeZoom, key(ctrl, 4));
    add(tools, tr("Eraser"), command, PDFToolModeEraser, key(alt, 0));
    tools->addSeparator();
    add(tools, tr("Highlight"), command, PDFToolModeAnnHighlight, key(alt, 1));
    add(tools, tr("Underline"), command, PDFToolModeAnnUnderline, key(alt, 2));
    add(tools, tr("Strike Out"), command, PDFToolModeAnnStrikeOut, key(alt, 3));
    add(tools, tr("Text Box"), command, PDFToolModeAnnFreeText, key(alt, 4));
    add(tools, tr("Note"), command, PDFToolModeAnnText, key(alt, 5));
    add(tools, tr("Circle"), command, PDFToolModeAnnCircle, key(alt, 6));
    add(tools, tr("Rectangle"), command, PDFToolModeAnnSquare, key(alt, 7));
    add(tools, tr("Line"), command, PDFToolModeAnnLine, key(alt, 8));
    add(tools, tr("Pen"), command, PDFToolModeAnnInk, key(alt, 9));
}

void PDFWindowMenus::fillGoMenu()
{
    QMenu *const go = addMenu(tr("&Go"));
    add(go, tr("Previous Page"), QStringLiteral("PDF_onGoToPreviousPage:"), 0,
        { QKeySequence(Qt::CTRL | Qt::Key_Up) });
    add(go, tr("Next Page"), QStringLiteral("PDF_onGoToNextPage:"), 0,
        { QKeySequence(Qt::CTRL | Qt::Key_Down) });
    add(go, tr("First Page"), QStringLiteral("PDF_onGoToFirstPage:"), 0,
        { QKeySequence(Qt::CTRL | Qt::Key_Home) });
    add(go, tr("Last Page"), QStringLiteral("PDF_onGoToLastPage:"), 0,
        { QKeySequence(Qt::CTRL | Qt::Key_End) });
    go->addSeparator();
    add(go, tr("Back"), QStringLiteral("PDF_onGoBack:"), 0,
        standardKeys(QKeySequence::Back, QKeySequence(Qt::ALT | Qt::Key_Left)));
    add(go, tr("Forward"), QStringLiteral("PDF_onGoForward:"), 0,
        standardKeys(QKeySequence::Forward, QKeySequence(Qt::ALT | Qt::Key_Right)));
    add(go, tr("Go to Page…"), QStringLiteral("PDF_onGoToPage:"), 0,
        { QKeySequence(Qt::CTRL | Qt::Key_G) });
    go->addSeparator();
    add(go, tr("Bookmark Page"), QStringLiteral("PDF_onToggleBookmark:"), 0,
        { QKeySequence(Qt::CTRL | Qt::Key_B) });
    add(go, tr("Add Outline Item"), QStringLiteral("PDF_onAddOutline:"), 0,
        { QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_O) });
}

void PDFWindowMenus::fillWindowMenu()
{
    // The tab kit binds the keys of these two; the items only show them.
    QMenu *const window = addMenu(tr("&Window"));
    add(window, tr("Select Next Tab"), QStringLiteral("performSelectNextTabAction:"));
    add(window, tr("Select Previous Tab"), QStringLiteral("performSelectPreviousTabAction:"));
}

void PDFWindowMenus::fillHelpMenu()
{
    QMenu *const help = addMenu(tr("&Help"));
    add(help, tr("Send Feedback…"), QStringLiteral("onSendFeedback:"));
    add(help, tr("About Folidoc"), QStringLiteral("showAboutDialog:"));
}
