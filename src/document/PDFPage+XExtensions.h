#pragma once

// What the application asks of any page, whether or not it is an FDPage. Main thread only.

#include <kit/engine/PDFDisplayBox.h>

#include <QImage>
#include <QSizeF>

#include <memory>
#include <vector>

class PDFAnnotation;
class PDFPage;

// The page's index in its document; -1 without a document or when the document has no pages.
int pageIndex(const PDFPage &page);

// The page's annotations that the application handles (no links, no pop-ups), in page order.
std::vector<std::shared_ptr<PDFAnnotation>> validAnnotations(const PDFPage &page);

// The box drawn so that its longer side, after rotation, is maxLength pixels (the other side
// rounded), with the annotations the view's overlay draws. PageThumbnail::plain is the same in
// two steps, for drawing on another thread.
QImage thumbnailWithMaxLength(const PDFPage &page, double maxLength, PDFDisplayBox box);
// The same with the longer side of size as the length.
QImage thumbnailWithSize(const PDFPage &page, QSizeF size, PDFDisplayBox box);
