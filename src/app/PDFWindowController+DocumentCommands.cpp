// The document commands of PDFWindowController ("PDF_..."): they act on the selected document
// tab and its selected view, and are validated by the same rules as the rest of the menu.

#include "PDFWindowController.h"

#include "FDFilePanel.h"
#include "PDFContents.h"

#include <document/FDDocument.h>
#include <kit/base/Workspace.h>
#include <kit/tabs/TabStripModel.h>
#include <navigation/FDBookmarkCommands.h>
#include <view/FDPDFView.h>

#include <QAction>

namespace {

bool is(const QString &command, const char *name)
{
    return command == QLatin1String(name);
}

} // namespace

PDFContents *PDFWindowController::selectedPDFContents() const
{
    auto *const self = const_cast<PDFWindowController *>(this);
    return qobject_cast<PDFContents *>(self->tabStripModel()->getSelectedTabContents());
}

FDPDFView *PDFWindowController::selectedPDFView() const
{
    PDFContents *const contents = selectedPDFContents();
    return contents ? contents->selectedPDFView() : nullptr;
}

bool PDFWindowController::validateDocumentCommand(QAction *item)
{
    PDFContents *const contents = selectedPDFContents();
    FDPDFView *const view = selectedPDFView();
    if (!contents || !view || !view->document())
        return false;
    const QString command = item->objectName();
    // The key that opens the pages editor also leaves it; nothing else acts on the hidden view.
    if (is(command, "PDF_onShowPagesEditor:")) {
        item->setChecked(contents->isPagesEditingMode());
        return true;
    }
    if (contents->isPagesEditingMode())
        return false;
    const int tag = item->data().toInt();
    const std::shared_ptr<FDDocument> document = view->fdDocument();
    const bool hasFile = document && !document->fileURL().isEmpty();
    if (is(command, "PDF_saveDocument:"))
        return document && document->numberOfChanges() > 0;
    if (is(command, "PDF_saveDocumentAs:") || is(command, "PDF_showInFinder:")
        || is(command, "PDF_reloadDocument:"))
        return hasFile;
    // Without a split the second view is hidden: swapping would show an empty one.
    if (is(command, "PDF_onSplitViewSwap:"))
        return contents->splitMode() != PDFSplitViewMode::none;
    if (is(command, "PDF_onChangeToolMode:"))
        item->setChecked(contents->toolMode() == tag);
    else if (is(command, "PDF_onChangeDisplayMode:"))
        item->setChecked(
            (view->displayMode() == 1 && tag == 0) || (view->displayMode() == 3 && tag == 1));
    else if (is(command, "PDF_onChangeSplitMode:"))
        item->setChecked(int(contents->splitMode()) == tag);
    else if (is(command, "PDF_onShowSidebar:"))
        item->setText(contents->isSidebarHidden() ? tr("Show Sidebar") : tr("Hide Sidebar"));
    else if (is(command, "PDF_onChangeSidebarMode:"))
        item->setChecked(int(contents->sidebarMode()) == tag);
    else if (is(command, "PDF_onToggleBookmark:")) {
        const auto page = view->currentPage();
        const bool marked = document && page && document->bookmarkFor(page);
        item->setText(marked ? tr("Remove Bookmark") : tr("Bookmark Page"));
        return document && page;
    } else if (is(command, "PDF_onAddOutline:"))
        return document && view->currentPage();
    else if (command.startsWith(QLatin1String("PDF_onZoom"))) {
        if (is(command, "PDF_onZoom100:"))
            item->setChecked(
                view->scaleMode() == PDFViewScaleMode::none && view->scaleFactor() == 1.0);
        else if (is(command, "PDF_onZoomFitWidth:"))
            item->setChecked(view->scaleMode() == PDFViewScaleMode::fitWidth);
        else if (is(command, "PDF_onZoomFitPage:"))
            item->setChecked(view->scaleMode() == PDFViewScaleMode::fitPage);
    }
    return true;
}

void PDFWindowController::performDocumentCommand(QAction *item)
{
    PDFContents *const contents = selectedPDFContents();
    FDPDFView *const view = selectedPDFView();
    if (!contents || !view || !view->document())
        return;
    const QString command = item->objectName();
    const int tag = item->data().toInt();
    const std::shared_ptr<FDDocument> document = view->fdDocument();

    if (is(command, "PDF_saveDocument:") && document && !document->fileURL().isEmpty()) {
        document->save();
    } else if ((is(command, "PDF_saveDocument:") || is(command, "PDF_saveDocumentAs:"))
        && document) {
        FilePanelRequest request;
        request.kind = FilePanelRequest::Save;
        request.nameFieldStringValue = document->title();
        request.parent = this;
        const QUrl chosen = FDFilePanel::runModal(request);
        if (!chosen.isEmpty())
            document->saveAs(chosen);
    } else if (is(command, "PDF_reloadDocument:")) {
        contents->reloadFromDisk();
    } else if (is(command, "PDF_showInFinder:")) {
        const QUrl url
            = document && !document->fileURL().isEmpty() ? document->fileURL() : view->pendingURL();
        if (!url.isEmpty())
            Workspace::activateFileViewerSelectingURLs({ url });
    } else if (is(command, "PDF_onChangeToolMode:")) {
        contents->setToolMode(PDFToolMode(tag));
    } else if (is(command, "PDF_onChangeDisplayMode:")) {
        view->setDisplayMode(2 * tag + 1);
    } else if (is(command, "PDF_onShowPagesEditor:")) {
        contents->setIsPagesEditingMode(!contents->isPagesEditingMode());
    } else if (is(command, "PDF_onChangeSplitMode:")) {
        if (tag < 0 || tag > 2)
            qFatal("PDF_onChangeSplitMode: with tag %d, which is no PDFSplitViewMode", tag);
        contents->setSplitMode(PDFSplitViewMode(tag));
    } else if (is(command, "PDF_onSplitViewSwap:")) {
        contents->swapPDFViews();
    } else if (is(command, "PDF_onShowSidebar:")) {
        contents->setIsSidebarHidden(!contents->isSidebarHidden());
    } else if (is(command, "PDF_onChangeSidebarMode:")) {
        if (tag < 0 || tag > 3)
            qFatal("PDF_onChangeSidebarMode: with tag %d, which is no PDFSidebarMode", tag);
        contents->setSidebarMode(PDFSidebarMode(tag));
    } else if (is(command, "PDF_onToggleBookmark:")) {
        FDBookmarkCommands::toggleBookmarkOfCurrentPage(*view);
    } else if (is(command, "PDF_onAddOutline:")) {
        // The sidebar owns the outline: the tab shows it and passes the request on.
        contents->PDFViewPerformAddOutline(view);
    } else if (is(command, "PDF_onGoToPreviousPage:")) {
        view->goToPreviousPage();
    } else if (is(command, "PDF_onGoToNextPage:")) {
        view->goToNextPage();
    } else if (is(command, "PDF_onGoToFirstPage:")) {
        view->goToFirstPage();
    } else if (is(command, "PDF_onGoToLastPage:")) {
        view->goToLastPage();
    } else if (is(command, "PDF_onGoBack:")) {
        view->goBack();
    } else if (is(command, "PDF_onGoForward:")) {
        view->goForward();
    } else if (is(command, "PDF_onGoToPage:")) {
        view->setIsPageNavigatorHidden(!view->isPageNavigatorHidden());
    } else if (is(command, "PDF_onZoom100:")) {
        view->setScaleMode(PDFViewScaleMode::none);
        view->setScaleFactor(1.0);
    } else if (is(command, "PDF_onZoomFitWidth:")) {
        view->setScaleMode(PDFViewScaleMode::fitWidth);
    } else if (is(command, "PDF_onZoomFitPage:")) {
        view->setScaleMode(PDFViewScaleMode::fitPage);
    } else if (is(command, "PDF_print:")) {
        view->printWithAnnotations(true);
    } else if (is(command, "PDF_printWithoutAnnotations:")) {
        view->printWithAnnotations(false);
    } else if (is(command, "PDF_onZoomIn:")) {
        view->setScaleMode(PDFViewScaleMode::none);
        view->zoomIn();
    } else if (is(command, "PDF_onZoomOut:")) {
        view->setScaleMode(PDFViewScaleMode::none);
        view->zoomOut();
    }
}
