#include "FDAnnotationText.h"

#include "AnnotationDefaults.h"
#include "PDFAnnotation+XExtensions.h"

#include <kit/base/Geometry.h>

namespace {
constexpr double HitMargin = 2.0;
}

bool FDAnnotationText::init()
{
    m_isEditing = false;
    return PDFAnnotationText::init();
}

bool FDAnnotationText::initWithBounds(const QRectF &bounds)
{
    if (!PDFAnnotationText::initWithBounds(bounds))
        return false;
    if (!m_takesProperties)
        AnnotationDefaults::applyToText(*this);
    return true;
}

bool FDAnnotationText::initWithBounds(
    const QRectF &bounds, const QString &type, const QVariantMap &properties)
{
    m_takesProperties = true;
    const bool ok = PDFAnnotationText::initWithBounds(bounds, type, properties);
    m_takesProperties = false;
    return ok;
}

QRectF FDAnnotationText::enclosedBounds() const
{
    return Geometry::insetRect(bounds(), -HitMargin, -HitMargin);
}

std::shared_ptr<PDFAnnotation> FDAnnotationText::copy() const
{
    return clone(*this);
}

void FDAnnotationText::postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect)
{
    Q_UNUSED(rect);
}
