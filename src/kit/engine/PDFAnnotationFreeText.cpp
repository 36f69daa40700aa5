#include "PDFAnnotationFreeText.h"

#include <QPaintDevice>
#include <QPainter>
#include <QTextOption>

PDFAnnotationFreeText::PDFAnnotationFreeText()
{
    setType(QStringLiteral("FreeText"));
    m_font = QFont(QStringLiteral("Helvetica"));
    m_font.setPointSizeF(12);
}

bool PDFAnnotationFreeText::init()
{
    if (!PDFAnnotation::init())
        return false;
    setBorder(nullptr);
    return true;
}

void PDFAnnotationFreeText::setFont(const QFont &font)
{
    const QFont old = m_font;
    m_font = font;
    didChange(QStringLiteral("font"), old, font);
}

void PDFAnnotationFreeText::setFontColor(const QColor &color)
{
    const QColor old = m_fontColor;
    m_fontColor = color;
    didChange(QStringLiteral("fontColor"), colorValue(old), colorValue(color));
}

void PDFAnnotationFreeText::setAlignment(int alignment)
{
    const int old = m_alignment;
    m_alignment = alignment;
    didChange(QStringLiteral("alignment"), old, alignment);
}

void PDFAnnotationFreeText::drawWithBox(QPainter &painter, PDFDisplayBox box) const
{
    const QRectF area = bounds();
    if (area.width() <= 0 || area.height() <= 0)
        return;
    painter.save();
    beginPageSpace(painter, box);
    const QColor background = color();
    if (background.isValid() && background.alpha() > 0)
        painter.fillRect(area, background);
    // Text runs top down: flip about the top edge, and measure fonts in page units (points)
    // whatever the device's resolution.
    const double dpi = painter.device() ? painter.device()->logicalDpiY() : 72.0;
    const double unit = 72.0 / (dpi > 0 ? dpi : 72.0);
    painter.translate(area.left(), area.bottom());
    painter.scale(unit, -unit);
    const QRectF textArea = QRectF(0, 0, area.width() / unit, area.height() / unit)
                                .adjusted(2 / unit, 2 / unit, -2 / unit, -2 / unit);
    QTextOption option;
    option.setWrapMode(QTextOption::WordWrap);
    option.setAlignment(m_alignment == Right ? Qt::AlignRight
            : m_alignment == Center          ? Qt::AlignHCenter
            : m_alignment == Justified       ? Qt::AlignJustify
                                             : Qt::AlignLeft);
    painter.setFont(m_font);
    painter.setPen(m_fontColor.isValid() ? m_fontColor : QColor(Qt::black));
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.drawText(textArea, contents(), option);
    painter.restore();
}

QStringList PDFAnnotationFreeText::archivedKeys() const
{
    return PDFAnnotation::archivedKeys()
        << QStringLiteral("font") << QStringLiteral("fontColor") << QStringLiteral("alignment");
}

QVariant PDFAnnotationFreeText::valueForKey(const QString &key) const
{
    if (key == QLatin1String("font"))
        return m_font;
    if (key == QLatin1String("fontColor"))
        return colorValue(m_fontColor);
    if (key == QLatin1String("alignment"))
        return m_alignment;
    return PDFAnnotation::valueForKey(key);
}

void PDFAnnotationFreeText::setValueForKey(const QVariant &value, const QString &key)
{
    if (key == QLatin1String("font"))
        setFont(value.isValid() ? value.value<QFont>() : QFont());
    else if (key == QLatin1String("fontColor"))
        setFontColor(value.isValid() ? value.value<QColor>() : QColor());
    else if (key == QLatin1String("alignment"))
        setAlignment(value.toInt());
    else
        PDFAnnotation::setValueForKey(value, key);
}
