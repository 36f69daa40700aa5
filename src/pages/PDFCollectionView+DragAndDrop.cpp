#include "PDFCollectionView.h"
#include "PDFCollectionViewDragDelegate.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>

#include <QDrag>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPainter>
#include <QPointer>

namespace {

constexpr int indicatorWidth = 4;
constexpr int dragImageLength = 120;

} // namespace

void PDFCollectionView::setDragDelegate(PDFCollectionViewDragDelegate *delegate)
{
    m_dragDelegate = delegate;
    setDragEnabled(delegate != nullptr);
    setAcceptDrops(delegate != nullptr);
    viewport()->setAcceptDrops(delegate != nullptr);
    setDropIndicatorShown(false); // the grid draws its own, between items only
}

QRect PDFCollectionView::itemRect(int row) const
{
    return visualRect(model()->index(row, 0));
}

int PDFCollectionView::dropIndexAt(const QPoint &point) const
{
    const int count = model() ? model()->rowCount() : 0;
    if (count == 0)
        return 0;
    // Items run left to right in lines from the top: find the first line that reaches down to
    // the point, then the first item of it whose middle lies right of the point.
    const int lineGap = gridSize().isValid() ? gridSize().height() - itemRect(0).height() : 0;
    int low = 0;
    int high = count;
    while (low < high) {
        const int middle = low + (high - low) / 2;
        if (itemRect(middle).bottom() + lineGap < point.y())
            low = middle + 1;
        else
            high = middle;
    }
    if (low == count)
        return count;
    const int lineTop = itemRect(low).top();
    for (int row = low; row < count; ++row) {
        const QRect rect = itemRect(row);
        if (rect.top() != lineTop || point.x() < rect.center().x())
            return row;
    }
    return count;
}

QRect PDFCollectionView::dropIndicatorRect() const
{
    if (m_dropIndex < 0 || !model())
        return {};
    const int count = model()->rowCount();
    const int gap = gridSize().isValid() && count > 0
        ? (gridSize().width() - itemRect(0).width()) / 2
        : spacing();
    QRect rect;
    if (count == 0) {
        const int height = gridSize().isValid() ? gridSize().height() : 100;
        rect = QRect(spacing(), spacing(), indicatorWidth, height);
    } else if (m_dropIndex >= count || m_dropAfterPrevious) {
        const QRect previous = itemRect(std::min(m_dropIndex, count) - 1);
        rect = QRect(previous.right() + gap - indicatorWidth / 2, previous.top(), indicatorWidth,
            previous.height());
    } else {
        const QRect next = itemRect(m_dropIndex);
        rect = QRect(
            next.left() - gap - indicatorWidth / 2, next.top(), indicatorWidth, next.height());
    }
    return rect;
}

void PDFCollectionView::setDropIndex(int index, bool afterPrevious)
{
    if (index == m_dropIndex && afterPrevious == m_dropAfterPrevious)
        return;
    viewport()->update(dropIndicatorRect().adjusted(-2, -2, 2, 2));
    m_dropIndex = index;
    m_dropAfterPrevious = afterPrevious;
    viewport()->update(dropIndicatorRect().adjusted(-2, -2, 2, 2));
}

void PDFCollectionView::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    const QRect indicator = dropIndicatorRect();
    if (indicator.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(FDThemeProvider::current()->color(FDTheme::selectedBackgroundColor));
    painter.drawRoundedRect(indicator, indicatorWidth / 2.0, indicatorWidth / 2.0);
}

void PDFCollectionView::startDrag(Qt::DropActions)
{
    if (!m_dragDelegate || !model())
        return;
    // The selection goes, whichever item the drag started from; the pressed item without one.
    QList<int> rows = selectedRows();
    if (rows.isEmpty() && currentIndex().isValid())
        rows.append(currentIndex().row());
    if (rows.isEmpty())
        return;
    QMimeData *const mime = m_dragDelegate->collectionViewWillBeginDrag(this, rows);
    if (!mime)
        return;
    const QPointer<PDFCollectionView> self(this);
    auto *const drag = new QDrag(this);
    drag->setMimeData(mime);
    const QRect first = itemRect(rows.first());
    if (first.intersects(viewport()->rect())) {
        const QPixmap picture = viewport()->grab(first).scaled(
            dragImageLength, dragImageLength, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        drag->setPixmap(picture);
        drag->setHotSpot(QPoint(picture.width() / 2, picture.height() / 2));
    }
    drag->exec(Qt::MoveAction | Qt::CopyAction, Qt::MoveAction);
    if (self && m_dragDelegate)
        m_dragDelegate->collectionViewDragDidEnd(this);
}

void PDFCollectionView::dragEnterEvent(QDragEnterEvent *event)
{
    m_dropAction = m_dragDelegate
        ? m_dragDelegate->collectionViewValidateDrop(this, event->mimeData())
        : Qt::IgnoreAction;
    if (m_dropAction == Qt::IgnoreAction) {
        event->ignore();
        return;
    }
    setState(DraggingState);
    event->setDropAction(m_dropAction);
    event->accept();
    dragMoveEvent(event);
}

void PDFCollectionView::dragMoveEvent(QDragMoveEvent *event)
{
    if (m_dropAction == Qt::IgnoreAction) {
        event->ignore();
        return;
    }
    const QPoint point = event->position().toPoint();
    const int index = dropIndexAt(point);
    // At the end of a line the bar stands after its last item, where the pointer is.
    const bool afterPrevious
        = index > 0 && index < model()->rowCount() && point.y() < itemRect(index).top();
    setDropIndex(index, afterPrevious);
    const int margin = autoScrollMargin();
    if (point.y() < margin || point.y() > viewport()->height() - margin)
        startAutoScroll();
    event->setDropAction(m_dropAction);
    event->accept();
}

void PDFCollectionView::dragLeaveEvent(QDragLeaveEvent *event)
{
    stopAutoScroll();
    setState(NoState);
    setDropIndex(-1, false);
    m_dropAction = Qt::IgnoreAction;
    event->accept();
}

void PDFCollectionView::dropEvent(QDropEvent *event)
{
    stopAutoScroll();
    setState(NoState);
    setDropIndex(-1, false);
    const Qt::DropAction action = m_dropAction;
    m_dropAction = Qt::IgnoreAction;
    if (action == Qt::IgnoreAction || !m_dragDelegate) {
        event->ignore();
        return;
    }
    const int index = dropIndexAt(event->position().toPoint());
    if (m_dragDelegate->collectionViewAcceptDrop(this, event->mimeData(), index)) {
        event->setDropAction(action);
        event->accept();
    } else {
        event->ignore();
    }
}
