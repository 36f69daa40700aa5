#pragma once

// One document tab: what the tab shows (tool, split, sidebar, bars, search text), its two
// document views, and the decisions at open and close (the "* " mark of the title, the save
// prompt). Bars, sidebars and editors learn of its changes only by its notifications.
// Main thread only.

#include "FDContents.h"
#include "PDFContentsConainer.h"

#include <kit/base/UndoManager.h>
#include <kit/pdfview/PDFViewDelegate.h>
#include <view/FDPDFView.h>
#include <view/PDFToolMode.h>
#include <view/PDFViewDelegate2.h>

#include <QPointer>
#include <QSplitter>
#include <QUrl>

#include <functional>
#include <optional>

class FDDocument;
class FDDocumentReloader;
class PDFSearchSidebarContainer;
class PDFSidebarContainer;
class PDFViewSearcher;
struct Notification;

enum class PDFSplitViewMode : int { none = 0, horizontal = 1, vertical = 2 };
enum class PDFSidebarMode : int { thumbnails = 0, toc = 1, annotations = 2, bookmarks = 3 };

class PDFContents : public FDContents, public PDFViewDelegate2, public PDFViewDelegate
{
    Q_OBJECT

public:
    // Posted on the default centre with the tab as sender.
    static const QString ToolModeDidChangeNotification;
    static const QString PagesEditingModeDidChangeNotification;
    static const QString SecondaryTBVisibilityDidChangeNotification;
    static const QString SidebarVisibilityDidChangeNotification;
    static const QString QueryStringDidChangeNotification;
    static const QString SelectedPDFViewDidChangeNotification;
    static const QString SplitModeDidChangeNotification;
    static const QString PDFViewsDidSwapNotification;
    static const QString SidebarModeDidChangeNotification;
    static const QString AddOutlineNotification; // user info "PDFView": the view

    // A tab for the document at url; an empty URL makes a new untitled document. The views exist
    // at once; the document is read when the tab first shows.
    explicit PDFContents(const QUrl &url = QUrl(), QObject *parent = nullptr);
    ~PDFContents() override;

    // Lets the windows make document tabs.
    static void registerAsDocumentContents();

    QString nibName() const override { return QStringLiteral("PDFContents"); }

    QSplitter *searchSplitView() const { return m_searchSplitView; }
    QSplitter *sidebarSplitView() const { return m_sidebarSplitView; }
    QSplitter *vertPDFSplitView() const { return m_vertPDFSplitView; }
    QSplitter *horiPDFSplitView() const { return m_horiPDFSplitView; }
    QWidget *pdfAreaView() const { return m_pdfAreaView; }
    PDFContentsConainer *container() const { return m_container; }
    PDFSidebarContainer *sidebarContainer() const;
    PDFSearchSidebarContainer *searchSidebarContainer() const;
    // One searcher for each view; each keeps its own list of hits.
    PDFViewSearcher *primarySearcher() const;
    PDFViewSearcher *secondarySearcher() const;
    FDPDFView *selectedPDFView() const { return m_selectedPDFView; }
    FDPDFView *primaryPDFView() const { return m_primaryPDFView; }
    FDPDFView *secondaryPDFView() const { return m_secondaryPDFView; }

    PDFToolMode toolMode() const override { return m_toolMode; }
    // With text selected, a markup tool marks the selection and the tool stays as it was.
    void setToolMode(PDFToolMode mode);
    bool isPagesEditingMode() const { return m_isPagesEditingMode; }
    void setIsPagesEditingMode(bool editing);
    PDFSplitViewMode splitMode() const { return m_splitMode; }
    // Hides the sidebar for a split, then announces the mode.
    void setSplitMode(PDFSplitViewMode mode);
    // The annotation bar picked a tool: the bar stays pinned and shown, the edit bar goes, and the
    // tool change is announced.
    void annBarDidPickTool();
    bool isAnnBarPinned() const { return m_isAnnBarPinned; }
    void setIsAnnBarPinned(bool pinned);
    bool isAnnBarHidden() const { return m_isAnnBarHidden; }
    void setIsAnnBarHidden(bool hidden);
    bool isEditBarHidden() const { return m_isEditBarHidden; }
    void setIsEditBarHidden(bool hidden);
    bool isSidebarHidden() const { return m_isSidebarHidden; }
    void setIsSidebarHidden(bool hidden);
    // Shows a hidden sidebar and hides a shown one, as F9 does.
    void toggleSidebar() { setIsSidebarHidden(!m_isSidebarHidden); }
    PDFSidebarMode sidebarMode() const { return m_sidebarMode; }
    // Stores the mode and shows the sidebar in it.
    void setSidebarMode(PDFSidebarMode mode);
    std::optional<QString> queryString() const { return m_queryString; }
    // Blanks at both ends are dropped; nothing left means no search text. Announced every time.
    void setQueryString(const QString &query);

    // Adds the pages of the files (PDF files and images, in their order) at the end of the
    // primary view's document, once it has been read: a new tab reads it when it first shows.
    // When none of the files gives a page, an alert says so.
    void addPagesFromURLs(const QList<QUrl> &urls);

    // Whether closing would ask: a changed untitled document always does, a changed named one
    // only while "SavingPrompt" is 1.
    bool hasChangesToPromptUser() const override;
    bool shouldClose() override;
    void destroy(TabStripModel *model) override;
    void tabDidBecomeSelected() override;
    QVariantMap lastOpenedWindowsRecord() const override;
    // Reads the selected view's file again (F5), asking first when it has unsaved changes.
    void reloadFromDisk();
    // Each view moves into the other's place; they stay primary and secondary.
    void swapPDFViews();

    // The undo manager of the window the tab is in, given by the window as the tab arrives.
    // Undo steps are registered with the view as their target; the tab drops a view's steps
    // when the view shows another document and when the tab closes, so that an undo never
    // reaches a document that has gone to the saving service.
    UndoManager *undoManager() const { return m_undoManager; }
    void setUndoManager(UndoManager *undoManager);
    // Whether an undo step of that target changes this tab's documents.
    bool ownsUndoTarget(const void *target) const;
    // The search divider shows only with a search text, a split's divider only in its mode.
    bool splitViewShouldHideDivider(const QSplitter *splitView) const;

    // PDFViewDelegate2
    void PDFViewESCKeyDown(XPDFView *sender) override;
    void PDFViewDidBecomeFirstResponder(XPDFView *sender) override;
    void PDFViewPerformAddOutline(XPDFView *sender) override;
    // PDFViewDelegate
    void PDFViewWillClickOnLink(PDFView *sender, const QUrl &url) override;

protected:
    std::unique_ptr<QWidget> loadView() override;

private:
    // Answers 1 (keep the changes for saving), 0 (drop them) or -1 (cancel the close).
    int promptToSave(const std::shared_ptr<FDDocument> &document);
    void onPDFDocumentChanged(const Notification &notification);
    void onPDFDocumentContentChanged();
    void refreshTitle();
    void applySidebarMode();
    void post(const QString &name, const QVariantMap &userInfo = {});
    void observeView(FDPDFView *view);
    void forgetUndoStepsOf(const FDPDFView *view);
    void addPendingPages();

    QPointer<QSplitter> m_searchSplitView;
    QPointer<QSplitter> m_sidebarSplitView;
    QPointer<QSplitter> m_vertPDFSplitView;
    QPointer<QSplitter> m_horiPDFSplitView;
    QPointer<QWidget> m_pdfAreaView;
    QPointer<FDPDFView> m_selectedPDFView;
    QPointer<FDPDFView> m_primaryPDFView;
    QPointer<FDPDFView> m_secondaryPDFView;
    PDFToolMode m_toolMode = PDFToolModeTextSelection;
    bool m_isPagesEditingMode = false;
    PDFSplitViewMode m_splitMode = PDFSplitViewMode::none;
    bool m_isAnnBarPinned = false;
    bool m_isAnnBarHidden = true;
    bool m_isEditBarHidden = true;
    bool m_isSidebarHidden = true;
    PDFSidebarMode m_sidebarMode = PDFSidebarMode::thumbnails;
    std::optional<QString> m_queryString;
    QPointer<PDFContentsConainer> m_container;
    QPointer<PDFSidebarContainer> m_sidebarContainer;
    QPointer<PDFSearchSidebarContainer> m_searchSidebarContainer;
    QPointer<PDFViewSearcher> m_primarySearcher;
    QPointer<PDFViewSearcher> m_secondarySearcher;
    QPointer<UndoManager> m_undoManager;
    // One per view; children of the tab.
    QPointer<FDDocumentReloader> m_primaryReloader;
    QPointer<FDDocumentReloader> m_secondaryReloader;
    QList<QUrl> m_pagesToAdd; // waiting for the document to be read
};
