// FDPDFView: copy, cut and paste of annotations and text, and the area selection's export, at
// the place of the command.

#include "FDPDFView.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <kit/base/Geometry.h>
#include <kit/base/Pasteboard.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>
#include <kit/engine/TiffWriter.h>

#include <QBuffer>
#include <QCursor>
#include <QImage>

namespace {

const QString kCopy = QStringLiteral("copy:");
const QString kCut = QStringLiteral("cut:");
const QString kPaste = QStringLiteral("paste:");
const QString kDelete = QStringLiteral("delete:");
const QString kSelectAll = QStringLiteral("selectAll:");

// An area image larger than this is not made: a page's claimed size decides it.
constexpr qint64 MaximumAreaPixels = 64LL * 1024 * 1024;

bool isCommand(const QString &command, const QString &name)
{
    return command == name;
}

} // namespace

QPointF FDPDFView::mouseLocation() const
{
    return viewport()->mapFromGlobal(QCursor::pos());
}

FDPDFView::CommandPlace FDPDFView::placeOfCommand(const std::optional<QPointF> &clickPoint) const
{
    const QPointF pointer = mouseLocation();
    if (pointer != m_lastPasteMouseLocation) {
        m_lastPasteMouseLocation = pointer;
        setPasteCounter(0);
    }
    const QPointF viewPoint = clickPoint.value_or(pointer);
    CommandPlace place;
    // Nearest: a point between pages or beside them belongs to the page closest to it.
    const bool inView = QRectF(viewport()->rect()).contains(viewPoint);
    if (inView)
        place.page = pageForPoint(viewPoint, true);
    if (place.page) {
        place.point = convertPointToPage(viewPoint, place.page);
        return place;
    }
    place.page = currentPage();
    if (place.page)
        place.point = place.page->boundsForBox(displayBox()).center();
    return place;
}

QStringList FDPDFView::pasteboardAnnTypes()
{
    static const QStringList types = [] {
        QStringList list;
        for (const char *const kind :
            { "Markup", "Ink", "Line", "Circle", "Square", "FreeText", "Text" })
            list << QStringLiteral("Folidoc.Pasteboard.Annotation.") + QLatin1String(kind);
        return list;
    }();
    return types;
}

namespace {

// The first annotation the pasteboard holds in a form that reads.
std::shared_ptr<PDFAnnotation> annotationOnPasteboard()
{
    const Pasteboard &pasteboard = Pasteboard::general();
    for (const QString &type : FDPDFView::pasteboardAnnTypes()) {
        if (!pasteboard.canReadType(type))
            continue;
        const QVariant propertyList = pasteboard.propertyListForType(type);
        const auto make = FDPDFView::classForPasteboardType(type);
        if (propertyList.typeId() != QMetaType::QVariantMap || !make)
            continue;
        const auto annotation = make();
        if (annotation && initWithPasteboardPropertyList(*annotation, propertyList.toMap(), type))
            return annotation;
    }
    return nullptr;
}

} // namespace

void FDPDFView::copyToPasteboard(const std::shared_ptr<PDFAnnotation> &annotation)
{
    if (!annotation)
        return;
    Pasteboard &pasteboard = Pasteboard::general();
    pasteboard.clearContents();
    if (isMarkup(*annotation)) {
        const QString text = annotation->contents();
        pasteboard.setString(text.isNull() ? QString() : text);
        return;
    }
    for (const QString &type : writableTypesForPasteboard(*annotation))
        pasteboard.setPropertyList(pasteboardPropertyListForType(*annotation, type), type);
    // Other programs get a text box's or a note's words.
    if (isLiteral(*annotation) && !annotation->contents().isEmpty())
        pasteboard.setString(annotation->contents());
}

void FDPDFView::copyCommand()
{
    if (const auto annotation = selectedAnn()) {
        copyToPasteboard(annotation);
        return;
    }
    if (const auto selection = currentSelection(); selection && !selection->string().isEmpty()) {
        Pasteboard::general().clearContents();
        Pasteboard::general().setString(selection->string());
        return;
    }
    writeSelectionToPasteboard({ Pasteboard::PDFType, Pasteboard::TIFFType, Pasteboard::PNGType });
}

void FDPDFView::cutCommand()
{
    const auto annotation = selectedAnn();
    if (!annotation || !isMovable(*annotation))
        return;
    copyToPasteboard(annotation);
    removeAnnotation(annotation);
}

bool FDPDFView::canPaste() const
{
    const Pasteboard &pasteboard = Pasteboard::general();
    return !pasteboard.availableTypeFromArray(pasteboardAnnTypes()).isNull()
        || !pasteboard.stringForType().isNull();
}

void FDPDFView::pasteCommand(const std::optional<QPointF> &clickPoint)
{
    const CommandPlace place = placeOfCommand(clickPoint);
    if (!place.page)
        return;
    if (const auto annotation = annotationOnPasteboard()) {
        const QRectF bounds = annotation->bounds();
        const qint64 counter = pasteCounter();
        setPasteCounter(counter + 1);
        const double step = 10.0 * double(counter);
        annotation->setBounds(QRectF(place.point.x() + step,
            place.point.y() - bounds.height() - step, bounds.width(), bounds.height()));
        addAnnotation(annotation, place.page);
        setSelectedAnn(annotation);
        return;
    }
    const QString text = Pasteboard::general().stringForType();
    if (!text.isNull())
        addFreeTextWithContents(text, place.page, place.point);
}

bool FDPDFView::writeSelectionToPasteboard(const QStringList &types)
{
    const QRectF selected = currentSelectionRect();
    const auto page = currentSelectionPage();
    if (toolMode() != PDFToolModeAreaSelection || selected.isEmpty() || !page || !document())
        return false;
    const bool allowsPrinting = document()->allowsPrinting();
    const bool wantsPDF = allowsPrinting && types.contains(Pasteboard::PDFType);
    const bool wantsImage
        = types.contains(Pasteboard::TIFFType) || types.contains(Pasteboard::PNGType);
    if (!wantsPDF && !wantsImage)
        return false;
    const QRectF rect = Geometry::integralRect(selected);
    std::vector<std::pair<QString, QByteArray>> written;
    if (wantsPDF) {
        if (const QByteArray pdf = page->PDFDataForRect(rect); !pdf.isEmpty())
            written.emplace_back(Pasteboard::PDFType, pdf);
    }
    if (wantsImage && qint64(rect.width()) * qint64(rect.height()) <= MaximumAreaPixels) {
        const QImage image = page->imageForRect(rect);
        if (!image.isNull() && types.contains(Pasteboard::TIFFType)) {
            if (const QByteArray tiff = TiffWriter::encode(image); !tiff.isEmpty())
                written.emplace_back(Pasteboard::TIFFType, tiff);
        }
        if (!image.isNull() && types.contains(Pasteboard::PNGType)) {
            QByteArray png;
            QBuffer buffer(&png);
            buffer.open(QIODevice::WriteOnly);
            if (image.save(&buffer, "PNG"))
                written.emplace_back(Pasteboard::PNGType, png);
        }
    }
    if (written.empty())
        return false;
    Pasteboard &pasteboard = Pasteboard::general();
    pasteboard.clearContents();
    for (const auto &[type, bytes] : written)
        pasteboard.setData(bytes, type);
    return true;
}

bool FDPDFView::respondsToEditCommand(const QString &command) const
{
    return isCommand(command, kCut) || isCommand(command, kPaste)
        || XPDFView::respondsToEditCommand(command);
}

bool FDPDFView::validateEditCommand(const QString &command) const
{
    if (isCommand(command, kCopy)) {
        const auto selection = currentSelection();
        return selectedAnn() || (selection && !selection->string().isEmpty())
            || (!currentSelectionRect().isEmpty() && currentSelectionPage());
    }
    if (isCommand(command, kCut)) {
        const auto annotation = selectedAnn();
        return annotation && isMovable(*annotation);
    }
    if (isCommand(command, kPaste)) {
        // Asking for the place starts a new staircase when the pointer moved.
        return placeOfCommand().page && canPaste();
    }
    return XPDFView::validateEditCommand(command);
}

void FDPDFView::performEditCommand(const QString &command)
{
    if (isCommand(command, kCopy))
        copyCommand();
    else if (isCommand(command, kCut))
        cutCommand();
    else if (isCommand(command, kPaste))
        pasteCommand();
    else if (isCommand(command, kDelete))
        delete_();
    else if (isCommand(command, kSelectAll))
        selectAllCommand();
    else
        XPDFView::performEditCommand(command);
}
