#include "PDFAnnotation.h"

#include "PDFAnnotationCircle.h"
#include "PDFAnnotationFreeText.h"
#include "PDFAnnotationInk.h"
#include "PDFAnnotationLine.h"
#include "PDFAnnotationLink.h"
#include "PDFAnnotationMarkup.h"
#include "PDFAnnotationPopup.h"
#include "PDFAnnotationPrivate.h"
#include "PDFAnnotationSquare.h"
#include "PDFAnnotationStamp.h"
#include "PDFAnnotationText.h"
#include "PDFBorder.h"
#include "PDFPage.h"
#include "PDFPagePrivate.h"

#include <QPainter>

#include <algorithm>

namespace {

template <class T> std::shared_ptr<PDFAnnotation> make()
{
    return std::make_shared<T>();
}

QVariant textValue(const QString &text)
{
    return text.isNull() ? QVariant() : QVariant(text);
}

QVariant borderValue(const std::shared_ptr<PDFBorder> &border)
{
    return border ? QVariant::fromValue(border) : QVariant();
}

QVariant archivedBorder(const std::shared_ptr<PDFBorder> &border)
{
    if (!border)
        return {};
    return QVariantMap { { QStringLiteral("style"), border->style() },
        { QStringLiteral("lineWidth"), border->lineWidth() },
        { QStringLiteral("dashPattern"), PDFBorder::dashPatternValue(border->dashPattern()) } };
}

QVariant borderFromArchive(const QVariant &archived)
{
    if (archived.typeId() != QMetaType::QVariantMap)
        return {};
    const QVariantMap values = archived.toMap();
    auto border = std::make_shared<PDFBorder>();
    border->setStyle(values.value(QStringLiteral("style"), border->style()).toInt());
    border->setLineWidth(values.value(QStringLiteral("lineWidth"), border->lineWidth()).toDouble());
    border->setDashPattern(
        PDFBorder::dashPatternFromValue(values.value(QStringLiteral("dashPattern"))));
    return QVariant::fromValue(border);
}

} // namespace

PDFAnnotationPrivate &PDFAnnotationPrivate::of(const PDFAnnotation &annotation)
{
    return *annotation.d;
}

PDFAnnotationPrivate::~PDFAnnotationPrivate()
{
    if (!handle)
        return;
    const mu::Lock lock(handle->mutex());
    dropObjectLocked();
}

void PDFAnnotationPrivate::dropObjectLocked()
{
    fz_context *ctx = mu::context();
    pdf_obj *const old = std::exchange(object, nullptr);
    mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, old); });
}

void PDFAnnotationPrivate::bind(
    const std::shared_ptr<mu::DocumentHandle> &newHandle, pdf_obj *obj, bool lockHeld)
{
    if (handle && object) {
        if (lockHeld) {
            dropObjectLocked();
        } else {
            const mu::Lock lock(handle->mutex());
            dropObjectLocked();
        }
    }
    handle = newHandle;
    object = obj;
}

PDFAnnotation::PDFAnnotation()
    : d(std::make_unique<PDFAnnotationPrivate>())
{ }

PDFAnnotation::~PDFAnnotation()
{
    if (d->border && d->border->m_owner == this)
        d->border->m_owner = nullptr;
}

bool PDFAnnotation::init()
{
    return true;
}

bool PDFAnnotation::initWithBounds(const QRectF &bounds)
{
    if (!init())
        return false;
    d->bounds = bounds;
    return true;
}

bool PDFAnnotation::initWithBounds(
    const QRectF &bounds, const QString &type, const QVariantMap &properties)
{
    if (!type.isEmpty())
        d->type = type;
    if (!initWithBounds(bounds))
        return false;
    if (!type.isEmpty())
        d->type = type;
    d->loading = true;
    setValuesForKeysWithDictionary(properties);
    d->loading = false;
    return true;
}

void PDFAnnotation::encodeWithCoder(QVariantMap &coder) const
{
    coder.insert(QStringLiteral("type"), d->type);
    coder.insert(QStringLiteral("bounds"), d->bounds);
    for (const QString &key : archivedKeys()) {
        coder.insert(
            key, key == QLatin1String("border") ? archivedBorder(d->border) : valueForKey(key));
    }
}

bool PDFAnnotation::initWithCoder(const QVariantMap &coder)
{
    const QVariant type = coder.value(QStringLiteral("type"));
    const QVariant bounds = coder.value(QStringLiteral("bounds"));
    if (type.typeId() != QMetaType::QString || type.toString().isEmpty()
        || bounds.typeId() != QMetaType::QRectF)
        return false;
    QVariantMap properties;
    for (const QString &key : archivedKeys()) {
        const auto found = coder.constFind(key);
        if (found == coder.constEnd())
            continue;
        properties.insert(key, key == QLatin1String("border") ? borderFromArchive(*found) : *found);
    }
    return initWithBounds(bounds.toRectF(), type.toString(), properties);
}

QStringList PDFAnnotation::archivedKeys() const
{
    return { QStringLiteral("contents"), QStringLiteral("color"), QStringLiteral("border"),
        QStringLiteral("userName"), QStringLiteral("modificationDate"),
        QStringLiteral("shouldDisplay"), QStringLiteral("shouldPrint") };
}

PDFAnnotationFactory PDFAnnotation::classForType(const QString &type)
{
    if (type == QLatin1String("Highlight") || type == QLatin1String("Underline")
        || type == QLatin1String("StrikeOut"))
        return make<PDFAnnotationMarkup>;
    if (type == QLatin1String("Ink"))
        return make<PDFAnnotationInk>;
    if (type == QLatin1String("Line"))
        return make<PDFAnnotationLine>;
    if (type == QLatin1String("Circle"))
        return make<PDFAnnotationCircle>;
    if (type == QLatin1String("Square"))
        return make<PDFAnnotationSquare>;
    if (type == QLatin1String("FreeText"))
        return make<PDFAnnotationFreeText>;
    if (type == QLatin1String("Text"))
        return make<PDFAnnotationText>;
    if (type == QLatin1String("Stamp"))
        return make<PDFAnnotationStamp>;
    if (type == QLatin1String("Link"))
        return make<PDFAnnotationLink>;
    if (type == QLatin1String("Popup"))
        return make<PDFAnnotationPopup>;
    return make<PDFAnnotation>;
}

QString PDFAnnotation::type() const
{
    return d->type;
}

void PDFAnnotation::setType(const QString &type)
{
    d->type = type;
}

QRectF PDFAnnotation::bounds() const
{
    return d->bounds;
}

void PDFAnnotation::setBounds(const QRectF &bounds)
{
    const QRectF old = d->bounds;
    d->bounds = bounds;
    didChange(QStringLiteral("bounds"), old, bounds);
}

QString PDFAnnotation::contents() const
{
    return d->contents;
}

void PDFAnnotation::setContents(const QString &contents)
{
    const QString old = d->contents;
    d->contents = contents;
    didChange(QStringLiteral("contents"), textValue(old), textValue(contents));
}

QColor PDFAnnotation::color() const
{
    return d->color;
}

void PDFAnnotation::setColor(const QColor &color)
{
    const QColor old = d->color;
    d->color = color;
    didChange(QStringLiteral("color"), colorValue(old), colorValue(color));
}

std::shared_ptr<PDFBorder> PDFAnnotation::border() const
{
    return d->border;
}

void PDFAnnotation::setBorder(const std::shared_ptr<PDFBorder> &border)
{
    const auto old = d->border;
    if (old && old->m_owner == this)
        old->m_owner = nullptr;
    d->border = border;
    if (border)
        border->m_owner = this;
    didChange(QStringLiteral("border"), borderValue(old), borderValue(border));
}

QString PDFAnnotation::userName() const
{
    return d->userName;
}

void PDFAnnotation::setUserName(const QString &userName)
{
    const QString old = d->userName;
    d->userName = userName;
    didChange(QStringLiteral("userName"), textValue(old), textValue(userName));
}

QDateTime PDFAnnotation::modificationDate() const
{
    return d->modificationDate;
}

void PDFAnnotation::setModificationDate(const QDateTime &date)
{
    const QDateTime old = d->modificationDate;
    d->modificationDate = date;
    didChange(QStringLiteral("modificationDate"), old.isValid() ? QVariant(old) : QVariant(),
        date.isValid() ? QVariant(date) : QVariant());
}

std::shared_ptr<PDFPage> PDFAnnotation::page() const
{
    return d->page.lock();
}

void PDFAnnotation::setPage(const std::shared_ptr<PDFPage> &page)
{
    d->page = page;
}

bool PDFAnnotation::shouldDisplay() const
{
    return d->shouldDisplay;
}

void PDFAnnotation::setShouldDisplay(bool display)
{
    const bool old = d->shouldDisplay;
    d->shouldDisplay = display;
    if (old != display)
        PDFPageInternals::annotationVisibilityChanged(*this);
    report(QStringLiteral("shouldDisplay"), old, display);
}

bool PDFAnnotation::shouldPrint() const
{
    return d->shouldPrint;
}

void PDFAnnotation::setShouldPrint(bool print)
{
    const bool old = d->shouldPrint;
    d->shouldPrint = print;
    if (old != print)
        PDFPageInternals::annotationVisibilityChanged(*this);
    report(QStringLiteral("shouldPrint"), old, print);
}

bool PDFAnnotation::hasAppearanceStream() const
{
    return d->ownAppearance && PDFPageInternals::hasAppearance(*this);
}

void PDFAnnotation::removeAllAppearanceStreams()
{
    if (!isAppearanceSynthesised())
        return;
    d->ownAppearance = false;
    PDFPageInternals::requestNewAppearance(*this);
}

bool PDFAnnotation::isAppearanceSynthesised() const
{
    return false;
}

void PDFAnnotation::drawWithBox(QPainter &painter, PDFDisplayBox box) const
{
    PDFPageInternals::drawAppearance(*this, painter, box);
}

void PDFAnnotation::postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect)
{
    Q_UNUSED(rect);
}

QVariant PDFAnnotation::valueForKey(const QString &key) const
{
    if (key == QLatin1String("bounds"))
        return d->bounds;
    if (key == QLatin1String("contents"))
        return textValue(d->contents);
    if (key == QLatin1String("color"))
        return colorValue(d->color);
    if (key == QLatin1String("border"))
        return borderValue(d->border);
    if (key == QLatin1String("userName"))
        return textValue(d->userName);
    if (key == QLatin1String("modificationDate"))
        return d->modificationDate.isValid() ? QVariant(d->modificationDate) : QVariant();
    if (key == QLatin1String("shouldDisplay"))
        return d->shouldDisplay;
    if (key == QLatin1String("shouldPrint"))
        return d->shouldPrint;
    if (key == QLatin1String("type"))
        return d->type;
    if (key.startsWith(QLatin1String("border.")) && d->border) {
        if (key == QLatin1String("border.lineWidth"))
            return d->border->lineWidth();
        if (key == QLatin1String("border.style"))
            return d->border->style();
        if (key == QLatin1String("border.dashPattern"))
            return PDFBorder::dashPatternValue(d->border->dashPattern());
    }
    return {};
}

void PDFAnnotation::setValueForKey(const QVariant &value, const QString &key)
{
    if (key == QLatin1String("bounds")) {
        setBounds(value.toRectF());
    } else if (key == QLatin1String("contents")) {
        setContents(value.isValid() ? value.toString() : QString());
    } else if (key == QLatin1String("color")) {
        setColor(value.isValid() ? value.value<QColor>() : QColor());
    } else if (key == QLatin1String("border")) {
        setBorder(value.value<std::shared_ptr<PDFBorder>>());
    } else if (key == QLatin1String("userName")) {
        setUserName(value.isValid() ? value.toString() : QString());
    } else if (key == QLatin1String("modificationDate")) {
        setModificationDate(value.toDateTime());
    } else if (key == QLatin1String("shouldDisplay")) {
        setShouldDisplay(value.toBool());
    } else if (key == QLatin1String("shouldPrint")) {
        setShouldPrint(value.toBool());
    } else if (key.startsWith(QLatin1String("border.")) && d->border) {
        if (key == QLatin1String("border.lineWidth")) {
            d->border->setLineWidth(value.toDouble());
        } else if (key == QLatin1String("border.style")) {
            d->border->setStyle(value.toInt());
        } else if (key == QLatin1String("border.dashPattern")) {
            d->border->setDashPattern(PDFBorder::dashPatternFromValue(value));
        }
    }
}

void PDFAnnotation::setValuesForKeysWithDictionary(const QVariantMap &values)
{
    for (auto it = values.constBegin(); it != values.constEnd(); ++it)
        setValueForKey(it.value(), it.key());
}

void PDFAnnotation::setValueForKeyInMemory(const QVariant &value, const QString &key)
{
    const bool wasLoading = d->loading;
    d->loading = true;
    setValueForKey(value, key);
    d->loading = wasLoading;
}

void PDFAnnotation::addObserver(const void *observer, const Observer &callback)
{
    if (callback)
        d->observers.emplace_back(observer, callback);
}

void PDFAnnotation::removeObserver(const void *observer)
{
    std::erase_if(d->observers, [observer](const auto &entry) { return entry.first == observer; });
}

void PDFAnnotation::didChange(
    const QString &keyPath, const QVariant &oldValue, const QVariant &newValue)
{
    if (d->loading)
        return;
    if (d->quiet) {
        PDFPageInternals::annotationDidChange(*this, d->quietValueDrawn);
        return;
    }
    PDFPageInternals::annotationDidChange(*this, true);
    postPDFAnnotationVisualsChangedNotificationWithRect(d->bounds);
    report(keyPath, oldValue, newValue);
}

void PDFAnnotation::setValueForKeyQuietly(const QVariant &value, const QString &key, bool drawn)
{
    const bool wasQuiet = std::exchange(d->quiet, true);
    const bool wasDrawn = std::exchange(d->quietValueDrawn, drawn);
    setValueForKey(value, key);
    d->quiet = wasQuiet;
    d->quietValueDrawn = wasDrawn;
}

void PDFAnnotation::report(
    const QString &keyPath, const QVariant &oldValue, const QVariant &newValue)
{
    if (d->loading || d->quiet)
        return;
    // A callback may add or remove observers, or change this annotation again.
    const auto observers = d->observers;
    for (const auto &[observer, callback] : observers) {
        Q_UNUSED(observer);
        callback(*this, keyPath, oldValue, newValue);
    }
}

void PDFAnnotation::borderDidChange(
    const QString &keyPath, const QVariant &oldValue, const QVariant &newValue)
{
    didChange(keyPath, oldValue, newValue);
}

void PDFAnnotation::beginPageSpace(QPainter &painter, PDFDisplayBox box) const
{
    if (const auto owner = page())
        owner->transformContextForBox(painter, box);
}

QVariant PDFAnnotation::colorValue(const QColor &color)
{
    return color.isValid() ? QVariant(color) : QVariant();
}
