#pragma once

// A rectangle filling its bounds, stroked with its colour, border width and dash, and filled with
// its interior colour when it has one. Main thread only.

#include "PDFAnnotation.h"

class PDFAnnotationSquare : public PDFAnnotation
{
public:
    PDFAnnotationSquare();
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

private:
    QColor m_interiorColor;
};
