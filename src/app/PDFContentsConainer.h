#pragma once

// The root widget of a document tab: the toolbar area above, and below it either the main area
// (search split, sidebar split, and the area of the two document views in their split views) or
// the pages editor. It follows the tab's notifications to show and hide its areas and holds no
// document logic. Main thread only.

#include "containers/PDFViewContainer.h"

#include <QFrame>
#include <QPointer>
#include <QSplitter>
#include <QWidget>

class FDPDFView;
class PDFContents;
class PDFPagesEditor;

class PDFContentsConainer : public QWidget
{
    Q_OBJECT

public:
    // Builds the areas with the two views in them; contents is not yet observed.
    PDFContentsConainer(PDFContents *contents, FDPDFView *primary, FDPDFView *secondary);
    ~PDFContentsConainer() override;

    // Starts following the tab's notifications and the theme.
    void onViewInit();

    PDFContents *contents() const { return m_contents; }
    QWidget *toolbarContainer() const { return m_toolbarContainer; }
    QWidget *mainView() const { return m_mainView; }
    QWidget *pagesEditor() const { return m_pagesEditor; }
    // The editor shown in the pages editor area.
    PDFPagesEditor *pagesEditorController() const { return m_pagesEditorController; }
    QWidget *sidebarContainer() const { return m_sidebarContainer; }
    QWidget *searchResultsContainer() const { return m_searchResultsContainer; }
    QSplitter *searchSplitView() const { return m_searchSplitView; }
    QSplitter *sidebarSplitView() const { return m_sidebarSplitView; }
    QSplitter *vertPDFSplitView() const { return m_vertPDFSplitView; }
    QSplitter *horiPDFSplitView() const { return m_horiPDFSplitView; }
    QWidget *pdfAreaView() const { return m_pdfAreaView; }
    // The places of the views: the first always shows, the right one beside it in a side-by-side
    // split, the bottom one below it in a split one above the other.
    PDFViewContainer *topLeftContainer() const { return m_topLeftContainer; }
    PDFViewContainer *rightContainer() const { return m_rightContainer; }
    PDFViewContainer *bottomContainer() const { return m_bottomContainer; }

    // Puts a view into a place, filling it.
    static void placeView(FDPDFView *view, QWidget *place);

private:
    void onPagesEditingModeChanged();
    void onSidebarVisibilityChanged();
    void onQueryStringChanged();
    void onSplitModeChanged();
    void onThemeChanged();
    void updateDividers();

    QPointer<PDFContents> m_contents;
    QWidget *m_toolbarContainer = nullptr;
    QWidget *m_mainView = nullptr;
    QFrame *m_pagesEditor = nullptr;
    PDFPagesEditor *m_pagesEditorController = nullptr;
    QSplitter *m_searchSplitView = nullptr;
    QSplitter *m_sidebarSplitView = nullptr;
    QSplitter *m_vertPDFSplitView = nullptr;
    QSplitter *m_horiPDFSplitView = nullptr;
    QFrame *m_sidebarContainer = nullptr;
    QFrame *m_searchResultsContainer = nullptr;
    QWidget *m_pdfAreaView = nullptr;
    PDFViewContainer *m_topLeftContainer = nullptr;
    PDFViewContainer *m_rightContainer = nullptr;
    PDFViewContainer *m_bottomContainer = nullptr;
};
