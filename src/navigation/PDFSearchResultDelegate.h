#pragma once

// Draws the search list: page headers as a bubble with the page number, matches as wrapped
// context with the hit in red. Heights are kept per row for the width they were measured at.

#include "PDFSidebarListDelegate.h"

class PDFSearchResultDelegate : public PDFSidebarListDelegate
{
    Q_OBJECT

public:
    static constexpr int sideMargin = 8;
    static constexpr int verticalMargin = 6;

    explicit PDFSearchResultDelegate(QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;

protected:
    int measureRowHeight(
        const QStyleOptionViewItem &option, const QModelIndex &index, int width) const override;
};
