#pragma once

// Engine-internal state of a PDFDocument. Main thread only, apart from serialising a document
// that no other thread touches.

#include "FindJob.h"
#include "PageLabels.h"
#include "mupdf/DocumentHandle.h"

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <thread>
#include <vector>

class PDFDocument;
class PDFDocumentDelegate;
class PDFOutline;
class PDFPage;

struct PDFDocumentPrivate
{
    explicit PDFDocumentPrivate(PDFDocument &owner)
        : q(owner)
    { }
    ~PDFDocumentPrivate();

    // Opens what open() gives under a fresh handle, then builds pages and outline unless locked.
    bool adopt(pdf_document *doc);
    // Pages (through the delegate), outline and labels of an unlocked document.
    bool loadContent();
    std::shared_ptr<PDFPage> makePage() const;
    // The file's bytes opened as a file whose cross-reference is lost, so MuPDF repairs it.
    static pdf_document *openForcingRepair(QByteArray bytes);
    // Keeps MuPDF's numbering of loaded pages equal to the page list; the lock is held.
    void renumberLocked();
    // Takes a page out of the page tree and the list; the removed page keeps its content.
    std::shared_ptr<PDFPage> takePage(int index);
    QString labelForIndex(int index) const;
    void stopFind();

    // Full rewrite of a document into memory; the caller holds the lock.
    // sizeHint: the expected size (the file read), to allocate once.
    static QByteArray writeLocked(
        const mu::DocumentHandle &handle, QString *error, qsizetype sizeHint = 0);
    static QByteArray write(const mu::DocumentHandle &handle, QString *error);

    PDFDocument &q;
    std::shared_ptr<mu::DocumentHandle> handle;
    std::vector<std::shared_ptr<PDFPage>> pages;
    quint64 pageOrder = 0; // grows at every change of the order of pages
    std::shared_ptr<PDFOutline> outlineRoot;
    std::weak_ptr<PDFDocumentDelegate> delegate;
    QUrl url;
    mutable QString error;
    bool repaired = false;
    bool encrypted = false;
    bool locked = false;
    bool contentLoaded = false;
    qsizetype sourceSize = 0;
    // The bytes opened, for one more try with MuPDF's repair when no page tree can be found.
    std::function<QByteArray()> sourceBytes;
    bool pageTreeBroken = false;
    PageLabels labels;

    std::shared_ptr<FindJob> findJob;
    std::thread findThread;
    std::vector<std::weak_ptr<PDFPage>> findPages;
    quint64 findGeneration = 0;
    bool finding = false;
};
