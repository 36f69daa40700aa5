#pragma once

// A ellipse filling its bounds. Main thread only.

#include "PDFAnnotationShape.h"

class PDFAnnotationCircle : public PDFAnnotationShape
{
public:
    PDFAnnotationCircle();

protected:
    void appendFigure(BezierPath &path, const QRectF &rect) const override;
};
