#pragma once

// The view's scroll bar, painted in bands. Qt's raster painter hands a fill more than about a
// hundred rows high to its global thread pool and waits for it: while pages render on every core,
// waking those threads can take the main thread longer than the fill itself, in every frame of a
// scroll. A band is short enough to be filled by the thread that paints it. Each band is drawn into
// an image of its own: the style sets clips of its own, which a clip on the bar's painter would not
// bound.

#include <QScrollBar>
#include <QStyle>

class PDFScrollBar : public QScrollBar
{
public:
    explicit PDFScrollBar(Qt::Orientation orientation, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    static constexpr int BandRows = 64;
    QStyle::SubControl m_pressed = QStyle::SC_None;
};
