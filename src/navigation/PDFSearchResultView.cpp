#include "PDFSearchResultView.h"

#include <QHeaderView>
#include <QResizeEvent>

PDFSearchResultView::PDFSearchResultView(QWidget *parent)
    : QTreeView(parent)
{
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setExpandsOnDoubleClick(false);
    setIndentation(0);
    // Rows differ in height; scrolling by rows keeps the scroll range from needing them all.
    setUniformRowHeights(false);
    setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setFrameShape(QFrame::NoFrame);
    header()->setStretchLastSection(true);
}

void PDFSearchResultView::resizeEvent(QResizeEvent *event)
{
    QTreeView::resizeEvent(event);
    // Text wraps to the width: rows measured for another width are measured again.
    const int width = viewport()->width();
    if (width != m_laidOutWidth) {
        m_laidOutWidth = width;
        scheduleDelayedItemsLayout();
    }
}
