#pragma once

// The text of one page as MuPDF's structured text reads it: one string (lines separated by line
// breaks), the page-space rectangle of each character and the line it belongs to. Immutable.

#include "PDFSelection.h"
#include "mupdf/MuTry.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <memory>
#include <vector>

class PDFCancellation;

struct TextLayout
{
    QString text;
    std::vector<QRectF> rects; // per UTF-16 unit of text; empty for line breaks
    std::vector<int> lineOf; // per UTF-16 unit
    std::vector<PDFTextRange> lines; // without their line breaks

    // Reads a loaded page; the caller holds the document's lock.
    static std::shared_ptr<TextLayout> build(
        fz_context *ctx, pdf_page *page, PDFCancellation *cancel, mu::Error &error);
    // The structured text of a page object's content streams (no page loaded, no annotation
    // run), in page space with y flipped; the caller holds the lock. The view's layouts and the
    // find both read pages so, which keeps the find's ranges those of the layout. A page whose
    // content decodes to more than contentLimit bytes fails.
    static fz_stext_page *readContents(fz_context *ctx, pdf_document *doc, pdf_obj *pageObject,
        fz_cookie *cookie, mu::Error &error, qint64 contentLimit);
    // Flattens structured text that readContents made; without geometry, only text and lines
    // are filled (for find).
    static std::shared_ptr<TextLayout> fromStext(fz_stext_page *stext, bool withGeometry);
    int size() const { return static_cast<int>(text.size()); }
    int indexAtPoint(const QPointF &point) const; // the character under the point, or -1
    int nearestIndex(const QPointF &point) const; // the closest character, or -1 when no text
    PDFTextRange wordRange(int index) const;
    PDFTextRange lineRange(int index) const;
    // The characters from index first to index last (in either order), both snapped outwards.
    PDFTextRange span(int first, int last, PDFSelectionGranularity granularity) const;
    // Clamped to the text.
    PDFTextRange clamp(const PDFTextRange &range) const;
    QRectF bounds(const PDFTextRange &range) const;
};
