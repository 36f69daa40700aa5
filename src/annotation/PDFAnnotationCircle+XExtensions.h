#pragma once

// Where a circle is hit: inside the ellipse that fills its bounds, filled or not. Main thread only.

#include <QPointF>

class PDFAnnotationCircle;

bool circleHitTest(const PDFAnnotationCircle &circle, QPointF point);
