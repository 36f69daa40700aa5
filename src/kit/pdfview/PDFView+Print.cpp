// PDFView: printing through Qt's print dialog. The chosen pages are written as a PDF that keeps
// their content (text, vector graphics, fonts), then queued or saved by PDFPrintJob.

#include "PDFPrintJob.h"
#include "PDFView.h"

#include <kit/base/Log.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>
#include <kit/engine/PDFPrintWriter.h>

#include <QFileInfo>
#include <QMessageBox>
#include <QPageLayout>
#include <QPageRanges>
#include <QPageSize>
#include <QPrintDialog>
#include <QPrinter>

#include <algorithm>
#include <memory>

namespace {

// Sizes closer than this (points) are the same paper: page sizes go through millimetres in Qt.
constexpr double PaperTolerance = 2.0;

// The pages of the dialog's range, as indexes, in the order they print.
std::vector<int> chosenPages(const QPrinter &printer, int count)
{
    std::vector<int> pages;
    const auto add = [&](int from, int to) {
        for (int number = std::max(from, 1); number <= std::min(to, count); ++number)
            pages.push_back(number - 1);
    };
    if (printer.printRange() == QPrinter::PageRange && !printer.pageRanges().isEmpty()) {
        for (const QPageRanges::Range &range : printer.pageRanges().toRangeList())
            add(range.from, range.to);
    } else if (printer.printRange() == QPrinter::PageRange && printer.fromPage() > 0) {
        add(printer.fromPage(), std::max(printer.fromPage(), printer.toPage()));
    } else {
        add(1, count);
    }
    if (printer.outputFormat() == QPrinter::PdfFormat
        && printer.pageOrder() == QPrinter::LastPageFirst)
        std::reverse(pages.begin(), pages.end());
    return pages;
}

QPageLayout layoutOfSize(const QSizeF &points)
{
    const QSizeF upright(
        std::min(points.width(), points.height()), std::max(points.width(), points.height()));
    const QPageSize size(upright, QPageSize::Point, QString(), QPageSize::FuzzyMatch);
    return QPageLayout(size,
        points.width() > points.height() ? QPageLayout::Landscape : QPageLayout::Portrait,
        QMarginsF());
}

bool samePaper(const QSizeF &a, const QSizeF &b)
{
    return std::abs(a.width() - b.width()) <= PaperTolerance
        && std::abs(a.height() - b.height()) <= PaperTolerance;
}

QString jobTitle(const QPrinter &printer)
{
    const QString name = printer.docName();
    return name.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive) ? name.chopped(4) : name;
}

} // namespace

QSizeF PDFView::printPageSize(int index) const
{
    const auto page = pageAt(index);
    return PageGeometry(page->boundsForBox(m_displayBox), page->rotation()).viewSize();
}

void PDFView::preparePrintInfo(QPrinter &printer) const
{
    if (!m_document || m_pages.empty())
        return;
    printer.setFromTo(1, int(m_pages.size()));
    if (printer.docName().isEmpty()) {
        // The dialog suggests the file name from this: the document's, as a PDF.
        const QString base = QFileInfo(m_document->documentURL().fileName()).completeBaseName();
        if (!base.isEmpty())
            printer.setDocName(base + QStringLiteral(".pdf"));
    }
    // The paper starts as the first page: a person who leaves it gets every page at its own size.
    printer.setPageLayout(layoutOfSize(printPageSize(0)));
}

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
    preparePrintInfo(*printer);
    QPrintDialog dialog(printer, this);
    dialog.setMinMax(1, int(m_pages.size()));
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (!printToPrinter(*printer, autoRotate) && !m_printError.isEmpty())
        QMessageBox::warning(window(), tr("Printing failed"), m_printError);
}

bool PDFView::printToPrinter(QPrinter &printer, bool autoRotate)
{
    m_printError.clear();
    if (!m_document || m_pages.empty() || !m_document->allowsPrinting())
        return false;
    const int count = int(m_pages.size());
    const std::vector<int> pages = chosenPages(printer, count);
    if (pages.empty()) {
        m_printError = tr("The pages to print are not in the document.");
        return false;
    }
    // The paper the dialog ends on is the person's choice unless it is still the first page's.
    const QSizeF paper = printer.pageLayout().fullRectPoints().size();
    const QSizeF chosen = samePaper(paper, printPageSize(pages.front())) ? QSizeF() : paper;
    PDFPrintWriter writer;
    writer.setPaper(chosen, autoRotate);
    for (const int index : pages) {
        const auto source = pageAt(index)->renderSource(m_displayBox, true);
        if (!source || !writer.addPage(*source)) {
            m_printError
                = source ? writer.errorString() : tr("Page %1 could not be read.").arg(index + 1);
            Log::warn(m_printError);
            return false;
        }
    }
    const QByteArray pdf = writer.finish();
    if (pdf.isEmpty()) {
        m_printError = writer.errorString();
        Log::warn(m_printError);
        return false;
    }
    const PDFPrintJob job(PDFPrintJob::Choices::of(printer, chosen), jobTitle(printer));
    if (!job.send(pdf, &m_printError)) {
        Log::warn(m_printError);
        return false;
    }
    return true;
}

QString PDFView::printErrorString() const
{
    return m_printError;
}
