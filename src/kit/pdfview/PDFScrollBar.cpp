#include "PDFScrollBar.h"

#include <QCursor>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QStyleOptionSlider>

PDFScrollBar::PDFScrollBar(Qt::Orientation orientation, QWidget *parent)
    : QScrollBar(orientation, parent)
{ }

QStyleOptionSlider PDFScrollBar::paintOption() const
{
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
    return option;
}

void PDFScrollBar::paintPicture(QImage &picture, const QStyleOptionSlider &option, QRect area) const
{
    // Each band is painted into an image of its own, whose height bounds every fill however the
    // style clips, and then laid onto the picture.
    const qreal ratio = devicePixelRatioF();
    picture = QImage(area.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    QImage band(QSize(area.width(), BandRows) * ratio, QImage::Format_ARGB32_Premultiplied);
    band.setDevicePixelRatio(ratio);
    for (int top = 0; top < area.height(); top += BandRows) {
        band.fill(Qt::transparent);
        QPainter bandPainter(&band);
        bandPainter.translate(-area.left(), -area.top() - top);
        style()->drawComplexControl(QStyle::CC_ScrollBar, &option, &bandPainter, this);
        bandPainter.end();
        painter.drawImage(QPoint(0, top), band);
    }
}

void PDFScrollBar::paintEvent(QPaintEvent *)
{
    const QStyleOptionSlider option = paintOption();
    // A style may draw the slider's edges just outside its rectangle.
    const QRect slider
        = style()
              ->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this)
              .adjusted(-SliderMargin, -SliderMargin, SliderMargin, SliderMargin);
    // At an end, the end's button is painted over the slider's edge and blends with it: the bar is
    // then one picture, slider and all, as the style paints it.
    const bool whole
        = !style()
               ->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarGroove, this)
               .contains(slider);
    Look look { size(), devicePixelRatioF(), int(option.state), int(option.activeSubControls),
        (option.sliderValue <= option.minimum ? 1 : 0)
            | (option.sliderValue >= option.maximum ? 2 : 0),
        palette().cacheKey(), style(), whole, {} };
    // The page areas either side of the slider are part of the groove; when one of them is lit or
    // pressed, the groove's look depends on where the slider is.
    if (whole
        || option.activeSubControls & (QStyle::SC_ScrollBarAddPage | QStyle::SC_ScrollBarSubPage))
        look.slider = slider;
    if (m_groove.isNull() || m_grooveLook != look) {
        QStyleOptionSlider groove = option;
        if (!whole)
            groove.subControls &= ~QStyle::SC_ScrollBarSlider;
        paintPicture(m_groove, groove, rect());
        m_grooveLook = look;
    }
    QPainter painter(this);
    painter.drawImage(QPoint(), m_groove);
    if (whole)
        return;
    look.slider = QRect(QPoint(), slider.size());
    if (m_sliderLook != look) {
        QStyleOptionSlider alone = option;
        alone.subControls = QStyle::SC_ScrollBarSlider;
        paintPicture(m_slider, alone, slider);
        m_sliderLook = look;
    }
    painter.drawImage(slider.topLeft(), m_slider);
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
