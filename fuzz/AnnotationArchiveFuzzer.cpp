// Fuzz target: the two readers of archived annotations. The first byte chooses the reader and
// the class table: a paste, whose pasteboard type names the application's class and whose bytes
// arrive through the pasteboard, or an annotation archive read by the class its "type" names
// (the application's or the engine's). Whatever is made is then used as a paste uses it: put
// on a page, hit, drawn, cloned, saved, and the saved bytes read back with it.

#include "FuzzEnvironment.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <app/FDDefaults.h>
#include <kit/base/Archiver.h>
#include <kit/base/Pasteboard.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <view/FDPDFView.h>

#include <array>

namespace {

const std::array<QString, 8> pasteboardKinds { QStringLiteral("Markup"), QStringLiteral("Ink"),
    QStringLiteral("Line"), QStringLiteral("Circle"), QStringLiteral("Square"),
    QStringLiteral("FreeText"), QStringLiteral("Text"), QStringLiteral("Stamp") };

std::shared_ptr<PDFAnnotation> fromPasteboard(quint8 selector, const QByteArray &bytes)
{
    const QString type = QStringLiteral("Folidoc.Pasteboard.Annotation.")
        + pasteboardKinds[(selector >> 2) % pasteboardKinds.size()];
    const PDFAnnotationFactory factory = FDPDFView::classForPasteboardType(type);
    if (!factory)
        return nullptr;
    Pasteboard &pasteboard = Pasteboard::general();
    pasteboard.clearContents();
    pasteboard.setData(bytes, type);
    const QVariant propertyList = pasteboard.propertyListForType(type);
    if (propertyList.typeId() != QMetaType::QVariantMap)
        return nullptr;
    const std::shared_ptr<PDFAnnotation> annotation = factory();
    if (!initWithPasteboardPropertyList(*annotation, propertyList.toMap(), type))
        return nullptr;
    return annotation;
}

std::shared_ptr<PDFAnnotation> fromCoder(quint8 selector, const QByteArray &bytes)
{
    const QVariant archived = Archiver::unarchive(bytes);
    if (archived.typeId() != QMetaType::QVariantMap)
        return nullptr;
    const QVariantMap coder = archived.toMap();
    const QString type = coder.value(QStringLiteral("type")).toString();
    const PDFAnnotationFactory factory = (selector & 2) ? FDPDFView::classForAnnotationClass(type)
                                                        : PDFAnnotation::classForType(type);
    const std::shared_ptr<PDFAnnotation> annotation = factory();
    if (!annotation->initWithCoder(coder))
        return nullptr;
    return annotation;
}

void use(const std::shared_ptr<PDFAnnotation> &annotation)
{
    if (const auto copy = clone(*annotation))
        properties(*copy);
    QVariantMap coder;
    annotation->encodeWithCoder(coder);
    Archiver::archivedData(coder);

    auto document = std::make_shared<PDFDocument>();
    auto page = std::make_shared<PDFPage>();
    if (!document->init() || !page->init())
        FuzzEnvironment::fail("no blank document");
    document->insertPage(page, 0);
    page->addAnnotation(annotation);
    const QRectF bounds = annotation->bounds();
    page->annotationAtPoint(bounds.center());
    page->imageForBox(PDFDisplayBox::CropBox, QSize(40, 52));
    const QByteArray saved = document->dataRepresentation();
    if (!saved.isEmpty()) {
        auto reopened = std::make_shared<PDFDocument>();
        if (!reopened->initWithData(saved) || reopened->pageCount() != 1)
            FuzzEnvironment::fail("a page with the pasted annotation does not read back");
        reopened->pageAtIndex(0)->annotations();
    }
    page->removeAnnotation(annotation);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    FuzzEnvironment::setUp(argc, argv);
    FDDefaults::registerDefaults();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const quint8 selector = data[0];
    const QByteArray bytes(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));
    const auto annotation
        = (selector & 1) ? fromCoder(selector, bytes) : fromPasteboard(selector, bytes);
    if (annotation)
        use(annotation);
    return 0;
}
