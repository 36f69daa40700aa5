#include "PDFWindowController.h"

#include "CompressContents.h"
#include "FDContents.h"
#include "FDFilePanel.h"
#include "FDRecentDocuments.h"
#include "FDToolbarController.h"
#include "GlobalService.h"
#include "NewTabContents.h"
#include "PDFContents.h"
#include "PDFWindowMenus.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemePicker.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/Workspace.h>
#include <kit/engine/PDFDocument.h>
#include <kit/tabs/TabStripModel.h>
#include <pages/PDFPagePasteboard.h>

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMenuBar>
#include <QMimeData>
#include <QRegularExpression>
#include <QVBoxLayout>

namespace {

PDFWindowController::DocumentContentsMaker &documentContentsMaker()
{
    static PDFWindowController::DocumentContentsMaker maker;
    return maker;
}

bool isFileDrop(const QMimeData *data)
{
    // Pages dragged out of a pages editor offer a file only for other programs: asking for it
    // here would write it.
    if (!data || !data->hasUrls() || PDFPagePasteboard::hasPageMarker(data))
        return false;
    const QList<QUrl> urls = data->urls();
    return std::any_of(urls.begin(), urls.end(),
        [](const QUrl &url) { return url.isLocalFile() && QFileInfo(url.toLocalFile()).isFile(); });
}

// One string per file, however the URL spells it: without the fragment (a page to go to), and
// for a local file its canonical path, so that links and ".." lead to the same file. Empty for
// no URL.
QString fileIdentity(const QUrl &url)
{
    if (url.isEmpty())
        return {};
    const QUrl file = url.adjusted(QUrl::RemoveFragment);
    if (!file.isLocalFile())
        return file.toString(QUrl::FullyEncoded);
    const QFileInfo info(file.toLocalFile());
    const QString canonical = info.canonicalFilePath();
    return QUrl::fromLocalFile(
        canonical.isEmpty() ? QDir::cleanPath(info.absoluteFilePath()) : canonical)
        .toString(QUrl::FullyEncoded);
}

// The page a URL's fragment names ("#3": the fourth), or -1.
int pageIndexOfFragment(const QUrl &url)
{
    static const QRegularExpression decimal(QStringLiteral("^[0-9]+$"));
    const QString fragment = url.fragment();
    bool ok = false;
    const int index = decimal.match(fragment).hasMatch() ? fragment.toInt(&ok) : -1;
    return ok ? index : -1;
}

} // namespace

void PDFWindowController::setDocumentContentsMaker(DocumentContentsMaker maker)
{
    documentContentsMaker() = std::move(maker);
}

PDFWindowController::PDFWindowController(QWidget *parent)
    : TabWindowController(parent)
{
    setAcceptDrops(true);
}

PDFWindowController::~PDFWindowController() = default;

void PDFWindowController::commonInit()
{
    TabWindowController::commonInit();
    setWindowFrameAutosaveName(QStringLiteral("PDFMainWindow"));

    // The banner sits between the toolbar area and the tab's view.
    m_infoBannerContainer = new QWidget(centralWidget());
    m_infoBannerContainer->setObjectName(QStringLiteral("infoBannerContainer"));
    auto *const bannerLayout = new QVBoxLayout(m_infoBannerContainer);
    bannerLayout->setContentsMargins(0, 0, 0, 0);
    m_infoBannerContainer->hide();
    if (auto *const column = qobject_cast<QVBoxLayout *>(centralWidget()->layout()))
        column->insertWidget(qMax(0, column->count() - 1), m_infoBannerContainer);

    m_menus = new PDFWindowMenus(this, menuBar());
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { applyTheme(); });
    applyTheme();

    NotificationCenter::defaultCenter().addObserver(
        this, UserDidDropFileNotification, this, [this](const Notification &notification) {
            onUserDropFile(notification.userInfo.value(QStringLiteral("URL")).toUrl());
        });
    GlobalService::noteOpenedWindowsChanged();
    MainQueue::async(
        this, [this] { NotificationCenter::defaultCenter().post(DidCreateNotification, this); });
}

bool PDFWindowController::event(QEvent *event)
{
    // Sent for every key press before the shortcuts are matched, and up from the focus widget
    // to here unless a widget claims the key (a text field its editing keys).
    if (event->type() == QEvent::ShortcutOverride && m_menus)
        m_menus->validateKeys();
    return TabWindowController::event(event);
}

void PDFWindowController::applyTheme()
{
    // The menu bar sits above the tab strip and takes the frame's colours with it.
    const FDTheme *const theme = FDThemeProvider::current();
    QPalette palette = menuBar()->palette();
    palette.setColor(QPalette::Window, theme->color(FDTheme::toolbarBackgroundColor));
    palette.setColor(QPalette::Button, theme->color(FDTheme::toolbarBackgroundColor));
    palette.setColor(QPalette::WindowText, theme->color(FDTheme::labelColor));
    palette.setColor(QPalette::ButtonText, theme->color(FDTheme::labelColor));
    palette.setColor(QPalette::Highlight, theme->color(FDTheme::selectedBackgroundColor));
    palette.setColor(QPalette::HighlightedText, theme->color(FDTheme::selectedTextColor));
    menuBar()->setPalette(palette);
    menuBar()->setAutoFillBackground(true);
}

QList<PDFWindowController *> PDFWindowController::all()
{
    QList<PDFWindowController *> found;
    const QList<TabWindowController *> controllers = allControllers();
    for (TabWindowController *controller : controllers) {
        if (auto *const window = qobject_cast<PDFWindowController *>(controller))
            found.append(window);
    }
    return found;
}

QList<TabContents *> PDFWindowController::allContents()
{
    QList<TabContents *> found;
    const QList<PDFWindowController *> windows = all();
    for (PDFWindowController *window : windows) {
        TabStripModel *const model = window->tabStripModel();
        for (int index = 0; index < model->count(); ++index)
            found.append(model->getTabContentsAtIndex(index));
    }
    return found;
}

bool PDFWindowController::selectContentsBy(const QUrl &url)
{
    return selectContentsWithFile(url) != nullptr;
}

TabContents *PDFWindowController::selectContentsWithFile(const QUrl &url)
{
    const QString wanted = fileIdentity(url);
    if (wanted.isEmpty())
        return nullptr;
    const QList<TabWindowController *> controllers = allControllers();
    for (TabWindowController *controller : controllers) {
        TabStripModel *const model = controller->tabStripModel();
        for (int index = 0; index < model->count(); ++index) {
            if (fileIdentity(QUrl(model->getTabContentsAtIndex(index)->url())) != wanted)
                continue;
            model->selectTabContentsAt(index, true);
            if (auto *const window = qobject_cast<PDFWindowController *>(controller))
                window->makeKeyAndOrderFront();
            return model->getTabContentsAtIndex(index);
        }
    }
    return nullptr;
}

FDContents *PDFWindowController::selectedContents() const
{
    auto *const self = const_cast<PDFWindowController *>(this);
    return qobject_cast<FDContents *>(self->tabStripModel()->getSelectedTabContents());
}

FDToolbarController *PDFWindowController::toolbarController()
{
    return static_cast<FDToolbarController *>(contentsToolbarController());
}

void PDFWindowController::onThemeButtonClickedWithButton(QWidget *button)
{
    FDThemePicker::shared().showRelativeTo(button);
}

void PDFWindowController::makeKeyAndOrderFront()
{
    show();
    raise();
    activateWindow();
}

TabContents *PDFWindowController::openPDFDocumentWithURL(
    const QUrl &url, bool reuseNewTab, bool foreground)
{
    if (TabContents *const open = url.isEmpty() ? nullptr : selectContentsWithFile(url)) {
        // A link into a document that is open already lands on its page there.
        auto *const contents = qobject_cast<PDFContents *>(open);
        FDPDFView *const view = contents ? contents->primaryPDFView() : nullptr;
        const auto document = view ? view->document() : nullptr;
        const int pageIndex = pageIndexOfFragment(url);
        if (document && pageIndex >= 0 && pageIndex < document->pageCount())
            view->goToPage(document->pageAtIndex(pageIndex));
        return open;
    }
    if (!documentContentsMaker())
        return nullptr;
    std::unique_ptr<FDContents> contents = documentContentsMaker()(url);
    if (!contents)
        return nullptr;
    TabContents *const made = contents.get();
    placeContents(std::move(contents), reuseNewTab, foreground);
    if (foreground)
        makeKeyAndOrderFront();
    return made;
}

void PDFWindowController::openNewTab()
{
    tabStripModel()->appendTabContents(createBlankTabContents(), true);
}

void PDFWindowController::newPDFDocument()
{
    openPDFDocumentWithURL(QUrl(), true, true);
}

void PDFWindowController::openCompressTab()
{
    placeContents(std::make_unique<CompressContents>(), true, true);
}

void PDFWindowController::placeContents(
    std::unique_ptr<TabContents> contents, bool reuseNewTab, bool foreground)
{
    TabStripModel *const model = tabStripModel();
    if (reuseNewTab && qobject_cast<NewTabContents *>(model->getSelectedTabContents()))
        model->replaceTabContentsAt(model->selectedIndex(), std::move(contents));
    else
        model->appendTabContents(std::move(contents), foreground);
}

void PDFWindowController::openDocument()
{
    FilePanelRequest request;
    request.kind = FilePanelRequest::Open;
    request.parent = this;
    const QUrl chosen = FDFilePanel::runModal(request);
    if (!chosen.isEmpty())
        openPDFDocumentWithURL(chosen, true, true);
}

void PDFWindowController::newDocument()
{
    openNewTab();
}

void PDFWindowController::userDropFileWithURL(const QUrl &url)
{
    onUserDropFile(url);
}

void PDFWindowController::onUserDropFile(const QUrl &url)
{
    if (!url.isEmpty())
        openPDFDocumentWithURL(url, true, true);
}

void PDFWindowController::dragEnterEvent(QDragEnterEvent *event)
{
    if (isFileDrop(event->mimeData()))
        event->acceptProposedAction();
}

void PDFWindowController::dropEvent(QDropEvent *event)
{
    if (!isFileDrop(event->mimeData()))
        return;
    event->acceptProposedAction();
    const QList<QUrl> urls = event->mimeData()->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            NotificationCenter::defaultCenter().post(
                UserDidDropFileNotification, this, { { QStringLiteral("URL"), url } });
    }
}

void PDFWindowController::showInfoBanner(QWidget *banner)
{
    hideInfoBanner();
    m_infoBannerContainer->layout()->addWidget(banner);
    m_infoBannerContainer->show();
}

void PDFWindowController::hideInfoBanner()
{
    QLayout *const layout = m_infoBannerContainer->layout();
    while (QLayoutItem *item = layout->takeAt(0)) {
        if (QWidget *const widget = item->widget())
            widget->deleteLater();
        delete item;
    }
    m_infoBannerContainer->hide();
}

void PDFWindowController::tabInsertedAt(TabContents *contents, int index, bool foreground)
{
    TabWindowController::tabInsertedAt(contents, index, foreground);
    if (auto *const document = qobject_cast<PDFContents *>(contents))
        document->setUndoManager(undoManager());
}

void PDFWindowController::tabReplacedAt(
    TabContents *oldContents, TabContents *newContents, int index)
{
    TabWindowController::tabReplacedAt(oldContents, newContents, index);
    if (auto *const document = qobject_cast<PDFContents *>(newContents))
        document->setUndoManager(undoManager());
}

TabWindowController *PDFWindowController::createWindowForDetachedTab()
{
    return TabWindowController::create<PDFWindowController>();
}

std::unique_ptr<TabContents> PDFWindowController::createBlankTabContents()
{
    return std::make_unique<NewTabContents>();
}

std::unique_ptr<ContentsToolbarController> PDFWindowController::createToolbarController()
{
    return std::make_unique<FDToolbarController>();
}

bool PDFWindowController::shouldCloseContentsAt(int index)
{
    // The last tab's close is the window's: the window list is saved while the tab is there.
    if (m_isClosingTabByUser && tabStripModel()->count() == 1)
        NotificationCenter::defaultCenter().post(ShouldCloseNotification, this);
    return TabWindowController::shouldCloseContentsAt(index);
}

bool PDFWindowController::closeTabAt(int index)
{
    return tabStripModel()->closeTabContentsAtIndex(index, TabStripModel::CloseUserGesture);
}

bool PDFWindowController::windowShouldClose(QWidget *sender)
{
    // Closing the last window is quitting: the list of windows is stored with its tabs first.
    if (GlobalService *const service = GlobalService::shared())
        service->windowWillCloseByUser(this);
    m_isClosingTabByUser = false;
    TabStripModel *const model = tabStripModel();
    // Tabs with questions first, each shown while it asks. Closing shifts the indexes while the
    // walk counts on: a tab right behind a closed one is asked in the second walk instead.
    const int countAtStart = model->count();
    for (int index = 0; index < countAtStart; ++index) {
        const auto *const contents
            = qobject_cast<FDContents *>(model->getTabContentsAtIndex(index));
        if (!contents || !contents->hasChangesToPromptUser())
            continue;
        model->selectTabContentsAt(index, true);
        if (!closeTabAt(index)) {
            m_isClosingTabByUser = true;
            return false;
        }
    }
    while (model->count() > 0) {
        if (!closeTabAt(model->count() - 1)) {
            m_isClosingTabByUser = true;
            return false;
        }
    }
    GlobalService::noteOpenedWindowsChanged();
    NotificationCenter::defaultCenter().post(ShouldCloseNotification, this);
    hide();
    const bool answer = TabWindowController::windowShouldClose(sender);
    m_isClosingTabByUser = true;
    return answer;
}

bool PDFWindowController::validateMenuItem(QAction *item)
{
    const QString command = item->objectName();
    if (command.isEmpty())
        return false;
    item->setChecked(false);
    if (command.startsWith(QLatin1String("PDF_")))
        return validateDocumentCommand(item);
    if (editCommands().contains(command))
        return validateEditCommand(item);
    if (command == QLatin1String("onChangeTheme:")) {
        item->setChecked(FDThemeProvider::current()->id() == item->data().toInt());
        return true;
    }
    if (command == QLatin1String("clearRecentDocuments:"))
        return !FDRecentDocuments::recentDocumentURLs().isEmpty();
    if (command == QLatin1String("toggleFullScreen:")) {
        item->setChecked(isFullScreen());
        return true;
    }
    return true;
}

void PDFWindowController::performCommand(QAction *item)
{
    // An item may have been enabled when something else changed the state since.
    if (!validateMenuItem(item))
        return;
    const QString command = item->objectName();
    const int tag = item->data().toInt();
    TabStripModel *const model = tabStripModel();
    if (command.startsWith(QLatin1String("PDF_"))) {
        performDocumentCommand(item);
    } else if (editCommands().contains(command)) {
        performEditCommand(item);
    } else if (command == QLatin1String("newDocument:")) {
        newDocument();
    } else if (command == QLatin1String("openDocument:")) {
        openDocument();
    } else if (command == QLatin1String("openRecentDocument:")) {
        const QUrl url = item->property("url").toUrl();
        if (!url.isEmpty())
            openPDFDocumentWithURL(url, true, true);
    } else if (command == QLatin1String("clearRecentDocuments:")) {
        FDRecentDocuments::clearRecentDocuments();
    } else if (command == QLatin1String("toggleFullScreen:")) {
        setWindowState(windowState() ^ Qt::WindowFullScreen);
    } else if (command == QLatin1String("performFindPanelAction:")) {
        NotificationCenter::defaultCenter().post(PerformFindPanelActionNotification, window());
    } else if (command == QLatin1String("performSelectNextTabAction:")) {
        model->selectNextTab();
    } else if (command == QLatin1String("performSelectPreviousTabAction:")) {
        model->selectPreviousTab();
    } else if (command == QLatin1String("performCloseTabAction:")) {
        model->closeSelectedTab();
    } else if (command == QLatin1String("performCloseWindowAction:")) {
        close();
    } else if (command == QLatin1String("onChangeTheme:")) {
        FDThemeProvider::setCurrent(FDThemeProvider::themeFor(tag));
    } else if (command == QLatin1String("onSendFeedback:")) {
        const QString processName = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
        const QString source = QString::fromUtf8(QUrl::toPercentEncoding(processName));
        Workspace::openURL(QUrl(
            QStringLiteral(FOLIDOC_FEEDBACK_SITE) + QStringLiteral("/feedback?source=") + source));
    } else if (GlobalService *const service = GlobalService::shared()) {
        service->performCommand(command);
    }
}
