#pragma once

// Documents and annotations of each kind the application makes, for the annotation tests.

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

} // namespace AnnotationFixtures
