#pragma once

// The scrolled canvas of a PDF view: all laid-out pages at the current scale, in logical pixels
// with the origin at its top left. It is not a widget of its own (a long document at a high zoom
// outgrows any widget); it converts to and from the view and scrolls it. Main thread only.

#include <QPointF>
#include <QRectF>

class PDFView;

class PDFDocumentView
{
public:
    explicit PDFDocumentView(PDFView &view)
        : m_view(view)
    { }

    QRectF bounds() const;
    // The part of the canvas the view shows.
    QRectF visibleRect() const;
    // Scrolls as little as possible to show the rect; true when the position changed.
    bool scrollRectToVisible(const QRectF &rect);
    // Scrolls towards a pointer (view coordinates) that left the view during a drag, by how
    // far it is out; true when the position changed.
    bool autoscroll(const QPointF &viewPoint);

    QPointF convertPointFromView(const QPointF &point) const;
    QPointF convertPointToView(const QPointF &point) const;
    QRectF convertRectFromView(const QRectF &rect) const;
    QRectF convertRectToView(const QRectF &rect) const;

private:
    PDFView &m_view;
};
