#pragma once

// The thumbnail grid of one pane of the pages editor: a list in icon mode over the pages of a
// document, with the editor's own answers to Delete, Escape, a right click and taking the focus.
// Main thread only.

#include <QListView>
#include <QPointer>

class FDPDFView;

class PDFCollectionViewDragDelegate;

class PDFCollectionView : public QListView
{
    Q_OBJECT

public:
    explicit PDFCollectionView(QWidget *parent = nullptr);

    // The view whose document this pane shows.
    FDPDFView *pdfView() const;
    void setPdfView(FDPDFView *view);

    // True while a batch of item changes is being applied; paste waits for it to end.
    bool isAnimating() const { return m_isAnimating; }
    // Runs changes with isAnimating set, clearing it before the completion runs.
    void performBatchUpdates(
        const std::function<void()> &updates, const std::function<void()> &completion = {});

    // The selected rows, ascending.
    QList<int> selectedRows() const;
    void selectRows(const QList<int> &rows);

    // Drags out of the grid and drops on it go to the delegate (not owned; none: no drag).
    void setDragDelegate(PDFCollectionViewDragDelegate *delegate);
    // Before which item a drop at a point of the viewport lands, from 0 to the item count.
    int dropIndexAt(const QPoint &point) const;
    // Where the drop indicator stands now, in viewport coordinates; empty while nothing is
    // dragged over the grid.
    QRect dropIndicatorRect() const;

signals:
    void didBecomeFirstResponder();
    // The Delete key, with or without a selection: the editor asks before anything goes.
    void deleteRequested();
    void leaveRequested();
    void rotateRequested();
    void extractRequested();
    void contextMenuRequestedAt(const QPoint &globalPos);

protected:
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void setDropIndex(int index, bool afterPrevious);
    QRect itemRect(int row) const;

    QPointer<FDPDFView> m_pdfView;
    bool m_isAnimating = false;
    PDFCollectionViewDragDelegate *m_dragDelegate = nullptr;
    Qt::DropAction m_dropAction = Qt::IgnoreAction; // of the drag over the grid now
    int m_dropIndex = -1; // -1: nothing dragged over the grid
    bool m_dropAfterPrevious = false; // drawn at the end of the line above, not before the item
};
