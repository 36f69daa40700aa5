#pragma once

// The thumbnails tab: one row per page with its picture and number, following the page in view
// while it is shown, taking the view to a page the person selects, and drawing one row again
// when an annotation or a bookmark of its page changes. Pictures are drawn on workers; a row
// shows a blank page of the right shape until its picture arrives, and rows scrolled away stop
// their drawing. Main thread only.

#include "PDFSidebarTabContents.h"

class PDFThumbnailModel;
class QListView;

class PDFSidebarThumbContents : public PDFSidebarTabContents
{
    Q_OBJECT

public:
    // The longest side of a thumbnail, and the row height: that plus 42.
    static constexpr double thumbnailSize = 240.0;
    static constexpr double rowHeight = thumbnailSize + 42.0;

    explicit PDFSidebarThumbContents(QWidget *parent = nullptr);
    ~PDFSidebarThumbContents() override;

    QListView *tableView() const { return m_tableView; }
    PDFThumbnailModel *model() const { return m_model; }
    // The rows the list shows now, first to last; an empty range is (0, -1).
    std::pair<int, int> visibleRows() const;
    // Selects the view's current page and scrolls to it, while the tab is shown.
    void selectCurrentPage();

protected:
    void onPDFViewChanged() override;
    void onResetObservers() override;
    void onThemeChanged() override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void reload();
    void onSelectionChanged();
    void onAnnotationCUD(const struct Notification &notification);
    void onBookmarkChanged(const struct Notification &notification);
    void onDocumentPageChanged();
    void dropRequestsOutOfView();
    void updateItemSize();

    QListView *m_tableView = nullptr;
    PDFThumbnailModel *m_model = nullptr;
    bool m_isSelectingByProgram = false;
    bool m_isPageReloadQueued = false; // page changes come one per page: one reload per turn
};
