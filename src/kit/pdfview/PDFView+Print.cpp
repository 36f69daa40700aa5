// PDFView: printing through Qt's print dialog, each page rendered by the engine.

#include "PDFView.h"

#include <kit/base/Log.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>

#include <algorithm>
#include <memory>

namespace {

// Raster pages beyond this density only cost memory: the eye and most printers stop here.
constexpr int MaxPrintDpi = 600;

} // namespace

void PDFView::printWithInfo(QPrinter *printInfo, bool autoRotate)
{
    if (!m_document || m_pages.empty())
        return;
    std::unique_ptr<QPrinter> made;
    QPrinter *printer = printInfo;
    if (!printer) {
        made = std::make_unique<QPrinter>(QPrinter::HighResolution);
        printer = made.get();
    }
    printer->setFromTo(1, int(m_pages.size()));
    printer->setDocName(m_document->documentURL().fileName());
    QPrintDialog dialog(printer, this);
    dialog.setMinMax(1, int(m_pages.size()));
    if (dialog.exec() != QDialog::Accepted)
        return;
    printToPrinter(*printer, autoRotate);
}

bool PDFView::printToPrinter(QPrinter &printer, bool autoRotate)
{
    if (!m_document || m_pages.empty() || !m_document->allowsPrinting())
        return false;
    const int count = int(m_pages.size());
    ensurePageSizes(count - 1);
    int first = 1;
    int last = count;
    if (printer.printRange() == QPrinter::PageRange && printer.fromPage() > 0) {
        first = std::clamp(printer.fromPage(), 1, count);
        last = std::clamp(printer.toPage(), first, count);
    }
    QPainter painter;
    if (!painter.begin(&printer)) {
        Log::warn(QStringLiteral("The printer could not be started"));
        return false;
    }
    const int dpi = std::min(printer.resolution(), MaxPrintDpi);
    for (int number = first; number <= last; ++number) {
        if (number > first)
            printer.newPage();
        const auto page = pageAt(number - 1);
        const PageGeometry &geometry = m_geometries[size_t(number - 1)];
        const QRectF paper = printer.pageLayout().paintRectPixels(printer.resolution());
        const QRectF target(QPointF(0, 0), paper.size());
        const QSizeF size = geometry.viewSize();
        const bool turn
            = autoRotate && (size.width() > size.height()) != (target.width() > target.height());
        const QSizeF shown = turn ? size.transposed() : size;
        // Fit into the printable area, keeping proportions, centred.
        const double fit
            = std::min(target.width() / shown.width(), target.height() / shown.height());
        const QSizeF drawn = shown * fit;
        const QRectF placed(target.center() - QPointF(drawn.width(), drawn.height()) / 2, drawn);
        const double pixelsPerPoint = double(dpi) / 72.0 * fit * 72.0 / printer.resolution();
        const QSize pixels = (size * std::max(pixelsPerPoint, 0.01)).toSize();
        const QImage image = page->imageForBox(m_displayBox, pixels.expandedTo(QSize(1, 1)), true);
        if (image.isNull()) {
            Log::warn(QStringLiteral("Page %1 could not be printed; it prints blank").arg(number));
            continue;
        }
        painter.save();
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        if (turn) {
            painter.translate(placed.center());
            painter.rotate(90);
            painter.drawImage(
                QRectF(-placed.height() / 2, -placed.width() / 2, placed.height(), placed.width()),
                image);
        } else {
            painter.drawImage(placed, image);
        }
        painter.restore();
    }
    return painter.end();
}
