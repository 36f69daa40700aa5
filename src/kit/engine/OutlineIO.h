#pragma once

// Reads a document's /Outlines into a PDFOutline tree and writes a tree back, replacing the old
// outline entirely. Destinations are matched to pages by page object. The caller holds the
// document's lock.

#include "mupdf/MuTry.h"

#include <functional>
#include <memory>

class PDFOutline;
class PDFPage;

namespace OutlineIO {

// pageForObject answers the page whose page object has that number (or null).
std::shared_ptr<PDFOutline> read(fz_context *ctx, pdf_document *doc,
    const std::function<std::shared_ptr<PDFPage>(int objectNumber)> &pageForObject);

// objectForPage answers the page object of a page of this document, null for any other page.
bool write(fz_context *ctx, pdf_document *doc, const PDFOutline *root,
    const std::function<pdf_obj *(const PDFPage &)> &objectForPage, mu::Error &error);

} // namespace OutlineIO
