#pragma once

// An ellipse as the application makes them: colours, width and dash from the user's last circle.
// Main thread only.

#include "FDAnnotationClass.h"

#include <kit/engine/PDFAnnotationCircle.h>

class FDAnnotationCircle : public FDAnnotationClass<PDFAnnotationCircle>
{
protected:
    // Coloured and stroked as the "Ann_Circle*" settings say; a width of 0 stays a border of width
    // 0, and an interior colour of alpha 0 leaves no fill.
    void applyDefaults() override;
};
