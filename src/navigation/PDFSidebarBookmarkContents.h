#pragma once

// The bookmarks tab: the selected view's document's bookmarks as a list of titles and page
// labels. A selection takes the view to the page; titles are edited in place; rows come and go
// with the document's bookmark notifications. Main thread only.

#include "PDFSidebarTabContents.h"

#include <memory>

class FDBookmark;
class PDFBookmarkModel;
class PDFBookmarkTableView;

class PDFSidebarBookmarkContents : public PDFSidebarTabContents
{
    Q_OBJECT

public:
    explicit PDFSidebarBookmarkContents(QWidget *parent = nullptr);
    ~PDFSidebarBookmarkContents() override;

    PDFBookmarkTableView *tableView() const { return m_tableView; }
    PDFBookmarkModel *model() const { return m_model; }
    double pageColumnWidth() const { return m_pageColumnWidth; }

    // Opens the title of the row for editing.
    void editBookmark(int row);
    // Removes the bookmark at the selected row, or at clickedRow when that is not negative.
    void deleteBookmark(int clickedRow = -1);

protected:
    void onPDFViewChanged() override;
    void onResetObservers() override;
    void onThemeChanged() override;

private:
    void reload();
    void updateTitle();
    void updatePageColumn();
    void onSelectionChanged();
    void showContextMenu(const QPoint &point);

    PDFBookmarkTableView *m_tableView = nullptr;
    PDFBookmarkModel *m_model = nullptr;
    double m_pageColumnWidth = 24.0;
    bool m_isSelectingByProgram = false;
};
