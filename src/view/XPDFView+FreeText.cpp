// XPDFView: a free text box made from plain text, as a paste of text makes it.

#include "XPDFView.h"

#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFPage.h>

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QImage>

#include <cmath>

namespace {

// Text is laid out in page space, where a point is a pixel: fonts are measured at 72 dpi.
const QPaintDevice &pointSpaceDevice()
{
    static const QImage device = [] {
        QImage image(1, 1, QImage::Format_ARGB32);
        const int dotsPerMeter = int(std::lround(72 / 0.0254));
        image.setDotsPerMeterX(dotsPerMeter);
        image.setDotsPerMeterY(dotsPerMeter);
        return image;
    }();
    return device;
}

// The height the text takes wrapped at width.
double wrappedHeight(const QString &text, const QFont &font, double width)
{
    const QFontMetricsF metrics(font, &pointSpaceDevice());
    const QRectF room(0, 0, std::max(1.0, width), 1e7);
    return metrics.boundingRect(room, Qt::AlignLeft | Qt::TextWordWrap | Qt::TextExpandTabs, text)
        .height();
}

} // namespace

std::shared_ptr<PDFAnnotation> XPDFView::addFreeTextWithContents(
    const QString &text, const std::shared_ptr<PDFPage> &page, const QPointF &origin)
{
    if (text.isNull() || !page)
        return nullptr;
    const double width = page->boundsForBox(displayBox()).width() / 3;
    const auto annotation
        = addAnnotationWithType(QStringLiteral("FreeText"), page, QRectF(origin, QSizeF(width, 0)));
    if (!annotation)
        return nullptr;
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    if (const auto *const freeText = dynamic_cast<const PDFAnnotationFreeText *>(annotation.get());
        freeText && freeText->font() != QFont())
        font = freeText->font();
    const double height = std::ceil(wrappedHeight(text, font, width - 8)) + 8;
    annotation->setContents(text);
    const qint64 counter = m_pasteCounter++;
    const double step = 10.0 * double(counter);
    annotation->setBounds(QRectF(origin.x() + step, origin.y() - height - step, width, height));
    return annotation;
}
