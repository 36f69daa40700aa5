#pragma once

// Annotations and documents for the annotation tests: the application's classes as the view
// makes them, the engine's own classes, and documents built from fixture pages.

#include <support/PdfFixtures.h>

#include <QRectF>
#include <QString>

#include <memory>

class PDFAnnotation;
class PDFDocument;
class PDFDocumentDelegate;

namespace AnnotationTestKit {

// The application's annotation for the type, made as the view makes it; null when init fails.
std::shared_ptr<PDFAnnotation> appAnnotation(const QString &type, const QRectF &bounds);
// The engine's annotation for the type, on no page; null when init fails.
std::shared_ptr<PDFAnnotation> engineAnnotation(const QString &type, const QRectF &bounds);
// A document of the pages (one letter page by default); null when it does not parse.
std::shared_ptr<PDFDocument> documentOf(const QList<PdfFixtures::Page> &pages = { {} },
    const std::shared_ptr<PDFDocumentDelegate> &delegate = {});

} // namespace AnnotationTestKit
