#pragma once

// A line as the application makes them: colour, width, dash and arrows from the user's last line.
// Main thread only.

#include "FDAnnotationClass.h"

#include <kit/engine/PDFAnnotationLine.h>

class FDAnnotationLine : public FDAnnotationClass<PDFAnnotationLine>
{
protected:
    // From (0, 0) to the far corner, coloured, dashed and arrowed as the "Ann_Line*" settings say
    // (no border for a width not above 0).
    void applyDefaults() override;
};
