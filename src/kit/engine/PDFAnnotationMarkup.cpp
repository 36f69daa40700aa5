#include "PDFAnnotationMarkup.h"

#include <QPainter>
#include <QPolygonF>

namespace {

QVariant pointsValue(const QList<QPointF> &points)
{
    QVariantList list;
    for (const QPointF &point : points)
        list.append(point);
    return list;
}

} // namespace

PDFAnnotationMarkup::PDFAnnotationMarkup()
{
    setType(QStringLiteral("Highlight"));
}

int PDFAnnotationMarkup::markupType() const
{
    const QString kind = type();
    if (kind == QLatin1String("StrikeOut"))
        return StrikeOut;
    if (kind == QLatin1String("Underline"))
        return Underline;
    return Highlight;
}

void PDFAnnotationMarkup::setMarkupType(int markupType)
{
    const int old = this->markupType();
    setType(markupType == StrikeOut   ? QStringLiteral("StrikeOut")
            : markupType == Underline ? QStringLiteral("Underline")
                                      : QStringLiteral("Highlight"));
    didChange(QStringLiteral("markupType"), old, this->markupType());
}

void PDFAnnotationMarkup::setQuadrilateralPoints(const QList<QPointF> &points)
{
    const QList<QPointF> old = m_quadrilateralPoints;
    m_quadrilateralPoints = points;
    didChange(QStringLiteral("quadrilateralPoints"), pointsValue(old), pointsValue(points));
}

void PDFAnnotationMarkup::drawWithBox(QPainter &painter, PDFDisplayBox box) const
{
    const QColor ink = color();
    if (!ink.isValid() || ink.alpha() == 0)
        return;
    painter.save();
    beginPageSpace(painter, box);
    painter.translate(bounds().topLeft());
    painter.setRenderHint(QPainter::Antialiasing);
    const int kind = markupType();
    for (qsizetype i = 0; i + 3 < m_quadrilateralPoints.size(); i += 4) {
        const QPointF topLeft = m_quadrilateralPoints[i];
        const QPointF topRight = m_quadrilateralPoints[i + 1];
        const QPointF bottomLeft = m_quadrilateralPoints[i + 2];
        const QPointF bottomRight = m_quadrilateralPoints[i + 3];
        const double height = QLineF(bottomLeft, topLeft).length();
        if (kind == Highlight) {
            painter.setCompositionMode(QPainter::CompositionMode_Multiply);
            painter.setPen(Qt::NoPen);
            painter.setBrush(ink);
            painter.drawPolygon(QPolygonF({ topLeft, topRight, bottomRight, bottomLeft }));
            continue;
        }
        // Underlines sit a little above the bottom edge, strike-outs across the middle.
        const double t = kind == Underline ? 0.1 : 0.5;
        QPen pen(ink, std::max(1.0, height / 14));
        painter.setPen(pen);
        painter.drawLine(
            bottomLeft + (topLeft - bottomLeft) * t, bottomRight + (topRight - bottomRight) * t);
    }
    painter.restore();
}

QStringList PDFAnnotationMarkup::archivedKeys() const
{
    return PDFAnnotation::archivedKeys() << QStringLiteral("quadrilateralPoints");
}

QVariant PDFAnnotationMarkup::valueForKey(const QString &key) const
{
    if (key == QLatin1String("markupType"))
        return markupType();
    if (key == QLatin1String("quadrilateralPoints"))
        return pointsValue(m_quadrilateralPoints);
    return PDFAnnotation::valueForKey(key);
}

void PDFAnnotationMarkup::setValueForKey(const QVariant &value, const QString &key)
{
    if (key == QLatin1String("markupType")) {
        setMarkupType(value.toInt());
    } else if (key == QLatin1String("quadrilateralPoints")) {
        QList<QPointF> points;
        for (const QVariant &item : value.toList())
            points.append(item.toPointF());
        setQuadrilateralPoints(points);
    } else {
        PDFAnnotation::setValueForKey(value, key);
    }
}
