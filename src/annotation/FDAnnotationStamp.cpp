#include "FDAnnotationStamp.h"

void FDAnnotationStamp::postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect)
{
    Q_UNUSED(rect);
}
