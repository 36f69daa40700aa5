#pragma once

// Hand-made PDF files stating exactly the lie or damage a test wants, objects as they stand.

#include <QByteArray>
#include <QList>
#include <QString>

namespace RawPdf {

// Object i of the list is object number i + 1; the trailer gets /Size and these extra entries.
QByteArray build(const QList<QByteArray> &objects, const QByteArray &trailer = "/Root 1 0 R");
// A stream object: dict entries (without /Length) and the raw data.
QByteArray stream(const QByteArray &entries, const QByteArray &data);
// A page dictionary under parent whose text "Helvetica" resource is F1 and whose content is
// object content.
QByteArray page(int parent, int content);
// Content that writes one word in large type.
QByteArray textContent(const QByteArray &word);
// A zlib stream that inflates to chunk repeated count times, made without holding the inflated
// bytes: a decompression bomb of any size.
QByteArray deflatedRepeat(const QByteArray &chunk, qint64 count);
// A Flate stream object of deflatedRepeat(chunk, count).
QByteArray inflatingStream(const QByteArray &chunk, qint64 count);
// Three pages: the word before, a page whose content object is content, the word after.
QByteArray pagesAround(
    const QByteArray &content, const QByteArray &before, const QByteArray &after);
// Offset of the last cross-reference section (what the last startxref names).
qint64 lastXrefOffset(const QByteArray &pdf);
// Appends an incremental update that adds an /Info dictionary, whose trailer's /Prev is prev
// (negative: the update's own section, a loop).
QByteArray withUpdate(const QByteArray &pdf, qint64 prev);

// Writes the bytes to the file at path; false when that fails.
bool writeFile(const QString &path, const QByteArray &bytes);

// Two pages under a table that looks sound, the first broken so that a repair's rescan reads its
// array on into the second, and a header ("obju") that passes for "obj": MuPDF repairs the file
// only when it meets that object. Read right, the file has one page, 290 by 300, turned 90.
QByteArray pageLostByRescan();

} // namespace RawPdf
