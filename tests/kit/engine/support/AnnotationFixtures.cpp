#include "AnnotationFixtures.h"

#include <support/PdfFixtures.h>

#include <kit/base/BezierPath.h>
#include <kit/engine/PDFAnnotationCircle.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationMarkup.h>
#include <kit/engine/PDFAnnotationSquare.h>
#include <kit/engine/PDFAnnotationText.h>
#include <kit/engine/PDFBorder.h>
#include <kit/engine/PDFDocument.h>

namespace AnnotationFixtures {

std::shared_ptr<PDFDocument> open(const QByteArray &pdf)
{
    auto document = std::make_shared<PDFDocument>();
    return document->initWithData(pdf) ? document : nullptr;
}

std::shared_ptr<PDFDocument> reopen(const PDFDocument &document)
{
    return open(document.dataRepresentation());
}

std::shared_ptr<PDFDocument> textDocument()
{
    PdfFixtures::Page page;
    page.lines = { QStringLiteral("The quick brown fox jumps over the lazy dog"),
        QStringLiteral("Alpha beta gamma delta"), QStringLiteral("Folio one marker") };
    PdfFixtures::Document description;
    description.pages = { page };
    return open(PdfFixtures::build(description));
}

std::shared_ptr<PDFAnnotation> makeAnnotation(const QString &type, const QRectF &bounds)
{
    std::shared_ptr<PDFAnnotation> annotation;
    if (type == QLatin1String("Highlight") || type == QLatin1String("Underline")
        || type == QLatin1String("StrikeOut")) {
        auto markup = std::make_shared<PDFAnnotationMarkup>();
        markup->initWithBounds(bounds, type, {});
        const double w = bounds.width();
        const double h = bounds.height();
        markup->setQuadrilateralPoints({ { 0, h }, { w, h }, { 0, 0 }, { w, 0 } });
        markup->setColor(QColor(255, 255, 0));
        annotation = markup;
    } else if (type == QLatin1String("Ink")) {
        auto ink = std::make_shared<PDFAnnotationInk>();
        ink->initWithBounds(bounds);
        auto path = std::make_shared<BezierPath>();
        path->moveTo({ 5, 5 });
        path->curveTo({ bounds.width() - 5, bounds.height() - 5 }, { 5, bounds.height() },
            { bounds.width(), 5 });
        ink->addBezierPath(path);
        ink->border()->setLineWidth(3);
        ink->setColor(QColor(0, 0, 255));
        annotation = ink;
    } else if (type == QLatin1String("Line")) {
        auto line = std::make_shared<PDFAnnotationLine>();
        line->initWithBounds(bounds);
        line->setEndLineStyle(PDFAnnotationLine::OpenArrow);
        line->border()->setLineWidth(2);
        line->setColor(QColor(255, 0, 0));
        annotation = line;
    } else if (type == QLatin1String("Circle")) {
        auto circle = std::make_shared<PDFAnnotationCircle>();
        circle->initWithBounds(bounds);
        circle->setInteriorColor(QColor(0, 255, 0));
        circle->setColor(QColor(255, 0, 0));
        annotation = circle;
    } else if (type == QLatin1String("Square")) {
        auto square = std::make_shared<PDFAnnotationSquare>();
        square->initWithBounds(bounds);
        square->border()->setLineWidth(4);
        square->border()->setStyle(PDFBorder::Dashed);
        square->border()->setDashPattern({ 6, 3 });
        square->setColor(QColor(255, 0, 0));
        annotation = square;
    } else if (type == QLatin1String("FreeText")) {
        auto text = std::make_shared<PDFAnnotationFreeText>();
        text->initWithBounds(bounds);
        text->setFontColor(QColor(255, 0, 0));
        text->setColor(QColor(255, 255, 255, 0));
        annotation = text;
    } else if (type == QLatin1String("Text")) {
        auto note = std::make_shared<PDFAnnotationText>();
        note->initWithBounds(bounds);
        note->setColor(QColor(255, 200, 0));
        annotation = note;
    }
    if (annotation)
        annotation->setContents(QStringLiteral("%1 note é").arg(type));
    return annotation;
}

} // namespace AnnotationFixtures
