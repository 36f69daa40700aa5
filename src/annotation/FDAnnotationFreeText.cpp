#include "FDAnnotationFreeText.h"

#include "AnnotationDefaults.h"
#include "PDFAnnotationFreeText+XExtensions.h"

bool FDAnnotationFreeText::init()
{
    m_isEditing = false;
    return PDFAnnotationFreeText::init();
}

bool FDAnnotationFreeText::initWithBounds(const QRectF &bounds)
{
    if (!PDFAnnotationFreeText::initWithBounds(bounds))
        return false;
    if (!m_takesProperties)
        AnnotationDefaults::applyToFreeText(*this);
    return true;
}

bool FDAnnotationFreeText::initWithBounds(
    const QRectF &bounds, const QString &type, const QVariantMap &properties)
{
    m_takesProperties = true;
    const bool ok = PDFAnnotationFreeText::initWithBounds(bounds, type, properties);
    m_takesProperties = false;
    return ok;
}

void FDAnnotationFreeText::adjustBoundsIfNeeded()
{
    ::adjustBoundsIfNeeded(*this);
}

void FDAnnotationFreeText::postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect)
{
    Q_UNUSED(rect);
}
