#include "PDFAnnotationText.h"

#include <QPainter>
#include <QPainterPath>

namespace {

const char *const IconNames[]
    = { "Comment", "Key", "Note", "Help", "NewParagraph", "Paragraph", "Insert" };

} // namespace

PDFAnnotationText::PDFAnnotationText()
{
    setType(QStringLiteral("Text"));
}

bool PDFAnnotationText::initWithBounds(const QRectF &bounds)
{
    QRectF area = bounds;
    if (area.size() == QSizeF(0, 0))
        area.setSize(QSizeF(24, 24));
    return PDFAnnotation::initWithBounds(area);
}

void PDFAnnotationText::setIconType(int iconType)
{
    const int old = m_iconType;
    m_iconType = iconType;
    didChange(QStringLiteral("iconType"), old, iconType);
}

QString PDFAnnotationText::iconName(int iconType)
{
    return QLatin1String(iconType >= 0 && iconType <= Insert ? IconNames[iconType] : "Note");
}

int PDFAnnotationText::iconTypeForName(const QString &name)
{
    for (int i = 0; i <= Insert; ++i) {
        if (name == QLatin1String(IconNames[i]))
            return i;
    }
    return Note;
}

void PDFAnnotationText::drawWithBox(QPainter &painter, PDFDisplayBox box) const
{
    const QRectF area = bounds();
    if (area.width() <= 0 || area.height() <= 0)
        return;
    const QColor fill = color().isValid() && color().alpha() > 0 ? color() : QColor(255, 220, 0);
    painter.save();
    beginPageSpace(painter, box);
    painter.setRenderHint(QPainter::Antialiasing);
    // A sheet with a folded corner and three lines of writing.
    const double w = area.width();
    const double h = area.height();
    const double fold = std::min(w, h) * 0.3;
    const QPointF o = area.topLeft();
    QPainterPath sheet;
    sheet.moveTo(o + QPointF(0, 0));
    sheet.lineTo(o + QPointF(w, 0));
    sheet.lineTo(o + QPointF(w, h - fold));
    sheet.lineTo(o + QPointF(w - fold, h));
    sheet.lineTo(o + QPointF(0, h));
    sheet.closeSubpath();
    const double stroke = std::max(0.5, std::min(w, h) / 24);
    painter.setPen(QPen(fill.darker(250), stroke));
    painter.setBrush(fill);
    painter.drawPath(sheet);
    for (int i = 1; i <= 3; ++i) {
        const double y = h * (1 - i * 0.25);
        painter.drawLine(o + QPointF(w * 0.2, y), o + QPointF(w * (i == 1 ? 0.6 : 0.8), y));
    }
    painter.restore();
}

QStringList PDFAnnotationText::archivedKeys() const
{
    return PDFAnnotation::archivedKeys() << QStringLiteral("iconType");
}

QVariant PDFAnnotationText::valueForKey(const QString &key) const
{
    if (key == QLatin1String("iconType"))
        return m_iconType;
    return PDFAnnotation::valueForKey(key);
}

void PDFAnnotationText::setValueForKey(const QVariant &value, const QString &key)
{
    if (key == QLatin1String("iconType"))
        setIconType(value.toInt());
    else
        PDFAnnotation::setValueForKey(value, key);
}
