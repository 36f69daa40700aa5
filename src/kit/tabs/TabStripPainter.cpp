#include "TabStripPainter.h"

#include "QKDrawing.h"
#include "QKThemeProvider.h"

#include <QPainter>
#include <QPainterPath>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kCornerRadius = 8;
constexpr double kFootRadius = TabStripPainter::footRadius;
constexpr double kTitleInset = 14;
// Narrower title space than this many average characters fades the title instead of eliding it.
constexpr int kMinElidedTitleChars = 5;

QPainterPath selectedTabShape(const QRectF &r)
{
    const double x0 = r.left(), x1 = r.right(), y0 = r.top(), y1 = r.bottom();
    QPainterPath path;
    path.moveTo(x0 - kFootRadius, y1);
    path.quadTo(x0, y1, x0, y1 - kFootRadius);
    path.lineTo(x0, y0 + kCornerRadius);
    path.quadTo(x0, y0, x0 + kCornerRadius, y0);
    path.lineTo(x1 - kCornerRadius, y0);
    path.quadTo(x1, y0, x1, y0 + kCornerRadius);
    path.lineTo(x1, y1 - kFootRadius);
    path.quadTo(x1, y1, x1 + kFootRadius, y1);
    path.closeSubpath();
    return path;
}

const QKTheme &theme()
{
    return QKThemeProvider::sharedInstance().current();
}

} // namespace

TabStripPainter::TabStripPainter(QPainter &painter, const QWidget &widget)
    : m_painter(painter)
    , m_widget(widget)
{ }

void TabStripPainter::paintTab(const Tab &tab) const
{
    QPainter &painter = m_painter;
    const QKTheme &t = theme();
    const QRectF &rect = tab.rect;
    const double lineWidth = qk_lineWidth(&m_widget);

    if (tab.selected) {
        painter.fillPath(selectedTabShape(rect), t.color(QKTheme::SelectedTabBackground));
    } else if (tab.highlighted) {
        const QRectF pill = rect.adjusted(3, 2, -3, -5);
        QPainterPath path;
        path.addRoundedRect(pill, kCornerRadius - 2, kCornerRadius - 2);
        painter.fillPath(path, t.color(QKTheme::HoveredTabBackground));
    } else if (tab.separator) {
        const double ratio = m_widget.devicePixelRatioF();
        const double x = std::round(rect.right() * ratio) / ratio;
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(QPen(t.color(QKTheme::TabSeparator), lineWidth));
        painter.drawLine(QPointF(x, rect.top() + 9), QPointF(x, rect.bottom() - 9));
        painter.restore();
    }

    const double titleRight
        = tab.closeShown ? tab.closeRect.left() - 4 : rect.right() - kTitleInset;
    const QRectF titleRect(rect.left() + kTitleInset, rect.top(),
        std::max(0.0, titleRight - rect.left() - kTitleInset), rect.height() - 2);
    const QColor textColor = t.color(tab.selected ? QKTheme::SelectedTabText : QKTheme::TabText);
    painter.setFont(m_widget.font());
    const QFontMetrics metrics = m_widget.fontMetrics();
    const int flags = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine;
    if (titleRect.width() >= kMinElidedTitleChars * metrics.averageCharWidth()
        || metrics.horizontalAdvance(tab.title) <= titleRect.width()) {
        painter.setPen(textColor);
        painter.drawText(titleRect, flags,
            metrics.elidedText(tab.title, Qt::ElideRight, int(titleRect.width())));
    } else {
        // Too narrow for an ellipsis to leave anything readable: the first letters fade out.
        QLinearGradient fade(titleRect.topLeft(), titleRect.topRight());
        QColor clear = textColor;
        clear.setAlpha(0);
        fade.setColorAt(0, textColor);
        fade.setColorAt(0.6, textColor);
        fade.setColorAt(1, clear);
        painter.save();
        painter.setClipRect(titleRect);
        painter.setPen(QPen(QBrush(fade), 1));
        painter.drawText(titleRect, flags, tab.title);
        painter.restore();
    }

    if (tab.closeShown)
        paintCloseButton(tab.closeRect, tab.closeHovered, tab.closePressed, tab.selected);
}

void TabStripPainter::paintCloseButton(
    const QRectF &rect, bool hovered, bool pressed, bool selected) const
{
    QPainter &painter = m_painter;
    const QKTheme &t = theme();
    if (hovered) {
        QColor background = t.color(QKTheme::TabCloseButtonHoverBackground);
        if (pressed)
            background.setAlphaF(std::min(1.0f, background.alphaF() * 2));
        painter.setPen(Qt::NoPen);
        painter.setBrush(background);
        painter.drawEllipse(rect);
    }
    QColor cross = t.color(QKTheme::TabCloseButton);
    if (!selected && !hovered)
        cross.setAlphaF(cross.alphaF() * 0.75f);
    const double arm = 3.5;
    const QPointF c = rect.center();
    painter.setPen(QPen(cross, 1.4, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(c + QPointF(-arm, -arm), c + QPointF(arm, arm));
    painter.drawLine(c + QPointF(-arm, arm), c + QPointF(arm, -arm));
    painter.setBrush(Qt::NoBrush);
}

void TabStripPainter::paintNewTabButton(const QRectF &rect, bool hovered, bool pressed) const
{
    QPainter &painter = m_painter;
    const QKTheme &t = theme();
    if (hovered) {
        QPainterPath path;
        path.addRoundedRect(rect, 6, 6);
        QColor background = t.color(QKTheme::TabCloseButtonHoverBackground);
        if (pressed)
            background.setAlphaF(std::min(1.0f, background.alphaF() * 2));
        painter.fillPath(path, background);
    }
    const double arm = 6;
    const QPointF c = rect.center();
    painter.setPen(QPen(t.color(QKTheme::TabCloseButton), 1.6, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(c + QPointF(-arm, 0), c + QPointF(arm, 0));
    painter.drawLine(c + QPointF(0, -arm), c + QPointF(0, arm));
}
