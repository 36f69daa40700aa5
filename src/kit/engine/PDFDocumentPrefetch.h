#pragma once

// Reads a document's file on a thread of its own, ahead of the PDFDocument that opens it: the
// cross-reference, the check that every object is in place and the first page's fonts and
// images, while the caller builds its window. The next PDFDocument::initWithURL of the same
// unchanged file takes the document read instead of reading the file again.

#include <QString>

#include <functional>
#include <memory>

class QObject;

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

    // When the file at path is being read ahead, calls done on the main thread once the reading,
    // first page included, has ended (unless receiver is gone by then), and answers true; false
    // when nothing is being read for path, so that opening it now waits for nothing.
    static bool notifyWhenRead(
        const QString &path, QObject *receiver, const std::function<void()> &done);

    // Whether the file at path has been read ahead, first page included, and waits to be
    // taken: opening it now costs next to nothing.
    static bool isReadToTake(const QString &path);

private:
    std::shared_ptr<PDFDocumentPrefetchState> m_state;
};
