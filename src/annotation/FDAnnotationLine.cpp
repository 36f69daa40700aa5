#include "FDAnnotationLine.h"

#include "AnnotationDefaults.h"

bool FDAnnotationLine::initWithBounds(const QRectF &bounds)
{
    if (!PDFAnnotationLine::initWithBounds(bounds))
        return false;
    if (!m_takesProperties)
        AnnotationDefaults::applyToLine(*this);
    return true;
}

bool FDAnnotationLine::initWithBounds(
    const QRectF &bounds, const QString &type, const QVariantMap &properties)
{
    m_takesProperties = true;
    const bool ok = PDFAnnotationLine::initWithBounds(bounds, type, properties);
    m_takesProperties = false;
    return ok;
}

void FDAnnotationLine::postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect)
{
    Q_UNUSED(rect);
}
