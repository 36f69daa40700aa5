#pragma once

// Hands a finished print document to where the print dialog points: the file of "Print to File",
// or a CUPS queue through lp with the copies, sides, paper and colour chosen in the dialog.

#include <QByteArray>
#include <QSizeF>
#include <QString>
#include <QStringList>

class QPrinter;

class PDFPrintJob
{
public:
    // paper: the sheet the person chose, in points as seen; empty when each page brings its own.
    PDFPrintJob(const QPrinter &printer, const QString &title, const QSizeF &paper);

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

    const QPrinter &m_printer;
    QString m_title;
    QSizeF m_paper;
};
