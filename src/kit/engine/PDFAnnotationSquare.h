#pragma once

// A rectangle filling its bounds. Main thread only.

#include "PDFAnnotationShape.h"

class PDFAnnotationSquare : public PDFAnnotationShape
{
public:
    PDFAnnotationSquare();

protected:
    void appendFigure(BezierPath &path, const QRectF &rect) const override;
};
