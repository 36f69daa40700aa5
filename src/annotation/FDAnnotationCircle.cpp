#include "FDAnnotationCircle.h"

#include "AnnotationDefaults.h"
#include "AnnotationDefaultsKeys.h"

bool FDAnnotationCircle::initWithBounds(const QRectF &bounds)
{
    if (!PDFAnnotationCircle::initWithBounds(bounds))
        return false;
    if (!m_takesProperties)
        AnnotationDefaults::applyToShape(*this, AnnotationDefaultsKeys::CircleColor,
            AnnotationDefaultsKeys::CircleInteriorColor, AnnotationDefaultsKeys::CircleLineWidth,
            AnnotationDefaultsKeys::CircleLineType);
    return true;
}

bool FDAnnotationCircle::initWithBounds(
    const QRectF &bounds, const QString &type, const QVariantMap &properties)
{
    m_takesProperties = true;
    const bool ok = PDFAnnotationCircle::initWithBounds(bounds, type, properties);
    m_takesProperties = false;
    return ok;
}

void FDAnnotationCircle::postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect)
{
    Q_UNUSED(rect);
}
