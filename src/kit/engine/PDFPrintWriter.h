#pragma once

// Writes pages into a new PDF, each as its render source shows it: the page's own content and
// resources are carried over unchanged (text, vector graphics and embedded fonts stay as they
// are), and the annotations the source shows are drawn over it by MuPDF's PDF device.
// Use one writer on one thread; sources may come from several documents.

#include <QByteArray>
#include <QSizeF>
#include <QString>

#include <memory>

class PDFPageRenderSource;
struct PDFPrintWriterPrivate;

class PDFPrintWriter
{
public:
    PDFPrintWriter();
    ~PDFPrintWriter();
    PDFPrintWriter(const PDFPrintWriter &) = delete;
    PDFPrintWriter &operator=(const PDFPrintWriter &) = delete;

    // Lays every page on a sheet of this size (points, as seen, so width > height is landscape),
    // scaled to fit and centred; with autoRotate a page whose orientation differs from the
    // sheet's is turned a quarter. An empty size (the default) keeps each page's own box and
    // rotation.
    void setPaper(const QSizeF &paper, bool autoRotate);

    // Appends the page. False, with errorString() set, when MuPDF fails; the pages added before
    // stay.
    bool addPage(const PDFPageRenderSource &source);
    int pageCount() const;

    // The PDF of the pages added so far; empty, with errorString() set, on failure.
    QByteArray finish();
    QString errorString() const;

private:
    std::unique_ptr<PDFPrintWriterPrivate> d;
};
