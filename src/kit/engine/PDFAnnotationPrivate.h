#pragma once

// Engine-internal state of a PDFAnnotation: its property values and, while it is or was on a
// page, the dictionary that stands for it in that page's file. Main thread only; the dictionary
// is touched under its document's lock.

#include "PDFAnnotation.h"
#include "mupdf/DocumentHandle.h"

#include <QString>

#include <memory>
#include <utility>
#include <vector>

class PDFBorder;
class PDFPage;

struct PDFAnnotationPrivate
{
    ~PDFAnnotationPrivate();

    static PDFAnnotationPrivate &of(const PDFAnnotation &annotation);

    // Takes over the reference to obj; the old one is dropped under its own lock unless the
    // caller holds it (lockHeld).
    void bind(const std::shared_ptr<mu::DocumentHandle> &newHandle, pdf_obj *obj, bool lockHeld);
    void dropObjectLocked();

    QString type;
    QRectF bounds;
    QString contents;
    QColor color;
    std::shared_ptr<PDFBorder> border;
    QString userName;
    QDateTime modificationDate;
    std::weak_ptr<PDFPage> page;
    bool shouldDisplay = true;
    bool shouldPrint = true;
    // The file's picture is the annotation's own (read from a file, not made from properties).
    bool ownAppearance = false;
    // The engine-made picture must be made again before it is next drawn or written.
    bool appearanceDirty = false;
    // Set while properties are read from the file: no write-through, no reports.
    bool loading = false;
    // Set while a kind stores a value quietly: write-through only, no reports; the page's
    // picture is touched only when the value is drawn.
    bool quiet = false;
    bool quietValueDrawn = true;
    std::vector<std::pair<const void *, PDFAnnotation::Observer>> observers;

    // The annotation's dictionary in the file of the page it is (or was last) on; kept.
    std::shared_ptr<mu::DocumentHandle> handle;
    pdf_obj *object = nullptr;
    // The dictionary is in its page's /Annots: the annotation is on that page.
    bool inFile = false;
    // A property changed since the dictionary was last written (PDFPagePrivate::writesPending).
    bool writePending = false;
    // After its page moved into another file: the position of its copy in the page's /Annots.
    int pendingIndex = -1;
    // A link whose destination in this file is read from the dictionary when first asked for.
    bool destinationUnread = false;
};
