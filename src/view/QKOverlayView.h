#pragma once

// The transparent layer over one page of an FDPDFView: it draws the annotations the application
// draws itself, the ring and handles of the selected annotation, the ink stroke in progress, the
// bookmark ribbon with its hover preview, and the area selection with the dimming around it.
// It never takes mouse presses. Main thread only.

#include <QPointer>
#include <QRectF>
#include <QTransform>
#include <QWidget>

#include <memory>
#include <unordered_map>

class FDPDFView;
struct Notification;
class PDFAnnotation;
class PDFPage;

class QKOverlayView : public QWidget
{
public:
    // Covers pageView (the kit's view of the page) in front, following its size. Hides the
    // page's overlay-drawn annotations from engine drawing; nothing is written to the file.
    QKOverlayView(const std::shared_ptr<PDFPage> &page, FDPDFView *pdfView, QWidget *pageView);
    ~QKOverlayView() override;

    std::shared_ptr<PDFPage> page() const { return m_page.lock(); }
    // Whether the pointer, as the view's own mouse moves tell, is in the ribbon's hot area.
    bool isMouseInBookmarkIndicatorHotArea() const { return m_isMouseInBookmarkIndicatorHotArea; }
    // Page space to this widget's coordinates.
    QTransform pageTransform() const;

    // Which annotations the engine draws: all but those this layer draws (a popup never).
    static void setDisplayFlag(PDFAnnotation &annotation);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void onAnnotationCUD(const Notification &notification, bool added);
    void onSelectedAnnotationChanged(const Notification &notification);
    void onPendingAnnInkChanged(const Notification &notification);
    void onBookmarkChanged(const Notification &notification);
    bool isThisPage(const QVariant &page) const;
    // The widget area an annotation covers with its ring and handles.
    QRect areaForAnnotation(const PDFAnnotation &annotation) const;
    void updateHotArea(const QPointF &viewportPoint);
    QRectF hotAreaInWidget() const;
    // Drawing (QKOverlayView+Drawing.cpp).
    void drawAnnotation(QPainter &painter, const PDFAnnotation &annotation) const;
    void drawNote(QPainter &painter, const PDFAnnotation &annotation) const;
    void drawFocusRing(QPainter &painter, const PDFAnnotation &annotation) const;
    void drawHandles(QPainter &painter, const QRectF &rect, double size) const;
    void drawPendingInk(QPainter &painter) const;
    void drawBookmarkIndicator(QPainter &painter) const;
    void drawAreaSelection(QPainter &painter) const;
    // Page units of one device-independent pixel.
    double onePixel() const;

    std::weak_ptr<PDFPage> m_page;
    QPointer<FDPDFView> m_pdfView;
    // Events' targets are told by identity alone: reading m_pdfView while the view is being
    // destroyed (already only a QWidget) is an invalid downcast.
    QPointer<QWidget> m_viewport;
    const QObject *m_viewportObject = nullptr;
    bool m_isMouseInBookmarkIndicatorHotArea = false;
    // Where each annotation was last covered, so that a change repaints its old place too.
    std::unordered_map<const PDFAnnotation *, QRect> m_drawnAreas;
    // Elements of the pending stroke already shown: a new point repaints its segment only.
    int m_inkElementsShown = 0;
};
