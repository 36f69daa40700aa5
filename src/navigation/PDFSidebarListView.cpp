#include "PDFSidebarListView.h"

#include <QResizeEvent>

PDFSidebarListView::PDFSidebarListView(QWidget *parent)
    : QListView(parent)
{
    setSelectionMode(QAbstractItemView::SingleSelection);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setResizeMode(QListView::Adjust);
    setFrameShape(QFrame::NoFrame);
}

void PDFSidebarListView::resizeEvent(QResizeEvent *event)
{
    QListView::resizeEvent(event);
    const int width = viewport()->width();
    if (width != m_laidOutWidth) {
        m_laidOutWidth = width;
        scheduleDelayedItemsLayout();
    }
}
