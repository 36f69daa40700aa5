#pragma once

// A rectangle as the application makes them: colours, width and dash from the user's last square.
// Main thread only.

#include "FDAnnotationClass.h"

#include <kit/engine/PDFAnnotationSquare.h>

class FDAnnotationSquare : public FDAnnotationClass<PDFAnnotationSquare>
{
protected:
    // Coloured and stroked as the "Ann_Square*" settings say; a width of 0 stays a border of width
    // 0, and an interior colour of alpha 0 leaves no fill.
    void applyDefaults() override;
};
