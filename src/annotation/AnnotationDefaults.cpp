#include "AnnotationDefaults.h"

#include "AnnotationDefaultsKeys.h"
#include "values/NSUserDefaults+XExtensions.h"

#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationShape.h>
#include <kit/engine/PDFAnnotationText.h>
#include <kit/engine/PDFBorder.h>

#include <QFontDatabase>

#include <memory>

namespace Keys = AnnotationDefaultsKeys;

namespace {

// Types are stored as integers by the pickers but read as numbers, as widths are.
int lineTypeForKey(const UserDefaults &defaults, const QString &key)
{
    return static_cast<int>(defaults.floatForKey(key));
}

std::shared_ptr<PDFBorder> borderOrNone(double width, int style)
{
    if (!(width > 0))
        return nullptr;
    auto border = std::make_shared<PDFBorder>();
    border->setLineWidth(width);
    border->setStyle(style);
    return border;
}

// The standard faces every PDF reader carries: the file names them even where no font file of
// that family is installed, so they count as known.
bool isKnownFontFamily(const QString &name)
{
    for (const char *standard : { "Helvetica", "Times", "Courier" }) {
        if (name.compare(QLatin1String(standard), Qt::CaseInsensitive) == 0)
            return true;
    }
    return !name.isEmpty() && QFontDatabase::hasFamily(name);
}

} // namespace

void AnnotationDefaults::applyToInk(PDFAnnotationInk &ink)
{
    const UserDefaults &defaults = UserDefaults::standard();
    ink.setColor(colorForKey(defaults, Keys::InkColor));
    ink.setBorder(borderOrNone(defaults.floatForKey(Keys::InkLineWidth), PDFBorder::Solid));
}

void AnnotationDefaults::applyToLine(PDFAnnotationLine &line)
{
    const UserDefaults &defaults = UserDefaults::standard();
    line.setColor(colorForKey(defaults, Keys::LineColor));
    const qint64 arrows = defaults.integerForKey(Keys::LineArrowType);
    line.setStartLineStyle(
        arrows == 1 || arrows == 3 ? PDFAnnotationLine::OpenArrow : PDFAnnotationLine::None);
    line.setEndLineStyle(
        arrows == 1 || arrows == 2 ? PDFAnnotationLine::OpenArrow : PDFAnnotationLine::None);
    const QRectF bounds = line.bounds();
    line.setStartPoint(QPointF(0, 0));
    line.setEndPoint(QPointF(bounds.width(), bounds.height()));
    line.setBorder(borderOrNone(
        defaults.floatForKey(Keys::LineLineWidth), lineTypeForKey(defaults, Keys::LineLineType)));
}

void AnnotationDefaults::applyToShape(PDFAnnotationShape &shape, const QString &colorKey,
    const QString &interiorColorKey, const QString &lineWidthKey, const QString &lineTypeKey)
{
    const UserDefaults &defaults = UserDefaults::standard();
    const QColor interior = colorForKey(defaults, interiorColorKey);
    if (interior.isValid() && interior.alphaF() > 0)
        shape.setInteriorColor(interior);
    shape.setColor(colorForKey(defaults, colorKey));
    std::shared_ptr<PDFBorder> border = shape.border();
    if (!border) {
        border = std::make_shared<PDFBorder>();
        shape.setBorder(border);
    }
    border->setLineWidth(defaults.floatForKey(lineWidthKey));
    border->setStyle(lineTypeForKey(defaults, lineTypeKey));
}

void AnnotationDefaults::applyToFreeText(PDFAnnotationFreeText &freeText)
{
    const UserDefaults &defaults = UserDefaults::standard();
    const QString name = defaults.stringForKey(Keys::FreeTextFontName);
    const float size = defaults.floatForKey(Keys::FreeTextFontSize);
    const QColor color = colorForKey(defaults, Keys::FreeTextColor);
    QFont font;
    if (isKnownFontFamily(name)) {
        font = QFont(name);
        if (size > 0)
            font.setPointSizeF(size);
    } else {
        font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    }
    freeText.setFont(font);
    freeText.setFontColor(color);
    // The background stays clear whatever "Ann_FreeTextBackgroundColor" holds: only the colour
    // picker reads that key.
    freeText.setColor(QColor::fromRgbF(1, 1, 1, 0));
    freeText.setBorder(nullptr);
}

void AnnotationDefaults::applyToText(PDFAnnotationText &text)
{
    text.setIconType(static_cast<int>(UserDefaults::standard().integerForKey(Keys::TextIconType)));
}
