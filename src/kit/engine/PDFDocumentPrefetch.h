#pragma once

// Reads a document's file on a thread of its own, ahead of the PDFDocument that opens it: the
// cross-reference, the check that every object is in place and the first page's fonts and
// images, while the caller builds its window. The next PDFDocument::initWithURL of the same
// unchanged file takes the document read instead of reading the file again.

#include <QString>

#include <memory>

struct PDFDocumentPrefetchState;

class PDFDocumentPrefetch
{
public:
    // Starts reading path at once. One prefetch at a time: a second one reads nothing.
    explicit PDFDocumentPrefetch(const QString &path);
    // Stops the first page's reading, waits for the thread and drops a document nobody took.
    ~PDFDocumentPrefetch();
    PDFDocumentPrefetch(const PDFDocumentPrefetch &) = delete;
    PDFDocumentPrefetch &operator=(const PDFDocumentPrefetch &) = delete;

    // Whether a PDFDocument opened the file from what was read here.
    bool taken() const;

private:
    std::shared_ptr<PDFDocumentPrefetchState> m_state;
};
