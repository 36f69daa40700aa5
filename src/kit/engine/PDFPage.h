#pragma once

// One page: its boxes and rotation in page space (PDF user space, y up, unrotated), its text,
// drawing, and the source its renderer works from. It keeps its identity and content when it
// leaves a document, and can join another. Main thread only; workers get a PDFPageRenderSource.

#include "PDFDisplayBox.h"
#include "PDFRenderOptions.h"
#include "PDFSelection.h"

#include <QByteArray>
#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <memory>
#include <vector>

class PDFAnnotation;
class PDFDocument;
class PDFPageRenderSource;
class QPainter;
struct PDFPagePrivate;

class PDFPage : public std::enable_shared_from_this<PDFPage>
{
public:
    PDFPage();
    virtual ~PDFPage();
    PDFPage(const PDFPage &) = delete;
    PDFPage &operator=(const PDFPage &) = delete;

    // Pages a document builds are ready without these. init() makes a blank US letter page;
    // initWithImage() a page of the image's size in points (72 dpi unless the image says).
    virtual bool init();
    virtual bool initWithImage(const QImage &image);
    // Encoded image bytes (PNG, JPEG, GIF...); JPEG data stays as it is in the file.
    virtual bool initWithImageData(const QByteArray &encoded);

    std::shared_ptr<PDFDocument> document() const; // null when the page is in no document

    // A box with its true origin; a missing box answers the crop box (or the media box).
    QRectF boundsForBox(PDFDisplayBox box) const;
    void setBoundsForBox(const QRectF &bounds, PDFDisplayBox box);
    int rotation() const; // 0, 90, 180 or 270
    void setRotation(int degrees); // any multiple of 90, normalised

    // Every annotation, links and popups included, in page order, lowest first. Built from the
    // file on first use, with the classes the document's delegate names.
    const std::vector<std::shared_ptr<PDFAnnotation>> &annotations() const;
    // Puts the annotation on top of this page and into the file (taking it off another page
    // first); sets its page.
    virtual void addAnnotation(const std::shared_ptr<PDFAnnotation> &annotation);
    // Takes it out of the file and the list; the object lives on with its properties and can be
    // added again.
    virtual void removeAnnotation(const std::shared_ptr<PDFAnnotation> &annotation);
    // The topmost displayed annotation whose bounds hold the page point, links included;
    // popups and annotations whose shouldDisplay is false are passed over. Subclasses may find
    // more.
    virtual std::shared_ptr<PDFAnnotation> annotationAtPoint(const QPointF &point) const;

    QString string() const; // null when the page has no text
    QString label() const; // the page label, else the 1-based number; null without a document
    int numberOfCharacters() const;
    QRectF characterBoundsAtIndex(int index) const;
    int characterIndexAtPoint(const QPointF &point) const; // -1 when no character is there

    // Characters whose centres lie in the rectangle; null when there are none.
    std::shared_ptr<PDFSelection> selectionForRect(const QRectF &rect) const;
    std::shared_ptr<PDFSelection> selectionForRange(const PDFTextRange &range) const;
    std::shared_ptr<PDFSelection> selectionForWordAtPoint(const QPointF &point) const;
    std::shared_ptr<PDFSelection> selectionForLineAtPoint(const QPointF &point) const;
    // The text from the character nearest one point to the one nearest the other, snapped.
    std::shared_ptr<PDFSelection> selectionFromPointToPoint(const QPointF &startPoint,
        const QPointF &endPoint,
        PDFSelectionGranularity granularity = PDFSelectionGranularity::Character) const;

    // Draws the rotated box into (0, 0, w, h) of the painter's coordinates, y down, with the
    // displayed annotations, at the resolution of the painter's device transform.
    void drawWithBox(QPainter &painter, PDFDisplayBox box) const;
    // Concatenates the page-to-painter transform of drawWithBox.
    void transformContextForBox(QPainter &painter, PDFDisplayBox box) const;
    // The box rendered into an image of the given pixel size (stretched to fit).
    QImage imageForBox(PDFDisplayBox box, const QSize &pixels, bool forPrinting = false) const;
    QImage imageForBox(
        PDFDisplayBox box, const QSize &pixels, const PDFRenderOptions &options) const;

    // A new page of the same class with this page's content, insertable into any document.
    std::shared_ptr<PDFPage> copy() const;
    // A one-page document cropped to the area, and the area rendered at 72 dpi as TIFF.
    QByteArray PDFDataForRect(const QRectF &rect) const;
    QByteArray TIFFDataForRect(const QRectF &rect) const;
    // The area as the TIFF shows it, at 72 dpi; null when it can't be drawn.
    QImage imageForRect(const QRectF &rect) const;

    // An immutable snapshot for rendering on workers, with fresh annotation appearances; it
    // shows the annotations whose shouldDisplay is true (and, for printing, shouldPrint). Null
    // when the page cannot be loaded.
    std::shared_ptr<PDFPageRenderSource> renderSource(
        PDFDisplayBox box, bool forPrinting = false) const;
    // The same with the options' choice of annotations; rasterise it on any thread.
    std::shared_ptr<PDFPageRenderSource> renderSource(
        PDFDisplayBox box, const PDFRenderOptions &options) const;
    // Rises with every change of what the page shows.
    quint64 revision() const;

protected:
    // Subclasses call this (and the engine does) after a change of content or annotations.
    void noteContentChanged();
    // The class copy() makes; by default the class the page was built as.
    virtual std::shared_ptr<PDFPage> newPageOfSameClass() const;
    // Called once the page's annotations have been built from the file, before anything (a
    // render, the view, a save) uses them; the list may be changed here. Main thread.
    virtual void didLoadAnnotations() { }

private:
    friend class PDFDocument;
    friend struct PDFDocumentPrivate;
    friend class PDFSelection;
    friend struct PDFPagePrivate;
    std::unique_ptr<PDFPagePrivate> d;
};

Q_DECLARE_METATYPE(std::shared_ptr<PDFPage>)
