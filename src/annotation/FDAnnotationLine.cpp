#include "FDAnnotationLine.h"

#include "AnnotationDefaults.h"

void FDAnnotationLine::applyDefaults()
{
    AnnotationDefaults::applyToLine(*this);
}
