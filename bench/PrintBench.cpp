// folidoc-bench print IN.pdf OUT.pdf [--without-annotations]: the print command's path into a
// file, as "Print to File" runs it: a copy of the document with every annotation's print flag
// set as asked, a hidden view, the dialog's starting paper, and the print job written to OUT.

#include "BenchCommand.h"

#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/pdfview/PDFView.h>

#include <QElapsedTimer>
#include <QFileInfo>
#include <QPrinter>
#include <QTextStream>

namespace {

double msSince(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

int runPrintBench(const QStringList &arguments)
{
    QTextStream err(stderr);
    QStringList paths = arguments;
    const bool withAnnotations = !paths.removeAll(QStringLiteral("--without-annotations"));
    if (paths.size() != 2) {
        err << "usage: folidoc-bench print IN.pdf OUT.pdf [--without-annotations]\n";
        return 2;
    }
    QElapsedTimer total;
    total.start();
    QElapsedTimer timer;
    timer.start();
    auto live = std::make_shared<PDFDocument>();
    if (!live->initWithURL(QUrl::fromLocalFile(paths[0])) || live->isLocked()) {
        err << "print: cannot open " << paths[0] << ": " << live->errorString() << '\n';
        return 1;
    }
    const double openMs = msSince(timer);

    // The copy the print commands make, so that the live document is never touched.
    timer.restart();
    auto copy = std::make_shared<PDFDocument>();
    const QByteArray bytes = live->dataRepresentation();
    if (bytes.isEmpty() || !copy->initWithData(bytes)) {
        err << "print: the document could not be copied: " << copy->errorString() << '\n';
        return 1;
    }
    for (int index = 0; index < copy->pageCount(); ++index) {
        for (const auto &annotation : copy->pageAtIndex(index)->annotations()) {
            annotation->setShouldDisplay(withAnnotations);
            annotation->setShouldPrint(withAnnotations);
        }
    }
    const double copyMs = msSince(timer);

    timer.restart();
    PDFView view;
    view.setDocument(copy);
    QPrinter printer(QPrinter::HighResolution);
    view.preparePrintInfo(printer);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QFileInfo(paths[1]).absoluteFilePath());
    const bool printed = view.printToPrinter(printer, true);
    const double printMs = msSince(timer);
    if (!printed) {
        err << "print: " << view.printErrorString() << '\n';
        return 1;
    }
    benchPrint(QStringLiteral("pages"), copy->pageCount());
    benchPrint(QStringLiteral("open_ms"), openMs);
    benchPrint(QStringLiteral("copy_ms"), copyMs);
    benchPrint(QStringLiteral("print_ms"), printMs);
    benchPrint(QStringLiteral("total_ms"), msSince(total));
    benchPrint(QStringLiteral("input_bytes"), double(QFileInfo(paths[0]).size()));
    benchPrint(QStringLiteral("output_bytes"), double(QFileInfo(paths[1]).size()));
    return 0;
}

const BenchRegistration registration(QStringLiteral("print"),
    QStringLiteral("IN.pdf OUT.pdf [--without-annotations]"), runPrintBench);

} // namespace
