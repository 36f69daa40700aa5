// FDPDFView: the editing commands that act on the current selection.

#include "FDPDFView.h"

#include <annotation/FDAnnotationMarkup.h>
#include <document/FDDocument.h>
#include <kit/engine/PDFAnnotationMarkup.h>
#include <kit/engine/PDFSelection.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr std::array<std::pair<const char *, int>, 3> MarkupTypes { {
    { "Highlight", PDFAnnotationMarkup::Highlight },
    { "Underline", PDFAnnotationMarkup::Underline },
    { "StrikeOut", PDFAnnotationMarkup::StrikeOut },
} };

} // namespace

void FDPDFView::annotationsChangedOnPage(const std::shared_ptr<PDFPage> &page)
{
    XPDFView::annotationsChangedOnPage(page);
    if (const auto current = fdDocument())
        current->setNumberOfAnnotationChanges(current->numberOfAnnotationChanges() + 1);
}

void FDPDFView::setSelectedAnn(const std::shared_ptr<PDFAnnotation> &annotation)
{
    commitEditing();
    XPDFView::setSelectedAnn(annotation);
}

std::shared_ptr<PDFAnnotation> FDPDFView::createAnnMarkupWithType(const QString &type)
{
    const auto found = std::find_if(MarkupTypes.begin(), MarkupTypes.end(),
        [&type](const auto &entry) { return type == QLatin1String(entry.first); });
    const auto selection = currentSelection();
    if (found == MarkupTypes.end() || !selection)
        return nullptr;
    return FDAnnotationMarkup::annotationWith(selection, found->second);
}

bool FDPDFView::onAddHighlight()
{
    return addAnnotationWithType(QStringLiteral("Highlight"), nullptr, QRectF()) != nullptr;
}

bool FDPDFView::onAddUnderline()
{
    return addAnnotationWithType(QStringLiteral("Underline"), nullptr, QRectF()) != nullptr;
}

bool FDPDFView::onAddStrikeout()
{
    return addAnnotationWithType(QStringLiteral("StrikeOut"), nullptr, QRectF()) != nullptr;
}

void FDPDFView::delete_()
{
    removeAnnotation(selectedAnn());
}

void FDPDFView::selectAllCommand()
{
    if (validateMenuItem(QStringLiteral("selectAll:")))
        selectAll();
}
