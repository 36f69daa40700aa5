#pragma once

// Free-hand strokes as the application makes them: colour and width from the user's last ink.
// Main thread only.

#include "FDAnnotationClass.h"

#include <kit/engine/PDFAnnotationInk.h>

class FDAnnotationInk : public FDAnnotationClass<PDFAnnotationInk>
{
protected:
    // The engine's ink with the colour of "Ann_InkColor" and the width of "Ann_InkLineWidth" (no
    // border for a width not above 0).
    void applyDefaults() override;
};
