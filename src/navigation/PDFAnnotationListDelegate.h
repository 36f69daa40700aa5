#pragma once

// Draws the annotation list: page headers as a number bubble, annotations with their type icon,
// colour swatch, text, author and date. Heights are kept per row for the width measured at.

#include "PDFSidebarListDelegate.h"

class PDFAnnotationListDelegate : public PDFSidebarListDelegate
{
    Q_OBJECT

public:
    explicit PDFAnnotationListDelegate(QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;

protected:
    int measureRowHeight(
        const QStyleOptionViewItem &option, const QModelIndex &index, int width) const override;
};
