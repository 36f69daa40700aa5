#pragma once

// Reads a document's /Outlines into a PDFOutline tree and writes a tree back, replacing the old
// outline entirely. Destinations are matched to pages by page object. The caller holds the
// document's lock.

#include "mupdf/MuTry.h"

#include <QByteArray>

#include <functional>
#include <memory>

class PDFDestination;
class PDFDocument;
class PDFOutline;
class PDFPage;
namespace mu {
class DocumentHandle;
}

namespace OutlineIO {

// An item's destination in this file as the file gives it. It is matched to a page when first
// asked for: a named one needs the document's name tree, and its page the page tree, which a
// long outline would otherwise read whole before the first screen.
struct UnreadDestination
{
    std::weak_ptr<PDFDocument> document;
    std::weak_ptr<mu::DocumentHandle> handle; // whose objects the numbers are
    QByteArray name; // a named destination, looked up first; else the rest holds it
    bool nameIsString = false;
    int pageObject = 0;
    double x = 0;
    double y = 0;
    double zoom = 0;
    // Held while the destination is unread: its document tells by this whether any is left.
    std::shared_ptr<const void> pending;
};

using PageForObject = std::function<std::shared_ptr<PDFPage>(int objectNumber)>;

// The tree, its destinations left unread, each stamped with stamp's document, handle and pending.
std::shared_ptr<PDFOutline> read(
    fz_context *ctx, pdf_document *doc, const UnreadDestination &stamp);

// The destination, its page answered by pageForObject (null when it has none).
std::shared_ptr<PDFDestination> readDestination(fz_context *ctx, pdf_document *doc,
    const UnreadDestination &unread, const PageForObject &pageForObject);

// objectForPage answers the page object of a page of this document, null for any other page.
bool write(fz_context *ctx, pdf_document *doc, const PDFOutline *root,
    const std::function<pdf_obj *(const PDFPage &)> &objectForPage, mu::Error &error);

} // namespace OutlineIO
