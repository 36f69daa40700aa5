#pragma once

// Draws the search list: page headers as a bubble with the page number, matches as wrapped
// context with the hit in red. Heights are kept per row for the width they were measured at.

#include <QHash>
#include <QStyledItemDelegate>

class PDFSearchResultDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    static constexpr int sideMargin = 8;
    static constexpr int verticalMargin = 6;

    explicit PDFSearchResultDelegate(QObject *parent = nullptr);

    // Forgets the measured heights; the list calls this when its rows are replaced.
    void clearHeights() { m_heights.clear(); }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    mutable QHash<int, int> m_heights;
    mutable int m_measuredWidth = -1;
};
