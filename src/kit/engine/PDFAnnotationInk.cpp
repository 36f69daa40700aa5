#include "PDFAnnotationInk.h"

#include "AnnotationPainting.h"
#include "PDFBorder.h"

#include <QPainter>

PDFAnnotationInk::PDFAnnotationInk()
{
    setType(QStringLiteral("Ink"));
}

bool PDFAnnotationInk::init()
{
    if (!PDFAnnotation::init())
        return false;
    setBorder(std::make_shared<PDFBorder>());
    return true;
}

QVariant PDFAnnotationInk::pathsValue() const
{
    QVariantList list;
    for (const auto &path : m_paths)
        list.append(QVariant::fromValue(*path));
    return list;
}

void PDFAnnotationInk::addBezierPath(const std::shared_ptr<BezierPath> &path)
{
    if (!path)
        return;
    const QVariant old = pathsValue();
    m_paths.append(path);
    didChange(QStringLiteral("paths"), old, pathsValue());
}

void PDFAnnotationInk::removeBezierPath(const std::shared_ptr<BezierPath> &path)
{
    const qsizetype index = m_paths.indexOf(path);
    if (index < 0)
        return;
    const QVariant old = pathsValue();
    m_paths.removeAt(index);
    didChange(QStringLiteral("paths"), old, pathsValue());
}

void PDFAnnotationInk::drawWithBox(QPainter &painter, PDFDisplayBox box) const
{
    const QRectF area = bounds();
    if (area.width() <= 0 || area.height() <= 0)
        return;
    const double w = AnnotationPainting::lineWidth(*this);
    const QList<double> dash = AnnotationPainting::dash(*this);
    painter.save();
    beginPageSpace(painter, box);
    painter.translate(area.topLeft());
    painter.setRenderHint(QPainter::Antialiasing);
    for (const auto &path : m_paths) {
        BezierPath stroke = *path;
        stroke.setLineJoin(BezierPath::RoundJoin);
        stroke.setLineCap(dash.isEmpty() ? BezierPath::RoundCap : BezierPath::ButtCap);
        AnnotationPainting::stroke(painter, stroke, color(), w, dash);
    }
    painter.restore();
}

QStringList PDFAnnotationInk::archivedKeys() const
{
    return PDFAnnotation::archivedKeys() << QStringLiteral("paths");
}

QVariant PDFAnnotationInk::valueForKey(const QString &key) const
{
    if (key == QLatin1String("paths"))
        return pathsValue();
    return PDFAnnotation::valueForKey(key);
}

void PDFAnnotationInk::setValueForKey(const QVariant &value, const QString &key)
{
    if (key != QLatin1String("paths")) {
        PDFAnnotation::setValueForKey(value, key);
        return;
    }
    const QVariant old = pathsValue();
    m_paths.clear();
    for (const QVariant &item : value.toList())
        m_paths.append(std::make_shared<BezierPath>(item.value<BezierPath>()));
    didChange(key, old, pathsValue());
}
