#pragma once

// What a box of text needs beyond the engine's: the usable box that a bare click opens, sized by
// the screen's real resolution. Main thread only.

#include <optional>

class PDFAnnotationFreeText;

// A box with a side below 5 (a click, not a drag) becomes 100 wide and one line of its font high
// on screen, its left edge 5 left of where it was and vertically centred on it. A larger box is
// left alone.
void adjustBoundsIfNeeded(PDFAnnotationFreeText &freeText);

// Dots per inch of the primary screen, 96 where the screen does not know its physical size.
double screenDotsPerInch();
// Stands in for the screen's resolution (tests); nullopt goes back to the screen's.
void setScreenDotsPerInchOverride(std::optional<double> dotsPerInch);
