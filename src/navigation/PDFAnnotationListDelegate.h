#pragma once

// Draws the annotation list: page headers as a number bubble, annotations with their type icon,
// colour swatch, text, author and date. Heights are kept per row for the width measured at.

#include <QHash>
#include <QStyledItemDelegate>

class PDFAnnotationListDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit PDFAnnotationListDelegate(QObject *parent = nullptr);

    void clearHeights() { m_heights.clear(); }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    mutable QHash<int, int> m_heights;
    mutable int m_measuredWidth = -1;
};
