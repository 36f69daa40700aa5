#include "PDFAnnotationShape.h"

#include "AnnotationPainting.h"
#include "PDFBorder.h"

#include <kit/base/BezierPath.h>

#include <QPainter>

#include <algorithm>

PDFAnnotationShape::PDFAnnotationShape(const QString &type)
{
    setType(type);
}

bool PDFAnnotationShape::init()
{
    if (!PDFAnnotation::init())
        return false;
    setBorder(std::make_shared<PDFBorder>());
    return true;
}

void PDFAnnotationShape::setInteriorColor(const QColor &color)
{
    const QColor old = m_interiorColor;
    m_interiorColor = color;
    didChange(QStringLiteral("interiorColor"), colorValue(old), colorValue(color));
}

void PDFAnnotationShape::drawWithBox(QPainter &painter, PDFDisplayBox box) const
{
    const QRectF area = bounds();
    if (area.width() <= 0 || area.height() <= 0)
        return;
    const double w = AnnotationPainting::lineWidth(*this);
    // The stroke stays inside the bounds, as in the file's appearance.
    const double inset = std::min({ w / 2, area.width() / 2, area.height() / 2 });
    BezierPath shape;
    appendFigure(shape, area.adjusted(inset, inset, -inset, -inset));
    painter.save();
    beginPageSpace(painter, box);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_interiorColor.isValid() && m_interiorColor.alpha() > 0) {
        painter.setBrush(m_interiorColor);
        shape.fill(painter);
    }
    if (w > 0)
        AnnotationPainting::stroke(painter, shape, color(), w, AnnotationPainting::dash(*this));
    painter.restore();
}

QStringList PDFAnnotationShape::archivedKeys() const
{
    return PDFAnnotation::archivedKeys() << QStringLiteral("interiorColor");
}

QVariant PDFAnnotationShape::valueForKey(const QString &key) const
{
    if (key == QLatin1String("interiorColor"))
        return colorValue(m_interiorColor);
    return PDFAnnotation::valueForKey(key);
}

void PDFAnnotationShape::setValueForKey(const QVariant &value, const QString &key)
{
    if (key == QLatin1String("interiorColor"))
        setInteriorColor(value.isValid() ? value.value<QColor>() : QColor());
    else
        PDFAnnotation::setValueForKey(value, key);
}
