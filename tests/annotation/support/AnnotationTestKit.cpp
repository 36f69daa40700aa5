#include "AnnotationTestKit.h"

#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <view/FDPDFView.h>

namespace AnnotationTestKit {

std::shared_ptr<PDFAnnotation> appAnnotation(const QString &type, const QRectF &bounds)
{
    auto annotation = FDPDFView::classForAnnotationClass(type)();
    return annotation->initWithBounds(bounds) ? annotation : nullptr;
}

std::shared_ptr<PDFAnnotation> engineAnnotation(const QString &type, const QRectF &bounds)
{
    auto annotation = PDFAnnotation::classForType(type)();
    return annotation->initWithBounds(bounds, type, {}) ? annotation : nullptr;
}

std::shared_ptr<PDFDocument> documentOf(
    const QList<PdfFixtures::Page> &pages, const std::shared_ptr<PDFDocumentDelegate> &delegate)
{
    PdfFixtures::Document description;
    description.pages = pages;
    auto document = std::make_shared<PDFDocument>();
    document->setDelegate(delegate);
    return document->initWithData(PdfFixtures::build(description)) ? document : nullptr;
}

} // namespace AnnotationTestKit
