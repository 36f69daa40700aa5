#include "PDFScrollBar.h"

#include <QCursor>
#include <QImage>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QStyleOptionSlider>

PDFScrollBar::PDFScrollBar(Qt::Orientation orientation, QWidget *parent)
    : QScrollBar(orientation, parent)
{ }

void PDFScrollBar::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    QStyleOptionSlider option;
    initStyleOption(&option);
    option.subControls = QStyle::SC_All;
    // The part pressed shows sunken, else the part under the pointer lights up, as in Qt's bar.
    if (m_pressed != QStyle::SC_None) {
        option.activeSubControls = m_pressed;
        option.state |= QStyle::State_Sunken;
    } else if (underMouse()) {
        option.activeSubControls = style()->hitTestComplexControl(
            QStyle::CC_ScrollBar, &option, mapFromGlobal(QCursor::pos()), this);
    }
    // Each band is painted into an image of its own, whose height bounds every fill however the
    // style clips, and then laid onto the bar as one picture.
    const QRect area = event->rect();
    const qreal ratio = devicePixelRatioF();
    QImage band(QSize(width(), BandRows) * ratio, QImage::Format_ARGB32_Premultiplied);
    band.setDevicePixelRatio(ratio);
    for (int top = area.top(); top <= area.bottom(); top += BandRows) {
        band.fill(Qt::transparent);
        QPainter bandPainter(&band);
        bandPainter.translate(0, -top);
        style()->drawComplexControl(QStyle::CC_ScrollBar, &option, &bandPainter, this);
        bandPainter.end();
        painter.drawImage(QPoint(0, top), band);
    }
}

void PDFScrollBar::mousePressEvent(QMouseEvent *event)
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    m_pressed = style()->hitTestComplexControl(
        QStyle::CC_ScrollBar, &option, event->position().toPoint(), this);
    QScrollBar::mousePressEvent(event);
}

void PDFScrollBar::mouseReleaseEvent(QMouseEvent *event)
{
    m_pressed = QStyle::SC_None;
    QScrollBar::mouseReleaseEvent(event);
    update();
}
