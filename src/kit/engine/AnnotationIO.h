#pragma once

// Reads an annotation's properties from its dictionary and writes them back. The dictionary's
// coordinates are PDF user space, which is page space, so nothing is converted. The caller
// holds the document's lock. Engine-internal.

#include "mupdf/MuTry.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>

class PDFAnnotation;
class PDFDestination;
class PDFPage;

namespace AnnotationIO {

// The file's names of line ends 0 to 5.
inline constexpr const char *LineStyleNames[]
    = { "None", "Square", "Circle", "Diamond", "OpenArrow", "ClosedArrow" };

// Numbers a file can hold: what is not finite becomes 0, and magnitudes stay where readers
// accept them.
inline float num(double value)
{
    return std::isfinite(value) ? static_cast<float>(std::clamp(value, -1e7, 1e7)) : 0.0f;
}

// Page whose page object has the number, or null: link destinations are matched by it.
using PageForObject = std::function<std::shared_ptr<PDFPage>(int objectNumber)>;
// Page object of a page in the same file, or null: link destinations are written with it.
using ObjectForPage = std::function<pdf_obj *(const PDFPage &page)>;

// Fills the annotation from the dictionary without reporting to observers.
void read(
    fz_context *ctx, pdf_obj *dict, PDFAnnotation &annotation, const PageForObject &pageForObject);
// The destination in this file that a link's dictionary names, its page found by the page
// object's number; null when it names none or that page is not in the document.
std::shared_ptr<PDFDestination> readDestination(
    fz_context *ctx, pdf_obj *dict, const PageForObject &pageForObject);
// Writes every property into the dictionary.
bool write(fz_context *ctx, pdf_document *doc, pdf_obj *dict, const PDFAnnotation &annotation,
    const ObjectForPage &objectForPage, mu::Error &error);

// The subtype a dictionary says, as a type string ("Square"...); empty when it has none.
QString subtypeOf(fz_context *ctx, pdf_obj *dict);

// Lines, ink, circles, squares and marked text: the kit's drawing becomes the normal appearance
// (with their dashes, which MuPDF leaves out, and no stroke for a border of width 0), replacing
// any appearance the dictionary had, and the rect becomes what it covers. False, with nothing
// written, for the kinds MuPDF draws, or when writing failed.
bool writeOwnAppearance(
    fz_context *ctx, pdf_document *doc, pdf_obj *dict, const PDFAnnotation &annotation);
// After MuPDF made the appearance of a kind it draws: a free text's text is moved to where the
// kit writes it. Other kinds keep MuPDF's picture.
void adjustEngineAppearance(
    fz_context *ctx, pdf_document *doc, pdf_obj *dict, const PDFAnnotation &annotation);

} // namespace AnnotationIO
