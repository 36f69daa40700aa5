// The pasteboard form of an annotation and the clone made through it. Writer and reader are
// deliberately not each other's mirror: the form carries what a paste needs and no more.

#include "PDFAnnotation+XExtensions.h"

#include "AnnotationKind.h"
#include "FDAnnotationCircle.h"
#include "FDAnnotationFreeText.h"
#include "FDAnnotationInk.h"
#include "FDAnnotationLine.h"
#include "FDAnnotationMarkup.h"
#include "FDAnnotationSquare.h"
#include "FDAnnotationStamp.h"
#include "FDAnnotationText.h"

#include <kit/base/Archiver.h>
#include <kit/base/BezierPath.h>
#include <kit/base/Geometry.h>
#include <kit/engine/PDFAnnotationLink.h>
#include <kit/engine/PDFAnnotationPopup.h>
#include <kit/engine/PDFBorder.h>

#include <cmath>
#include <optional>
#include <typeindex>
#include <unordered_map>

namespace {

const QString TypeKey = QStringLiteral("type");
const QString ContentsKey = QStringLiteral("contents");
const QString ColorKey = QStringLiteral("color");
const QString BoundsKey = QStringLiteral("bounds");
const QString InteriorColorKey = QStringLiteral("interiorColor");
const QString LineWidthKey = QStringLiteral("border.lineWidth");
const QString StyleKey = QStringLiteral("border.style");
const QString DashPatternKey = QStringLiteral("border.dashPattern");
const QString StartPointKey = QStringLiteral("startPoint");
const QString EndPointKey = QStringLiteral("endPoint");
const QString StartLineStyleKey = QStringLiteral("startLineStyle");
const QString EndLineStyleKey = QStringLiteral("endLineStyle");
const QString PointListsKey = QStringLiteral("pointLists");
const QString FontKey = QStringLiteral("font");
const QString FontColorKey = QStringLiteral("fontColor");
const QString AlignmentKey = QStringLiteral("alignment");

const QString PasteboardTypePrefix = QStringLiteral("Folidoc.Pasteboard.Annotation.");

void insertArchived(QVariantMap &map, const QString &key, const QVariant &value)
{
    if (!value.isValid())
        return;
    const QByteArray data = Archiver::archivedData(value);
    if (!data.isEmpty())
        map.insert(key, data);
}

QVariant colorValue(const QColor &color)
{
    return color.isValid() ? QVariant(color) : QVariant();
}

// The decoded object of an archived value when it is of type T.
template <typename T> std::optional<T> unarchived(const QVariantMap &map, const QString &key)
{
    const auto found = map.constFind(key);
    if (found == map.constEnd() || found->typeId() != QMetaType::QByteArray)
        return std::nullopt;
    const QVariant value = Archiver::unarchive(found->toByteArray());
    if (value.metaType() != QMetaType::fromType<T>())
        return std::nullopt;
    return value.value<T>();
}

// A number, or a text that reads as one, as a foreign writer may hand either.
std::optional<double> numberValue(const QVariantMap &map, const QString &key)
{
    const auto found = map.constFind(key);
    if (found == map.constEnd())
        return std::nullopt;
    switch (found->typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Float:
    case QMetaType::Double:
    case QMetaType::Bool:
        return found->toDouble();
    case QMetaType::QString: {
        bool ok = false;
        const double value = found->toString().trimmed().toDouble(&ok);
        return ok ? std::optional<double>(value) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

// A number that fits an int, fraction cut off; a value out of range (or NaN) counts as absent.
std::optional<int> intValue(const QVariantMap &map, const QString &key)
{
    const std::optional<double> value = numberValue(map, key);
    if (!value || !(std::abs(*value) < 2147483648.0))
        return std::nullopt;
    return static_cast<int>(*value);
}

int integerValue(const QVariantMap &map, const QString &key)
{
    return intValue(map, key).value_or(0);
}

QString textValue(const QVariantMap &map, const QString &key)
{
    const QVariant value = map.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

QString pasteboardType(const PDFAnnotation &annotation)
{
    const unsigned kind = AnnotationKind::of(annotation);
    if (kind & AnnotationKind::AppMarkup)
        return PasteboardTypePrefix + QLatin1String("Markup");
    if (kind & AnnotationKind::Ink)
        return PasteboardTypePrefix + QLatin1String("Ink");
    if (kind & AnnotationKind::Line)
        return PasteboardTypePrefix + QLatin1String("Line");
    if (kind & AnnotationKind::Circle)
        return PasteboardTypePrefix + QLatin1String("Circle");
    if (kind & AnnotationKind::Square)
        return PasteboardTypePrefix + QLatin1String("Square");
    if (kind & AnnotationKind::FreeText)
        return PasteboardTypePrefix + QLatin1String("FreeText");
    if (kind & AnnotationKind::Text)
        return PasteboardTypePrefix + QLatin1String("Text");
    return {};
}

template <typename T> std::shared_ptr<PDFAnnotation> make()
{
    return std::make_shared<T>();
}

// A new, uninitialised object of the annotation's own class.
std::shared_ptr<PDFAnnotation> sameClass(const PDFAnnotation &annotation)
{
    using Factory = std::shared_ptr<PDFAnnotation> (*)();
    static const std::unordered_map<std::type_index, Factory> factories {
        { typeid(FDAnnotationMarkup), &make<FDAnnotationMarkup> },
        { typeid(FDAnnotationInk), &make<FDAnnotationInk> },
        { typeid(FDAnnotationLine), &make<FDAnnotationLine> },
        { typeid(FDAnnotationCircle), &make<FDAnnotationCircle> },
        { typeid(FDAnnotationSquare), &make<FDAnnotationSquare> },
        { typeid(FDAnnotationFreeText), &make<FDAnnotationFreeText> },
        { typeid(FDAnnotationText), &make<FDAnnotationText> },
        { typeid(FDAnnotationStamp), &make<FDAnnotationStamp> },
        { typeid(PDFAnnotationMarkup), &make<PDFAnnotationMarkup> },
        { typeid(PDFAnnotationInk), &make<PDFAnnotationInk> },
        { typeid(PDFAnnotationLine), &make<PDFAnnotationLine> },
        { typeid(PDFAnnotationCircle), &make<PDFAnnotationCircle> },
        { typeid(PDFAnnotationSquare), &make<PDFAnnotationSquare> },
        { typeid(PDFAnnotationFreeText), &make<PDFAnnotationFreeText> },
        { typeid(PDFAnnotationText), &make<PDFAnnotationText> },
        { typeid(PDFAnnotationStamp), &make<PDFAnnotationStamp> },
        { typeid(PDFAnnotationLink), &make<PDFAnnotationLink> },
        { typeid(PDFAnnotationPopup), &make<PDFAnnotationPopup> },
        { typeid(PDFAnnotation), &make<PDFAnnotation> },
    };
    const auto found = factories.find(typeid(annotation));
    if (found != factories.end())
        return found->second();
    // A class of no one's table: the engine's class for its type is the nearest we can make.
    return PDFAnnotation::classForType(annotation.type())();
}

} // namespace

QVariantMap properties(const PDFAnnotation &annotation)
{
    const unsigned kind = AnnotationKind::of(annotation);
    QVariantMap map;
    map.insert(TypeKey, annotation.type());
    const QString contents = annotation.contents();
    if (!contents.isNull())
        map.insert(ContentsKey, contents);
    insertArchived(map, ColorKey, colorValue(annotation.color()));
    map.insert(BoundsKey, Geometry::stringFromRect(annotation.bounds()));
    if (kind & AnnotationKind::Shape) {
        insertArchived(map, InteriorColorKey,
            colorValue(static_cast<const PDFAnnotationShape &>(annotation).interiorColor()));
    }
    if (const std::shared_ptr<PDFBorder> border = annotation.border()) {
        map.insert(LineWidthKey, static_cast<float>(border->lineWidth()));
        map.insert(StyleKey, border->style());
        map.insert(DashPatternKey, PDFBorder::dashPatternValue(border->dashPattern()));
    }
    if (kind & AnnotationKind::Line) {
        const auto &line = static_cast<const PDFAnnotationLine &>(annotation);
        map.insert(StartPointKey, Geometry::stringFromPoint(line.startPoint()));
        map.insert(EndPointKey, Geometry::stringFromPoint(line.endPoint()));
        map.insert(StartLineStyleKey, line.startLineStyle());
        map.insert(EndLineStyleKey, line.endLineStyle());
    }
    if (kind & AnnotationKind::Ink) {
        const auto paths = static_cast<const PDFAnnotationInk &>(annotation).paths();
        // Only the first stroke travels.
        if (!paths.isEmpty() && paths.first())
            insertArchived(map, PointListsKey, QVariant::fromValue(*paths.first()));
    }
    if (kind & AnnotationKind::FreeText) {
        const auto &freeText = static_cast<const PDFAnnotationFreeText &>(annotation);
        insertArchived(map, FontKey, freeText.font());
        insertArchived(map, FontColorKey, colorValue(freeText.fontColor()));
        map.insert(AlignmentKey, freeText.alignment());
    }
    return map;
}

bool initWithPasteboardPropertyList(
    PDFAnnotation &annotation, const QVariantMap &propertyList, const QString &type)
{
    // The class was settled by the caller from the pasteboard type; neither it nor the form's
    // "type" is looked at here.
    Q_UNUSED(type);
    if (!annotation.init())
        return false;
    annotation.setPage(nullptr);
    const QVariant bounds = propertyList.value(BoundsKey);
    annotation.setBounds(bounds.typeId() == QMetaType::QString
            ? Geometry::rectFromString(bounds.toString())
            : QRectF());
    const auto contents = propertyList.constFind(ContentsKey);
    if (contents != propertyList.constEnd())
        annotation.setContents(contents->toString());
    if (const auto color = unarchived<QColor>(propertyList, ColorKey))
        annotation.setColor(*color);

    const unsigned kind = AnnotationKind::of(annotation);
    if (kind & AnnotationKind::FreeText) {
        annotation.setBorder(nullptr);
    } else {
        const std::optional<double> width = numberValue(propertyList, LineWidthKey);
        const std::optional<int> style = intValue(propertyList, StyleKey);
        const auto pattern = propertyList.constFind(DashPatternKey);
        const bool hasPattern = pattern != propertyList.constEnd();
        if (!propertyList.contains(LineWidthKey) && !propertyList.contains(StyleKey)
            && !hasPattern) {
            if (annotation.border())
                annotation.setBorder(nullptr);
        } else {
            if (!annotation.border())
                annotation.setBorder(std::make_shared<PDFBorder>());
            const std::shared_ptr<PDFBorder> border = annotation.border();
            // Widths travel as 32-bit floats.
            if (width)
                border->setLineWidth(static_cast<double>(static_cast<float>(*width)));
            if (hasPattern)
                border->setDashPattern(PDFBorder::dashPatternFromValue(*pattern));
            if (style)
                border->setStyle(*style);
        }
    }

    if (kind & AnnotationKind::Line) {
        auto &line = static_cast<PDFAnnotationLine &>(annotation);
        line.setStartPoint(Geometry::pointFromString(textValue(propertyList, StartPointKey)));
        line.setEndPoint(Geometry::pointFromString(textValue(propertyList, EndPointKey)));
        line.setStartLineStyle(integerValue(propertyList, StartLineStyleKey));
        line.setEndLineStyle(integerValue(propertyList, EndLineStyleKey));
    }
    if (kind & AnnotationKind::Ink) {
        if (const auto path = unarchived<BezierPath>(propertyList, PointListsKey))
            static_cast<PDFAnnotationInk &>(annotation)
                .addBezierPath(std::make_shared<BezierPath>(*path));
    }
    if (kind & AnnotationKind::FreeText) {
        auto &freeText = static_cast<PDFAnnotationFreeText &>(annotation);
        if (const auto font = unarchived<QFont>(propertyList, FontKey))
            freeText.setFont(*font);
        if (const auto color = unarchived<QColor>(propertyList, FontColorKey))
            freeText.setFontColor(*color);
        freeText.setAlignment(integerValue(propertyList, AlignmentKey));
    }
    return true;
}

std::shared_ptr<PDFAnnotation> clone(const PDFAnnotation &annotation)
{
    const std::shared_ptr<PDFAnnotation> copy = sameClass(annotation);
    if (!initWithPasteboardPropertyList(*copy, properties(annotation), QString()))
        return nullptr;
    return copy;
}

QStringList typesForPasteboard(const PDFAnnotation &annotation)
{
    const QString type = pasteboardType(annotation);
    return type.isEmpty() ? QStringList() : QStringList { type };
}

QStringList readableTypesForPasteboard(const PDFAnnotation &annotation)
{
    return typesForPasteboard(annotation);
}

QStringList writableTypesForPasteboard(const PDFAnnotation &annotation)
{
    return typesForPasteboard(annotation);
}

int readingOptionsForType(const QString &type)
{
    Q_UNUSED(type);
    return 2;
}

QVariant pasteboardPropertyListForType(const PDFAnnotation &annotation, const QString &type)
{
    Q_UNUSED(type);
    return properties(annotation);
}
