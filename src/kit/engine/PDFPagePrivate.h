#pragma once

// Engine-internal state of a PDFPage: the document handle and page object it is bound to, the
// loaded MuPDF page, cached boxes and text. Touched on the main thread only; every MuPDF access
// holds the handle's lock.

#include "PDFDocumentDelegate.h"
#include "TextLayout.h"
#include "mupdf/DocumentHandle.h"

#include <QRectF>

#include <memory>
#include <vector>

class PDFDocument;
class PDFPage;

struct PDFPagePrivate
{
    ~PDFPagePrivate();

    static PDFPagePrivate &of(const PDFPage &page);

    // Takes over the reference to obj; the old binding is dropped under its own lock. The caller
    // may hold both locks already (lockHeld).
    void bind(const std::shared_ptr<mu::DocumentHandle> &newHandle, pdf_obj *obj, bool lockHeld);
    // Drops the MuPDF references; the caller holds the handle's lock.
    void dropReferencesLocked();

    // The loaded page; the caller holds the lock. index is where the page sits in its handle's
    // page tree, used only when it is not loaded yet.
    pdf_page *pageLocked(fz_context *ctx, int index, mu::Error &error);

    std::shared_ptr<mu::DocumentHandle> handle;
    pdf_obj *object = nullptr; // kept
    pdf_page *page = nullptr; // kept, loaded on first use
    std::weak_ptr<PDFDocument> document;
    PDFPageFactory factory; // the class this page was built as

    quint64 revision = 1;
    bool boxesValid = false;
    QRectF mediaBox;
    QRectF cropBox;
    int rotation = 0;
    std::shared_ptr<const TextLayout> text;
    quint64 textRevision = 0;

    // Engine II fills these; the render source shows only annotations listed by
    // displayedAnnotationNumbers (nullopt: every annotation in the file).
    std::vector<std::shared_ptr<PDFAnnotation>> annotations;
};

namespace PDFPageInternals {

// Where the page sits in its handle's page tree: its document index, else 0 for a page alone in
// a scratch document. Main thread.
int treeIndex(const PDFPage &page);
// Loads (if needed) the boxes and rotation. Main thread.
void loadBoxes(const PDFPage &page);
std::shared_ptr<const TextLayout> textLayout(const PDFPage &page);
// Copies a page object of one document into another as a new page object, not yet in the page
// tree; both locks are held. Returns a new reference or null with the error set.
pdf_obj *graftPage(
    fz_context *ctx, pdf_document *target, pdf_document *source, pdf_obj *page, mu::Error &error);

} // namespace PDFPageInternals
