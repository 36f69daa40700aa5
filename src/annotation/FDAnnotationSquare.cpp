#include "FDAnnotationSquare.h"

#include "AnnotationDefaults.h"
#include "AnnotationDefaultsKeys.h"

void FDAnnotationSquare::applyDefaults()
{
    AnnotationDefaults::applyToShape(*this, AnnotationDefaultsKeys::SquareColor,
        AnnotationDefaultsKeys::SquareInteriorColor, AnnotationDefaultsKeys::SquareLineWidth,
        AnnotationDefaultsKeys::SquareLineType);
}
