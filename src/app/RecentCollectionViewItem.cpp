#include "RecentCollectionViewItem.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>

#include <QImage>
#include <QPainter>
#include <QPainterPath>

RecentCollectionViewItem::RecentCollectionViewItem(QObject *parent)
    : QStyledItemDelegate(parent)
{ }

QSize RecentCollectionViewItem::sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const
{
    return itemSize;
}

void RecentCollectionViewItem::paint(
    QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const FDTheme *const theme = FDThemeProvider::current();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);

    const QRect cell = option.rect;
    const QRectF thumbSlot(cell.x() + (cell.width() - thumbnailSize.width()) / 2.0, cell.y() + 8,
        thumbnailSize.width(), thumbnailSize.height());
    const QImage thumb = index.data(ThumbRole).value<QImage>();
    QRectF page;
    if (!thumb.isNull()) {
        // Fitted into the slot, standing on its bottom edge like a sheet on a shelf.
        const QSizeF fitted = QSizeF(thumb.size()).scaled(thumbSlot.size(), Qt::KeepAspectRatio);
        page = QRectF(thumbSlot.center().x() - fitted.width() / 2,
            thumbSlot.bottom() - fitted.height(), fitted.width(), fitted.height());
        painter->fillRect(page.adjusted(-1, -1, 1, 1), FDTheme::white(0, 0.08));
        painter->drawImage(page, thumb);
    } else {
        page = QRectF(thumbSlot.center().x() - 60, thumbSlot.bottom() - 160, 120, 160);
        painter->fillRect(page, theme->color(FDTheme::pageBackgroundColor));
        painter->setPen(QPen(theme->color(FDTheme::secondaryBorderColor), 1));
        painter->drawRect(page);
        QFont mark = option.font;
        mark.setPixelSize(22);
        mark.setBold(true);
        painter->setFont(mark);
        painter->setPen(theme->color(FDTheme::tertiaryLabelColor));
        painter->drawText(page, Qt::AlignCenter, QStringLiteral("PDF"));
    }

    const bool selected = option.state & QStyle::State_Selected;
    const bool hovered = option.state & QStyle::State_MouseOver;
    if (selected || hovered) {
        QColor ring = theme->color(FDTheme::selectedBackgroundColor);
        if (!selected)
            ring.setAlphaF(0.45f);
        painter->setPen(QPen(ring, 4));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(page.adjusted(-3, -3, 3, 3), 3, 3);
    }

    const QRectF titleRect(cell.x() + 6, thumbSlot.bottom() + 10, cell.width() - 12, 36);
    painter->setFont(option.font);
    painter->setPen(theme->color(FDTheme::labelColor));
    const QString title = index.data(Qt::DisplayRole).toString();
    const QString elided
        = option.fontMetrics.elidedText(title, Qt::ElideMiddle, int(titleRect.width()));
    painter->drawText(titleRect, Qt::AlignHCenter | Qt::AlignTop, elided);
    painter->restore();
}
