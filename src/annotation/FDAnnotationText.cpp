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

QRectF FDAnnotationText::enclosedBounds() const
{
    return Geometry::insetRect(bounds(), -HitMargin, -HitMargin);
}

std::shared_ptr<PDFAnnotation> FDAnnotationText::copy() const
{
    return clone(*this);
}

void FDAnnotationText::applyDefaults()
{
    AnnotationDefaults::applyToText(*this);
}
