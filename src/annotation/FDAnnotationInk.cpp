#include "FDAnnotationInk.h"

#include "AnnotationDefaults.h"

void FDAnnotationInk::applyDefaults()
{
    AnnotationDefaults::applyToInk(*this);
}
