#pragma once

// How a single line of text that is wider than its box is shown: cut off at the box's edge, or
// shortened with an ellipsis at its end. A copyable value; drawing on the main thread.

#include <QRectF>
#include <QString>
#include <QTextOption>

class QFontMetricsF;
class QPainter;

class ParagraphStyle
{
public:
    enum LineBreakMode { Clipping, TruncatingTail };

    explicit ParagraphStyle(LineBreakMode mode)
        : m_mode(mode)
    { }

    LineBreakMode lineBreakMode() const { return m_mode; }
    // Never wraps.
    QTextOption textOption(Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter) const;
    // The text as it fits width: as it is when clipping (the box cuts it), else shortened to end
    // in an ellipsis.
    QString fittedText(const QString &text, const QFontMetricsF &metrics, double width) const;
    // Draws the fitted text on one line in rect with the painter's font and pen, clipped to rect.
    void drawText(QPainter &painter, QRectF rect, const QString &text,
        Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter) const;

private:
    LineBreakMode m_mode;
};

ParagraphStyle defaultClippingParagraphStyle();
ParagraphStyle defaultTruncatingTailParagraphStyle();
