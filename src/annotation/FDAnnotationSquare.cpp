#include "FDAnnotationSquare.h"

#include "AnnotationDefaults.h"
#include "AnnotationDefaultsKeys.h"

bool FDAnnotationSquare::initWithBounds(const QRectF &bounds)
{
    if (!PDFAnnotationSquare::initWithBounds(bounds))
        return false;
    if (!m_takesProperties)
        AnnotationDefaults::applyToShape(*this, AnnotationDefaultsKeys::SquareColor,
            AnnotationDefaultsKeys::SquareInteriorColor, AnnotationDefaultsKeys::SquareLineWidth,
            AnnotationDefaultsKeys::SquareLineType);
    return true;
}

bool FDAnnotationSquare::initWithBounds(
    const QRectF &bounds, const QString &type, const QVariantMap &properties)
{
    m_takesProperties = true;
    const bool ok = PDFAnnotationSquare::initWithBounds(bounds, type, properties);
    m_takesProperties = false;
    return ok;
}

void FDAnnotationSquare::postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect)
{
    Q_UNUSED(rect);
}
