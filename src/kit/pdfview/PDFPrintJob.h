#pragma once

// Hands a finished print document to where the print dialog points: the file of "Print to File",
// or a CUPS queue through lp with the copies, sides, paper and colour chosen in the dialog.

#include <QByteArray>
#include <QPageLayout>
#include <QPrinter>
#include <QSizeF>
#include <QString>
#include <QStringList>

class PDFPrintJob
{
public:
    // What the print dialog was left with.
    struct Choices
    {
        QString printerName; // empty: the default queue
        QString outputFile; // "Print to File", when set
        int copies = 1;
        bool collate = true;
        QPrinter::DuplexMode duplex = QPrinter::DuplexNone;
        QPageLayout::Orientation orientation = QPageLayout::Portrait;
        bool grey = false;
        bool lastPageFirst = false;
        QSizeF paper; // the sheet chosen, in points as seen; empty when each page brings its own

        static Choices of(const QPrinter &printer, const QSizeF &paper);
    };

    PDFPrintJob(const Choices &choices, const QString &title);

    // True when the dialog asked for a file rather than a printer.
    bool printsToFile() const;
    // The lp command line (without the program) that prints standard input as chosen.
    QStringList lpArguments() const;

    // Writes or queues the document. False with *error set when that fails; nothing is lost.
    bool send(const QByteArray &pdf, QString *error) const;

    // The CUPS media keyword of a sheet in points: a standard name or a custom size.
    static QString mediaName(const QSizeF &paper);

private:
    bool writeFile(const QByteArray &pdf, QString *error) const;
    bool queue(const QByteArray &pdf, QString *error) const;

    Choices m_choices;
    QString m_title;
};
