#include "PDFAnnotationLine.h"

#include "AnnotationPainting.h"
#include "PDFBorder.h"

#include <kit/base/BezierPath.h>

#include <QPainter>

#include <cmath>

PDFAnnotationLine::PDFAnnotationLine()
{
    setType(QStringLiteral("Line"));
}

bool PDFAnnotationLine::init()
{
    if (!PDFAnnotation::init())
        return false;
    setBorder(std::make_shared<PDFBorder>());
    return true;
}

bool PDFAnnotationLine::initWithBounds(const QRectF &bounds)
{
    if (!PDFAnnotation::initWithBounds(bounds))
        return false;
    m_startPoint = QPointF(0, 0);
    m_endPoint = QPointF(bounds.width(), bounds.height());
    return true;
}

void PDFAnnotationLine::setStartPoint(const QPointF &point)
{
    const QPointF old = m_startPoint;
    m_startPoint = point;
    didChange(QStringLiteral("startPoint"), old, point);
}

void PDFAnnotationLine::setEndPoint(const QPointF &point)
{
    const QPointF old = m_endPoint;
    m_endPoint = point;
    didChange(QStringLiteral("endPoint"), old, point);
}

void PDFAnnotationLine::setStartLineStyle(int style)
{
    const int old = m_startLineStyle;
    m_startLineStyle = style;
    didChange(QStringLiteral("startLineStyle"), old, style);
}

void PDFAnnotationLine::setEndLineStyle(int style)
{
    const int old = m_endLineStyle;
    m_endLineStyle = style;
    didChange(QStringLiteral("endLineStyle"), old, style);
}

void PDFAnnotationLine::drawWithBox(QPainter &painter, PDFDisplayBox box) const
{
    if (m_startPoint.x() - m_endPoint.x() == 0.0 && m_startPoint.y() - m_endPoint.y() == 0.0)
        return;
    // A picture the file brought along is the line's look; only a line without one is drawn
    // from its properties.
    if (hasAppearanceStream()) {
        PDFAnnotation::drawWithBox(painter, box);
        return;
    }
    const double w = AnnotationPainting::lineWidth(*this);
    const QList<double> dash = AnnotationPainting::dash(*this);
    const QPointF origin = bounds().topLeft();
    const QPointF s = origin + m_startPoint;
    const QPointF e = origin + m_endPoint;
    const double angle = std::atan2(e.y() - s.y(), e.x() - s.x());
    BezierPath line;
    line.moveTo(s);
    line.lineTo(e);
    painter.save();
    beginPageSpace(painter, box);
    painter.setRenderHint(QPainter::Antialiasing);
    AnnotationPainting::stroke(painter, line, color(), w, dash);
    if (m_startLineStyle != None)
        AnnotationPainting::stroke(painter,
            AnnotationPainting::lineEnd(m_startLineStyle, s, angle + M_PI, w), color(), w, dash);
    if (m_endLineStyle != None)
        AnnotationPainting::stroke(
            painter, AnnotationPainting::lineEnd(m_endLineStyle, e, angle, w), color(), w, dash);
    painter.restore();
}

QStringList PDFAnnotationLine::archivedKeys() const
{
    return PDFAnnotation::archivedKeys()
        << QStringLiteral("startPoint") << QStringLiteral("endPoint")
        << QStringLiteral("startLineStyle") << QStringLiteral("endLineStyle");
}

QVariant PDFAnnotationLine::valueForKey(const QString &key) const
{
    if (key == QLatin1String("startPoint"))
        return m_startPoint;
    if (key == QLatin1String("endPoint"))
        return m_endPoint;
    if (key == QLatin1String("startLineStyle"))
        return m_startLineStyle;
    if (key == QLatin1String("endLineStyle"))
        return m_endLineStyle;
    return PDFAnnotation::valueForKey(key);
}

void PDFAnnotationLine::setValueForKey(const QVariant &value, const QString &key)
{
    if (key == QLatin1String("startPoint"))
        setStartPoint(value.toPointF());
    else if (key == QLatin1String("endPoint"))
        setEndPoint(value.toPointF());
    else if (key == QLatin1String("startLineStyle"))
        setStartLineStyle(value.toInt());
    else if (key == QLatin1String("endLineStyle"))
        setEndLineStyle(value.toInt());
    else
        PDFAnnotation::setValueForKey(value, key);
}
