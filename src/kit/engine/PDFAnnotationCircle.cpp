#include "PDFAnnotationCircle.h"

#include <kit/base/BezierPath.h>

PDFAnnotationCircle::PDFAnnotationCircle()
    : PDFAnnotationShape(QStringLiteral("Circle"))
{ }

void PDFAnnotationCircle::appendFigure(BezierPath &path, const QRectF &rect) const
{
    path.appendOval(rect);
}
