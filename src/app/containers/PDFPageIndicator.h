#pragma once

// The small "n / N" label over a view that shows the current page after each page change and
// fades out 3 seconds later over 1 second, unless the pointer rests on it; nothing flashes while
// the document loads. A click turns it into the page navigator. Main thread only.

#include <QPointer>
#include <QTimer>
#include <QWidget>

class FDPDFView;
class QGraphicsOpacityEffect;
class QPropertyAnimation;

class PDFPageIndicator : public QWidget
{
    Q_OBJECT

public:
    static constexpr int ShowSeconds = 3;
    static constexpr int FadeMilliseconds = 1000;

    explicit PDFPageIndicator(QWidget *parent = nullptr);
    ~PDFPageIndicator() override;

    FDPDFView *pdfView() const { return m_pdfView; }
    // Follows the view's page changes from now on; starts invisible.
    void setPDFView(FDPDFView *view);

    // "3 / 10"; empty without a document.
    QString text() const;
    double alphaValue() const;
    bool isMouseInside() const { return m_isMouseInside; }
    bool isTimerActive() const { return m_timer.isActive(); }

    void onPageChanged();
    void onTimeOut();
    QSize sizeHint() const override;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void animateAlpha(double alpha, int milliseconds);

    QPointer<FDPDFView> m_pdfView;
    QTimer m_timer;
    bool m_isMouseInside = false;
    QGraphicsOpacityEffect *m_opacity = nullptr;
    QPointer<QPropertyAnimation> m_animation;
};
