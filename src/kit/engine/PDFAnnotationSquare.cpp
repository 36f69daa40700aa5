#include "PDFAnnotationSquare.h"

#include <kit/base/BezierPath.h>

PDFAnnotationSquare::PDFAnnotationSquare()
    : PDFAnnotationShape(QStringLiteral("Square"))
{ }

void PDFAnnotationSquare::appendFigure(BezierPath &path, const QRectF &rect) const
{
    path.appendRect(rect);
}
