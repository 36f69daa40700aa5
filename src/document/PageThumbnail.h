#pragma once

// A page's thumbnail, taken in two steps: what to draw is fixed on the main thread (the page,
// with the annotations the application draws itself, and any decoration), and the pixels are
// made on whatever thread renders it.

#include <kit/base/BezierPath.h>
#include <kit/engine/PDFDisplayBox.h>

#include <QColor>
#include <QImage>
#include <QSize>

#include <memory>
#include <optional>

class PDFCancellation;
class PDFPage;
class PDFPageRenderSource;

class PageThumbnail
{
public:
    // The page's box scaled so that its longer side (after rotation) is maxLength, shown with
    // its overlay annotations, whose shouldDisplay is left alone. Main thread.
    static PageThumbnail plain(const PDFPage &page, double maxLength, PDFDisplayBox box);

    // Decoration, in the thumbnail's pixels: a fill under the page, a path filled over it (y up,
    // as in page space), and a frame drawn inside the edges.
    void setBackgroundColor(const QColor &color) { m_backgroundColor = color; }
    void setOverlayPath(const BezierPath &path, const QColor &color);
    void setFrame(const QColor &color, double lineWidth);

    QSize size() const { return m_size; }
    // Any thread. A null image when the page can't be drawn or the work was cancelled.
    QImage render(PDFCancellation *cancel = nullptr) const;

private:
    std::shared_ptr<PDFPageRenderSource> m_source;
    QSize m_size;
    std::optional<QColor> m_backgroundColor;
    std::optional<BezierPath> m_overlayPath;
    QColor m_overlayColor;
    std::optional<QColor> m_frameColor;
    double m_frameWidth = 0;
};
