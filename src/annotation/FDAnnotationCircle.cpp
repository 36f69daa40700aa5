#include "FDAnnotationCircle.h"

#include "AnnotationDefaults.h"
#include "AnnotationDefaultsKeys.h"

void FDAnnotationCircle::applyDefaults()
{
    AnnotationDefaults::applyToShape(*this, AnnotationDefaultsKeys::CircleColor,
        AnnotationDefaultsKeys::CircleInteriorColor, AnnotationDefaultsKeys::CircleLineWidth,
        AnnotationDefaultsKeys::CircleLineType);
}
