#include "PDFCollectionView.h"

#include <view/FDPDFView.h>

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>

PDFCollectionView::PDFCollectionView(QWidget *parent)
    : QListView(parent)
{
    setObjectName(QStringLiteral("PDFCollectionView"));
    setViewMode(QListView::IconMode);
    setFlow(QListView::LeftToRight);
    setWrapping(true);
    setResizeMode(QListView::Adjust);
    setMovement(QListView::Static);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setUniformItemSizes(true);
    setSpacing(6);
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setFocusPolicy(Qt::StrongFocus);
    setContextMenuPolicy(Qt::DefaultContextMenu);
}

FDPDFView *PDFCollectionView::pdfView() const
{
    return m_pdfView;
}

void PDFCollectionView::setPdfView(FDPDFView *view)
{
    m_pdfView = view;
}

void PDFCollectionView::performBatchUpdates(
    const std::function<void()> &updates, const std::function<void()> &completion)
{
    m_isAnimating = true;
    if (updates)
        updates();
    m_isAnimating = false;
    if (completion)
        completion();
}

QList<int> PDFCollectionView::selectedRows() const
{
    QList<int> rows;
    if (!selectionModel())
        return rows;
    for (const QModelIndex &index : selectionModel()->selectedIndexes())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void PDFCollectionView::selectRows(const QList<int> &rows)
{
    if (!selectionModel() || !model())
        return;
    QItemSelection selection;
    for (const int row : rows) {
        const QModelIndex index = model()->index(row, 0);
        if (index.isValid())
            selection.select(index, index);
    }
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void PDFCollectionView::focusInEvent(QFocusEvent *event)
{
    QListView::focusInEvent(event);
    emit didBecomeFirstResponder();
}

void PDFCollectionView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        emit deleteRequested();
        return;
    }
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        emit leaveRequested();
        return;
    }
    if (event->modifiers() == Qt::ControlModifier && event->key() == Qt::Key_R) {
        emit rotateRequested();
        return;
    }
    if (event->modifiers() == Qt::ControlModifier && event->key() == Qt::Key_E) {
        emit extractRequested();
        return;
    }
    QListView::keyPressEvent(event);
}

void PDFCollectionView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton) {
        // A context menu acts on the item under the pointer alone; on empty space on nothing.
        const QModelIndex index = indexAt(event->position().toPoint());
        if (selectionModel()) {
            selectionModel()->clearSelection();
            if (index.isValid())
                selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
        }
        event->accept();
        return;
    }
    QListView::mousePressEvent(event);
}

void PDFCollectionView::contextMenuEvent(QContextMenuEvent *event)
{
    emit contextMenuRequestedAt(event->globalPos());
    event->accept();
}
