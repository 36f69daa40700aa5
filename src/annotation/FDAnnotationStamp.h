#pragma once

// A stamp as the application carries it: only ever read from a file, never created. Nothing maps
// to this class; it exists so that the application's stamps stay quiet like its other kinds.
// Main thread only.

#include "FDAnnotationClass.h"

#include <kit/engine/PDFAnnotationStamp.h>

class FDAnnotationStamp : public FDAnnotationClass<PDFAnnotationStamp>
{
};
