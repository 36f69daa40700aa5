#pragma once

// Engine-internal state of a PDFPage: the document handle and page object it is bound to, the
// loaded MuPDF page, cached boxes and text. Touched on the main thread only; every MuPDF access
// holds the handle's lock.

#include "PDFDisplayBox.h"
#include "PDFDocumentDelegate.h"
#include "PDFRenderOptions.h"
#include "TextLayout.h"
#include "mupdf/DocumentHandle.h"

#include <QRectF>

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

class PDFAnnotation;
class PDFAnnotationLink;
struct PDFAnnotationPrivate;
class PDFDocument;
class PDFPage;
class QPainter;

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
    static void didLoadAnnotations(PDFPage &page); // the page class's hook

    std::shared_ptr<mu::DocumentHandle> handle;
    pdf_obj *object = nullptr; // kept
    pdf_page *page = nullptr; // kept, loaded on first use
    std::weak_ptr<PDFDocument> document;
    // The page's place in its document's list when the list was last numbered: finding a
    // page's index checks it first, so that it takes constant time.
    int indexHint = -1;
    PDFPageFactory factory; // the class this page was built as

    quint64 revision = 1;
    // Rises only with the page's own content (binding, boxes, rotation), not its annotations:
    // the text layout is kept across annotation edits.
    quint64 contentRevision = 1;
    // The content limit the page's content streams were last found within (0: not checked),
    // shared with the render sources of this content revision: a page is decoded once to be
    // measured, not before every drawing. Made with the first render source: a long
    // document's pages are made at opening, most of them never drawn.
    std::shared_ptr<std::atomic<qint64>> contentWithin;
    bool boxesValid = false;
    QRectF mediaBox;
    QRectF cropBox;
    int rotation = 0;
    std::shared_ptr<const TextLayout> text;
    quint64 textRevision = 0;
    // The text alone, as a find read it, until the whole layout is built: enough for strings
    // and context around hits without reading the page again.
    QString foundText;
    quint64 foundTextRevision = 0;

    // Built from the file on first use, through the document delegate's classes. Both are
    // written under the handle's lock, since a worker writing the document reads them.
    std::vector<std::shared_ptr<PDFAnnotation>> annotations;
    bool annotationsLoaded = false;
    bool annotationsLoading = false; // main thread only: the list is being built
    // Some appearance may be out of date (a property changed, or not yet synthesised).
    bool appearancesStale = true;
    // The page moved into another file: its annotations wait to be bound to their copies.
    bool annotationsMoved = false;
    // Property edits are written into the file once per turn of the main event loop, when the
    // lock is free, and always before the file is read under the lock: so an edit never waits
    // behind a worker recording the document.
    bool writesPending = false;
    bool writeScheduled = false;
    // Asked for annotation classes when the page is in no document (a copy).
    std::weak_ptr<PDFDocumentDelegate> delegate;
};

namespace PDFPageInternals {

// Where the page sits in its handle's page tree: its document index, else 0 for a page alone in
// a scratch document. Main thread.
int treeIndex(const PDFPage &page);
// Loads (if needed) the boxes and rotation. Main thread.
void loadBoxes(const PDFPage &page);
void loadBoxesLocked(const PDFPage &page); // the same, with the lock held
std::shared_ptr<const TextLayout> textLayout(const PDFPage &page);
// The page's text: the layout's when it is built, else what a find read at this revision,
// else the layout built now. Main thread.
QString pageText(const PDFPage &page);
// Keeps the text a find read of the page at a content revision. Main thread.
void setFoundText(const PDFPage &page, quint64 contentRevision, const QString &text);
// Copies a page object of one document into another as a new page object, not yet in the page
// tree; both locks are held. Returns a new reference or null with the error set.
pdf_obj *graftPage(
    fz_context *ctx, pdf_document *target, pdf_document *source, pdf_obj *page, mu::Error &error);
// Copies the /Annots of a source page object into the grafted page object, entry for entry, so
// that annotation i of the source is annotation i of the copy. Links into the old file and
// references to other annotations are left out. Plain MuPDF calls: run inside a guarded block.
void graftAnnotations(
    fz_context *ctx, pdf_document *target, pdf_graft_map *map, pdf_obj *source, pdf_obj *copy);

// Annotation plumbing, all on the main thread (PDFPage+Annotations.cpp,
// PDFPage+AnnotationAppearances.cpp).
// The loaded annotation or widget that stands for the dictionary, borrowed; null when MuPDF's
// list has none (links, popups). The lock is held.
pdf_annot *findAnnot(fz_context *ctx, pdf_page *page, pdf_obj *object);
// The annotation's dictionary is in the page's current file.
bool onPageInFile(const PDFPagePrivate &page, const PDFAnnotationPrivate &annotation);
// Binds the annotations of a page that moved into another file to their copies there; the lock
// is held.
void resolveMovedLocked(PDFPagePrivate &page, fz_context *ctx);
// Writes the property edits not yet in the file (see PDFPagePrivate::writesPending).
void writePendingLocked(PDFPagePrivate &page, fz_context *ctx);
void loadAnnotations(const PDFPage &page);
// Before a page leaves its file: each loaded annotation remembers its place in /Annots. The
// caller holds the old file's lock.
void detachAnnotationsLocked(PDFPagePrivate &page, fz_context *ctx);
// Reads the destination in its file of a link loaded from it, once, when first asked for.
void readLinkDestinationLocked(const PDFAnnotationLink &link, fz_context *ctx);
// Writes a changed annotation through to its page's file and, when the change is drawn, marks
// the page changed.
void annotationDidChange(PDFAnnotation &annotation, bool drawn);
void annotationVisibilityChanged(PDFAnnotation &annotation);
bool hasAppearance(const PDFAnnotation &annotation);
void requestNewAppearance(PDFAnnotation &annotation);
void drawAppearance(const PDFAnnotation &annotation, QPainter &painter, PDFDisplayBox box);
// Binds moved annotations and refreshes stale appearances (dashes patched in); the lock is
// held and the page is loaded.
void prepareAnnotationsLocked(const PDFPage &page, fz_context *ctx, pdf_page *loaded);
// The same for a page whose pdf_page may not be loaded yet (serialising, copying).
void prepareForOutputLocked(const PDFPage &page, fz_context *ctx, int index);
// Object numbers of the annotations a render with these options shows; nullopt: all of them.
std::optional<std::vector<int>> shownAnnotationsLocked(
    const PDFPage &page, fz_context *ctx, const PDFRenderOptions &options);

} // namespace PDFPageInternals
