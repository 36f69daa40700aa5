// The map from the engine's annotation kinds to the application's classes, which the view uses
// to create annotations and its documents use to read them.

#include "FDPDFView.h"

#include <annotation/FDAnnotationCircle.h>
#include <annotation/FDAnnotationFreeText.h>
#include <annotation/FDAnnotationInk.h>
#include <annotation/FDAnnotationLine.h>
#include <annotation/FDAnnotationMarkup.h>
#include <annotation/FDAnnotationSquare.h>
#include <annotation/FDAnnotationText.h>

#include <array>
#include <utility>

namespace {

template <typename T> std::shared_ptr<PDFAnnotation> make()
{
    return std::make_shared<T>();
}

using Factory = std::shared_ptr<PDFAnnotation> (*)();

// Searched from the first entry on; a subtype outside it keeps the engine's class. Stamps are
// deliberately absent: FDAnnotationStamp exists, but nothing maps to it.
constexpr std::array<std::pair<const char *, Factory>, 9> ClassMap { {
    { "Highlight", &make<FDAnnotationMarkup> },
    { "Underline", &make<FDAnnotationMarkup> },
    { "StrikeOut", &make<FDAnnotationMarkup> },
    { "Ink", &make<FDAnnotationInk> },
    { "Line", &make<FDAnnotationLine> },
    { "Circle", &make<FDAnnotationCircle> },
    { "Square", &make<FDAnnotationSquare> },
    { "FreeText", &make<FDAnnotationFreeText> },
    { "Text", &make<FDAnnotationText> },
} };

// The kinds a pasteboard type names, and the subtype whose class a paste makes.
constexpr std::array<std::pair<const char *, const char *>, 7> PasteboardKinds { {
    { "Markup", "Highlight" },
    { "Ink", "Ink" },
    { "Line", "Line" },
    { "Circle", "Circle" },
    { "Square", "Square" },
    { "FreeText", "FreeText" },
    { "Text", "Text" },
} };

} // namespace

PDFAnnotationFactory FDPDFView::classForAnnotationClass(const QString &type)
{
    for (const auto &[subtype, factory] : ClassMap) {
        if (type == QLatin1String(subtype))
            return factory;
    }
    return PDFAnnotation::classForType(type);
}

PDFAnnotationFactory FDPDFView::classForPasteboardType(const QString &pasteboardType)
{
    static const QString prefix = QStringLiteral("Folidoc.Pasteboard.Annotation.");
    if (!pasteboardType.startsWith(prefix))
        return {};
    const QStringView kind = QStringView(pasteboardType).mid(prefix.size());
    for (const auto &[name, subtype] : PasteboardKinds) {
        if (kind == QLatin1String(name))
            return classForAnnotationClass(QLatin1String(subtype));
    }
    return {};
}
