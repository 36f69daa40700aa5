#include "PDFPrintJob.h"

#include <QCoreApplication>
#include <QPageSize>
#include <QPrinter>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

// A queue that has not taken the job by then will not: lp only spools.
constexpr int LpTimeoutMs = 120000;

QString sides(const PDFPrintJob::Choices &choices)
{
    switch (choices.duplex) {
    case QPrinter::DuplexNone:
        return QStringLiteral("one-sided");
    case QPrinter::DuplexLongSide:
        return QStringLiteral("two-sided-long-edge");
    case QPrinter::DuplexShortSide:
        return QStringLiteral("two-sided-short-edge");
    case QPrinter::DuplexAuto:
        // Pages turn over their long side when upright, over the short side when lying.
        return choices.orientation == QPageLayout::Landscape
            ? QStringLiteral("two-sided-short-edge")
            : QStringLiteral("two-sided-long-edge");
    }
    return {};
}

} // namespace

PDFPrintJob::Choices PDFPrintJob::Choices::of(const QPrinter &printer, const QSizeF &paper)
{
    Choices choices;
    choices.printerName = printer.printerName();
    // Without a printer Qt writes PDF; a file is then the only place the job can go.
    if (printer.outputFormat() == QPrinter::PdfFormat || !printer.outputFileName().isEmpty())
        choices.outputFile = printer.outputFileName();
    choices.copies = std::max(1, printer.copyCount());
    choices.collate = printer.collateCopies();
    choices.duplex = printer.duplex();
    choices.orientation = printer.pageLayout().orientation();
    choices.grey = printer.colorMode() == QPrinter::GrayScale;
    choices.lastPageFirst = printer.pageOrder() == QPrinter::LastPageFirst;
    choices.paper = paper;
    return choices;
}

PDFPrintJob::PDFPrintJob(const Choices &choices, const QString &title)
    : m_choices(choices)
    , m_title(title)
{ }

bool PDFPrintJob::printsToFile() const
{
    return !m_choices.outputFile.isEmpty();
}

QString PDFPrintJob::mediaName(const QSizeF &paper)
{
    const QSizeF upright(
        std::min(paper.width(), paper.height()), std::max(paper.width(), paper.height()));
    const QPageSize size(upright, QPageSize::Point, QString(), QPageSize::FuzzyMatch);
    if (size.id() != QPageSize::Custom)
        return size.key();
    return QStringLiteral("Custom.%1x%2pt")
        .arg(qRound(upright.width()))
        .arg(qRound(upright.height()));
}

QStringList PDFPrintJob::lpArguments() const
{
    QStringList arguments;
    if (!m_choices.printerName.isEmpty())
        arguments << QStringLiteral("-d") << m_choices.printerName;
    if (!m_title.isEmpty())
        arguments << QStringLiteral("-t") << m_title;
    const int copies = std::max(1, m_choices.copies);
    if (copies > 1) {
        arguments << QStringLiteral("-n") << QString::number(copies);
        arguments << QStringLiteral("-o")
                  << (m_choices.collate ? QStringLiteral("collate=true")
                                        : QStringLiteral("collate=false"));
    }
    arguments << QStringLiteral("-o") << QStringLiteral("sides=") + sides(m_choices);
    if (!m_choices.paper.isEmpty())
        arguments << QStringLiteral("-o") << QStringLiteral("media=") + mediaName(m_choices.paper);
    if (m_choices.grey)
        arguments << QStringLiteral("-o") << QStringLiteral("print-color-mode=monochrome");
    if (m_choices.lastPageFirst)
        arguments << QStringLiteral("-o") << QStringLiteral("outputorder=reverse");
    return arguments;
}

bool PDFPrintJob::send(const QByteArray &pdf, QString *error) const
{
    return printsToFile() ? writeFile(pdf, error) : queue(pdf, error);
}

bool PDFPrintJob::writeFile(const QByteArray &pdf, QString *error) const
{
    const QString path = m_choices.outputFile;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(pdf) != pdf.size() || !file.commit()) {
        *error = QCoreApplication::translate("PDFPrintJob", "The file %1 could not be written: %2")
                     .arg(path, file.errorString());
        return false;
    }
    return true;
}

bool PDFPrintJob::queue(const QByteArray &pdf, QString *error) const
{
    const QString lp = QStandardPaths::findExecutable(QStringLiteral("lp"));
    if (lp.isEmpty()) {
        *error = QCoreApplication::translate("PDFPrintJob",
            "Printing needs the CUPS program \"lp\", which is not installed "
            "(package cups-client).");
        return false;
    }
    QProcess process;
    process.start(lp, lpArguments());
    if (!process.waitForStarted()) {
        *error
            = QCoreApplication::translate("PDFPrintJob", "The print queue could not be reached: %1")
                  .arg(process.errorString());
        return false;
    }
    process.write(pdf);
    process.closeWriteChannel();
    if (!process.waitForFinished(LpTimeoutMs)) {
        process.kill();
        process.waitForFinished();
        *error = QCoreApplication::translate(
            "PDFPrintJob", "The print queue did not take the document in time.");
        return false;
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        const QString said = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
        *error = QCoreApplication::translate(
            "PDFPrintJob", "The printer did not take the document: %1")
                     .arg(said.isEmpty() ? QStringLiteral("lp failed") : said);
        return false;
    }
    return true;
}
