#pragma once

// The closed shapes, circle and square: a figure filling the bounds, stroked with the colour,
// border width and dash, and filled with the interior colour when there is one. Main thread only.

#include "PDFAnnotation.h"

class BezierPath;

class PDFAnnotationShape : public PDFAnnotation
{
public:
    // A solid border of width 1, no interior colour.
    bool init() override;

    QColor interiorColor() const { return m_interiorColor; } // invalid when there is none
    void setInteriorColor(const QColor &color);

    bool isAppearanceSynthesised() const override { return true; }
    // Nothing for empty bounds.
    void drawWithBox(QPainter &painter, PDFDisplayBox box) const override;

    // Adds "interiorColor" (QColor).
    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;
    QStringList archivedKeys() const override;

protected:
    explicit PDFAnnotationShape(const QString &type);
    // The figure that fills the rectangle: an ellipse or the rectangle itself.
    virtual void appendFigure(BezierPath &path, const QRectF &rect) const = 0;

private:
    QColor m_interiorColor;
};
