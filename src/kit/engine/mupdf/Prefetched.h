#pragma once

// What a PDFDocumentPrefetch read, handed to the PDFDocument that opens the same file. Private to
// the engine.

#include "MuContext.h"

#include <QString>

namespace mu {

struct Prefetched
{
    pdf_document *doc = nullptr; // the caller owns it
    // Every object was found where the cross-reference says: no repair check is due.
    bool objectsInPlace = false;
    // The first page's contents recorded in page space (the caller owns the list), and the
    // number of the page object they were read from; null when the reading did not end.
    fz_display_list *firstPageContents = nullptr;
    int firstPageObject = 0;
    // That page as loaded (the caller owns it), so that it is not loaded again.
    pdf_page *firstPage = nullptr;
};

// The document read ahead for the file at path, if one was and the file has not changed since.
// Waits for the reading; stops the first page's part of it first.
Prefetched takePrefetched(const QString &path);

} // namespace mu
