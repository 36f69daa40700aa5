// QKOverlayView: what it draws, in page space through pageTransform unless said otherwise.

#include "FDPDFView.h"
#include "QKOverlayView.h"

#include <annotation/AnnotationDefaultsKeys.h>
#include <annotation/FDAnnotationMarkup.h>
#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/values/NSUserDefaults+XExtensions.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <appearance/NSImage+XExtensions.h>
#include <document/FDPage.h>
#include <kit/base/BezierPath.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PageGeometry.h>

#include <QPainter>
#include <QPainterPath>

#include <array>
#include <cmath>

namespace {

const QColor SelectionHandleColor(58, 123, 226);

// The note's icon "Ann_Text_18pt" in the annotation's colour, at a pixel side.
QPixmap tintedNoteIcon(const QColor &color, int side)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    iconForType(QStringLiteral("Text")).paint(&painter, image.rect());
    painter.end();
    return QPixmap::fromImage(
        imageTintedWithColor(image, color.isValid() ? color : QColor(Qt::black)));
}

} // namespace

void QKOverlayView::drawAnnotation(QPainter &painter, const PDFAnnotation &annotation) const
{
    if (isText(annotation)) {
        drawNote(painter, annotation);
        return;
    }
    // A box being typed into shows in its field; its own picture would double the text.
    if (isFreeText(annotation) && isEditing(annotation))
        return;
    // drawWithBox draws in the coordinates of the rotated box at scale 1.
    const PageGeometry geometry(page()->boundsForBox(m_pdfView->displayBox()), page()->rotation());
    const QSizeF size = geometry.viewSize();
    if (size.isEmpty())
        return;
    painter.scale(width() / size.width(), height() / size.height());
    annotation.drawWithBox(painter, m_pdfView->displayBox());
}

void QKOverlayView::drawNote(QPainter &painter, const PDFAnnotation &annotation) const
{
    const QPointF offset = XPDFView::offsetBasedOnMediaBoxInPage(page(), m_pdfView->displayBox());
    const QRectF bounds = enclosedBounds(annotation).translated(offset);
    const QRectF area = pageTransform().mapRect(bounds);
    painter.fillRect(area, Qt::white);
    painter.setPen(QPen(Qt::gray, 1));
    painter.drawRect(area.adjusted(0.5, 0.5, -0.5, -0.5));
    const double scale = m_pdfView->scaleFactor();
    const double side = 18.0 * scale;
    const int pixels = std::max(1, int(std::lround(side * devicePixelRatioF())));
    QPixmap icon = tintedNoteIcon(annotation.color(), pixels);
    icon.setDevicePixelRatio(devicePixelRatioF());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(QRectF(area.center() - QPointF(side / 2, side / 2), QSizeF(side, side)),
        icon, QRectF(icon.rect()));
}

void QKOverlayView::drawHandles(QPainter &painter, const QRectF &rect, double size) const
{
    const double midX = rect.center().x();
    const double midY = rect.center().y();
    const std::array<QPointF, 8> points { {
        { rect.left(), midY },
        { midX, rect.bottom() },
        { midX, rect.top() },
        { rect.right(), midY },
        { rect.left(), rect.bottom() },
        { rect.left(), rect.top() },
        { rect.right(), rect.bottom() },
        { rect.right(), rect.top() },
    } };
    const double radius = 1.75 * size / 2;
    painter.setPen(QPen(Qt::white, 0.25 * size));
    for (const QPointF &point : points)
        painter.drawEllipse(point, radius, radius);
}

void QKOverlayView::drawFocusRing(QPainter &painter, const PDFAnnotation &annotation) const
{
    const QColor color = FDThemeProvider::current()->color(FDTheme::primaryColor);
    painter.setTransform(pageTransform(), true);
    painter.setRenderHint(QPainter::Antialiasing);
    const double pixel = onePixel();
    QPen dashed(color, pixel);
    dashed.setDashPattern({ 2, 2 });
    const double handle = 4 * pixel;
    if (const auto *markup = dynamic_cast<const FDAnnotationMarkup *>(&annotation)) {
        painter.setPen(dashed);
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(markup->enclosedPath().toPainterPath());
        return;
    }
    painter.setBrush(color);
    if (const auto *line = dynamic_cast<const PDFAnnotationLine *>(&annotation)) {
        const QPointF origin = annotation.bounds().topLeft();
        const double radius = 1.75 * handle / 2;
        painter.setPen(QPen(Qt::white, 0.25 * handle));
        painter.drawEllipse(origin + line->startPoint(), radius, radius);
        painter.drawEllipse(origin + line->endPoint(), radius, radius);
        return;
    }
    QRectF rect = annotation.bounds();
    if (isText(annotation)) {
        rect.translate(XPDFView::offsetBasedOnMediaBoxInPage(page(), m_pdfView->displayBox()));
        rect.adjust(-5, -5, 5, 5);
    } else if (isFreeText(annotation)) {
        rect.adjust(-2, -2, 2, 2);
    }
    if (isResizable(annotation)) {
        drawHandles(painter, rect, handle);
    } else {
        painter.setPen(dashed);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect);
    }
}

void QKOverlayView::drawPendingInk(QPainter &painter) const
{
    const auto path = m_pdfView->pendingInkPath();
    if (!path || m_pdfView->pendingInkPage() != page())
        return;
    painter.setTransform(pageTransform(), true);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor color = colorForKey(UserDefaults::standard(), AnnotationDefaultsKeys::InkColor);
    if (!color.isValid())
        color = Qt::black;
    painter.setPen(path->pen(color));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path->toPainterPath());
}

void QKOverlayView::drawBookmarkIndicator(QPainter &painter) const
{
    const auto *const fdPage = dynamic_cast<const FDPage *>(page().get());
    if (!fdPage || (!fdPage->isBookmarked() && !m_isMouseInBookmarkIndicatorHotArea))
        return;
    const QRectF box = fdPage->boundsForBox(m_pdfView->displayBox());
    painter.setTransform(pageTransform(), true);
    painter.translate(box.topLeft());
    painter.setRenderHint(QPainter::Antialiasing);
    const QPainterPath ribbon
        = FDPage::createBookmarkIndicatorPathWithScale(1.0, box.size()).toPainterPath();
    const QColor color = FDThemeProvider::current()->color(FDTheme::secondaryColor);
    if (fdPage->isBookmarked()) {
        painter.fillPath(ribbon, color);
        return;
    }
    // Where a click would put the bookmark.
    QPen pen(color, onePixel());
    pen.setDashPattern({ 1, 3 });
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(ribbon);
}

void QKOverlayView::drawAreaSelection(QPainter &painter) const
{
    const auto selectionPage = m_pdfView->currentSelectionPage();
    const QRectF selection = m_pdfView->currentSelectionRect();
    if (!selectionPage || selection.isEmpty())
        return;
    painter.setTransform(pageTransform(), true);
    // Everything but the selection is dimmed, on every page.
    QPainterPath dimmed;
    dimmed.setFillRule(Qt::OddEvenFill);
    dimmed.addRect(page()->boundsForBox(m_pdfView->displayBox()));
    dimmed.addRect(selection);
    painter.fillPath(dimmed, QColor(0, 0, 0, int(0.6 * 255)));
    // The hole would show on the wrong page.
    if (selectionPage != page())
        painter.fillRect(selection, QColor(0, 0, 0, int(0.3 * 255)));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(SelectionHandleColor);
    drawHandles(painter, selection, 4 * onePixel());
}
