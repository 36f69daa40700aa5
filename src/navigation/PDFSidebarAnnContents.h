#pragma once

// The annotations tab: every annotation of the selected view's document by page, following
// additions, changes and removals row by row; the list's selection and the view's go together.
// The list is made when the tab is first shown after a change of document, since it reads every
// page's annotations. Main thread only.

#include "PDFSidebarTabContents.h"

#include <memory>

class PDFAnnotation;
class PDFAnnotationListDelegate;
class PDFAnnotationListModel;
class QListView;
class QMenu;
struct Notification;

class PDFSidebarAnnContents : public PDFSidebarTabContents
{
    Q_OBJECT

public:
    explicit PDFSidebarAnnContents(QWidget *parent = nullptr);

    QListView *listView() const { return m_listView; }
    PDFAnnotationListModel *model() const { return m_model; }
    // The row menu's actions on a row, and Delete on the selected row.
    void copyAnn(int row);
    void deleteAnn(int row);
    void deleteSelected();

protected:
    void onPDFViewChanged() override;
    void onResetObservers() override;
    void onThemeChanged() override;
    void showEvent(QShowEvent *event) override;

private:
    void rebuild(const std::shared_ptr<PDFAnnotation> &leaveOut = nullptr);
    // Pages moved, came or went: the rows are rebuilt once on the next turn, or before the next
    // annotation notification if that comes first.
    void onDocumentPageChanged();
    void rebuildIfStale(const std::shared_ptr<PDFAnnotation> &leaveOut = nullptr);
    void updateTitle();
    void onAnnotationAdded(const Notification &notification);
    void onAnnotationRemoved(const Notification &notification);
    void onAnnotationChanged(const Notification &notification);
    void onSelectedAnnotationChanged();
    void onRowClicked(int row);
    void selectRow(int row);
    void showMenu(const QPoint &position);

    QListView *m_listView = nullptr;
    PDFAnnotationListModel *m_model = nullptr;
    PDFAnnotationListDelegate *m_delegate = nullptr;
    bool m_stale = false;
    // The document changed while the tab was out of sight; rows and counts wait for the showing.
    bool m_rebuildPending = false;
};
