#pragma once

// Draws one recent document of the start tab's grid: its thumbnail (or a blank page when there is
// none) above its title, framed 4 pixels wide in the theme's colour while selected or hovered.
// Main thread only.

#include <QStyledItemDelegate>

class RecentCollectionViewItem : public QStyledItemDelegate
{
public:
    // Roles of the grid's items beside Qt::DisplayRole (the title).
    enum Role { URLRole = Qt::UserRole + 1, ThumbRole };

    static constexpr QSize thumbnailSize { 140, 180 };
    static constexpr QSize itemSize { 164, 230 };

    explicit RecentCollectionViewItem(QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};
