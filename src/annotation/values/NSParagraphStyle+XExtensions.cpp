#include "NSParagraphStyle+XExtensions.h"

#include <QFontMetricsF>
#include <QPainter>

QTextOption ParagraphStyle::textOption(Qt::Alignment alignment) const
{
    QTextOption option(alignment);
    option.setWrapMode(QTextOption::NoWrap);
    return option;
}

QString ParagraphStyle::fittedText(
    const QString &text, const QFontMetricsF &metrics, double width) const
{
    if (m_mode == Clipping)
        return text;
    return metrics.elidedText(text, Qt::ElideRight, width);
}

void ParagraphStyle::drawText(
    QPainter &painter, QRectF rect, const QString &text, Qt::Alignment alignment) const
{
    painter.save();
    painter.setClipRect(rect, Qt::IntersectClip);
    const QString fitted = fittedText(text, QFontMetricsF(painter.font()), rect.width());
    painter.drawText(rect, fitted, textOption(alignment));
    painter.restore();
}

ParagraphStyle defaultClippingParagraphStyle()
{
    return ParagraphStyle(ParagraphStyle::Clipping);
}

ParagraphStyle defaultTruncatingTailParagraphStyle()
{
    return ParagraphStyle(ParagraphStyle::TruncatingTail);
}
