#pragma once

// A straight line between two points relative to the lower-left corner of its bounds, with a
// style for each end. Main thread only.

#include "PDFAnnotation.h"

#include <QPointF>

class PDFAnnotationLine : public PDFAnnotation
{
public:
    // End styles, as the platform numbers them.
    enum LineStyle {
        None = 0,
        Square = 1,
        Circle = 2,
        Diamond = 3,
        OpenArrow = 4,
        ClosedArrow = 5
    };

    PDFAnnotationLine();
    using PDFAnnotation::initWithBounds;
    // A solid border of width 1; the line runs from (0, 0) to the far corner of the bounds.
    bool init() override;
    bool initWithBounds(const QRectF &bounds) override;

    QPointF startPoint() const { return m_startPoint; }
    void setStartPoint(const QPointF &point);
    QPointF endPoint() const { return m_endPoint; }
    void setEndPoint(const QPointF &point);
    int startLineStyle() const { return m_startLineStyle; }
    void setStartLineStyle(int style);
    int endLineStyle() const { return m_endLineStyle; }
    void setEndLineStyle(int style);

    bool isAppearanceSynthesised() const override { return true; }
    // The line stroked with colour, border width and dash, and its ends (never filled);
    // nothing for a line whose points coincide. A line whose file holds its own picture draws
    // that picture.
    void drawWithBox(QPainter &painter, PDFDisplayBox box) const override;

    // Adds "startPoint", "endPoint" (QPointF), "startLineStyle", "endLineStyle" (int).
    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;
    QStringList archivedKeys() const override;

private:
    QPointF m_startPoint;
    QPointF m_endPoint;
    int m_startLineStyle = None;
    int m_endLineStyle = None;
};
