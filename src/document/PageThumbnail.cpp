#include "PageThumbnail.h"

#include "PDFPage+XExtensions.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>
#include <kit/engine/PDFRenderOptions.h>

#include <QPainter>

#include <cmath>

PageThumbnail PageThumbnail::plain(const PDFPage &page, double maxLength, PDFDisplayBox box)
{
    PageThumbnail thumbnail;
    QSizeF pageSize = page.boundsForBox(box).size();
    if (page.rotation() % 180 != 0)
        pageSize.transpose();
    if (pageSize.isEmpty() || !(maxLength > 0))
        return thumbnail;
    if (pageSize.width() > pageSize.height())
        thumbnail.m_size = QSize(int(std::lround(maxLength)),
            int(std::lround(maxLength * pageSize.height() / pageSize.width())));
    else
        thumbnail.m_size = QSize(int(std::lround(maxLength * pageSize.width() / pageSize.height())),
            int(std::lround(maxLength)));
    // Annotations the view's overlay draws are hidden from engine drawing; a thumbnail shows them
    // in this one render, so the page keeps its revision and the reading view its tiles.
    PDFRenderOptions options;
    for (const std::shared_ptr<PDFAnnotation> &annotation : validAnnotations(page)) {
        if (shouldDisplayOnOverlay(*annotation))
            options.includedAnnotations.push_back(annotation);
    }
    thumbnail.m_source = page.renderSource(box, options);
    return thumbnail;
}

void PageThumbnail::setOverlayPath(const BezierPath &path, const QColor &color)
{
    m_overlayPath = path;
    m_overlayColor = color;
}

void PageThumbnail::setFrame(const QColor &color, double lineWidth)
{
    m_frameColor = color;
    m_frameWidth = lineWidth;
}

QImage PageThumbnail::render(PDFCancellation *cancel) const
{
    if (!m_source || m_size.isEmpty())
        return {};
    const QSizeF viewSize = m_source->geometry().viewSize();
    QImage page(m_size, QImage::Format_ARGB32_Premultiplied);
    const QTransform toImage = m_source->geometry().pageToView()
        * QTransform::fromScale(
            m_size.width() / viewSize.width(), m_size.height() / viewSize.height());
    if (!m_source->render(page, toImage, cancel))
        return {};
    if (!m_backgroundColor && !m_overlayPath && !m_frameColor)
        return page;

    QImage image(m_size, QImage::Format_ARGB32_Premultiplied);
    image.fill(m_backgroundColor.value_or(Qt::transparent));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawImage(0, 0, page);
    if (m_overlayPath) {
        painter.save();
        painter.translate(0, m_size.height());
        painter.scale(1, -1);
        painter.setBrush(m_overlayColor);
        m_overlayPath->fill(painter);
        painter.restore();
    }
    if (m_frameColor && m_frameWidth > 0) {
        const double w = m_size.width();
        const double h = m_size.height();
        const double line = std::min({ m_frameWidth, w / 2, h / 2 });
        painter.fillRect(QRectF(0, 0, w, line), *m_frameColor);
        painter.fillRect(QRectF(0, h - line, w, line), *m_frameColor);
        painter.fillRect(QRectF(0, line, line, h - 2 * line), *m_frameColor);
        painter.fillRect(QRectF(w - line, line, line, h - 2 * line), *m_frameColor);
    }
    return image;
}
