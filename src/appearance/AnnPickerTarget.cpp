#include "AnnPickerTarget.h"

#include <annotation/AnnotationDefaultsKeys.h>
#include <app/PDFContents.h>
#include <kit/engine/PDFAnnotation.h>
#include <view/FDPDFView.h>
#include <view/PDFToolMode.h>

namespace Keys = AnnotationDefaultsKeys;

AnnPickerTarget::AnnPickerTarget(PDFContents *contents)
    : m_contents(contents)
{ }

FDPDFView *AnnPickerTarget::view() const
{
    return m_contents ? m_contents->selectedPDFView() : nullptr;
}

std::shared_ptr<PDFAnnotation> AnnPickerTarget::selectedAnn() const
{
    const FDPDFView *const pdfView = view();
    return pdfView ? pdfView->selectedAnn() : nullptr;
}

int AnnPickerTarget::toolMode() const
{
    return m_contents ? m_contents->toolMode() : PDFToolModeNone;
}

int AnnPickerTarget::effectiveToolMode() const
{
    if (const auto annotation = selectedAnn())
        return XPDFView::toolModeForType(annotation->type());
    return toolMode();
}

QString AnnPickerTarget::leftColorKey(int toolMode)
{
    switch (toolMode) {
    case PDFToolModeAnnHighlight:
        return Keys::HighlightColor;
    case PDFToolModeAnnUnderline:
        return Keys::UnderlineColor;
    case PDFToolModeAnnStrikeOut:
        return Keys::StrikeOutColor;
    case PDFToolModeAnnFreeText:
        return Keys::FreeTextColor;
    case PDFToolModeAnnCircle:
        return Keys::CircleColor;
    case PDFToolModeAnnSquare:
        return Keys::SquareColor;
    case PDFToolModeAnnLine:
        return Keys::LineColor;
    case PDFToolModeAnnInk:
        return Keys::InkColor;
    default:
        return {};
    }
}

QString AnnPickerTarget::rightColorKey(int toolMode)
{
    switch (toolMode) {
    case PDFToolModeAnnFreeText:
        return Keys::FreeTextBackgroundColor;
    case PDFToolModeAnnCircle:
        return Keys::CircleInteriorColor;
    case PDFToolModeAnnSquare:
        return Keys::SquareInteriorColor;
    default:
        return {};
    }
}

QString AnnPickerTarget::lineWidthKey(int toolMode)
{
    switch (toolMode) {
    case PDFToolModeAnnCircle:
        return Keys::CircleLineWidth;
    case PDFToolModeAnnSquare:
        return Keys::SquareLineWidth;
    case PDFToolModeAnnLine:
        return Keys::LineLineWidth;
    case PDFToolModeAnnInk:
        return Keys::InkLineWidth;
    default:
        return {};
    }
}

QString AnnPickerTarget::lineTypeKey(int toolMode)
{
    switch (toolMode) {
    case PDFToolModeAnnCircle:
        return Keys::CircleLineType;
    case PDFToolModeAnnSquare:
        return Keys::SquareLineType;
    case PDFToolModeAnnLine:
        return Keys::LineLineType;
    default:
        return {};
    }
}

QString AnnPickerTarget::arrowTypeKey(int toolMode)
{
    return toolMode == PDFToolModeAnnLine ? Keys::LineArrowType : QString();
}
