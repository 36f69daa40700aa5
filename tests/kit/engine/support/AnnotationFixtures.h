#pragma once

// Helpers for the annotation tests: documents from fixture bytes, a save-and-reopen through the
// engine, and an independent listing of a file's annotations by Debian's pikepdf.

#include <QJsonArray>
#include <QJsonObject>
#include <QRectF>
#include <QString>

#include <memory>

class PDFAnnotation;
class PDFDocument;

namespace AnnotationFixtures {

std::shared_ptr<PDFDocument> open(const QByteArray &pdf);
// The document's bytes opened again as a new document.
std::shared_ptr<PDFDocument> reopen(const PDFDocument &document);
// A one-page letter document with three lines of text at the top.
std::shared_ptr<PDFDocument> textDocument();

// A new annotation of one of the kinds the application creates, on no page, with colours,
// contents and geometry set: "Highlight", "Underline", "StrikeOut", "Ink", "Line", "Circle",
// "Square", "FreeText", "Text".
std::shared_ptr<PDFAnnotation> makeAnnotation(const QString &type, const QRectF &bounds);

// Each annotation of the file at path, in page order: "page", "subtype" ("/Square"), "rect",
// "color" (arrays of numbers), "contents" (string or null), "borderStyle" ("/D" or null),
// "appearance" (start of the normal appearance stream or null). Empty with *error set when the
// reader fails.
QJsonArray listWithPikepdf(const QString &python, const QString &path, QString *error);

} // namespace AnnotationFixtures
