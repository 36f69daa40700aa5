#pragma once

// An immutable snapshot of what to draw for a page: document, page, revision, box, rotation and
// the annotations to show. Made on the main thread, used on any thread.

#include "PDFDisplayBox.h"
#include "PageGeometry.h"

#include <QImage>
#include <QTransform>
#include <QtGlobal>

#include <memory>

class PDFCancellation;
class PDFDisplayList;
struct PDFPageRenderSourcePrivate;

class PDFPageRenderSource
{
public:
    explicit PDFPageRenderSource(std::unique_ptr<PDFPageRenderSourcePrivate> d);
    ~PDFPageRenderSource();
    PDFPageRenderSource(const PDFPageRenderSource &) = delete;
    PDFPageRenderSource &operator=(const PDFPageRenderSource &) = delete;

    PDFDisplayBox displayBox() const;
    PageGeometry geometry() const;
    quint64 revision() const;

    // Records the page content and the shown annotations under the document's lock. Null when
    // MuPDF fails or the work was cancelled.
    std::shared_ptr<PDFDisplayList> buildDisplayList(PDFCancellation *cancel = nullptr) const;
    // Draws the page straight into target (Format_ARGB32_Premultiplied, cleared to white first)
    // with pageToDevice mapping page space to its pixels, holding the document's lock throughout:
    // for a single render (thumbnails, printing), where recording a list would cost more.
    bool render(
        QImage &target, const QTransform &pageToDevice, PDFCancellation *cancel = nullptr) const;

private:
    friend class PDFPrintWriter;
    std::unique_ptr<PDFPageRenderSourcePrivate> d;
};
