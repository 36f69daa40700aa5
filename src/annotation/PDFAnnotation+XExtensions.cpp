#include "PDFAnnotation+XExtensions.h"

#include "AnnotationKind.h"
#include "FDAnnotationFreeText.h"
#include "FDAnnotationMarkup.h"
#include "FDAnnotationText.h"
#include "PDFAnnotationCircle+XExtensions.h"
#include "PDFAnnotationInk+XExtensions.h"
#include "PDFAnnotationLine+XExtensions.h"

#include <app/FDDefaults.h>
#include <kit/base/Geometry.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotationCircle.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFBorder.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QHash>

#include <array>
#include <limits>

namespace {

constexpr qint64 NotFound = std::numeric_limits<qint64>::max();
// Handles keep this half side on screen, whatever the zoom.
constexpr double HandleHalfSide = 4.0;

bool typeIs(const PDFAnnotation &annotation, QLatin1String type)
{
    return annotation.type() == type;
}

} // namespace

bool isHighlight(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("Highlight"));
}

bool isUnderline(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("Underline"));
}

bool isStrikeOut(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("StrikeOut"));
}

bool isInk(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("Ink"));
}

bool isLine(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("Line"));
}

bool isCircle(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("Circle"));
}

bool isSquare(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("Square"));
}

bool isFreeText(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("FreeText"));
}

bool isText(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("Text"));
}

bool isStamp(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("Stamp"));
}

bool isLink(const PDFAnnotation &annotation)
{
    return typeIs(annotation, QLatin1String("Link"));
}

bool isMarkup(const PDFAnnotation &annotation)
{
    return isHighlight(annotation) || isUnderline(annotation) || isStrikeOut(annotation);
}

bool isResizable(const PDFAnnotation &annotation)
{
    return !isMarkup(annotation) && !isInk(annotation) && !isText(annotation);
}

bool isMovable(const PDFAnnotation &annotation)
{
    return !isMarkup(annotation);
}

bool isEditable(const PDFAnnotation &annotation)
{
    return isText(annotation) || isFreeText(annotation);
}

bool isLiteral(const PDFAnnotation &annotation)
{
    return isMarkup(annotation) || isFreeText(annotation) || isText(annotation);
}

bool hasBorder(const PDFAnnotation &annotation)
{
    return !isMarkup(annotation);
}

bool isValid(const PDFAnnotation &annotation)
{
    return !typeIs(annotation, QLatin1String("Popup")) && !isLink(annotation);
}

bool shouldDisplayOnOverlay(const PDFAnnotation &annotation)
{
    return isSquare(annotation) || isCircle(annotation) || isLine(annotation) || isInk(annotation)
        || isFreeText(annotation) || isText(annotation) || isStamp(annotation);
}

bool isEditing(const PDFAnnotation &annotation)
{
    const unsigned kind = AnnotationKind::of(annotation);
    if (kind & AnnotationKind::AppFreeText)
        return static_cast<const FDAnnotationFreeText &>(annotation).isEditing();
    if (kind & AnnotationKind::AppText)
        return static_cast<const FDAnnotationText &>(annotation).isEditing();
    return false;
}

void setIsEditing(PDFAnnotation &annotation, bool editing)
{
    const unsigned kind = AnnotationKind::of(annotation);
    if (kind & AnnotationKind::AppFreeText)
        static_cast<FDAnnotationFreeText &>(annotation).setIsEditing(editing);
    else if (kind & AnnotationKind::AppText)
        static_cast<FDAnnotationText &>(annotation).setIsEditing(editing);
}

qint64 pageIndex(const PDFAnnotation &annotation)
{
    const std::shared_ptr<PDFPage> page = annotation.page();
    const std::shared_ptr<PDFDocument> document = page ? page->document() : nullptr;
    const int index = document ? document->indexForPage(page) : -1;
    return index < 0 ? NotFound : index;
}

std::shared_ptr<PDFDestination> destination(const PDFAnnotation &annotation)
{
    const QRectF bounds = annotation.bounds();
    return std::make_shared<PDFDestination>(
        annotation.page(), QPointF(bounds.x(), bounds.y() + bounds.height()));
}

int borderStyle(const PDFAnnotation &annotation)
{
    const std::shared_ptr<PDFBorder> border = annotation.border();
    return border ? border->style() : 0;
}

double borderLineWidth(const PDFAnnotation &annotation)
{
    const std::shared_ptr<PDFBorder> border = annotation.border();
    return border ? border->lineWidth() : 0.0;
}

QList<double> borderDashPattern(const PDFAnnotation &annotation)
{
    const std::shared_ptr<PDFBorder> border = annotation.border();
    return border ? border->dashPattern() : QList<double>();
}

// The setters treat a border as immutable: each installs a new one, so that observers see one
// change of "border" and undo has one value to put back.

void setBorderStyle(PDFAnnotation &annotation, int style)
{
    if (!hasBorder(annotation))
        return;
    const std::shared_ptr<PDFBorder> old = annotation.border();
    if (style == 0 && !old) {
        annotation.setBorder(nullptr);
        return;
    }
    auto border = std::make_shared<PDFBorder>();
    if (old) {
        border->setLineWidth(old->lineWidth());
        border->setDashPattern(old->dashPattern());
    }
    border->setStyle(style);
    annotation.setBorder(border);
}

void setBorderLineWidth(PDFAnnotation &annotation, double width)
{
    if (!hasBorder(annotation))
        return;
    if (!(width > 0)) {
        annotation.setBorder(nullptr);
        return;
    }
    const std::shared_ptr<PDFBorder> old = annotation.border();
    auto border = std::make_shared<PDFBorder>();
    if (old) {
        border->setDashPattern(old->dashPattern());
        border->setStyle(old->style());
    }
    border->setLineWidth(width);
    annotation.setBorder(border);
}

void setBorderDashPattern(PDFAnnotation &annotation, const QList<double> &pattern)
{
    if (!hasBorder(annotation))
        return;
    const std::shared_ptr<PDFBorder> old = annotation.border();
    if (!old && pattern.isEmpty()) {
        annotation.setBorder(nullptr);
        return;
    }
    auto border = std::make_shared<PDFBorder>();
    if (old) {
        border->setLineWidth(old->lineWidth());
        border->setStyle(old->style());
    }
    border->setDashPattern(pattern);
    annotation.setBorder(border);
}

bool hitTest(const PDFAnnotation &annotation, QPointF point)
{
    const unsigned kind = AnnotationKind::of(annotation);
    if (kind & AnnotationKind::AppMarkup)
        return static_cast<const FDAnnotationMarkup &>(annotation).hitTest(point);
    if (kind & AnnotationKind::AppText)
        return Geometry::pointInRect(
            point, static_cast<const FDAnnotationText &>(annotation).enclosedBounds());
    if (kind & AnnotationKind::Line)
        return lineHitTest(static_cast<const PDFAnnotationLine &>(annotation), point);
    if (kind & AnnotationKind::Circle)
        return circleHitTest(static_cast<const PDFAnnotationCircle &>(annotation), point);
    if (kind & AnnotationKind::Ink)
        return inkHitTest(static_cast<const PDFAnnotationInk &>(annotation), point);
    return Geometry::pointInRect(point, annotation.bounds());
}

QRectF enclosedBounds(const PDFAnnotation &annotation)
{
    const unsigned kind = AnnotationKind::of(annotation);
    if (kind & AnnotationKind::AppText)
        return static_cast<const FDAnnotationText &>(annotation).enclosedBounds();
    if (kind & AnnotationKind::Ink)
        return inkEnclosedBounds(static_cast<const PDFAnnotationInk &>(annotation));
    return annotation.bounds();
}

QRectF displayRect(const PDFAnnotation &annotation)
{
    return displayRectForBounds(annotation, annotation.bounds(), borderLineWidth(annotation));
}

QRectF displayRectForBounds(const PDFAnnotation &annotation, QRectF bounds, double lineWidth)
{
    const unsigned kind = AnnotationKind::of(annotation);
    if (kind & AnnotationKind::Line)
        return lineDisplayRectForBounds(bounds, lineWidth);
    if (kind & AnnotationKind::Ink)
        return inkDisplayRectForBounds(
            static_cast<const PDFAnnotationInk &>(annotation), bounds, lineWidth);
    return bounds;
}

AnnotationResizeHandle resizeHandleForPoint(
    const PDFAnnotation &annotation, QPointF point, double scaleFactor)
{
    if (AnnotationKind::of(annotation) & AnnotationKind::Line)
        return lineResizeHandleForPoint(
            static_cast<const PDFAnnotationLine &>(annotation), point, scaleFactor);
    if (!isResizable(annotation))
        return AnnotationResizeHandleNone;
    return resizeHandleForRect(annotation.bounds(), point, HandleHalfSide / scaleFactor);
}

AnnotationResizeHandle resizeHandleForRect(const QRectF &rect, QPointF point, double margin)
{
    if (!Geometry::pointInRect(point, Geometry::insetRect(rect, -margin, -margin)))
        return AnnotationResizeHandleNone;
    const double minX = rect.left(), maxX = rect.right(), midX = minX + rect.width() / 2;
    const double minY = rect.top(), maxY = rect.bottom(), midY = minY + rect.height() / 2;
    // Corners first, so that on a small rect a corner wins over the sides it overlaps.
    const std::array<std::pair<QPointF, AnnotationResizeHandle>, 8> handles { {
        { { maxX, minY }, AnnotationResizeHandleBottomRight },
        { { maxX, maxY }, AnnotationResizeHandleTopRight },
        { { minX, minY }, AnnotationResizeHandleBottomLeft },
        { { minX, maxY }, AnnotationResizeHandleTopLeft },
        { { maxX, midY }, AnnotationResizeHandleRight },
        { { midX, minY }, AnnotationResizeHandleBottom },
        { { midX, maxY }, AnnotationResizeHandleTop },
        { { minX, midY }, AnnotationResizeHandleLeft },
    } };
    const double side = 2 * margin;
    for (const auto &[centre, handle] : handles) {
        if (Geometry::pointInRect(
                point, QRectF(centre.x() - margin, centre.y() - margin, side, side)))
            return handle;
    }
    return AnnotationResizeHandleNone;
}

bool isEmptyLine(const PDFAnnotation &annotation)
{
    if (!(AnnotationKind::of(annotation) & AnnotationKind::Line))
        return false;
    const auto &line = static_cast<const PDFAnnotationLine &>(annotation);
    const QPointF difference = line.endPoint() - line.startPoint();
    return difference.x() == 0.0 && difference.y() == 0.0;
}

void registerUserName(PDFAnnotation &annotation)
{
    if (UserDefaults::standard().objectForKey(FDDefaults::UserName).isValid())
        annotation.setUserName(FDDefaults::userName());
    annotation.setModificationDate(QDateTime::currentDateTime());
}

const QStringList *keysForValuesToObserveForUndo(const PDFAnnotation &annotation)
{
    static const QHash<QString, QStringList> table = [] {
        const QStringList common { QStringLiteral("bounds"), QStringLiteral("contents"),
            QStringLiteral("color"), QStringLiteral("border"), QStringLiteral("modificationDate"),
            QStringLiteral("userName") };
        const QStringList borderKeys { QStringLiteral("border.lineWidth"),
            QStringLiteral("border.style") };
        QHash<QString, QStringList> keys;
        for (const char *type : { "Highlight", "Underline", "StrikeOut", "Ink", "Text" })
            keys.insert(QLatin1String(type), common);
        keys.insert(QStringLiteral("Line"),
            common
                + QStringList { QStringLiteral("startLineStyle"), QStringLiteral("endLineStyle"),
                    QStringLiteral("startPoint"), QStringLiteral("endPoint") }
                + borderKeys);
        const QStringList shape
            = common + QStringList { QStringLiteral("interiorColor") } + borderKeys;
        keys.insert(QStringLiteral("Circle"), shape);
        keys.insert(QStringLiteral("Square"), shape);
        keys.insert(QStringLiteral("FreeText"),
            common
                + QStringList { QStringLiteral("font"), QStringLiteral("fontColor"),
                    QStringLiteral("alignment") });
        return keys;
    }();
    const auto found = table.constFind(annotation.type());
    return found == table.constEnd() ? nullptr : &found.value();
}
