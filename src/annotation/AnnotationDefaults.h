#pragma once

// What a new annotation of each kind takes from the user's last settings (the "Ann_*" keys of
// the preference store), read at each creation and never kept. Main thread only.

#include <QString>

class PDFAnnotationFreeText;
class PDFAnnotationInk;
class PDFAnnotationLine;
class PDFAnnotationShape;
class PDFAnnotationText;

namespace AnnotationDefaults {

// Colour; a border of the stored width, or none for a width not above 0.
void applyToInk(PDFAnnotationInk &ink);
// Colour; an open arrow at the ends the arrow type names (1 both, 2 end, 3 start, else none);
// from (0, 0) to the far corner of the bounds; a border of the stored width and dash, or none
// for a width not above 0.
void applyToLine(PDFAnnotationLine &line);
// An interior colour only when it is not fully transparent; colour; width and dash written on
// the border in place, so a width of 0 stays a border of width 0.
void applyToShape(PDFAnnotationShape &shape, const QString &colorKey,
    const QString &interiorColorKey, const QString &lineWidthKey, const QString &lineTypeKey);
// Font by name and size (the system font for a name no one has), font colour, a fully
// transparent background and no border.
void applyToFreeText(PDFAnnotationFreeText &freeText);
// The icon of "Ann_TextIconType".
void applyToText(PDFAnnotationText &text);

} // namespace AnnotationDefaults
