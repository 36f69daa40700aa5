#include "PDFAnnotationFreeText+XExtensions.h"

#include <kit/engine/PDFAnnotationFreeText.h>

#include <QGuiApplication>
#include <QScreen>

#include <cmath>

namespace {

constexpr double UnknownScreenDotsPerInch = 96.0;
// Below this on either side the box was clicked, not dragged out.
constexpr double SmallestDraggedSide = 5.0;
constexpr double ClickedBoxWidth = 100.0;
constexpr double ClickedBoxLeftMargin = 5.0;
constexpr double LinePadding = 6.0;

std::optional<double> &dotsPerInchOverride()
{
    static std::optional<double> value;
    return value;
}

} // namespace

double screenDotsPerInch()
{
    if (dotsPerInchOverride())
        return *dotsPerInchOverride();
    const QScreen *const screen = qobject_cast<QGuiApplication *>(QCoreApplication::instance())
        ? QGuiApplication::primaryScreen()
        : nullptr;
    const double dpi = screen ? screen->physicalDotsPerInchX() : 0;
    return std::isfinite(dpi) && dpi > 0 ? dpi : UnknownScreenDotsPerInch;
}

void setScreenDotsPerInchOverride(std::optional<double> dotsPerInch)
{
    dotsPerInchOverride() = dotsPerInch;
}

void adjustBoundsIfNeeded(PDFAnnotationFreeText &freeText)
{
    const QRectF bounds = freeText.bounds();
    if (!(bounds.width() < SmallestDraggedSide || bounds.height() < SmallestDraggedSide))
        return;
    const QFont font = freeText.font();
    const double pointSize = font.pointSizeF() > 0 ? font.pointSizeF() : 12.0;
    const double height = pointSize * screenDotsPerInch() / 72.0 + LinePadding;
    freeText.setBounds(QRectF(
        bounds.x() - ClickedBoxLeftMargin, bounds.y() - height / 2, ClickedBoxWidth, height));
}
