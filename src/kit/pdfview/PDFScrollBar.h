#pragma once

// The view's scroll bar, painted from two cached pictures: the bar without its slider, and the
// slider. Qt's raster painter hands a fill of more than about a hundred rows to its global thread
// pool and waits for it; while pages render on every core, waking those threads can take the main
// thread longer than the fill itself. Painting the bar anew in every frame of a scroll did that
// several times a frame; now a frame lays two images and the style paints only when the bar's
// size, state or look changes. The pictures themselves are painted in bands short enough to be
// filled by the thread that paints them.

#include <QImage>
#include <QPalette>
#include <QRect>
#include <QScrollBar>
#include <QStyle>

class QStyleOptionSlider;

class PDFScrollBar : public QScrollBar
{
public:
    explicit PDFScrollBar(Qt::Orientation orientation, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    // What a picture was painted for: when any of it changes, the picture is painted again.
    struct Look
    {
        QSize size;
        qreal ratio = 0;
        int state = 0;
        int active = 0;
        int ends = 0;
        qint64 palette = 0;
        const QStyle *style = nullptr;
        bool whole = false; // the slider painted in the groove's picture
        QRect slider;
        bool operator==(const Look &) const = default;
    };

    QStyleOptionSlider paintOption() const;
    void paintPicture(QImage &picture, const QStyleOptionSlider &option, QRect area) const;

    static constexpr int BandRows = 64;
    static constexpr int SliderMargin = 1;
    QStyle::SubControl m_pressed = QStyle::SC_None;
    QImage m_groove;
    Look m_grooveLook;
    QImage m_slider;
    Look m_sliderLook;
};
