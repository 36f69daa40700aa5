#include "FDAnnotationFreeText.h"

#include "AnnotationDefaults.h"
#include "PDFAnnotationFreeText+XExtensions.h"

bool FDAnnotationFreeText::init()
{
    m_isEditing = false;
    return PDFAnnotationFreeText::init();
}

void FDAnnotationFreeText::adjustBoundsIfNeeded()
{
    ::adjustBoundsIfNeeded(*this);
}

void FDAnnotationFreeText::applyDefaults()
{
    AnnotationDefaults::applyToFreeText(*this);
}
