#include "PDFContents.h"

#include "Alert.h"
#include "FDDefaults.h"
#include "FDDocumentReloader.h"
#include "FDFilePanel.h"
#include "GlobalService.h"
#include "PDFContentsConainer.h"
#include "PDFWindowController.h"

#include <appearance/PDFMainToolbar.h>
#include <appearance/PDFSecondaryToolbar.h>
#include <document/Common.h>
#include <document/FDDocument.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UndoManager.h>
#include <kit/base/Workspace.h>
#include <kit/engine/PDFSelection.h>
#include <navigation/PDFSearchSidebarContainer.h>
#include <navigation/PDFSidebarContainer.h>
#include <navigation/PDFSidebarOutlineContents.h>
#include <navigation/PDFViewSearcher.h>
#include <pages/PDFPagesEditor.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QLayout>
#include <QSplitter>

const QString PDFContents::ToolModeDidChangeNotification
    = QStringLiteral("PDFContents_ToolModeDidChange");
const QString PDFContents::PagesEditingModeDidChangeNotification
    = QStringLiteral("PDFContents_PagesEditingModeDidChange");
const QString PDFContents::SecondaryTBVisibilityDidChangeNotification
    = QStringLiteral("PDFContents_SecondaryTBVisibilityDidChange");
const QString PDFContents::SidebarVisibilityDidChangeNotification
    = QStringLiteral("PDFContents_SidebarVisibilityDidChange");
const QString PDFContents::QueryStringDidChangeNotification
    = QStringLiteral("PDFContents_QueryStringDidChange");
const QString PDFContents::SelectedPDFViewDidChangeNotification
    = QStringLiteral("PDFContents_SelectedPDFViewDidChange");
const QString PDFContents::SplitModeDidChangeNotification
    = QStringLiteral("PDFContents_SplitModeDidChange");
const QString PDFContents::PDFViewsDidSwapNotification
    = QStringLiteral("PDFContents_PDFViewsDidSwap");
const QString PDFContents::SidebarModeDidChangeNotification
    = QStringLiteral("PDFContents_SidebarModeDidChange");
const QString PDFContents::AddOutlineNotification = QStringLiteral("PDFContents_AddOutline");

namespace {

int changesOf(const FDPDFView *view)
{
    const auto document = view ? view->fdDocument() : nullptr;
    return document ? document->numberOfChanges() : 0;
}

} // namespace

PDFContents::PDFContents(const QUrl &url, QObject *parent)
    : FDContents(parent)
{
    // The layout makes both views at once.
    view();
    observeView(m_primaryPDFView);
    observeView(m_secondaryPDFView);
    NotificationCenter::defaultCenter().addObserver(this, PDFView::DocumentChangedNotification,
        m_primaryPDFView.data(),
        [this](const Notification &notification) { onPDFDocumentChanged(notification); });
    m_container->onViewInit();
    // The two rows of controls: the first in the window's toolbar area while the tab is in
    // front, the second above the views.
    setToolbar(std::make_unique<PDFMainToolbar>(this));
    auto *const secondary = new PDFSecondaryToolbar(this, m_container->toolbarContainer());
    m_container->toolbarContainer()->layout()->addWidget(secondary);
    secondary->onViewInit();
    // The sidebar follows the tab from its creation on, shown or not.
    m_sidebarContainer = new PDFSidebarContainer(this, m_container->sidebarContainer());
    m_container->sidebarContainer()->layout()->addWidget(m_sidebarContainer);
    m_primarySearcher = new PDFViewSearcher(this, m_primaryPDFView, this);
    m_secondarySearcher = new PDFViewSearcher(this, m_secondaryPDFView, this);
    m_searchSidebarContainer
        = new PDFSearchSidebarContainer(this, m_container->searchResultsContainer());
    m_container->searchResultsContainer()->layout()->addWidget(m_searchSidebarContainer);
    m_primaryReloader = new FDDocumentReloader(m_primaryPDFView, this);
    m_secondaryReloader = new FDDocumentReloader(m_secondaryPDFView, this);
    setUrlFromURL(url);
    m_primaryPDFView->loadDocument(url);
    refreshTitle();
}

PDFContents::~PDFContents()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    // The views outlive this object by the base's destructor; they must not call back into it.
    for (FDPDFView *const pdfView : { m_primaryPDFView.data(), m_secondaryPDFView.data() }) {
        if (pdfView) {
            pdfView->setDelegate2(nullptr);
            pdfView->setDelegate(nullptr);
        }
    }
}

PDFSidebarContainer *PDFContents::sidebarContainer() const
{
    return m_sidebarContainer;
}

PDFSearchSidebarContainer *PDFContents::searchSidebarContainer() const
{
    return m_searchSidebarContainer;
}

PDFViewSearcher *PDFContents::primarySearcher() const
{
    return m_primarySearcher;
}

PDFViewSearcher *PDFContents::secondarySearcher() const
{
    return m_secondarySearcher;
}

void PDFContents::registerAsDocumentContents()
{
    PDFWindowController::setDocumentContentsMaker(
        [](const QUrl &url) -> std::unique_ptr<FDContents> {
            return std::make_unique<PDFContents>(url);
        });
}

std::unique_ptr<QWidget> PDFContents::loadView()
{
    auto *const primary = new FDPDFView;
    primary->setObjectName(QStringLiteral("primaryPDFView"));
    auto *const secondary = new FDPDFView;
    secondary->setObjectName(QStringLiteral("secondaryPDFView"));
    for (FDPDFView *const pdfView : { primary, secondary }) {
        pdfView->setDelegate2(this);
        pdfView->setDelegate(this);
    }
    auto root = std::make_unique<PDFContentsConainer>(this, primary, secondary);
    m_container = root.get();
    m_searchSplitView = root->searchSplitView();
    m_sidebarSplitView = root->sidebarSplitView();
    m_vertPDFSplitView = root->vertPDFSplitView();
    m_horiPDFSplitView = root->horiPDFSplitView();
    m_pdfAreaView = root->pdfAreaView();
    m_primaryPDFView = primary;
    m_secondaryPDFView = secondary;
    m_selectedPDFView = primary;
    return root;
}

void PDFContents::observeView(FDPDFView *pdfView)
{
    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.addObserver(this, FDPDFView::URLDidChangeNotification, pdfView,
        [this](const Notification &notification) { onPDFDocumentChanged(notification); });
    // The steps of a document the view let go of would reach a document it no longer shows.
    center.addObserver(this, PDFView::DocumentChangedNotification, pdfView,
        [this, pdfView = QPointer<FDPDFView>(pdfView)](const Notification &) {
            forgetUndoStepsOf(pdfView);
            if (pdfView == m_primaryPDFView && !m_pagesToAdd.isEmpty())
                MainQueue::async(this, [this] { addPendingPages(); });
        });
    for (const QString &name : { FDDocument::DocumentAnnDidChangeNotification,
             FDDocument::DocumentPageDidChangeNotification,
             PDFSidebarOutlineContents::OutlineDidChangeNotification }) {
        center.addObserver(
            this, name, pdfView, [this](const Notification &) { onPDFDocumentContentChanged(); });
    }
}

void PDFContents::addPagesFromURLs(const QList<QUrl> &urls)
{
    m_pagesToAdd += urls;
    addPendingPages();
}

void PDFContents::addPendingPages()
{
    const auto document = m_primaryPDFView ? m_primaryPDFView->fdDocument() : nullptr;
    if (m_pagesToAdd.isEmpty() || !document || document->isLocked() || !m_container)
        return;
    const QList<QUrl> urls = std::exchange(m_pagesToAdd, {});
    PDFPagesEditor *const editor = m_container->pagesEditorController();
    if (editor->insertURLs(editor->collectionView(), urls, document->pageCount()) > 0)
        return;
    AlertRequest request;
    request.style = AlertRequest::Warning;
    request.messageText = tr("None of the chosen files could be read.");
    request.informativeText = tr("Only PDF files and PNG, JPEG or GIF images can give pages.");
    Alert::runModal(request);
}

void PDFContents::post(const QString &name, const QVariantMap &userInfo)
{
    NotificationCenter::defaultCenter().post(name, this, userInfo);
}

void PDFContents::onPDFDocumentChanged(const Notification &notification)
{
    if (!m_primaryPDFView || notification.sender != m_primaryPDFView.data())
        return;
    // A view still waiting for its window names its pending URL, so the tab is found by it.
    const QUrl url = m_primaryPDFView->fileURL();
    setUrlFromURL(url);
    refreshTitle();
    const auto document = m_primaryPDFView->fdDocument();
    if (!document)
        return;
    if (m_splitMode == PDFSplitViewMode::none) {
        if (document->outlineRoot() || FDDefaults::alwaysShowSidebar() == 1) {
            m_isSidebarHidden = false;
            post(SidebarVisibilityDidChangeNotification);
            m_sidebarMode = PDFSidebarMode::toc;
            applySidebarMode();
        } else {
            m_isSidebarHidden = true;
            post(SidebarVisibilityDidChangeNotification);
        }
    }
    // A new untitled document opens straight in the pages editor.
    if (document->fileURL().isEmpty()) {
        m_isPagesEditingMode = true;
        post(PagesEditingModeDidChangeNotification);
    }
}

void PDFContents::onPDFDocumentContentChanged()
{
    refreshTitle();
}

void PDFContents::refreshTitle()
{
    if (!m_primaryPDFView)
        return;
    const bool changed = changesOf(m_primaryPDFView) > 0 || changesOf(m_secondaryPDFView) > 0;
    setTitle((changed ? QStringLiteral("* ") : QString()) + m_primaryPDFView->title());
}

void PDFContents::applySidebarMode()
{
    m_isSidebarHidden = false;
    post(SidebarVisibilityDidChangeNotification);
    post(SidebarModeDidChangeNotification);
}

void PDFContents::setToolMode(PDFToolMode mode)
{
    if (FDPDFView *const pdfView = m_selectedPDFView) {
        const auto selection = pdfView->currentSelection();
        if (selection && !selection->string().isEmpty()) {
            bool made = false;
            if (mode == PDFToolModeAnnHighlight)
                made = pdfView->onAddHighlight();
            else if (mode == PDFToolModeAnnUnderline)
                made = pdfView->onAddUnderline();
            else if (mode == PDFToolModeAnnStrikeOut)
                made = pdfView->onAddStrikeout();
            pdfView->clearSelection();
            if (made)
                return;
        }
    }
    m_toolMode = mode;
    if (XPDFView::isAnnToolMode(mode)) {
        m_isAnnBarPinned = true;
        m_isEditBarHidden = true;
        m_isAnnBarHidden = false;
        post(SecondaryTBVisibilityDidChangeNotification);
    } else {
        post(ToolModeDidChangeNotification);
    }
}

void PDFContents::annBarDidPickTool()
{
    m_isAnnBarPinned = true;
    m_isEditBarHidden = true;
    m_isAnnBarHidden = false;
    post(ToolModeDidChangeNotification);
}

void PDFContents::setIsPagesEditingMode(bool editing)
{
    m_isPagesEditingMode = editing;
    post(PagesEditingModeDidChangeNotification);
}

void PDFContents::setSplitMode(PDFSplitViewMode mode)
{
    m_splitMode = mode;
    if (mode != PDFSplitViewMode::none) {
        m_isSidebarHidden = true;
        post(SidebarVisibilityDidChangeNotification);
    }
    post(SplitModeDidChangeNotification);
}

void PDFContents::setIsAnnBarPinned(bool pinned)
{
    m_isAnnBarPinned = pinned;
    if (pinned) {
        m_isEditBarHidden = true;
        m_isAnnBarHidden = false;
    } else {
        m_isAnnBarHidden = true;
        // The tool logic runs again with the tool it has.
        setToolMode(m_toolMode);
    }
    post(SecondaryTBVisibilityDidChangeNotification);
}

void PDFContents::setIsAnnBarHidden(bool hidden)
{
    m_isAnnBarHidden = hidden;
    if (!hidden)
        m_isEditBarHidden = true;
    post(SecondaryTBVisibilityDidChangeNotification);
}

void PDFContents::setIsEditBarHidden(bool hidden)
{
    m_isEditBarHidden = hidden;
    if (!hidden) {
        m_isAnnBarPinned = false;
        m_isAnnBarHidden = true;
    }
    post(SecondaryTBVisibilityDidChangeNotification);
}

void PDFContents::setIsSidebarHidden(bool hidden)
{
    m_isSidebarHidden = hidden;
    post(SidebarVisibilityDidChangeNotification);
}

void PDFContents::setSidebarMode(PDFSidebarMode mode)
{
    m_sidebarMode = mode;
    applySidebarMode();
}

void PDFContents::setQueryString(const QString &query)
{
    const QString trimmed = query.trimmed();
    m_queryString = trimmed.isEmpty() ? std::nullopt : std::optional<QString>(trimmed);
    post(QueryStringDidChangeNotification);
}

bool PDFContents::splitViewShouldHideDivider(const QSplitter *splitView) const
{
    if (splitView == m_vertPDFSplitView)
        return m_splitMode != PDFSplitViewMode::horizontal;
    if (splitView == m_horiPDFSplitView)
        return m_splitMode != PDFSplitViewMode::vertical;
    if (splitView == m_searchSplitView)
        return !m_queryString.has_value();
    return false;
}

bool PDFContents::hasChangesToPromptUser() const
{
    for (const FDPDFView *const pdfView : { m_primaryPDFView.data(), m_secondaryPDFView.data() }) {
        const auto document = pdfView ? pdfView->fdDocument() : nullptr;
        if (document && document->numberOfChanges() > 0
            && (FDDefaults::savingPrompt() == FDSavingPrompt::prompt
                || document->fileURL().isEmpty()))
            return true;
    }
    return false;
}

bool PDFContents::shouldClose()
{
    for (const FDPDFView *const pdfView : { m_primaryPDFView.data(), m_secondaryPDFView.data() }) {
        const auto document = pdfView ? pdfView->fdDocument() : nullptr;
        if (!document || document->numberOfChanges() <= 0)
            continue;
        const int answer = promptToSave(document);
        if (answer == 0)
            document->setNumberOfChanges(0);
        else if (answer != 1)
            return false;
    }
    return true;
}

int PDFContents::promptToSave(const std::shared_ptr<FDDocument> &document)
{
    // A named file is saved without a question unless the person asked for one.
    if (FDDefaults::savingPrompt() != FDSavingPrompt::prompt && !document->fileURL().isEmpty())
        return 1;
    AlertRequest request;
    request.messageText
        = QStringLiteral("Do you want to save the changes made to the document \"%1\"?")
              .arg(document->title());
    request.informativeText = QStringLiteral("Your changes will be lost if you don't save them!");
    request.buttons
        = { QStringLiteral("Save"), QStringLiteral("Cancel"), QStringLiteral("Don't Save") };
    const int response = Alert::runModal(request);
    if (response == Alert::ThirdButtonReturn)
        return 0;
    if (response != Alert::FirstButtonReturn)
        return -1;
    if (!document->fileURL().isEmpty())
        return 1;
    FilePanelRequest panel;
    panel.kind = FilePanelRequest::Save;
    panel.parent = m_container;
    const QUrl chosen = FDFilePanel::runModal(panel);
    if (chosen.isEmpty())
        return -1;
    document->setFileURL(chosen);
    return 1;
}

void PDFContents::destroy(TabStripModel *model)
{
    for (FDPDFView *const pdfView : { m_primaryPDFView.data(), m_secondaryPDFView.data() }) {
        if (!pdfView)
            continue;
        if (const auto document = pdfView->fdDocument())
            document->setDelegate({});
        // A document with changes goes to the saving service here.
        pdfView->setDocument(nullptr);
        pdfView->setDelegate2(nullptr);
        pdfView->setDelegate(nullptr);
        // Letting go may have committed an edit, which registered a step of its own.
        forgetUndoStepsOf(pdfView);
    }
    NotificationCenter::defaultCenter().removeObserver(this);
    FDContents::destroy(model);
}

void PDFContents::tabDidBecomeSelected()
{
    FDContents::tabDidBecomeSelected();
    MainQueue::async(this, [this] {
        if (m_selectedPDFView)
            m_selectedPDFView->setFocus(Qt::OtherFocusReason);
    });
}

QVariantMap PDFContents::lastOpenedWindowsRecord() const
{
    QList<QUrl> urls;
    for (const FDPDFView *const pdfView : { m_primaryPDFView.data(), m_secondaryPDFView.data() }) {
        const QUrl url = pdfView ? pdfView->fileURL() : QUrl();
        if (!url.isEmpty())
            urls.append(url);
    }
    if (urls.isEmpty())
        return {};
    return {
        { GlobalService::kLOW_IsNewTab, false },
        { GlobalService::kLOW_SplitMode, qint64(m_splitMode) },
        { GlobalService::kLOW_URLs, FDEncodeURLs(urls) },
    };
}

void PDFContents::reloadFromDisk()
{
    FDDocumentReloader *const reloader
        = m_selectedPDFView == m_secondaryPDFView ? m_secondaryReloader : m_primaryReloader;
    if (reloader)
        reloader->reloadByHand();
}

void PDFContents::swapPDFViews()
{
    QWidget *const primaryPlace = m_primaryPDFView->parentWidget();
    QWidget *const secondaryPlace = m_secondaryPDFView->parentWidget();
    // A moved widget drops the focus, which would fall to the next one in the chain (a toolbar
    // button): the view that had it keeps it.
    QPointer<QWidget> focused = QApplication::focusWidget();
    const bool viewFocused = focused
        && (m_primaryPDFView->isAncestorOf(focused) || m_secondaryPDFView->isAncestorOf(focused)
            || focused == m_primaryPDFView || focused == m_secondaryPDFView);
    PDFContentsConainer::placeView(m_primaryPDFView, secondaryPlace);
    PDFContentsConainer::placeView(m_secondaryPDFView, primaryPlace);
    if (viewFocused && focused)
        focused->setFocus(Qt::OtherFocusReason);
    post(PDFViewsDidSwapNotification);
}

void PDFContents::setUndoManager(UndoManager *undoManager)
{
    if (undoManager == m_undoManager)
        return;
    for (const FDPDFView *const pdfView : { m_primaryPDFView.data(), m_secondaryPDFView.data() })
        forgetUndoStepsOf(pdfView);
    m_undoManager = undoManager;
    for (FDPDFView *const pdfView : { m_primaryPDFView.data(), m_secondaryPDFView.data() }) {
        if (pdfView)
            pdfView->setUndoManager(undoManager);
    }
}

bool PDFContents::ownsUndoTarget(const void *target) const
{
    // Views register as XPDFView, the class that registers steps.
    for (const XPDFView *const pdfView : { m_primaryPDFView.data(), m_secondaryPDFView.data() }) {
        if (pdfView && target == pdfView)
            return true;
    }
    return target && target == this;
}

void PDFContents::forgetUndoStepsOf(const FDPDFView *pdfView)
{
    if (m_undoManager && pdfView)
        m_undoManager->removeAllActionsWithTarget(static_cast<const XPDFView *>(pdfView));
}

void PDFContents::PDFViewESCKeyDown(XPDFView *sender)
{
    m_isAnnBarPinned = false;
    m_isAnnBarHidden = true;
    setToolMode(m_toolMode);
    post(SecondaryTBVisibilityDidChangeNotification);
    sender->setSelectedAnn(nullptr);
}

void PDFContents::PDFViewDidBecomeFirstResponder(XPDFView *sender)
{
    auto *const pdfView = qobject_cast<FDPDFView *>(sender);
    if (!pdfView || pdfView == m_selectedPDFView)
        return;
    if (m_selectedPDFView)
        m_selectedPDFView->setSelectedAnn(nullptr);
    m_selectedPDFView = pdfView;
    post(SelectedPDFViewDidChangeNotification);
}

void PDFContents::PDFViewPerformAddOutline(XPDFView *sender)
{
    m_isSidebarHidden = false;
    m_sidebarMode = PDFSidebarMode::toc;
    applySidebarMode();
    post(AddOutlineNotification,
        { { QStringLiteral("PDFView"), QVariant::fromValue<QObject *>(sender) } });
}

void PDFContents::PDFViewWillClickOnLink(PDFView *sender, const QUrl &url)
{
    if (url.scheme() == QLatin1String("mailto"))
        Workspace::openURL(url);
    else
        PDFViewDelegate::PDFViewWillClickOnLink(sender, url);
}
