#include "FDAnnotationInk.h"

#include "AnnotationDefaults.h"

bool FDAnnotationInk::initWithBounds(const QRectF &bounds)
{
    if (!PDFAnnotationInk::initWithBounds(bounds))
        return false;
    if (!m_takesProperties)
        AnnotationDefaults::applyToInk(*this);
    return true;
}

bool FDAnnotationInk::initWithBounds(
    const QRectF &bounds, const QString &type, const QVariantMap &properties)
{
    m_takesProperties = true;
    const bool ok = PDFAnnotationInk::initWithBounds(bounds, type, properties);
    m_takesProperties = false;
    return ok;
}

void FDAnnotationInk::postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect)
{
    Q_UNUSED(rect);
}
