#pragma once

// The zoom popover of the main toolbar: the present zoom as text, five fixed steps with the
// exact one marked, zoom in and out, and the fit-to-width and fit-to-page rules with a mark for
// the one in force. It follows the view's zoom only while it is open. Main thread only.

#include <QPointer>
#include <QWidget>

class FDPDFView;
class PDFContents;
class QLabel;
class QToolButton;

class PDFZoomPicker : public QWidget
{
    Q_OBJECT

public:
    static PDFZoomPicker &shared();
    // "123%": the scale times 100, truncated.
    static QString zoomText(double scaleFactor);

    void setContents(PDFContents *contents) { m_contents = contents; }
    // Starts following the selected view's zoom and shows it.
    void onWillShow();
    // Stops following.
    void onWillClose();
    void onPDFViewScaleChanged();

    void onZoom50WithButton() { zoomTo(0.5); }
    void onZoom75WithButton() { zoomTo(0.75); }
    void onZoom100WithButton() { zoomTo(1.0); }
    void onZoom150WithButton() { zoomTo(1.5); }
    void onZoom200WithButton() { zoomTo(2.0); }
    void onZoomInButton();
    void onZoomOutWithButton();
    void onZoomFitWidthWithButton();
    void onZoomFitPageWithButton();

    QLabel *zoomTextField() const { return m_zoomTextField; }
    // The step buttons of 0.5, 0.75, 1.0, 1.5 and 2.0, in that order.
    const QList<QToolButton *> &stepButtons() const { return m_stepButtons; }
    QToolButton *zoomInButton() const { return m_zoomInButton; }
    QToolButton *zoomOutButton() const { return m_zoomOutButton; }
    QToolButton *zoomFitWidthButton() const { return m_zoomFitWidthButton; }
    QToolButton *zoomFitPageButton() const { return m_zoomFitPageButton; }
    QLabel *zoomFitWidthIndicatorImgView() const { return m_zoomFitWidthIndicatorImgView; }
    QLabel *zoomFitPageIndicatorImgView() const { return m_zoomFitPageIndicatorImgView; }
    // Whether an indicator shows the marked picture.
    static bool isMarked(const QLabel *indicator);

private:
    PDFZoomPicker();
    FDPDFView *view() const;
    void zoomTo(double step);
    void refreshPictures();

    QPointer<PDFContents> m_contents;
    QPointer<FDPDFView> m_listenedView;
    QLabel *m_zoomTextField = nullptr;
    QList<QToolButton *> m_stepButtons;
    QToolButton *m_zoomInButton = nullptr;
    QToolButton *m_zoomOutButton = nullptr;
    QToolButton *m_zoomFitWidthButton = nullptr;
    QLabel *m_zoomFitWidthIndicatorImgView = nullptr;
    QToolButton *m_zoomFitPageButton = nullptr;
    QLabel *m_zoomFitPageIndicatorImgView = nullptr;
};
