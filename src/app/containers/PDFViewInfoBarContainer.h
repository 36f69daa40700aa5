#pragma once

// The bar above a view of a split tab: the "A" or "B" marker of the view (bright while it is the
// tab's selected view), the view's title, and a button that opens another document in the view.
// A PDF dropped on the secondary view's bar opens there too. Its container gives it no height
// while the tab is not split. Main thread only.

#include <QPointer>
#include <QWidget>

class FDPDFView;
class PDFContents;
class QLabel;
class QPushButton;

class PDFViewInfoBarContainer : public QWidget
{
    Q_OBJECT

public:
    static constexpr int barHeight = 24;

    explicit PDFViewInfoBarContainer(PDFContents *contents, QWidget *parent = nullptr);
    ~PDFViewInfoBarContainer() override;

    PDFContents *contents() const { return m_contents; }
    FDPDFView *pdfView() const { return m_pdfView; }
    // The view the bar speaks of; it changes when the tab swaps its views.
    void setPDFView(FDPDFView *view);

    QLabel *titleTextField() const { return m_titleTextField; }
    QLabel *indicatorImgView() const { return m_indicatorImgView; }
    QPushButton *changeButton() const { return m_changeButton; }
    // Whether the marker shows the view as the tab's selected one.
    bool isIndicatorOn() const { return m_isIndicatorOn; }

    void onViewInit();
    // Marker, title and colours from the tab's present state.
    void update_();
    void onChangeButtonClickedWithButton();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QUrl droppedPDF(const class QMimeData *mime) const;
    void openInView(const QUrl &url);
    void drawMarker();

    QPointer<PDFContents> m_contents;
    QPointer<FDPDFView> m_pdfView;
    QLabel *m_titleTextField = nullptr;
    QLabel *m_indicatorImgView = nullptr;
    QPushButton *m_changeButton = nullptr;
    bool m_isIndicatorOn = false;
    bool m_isPrimary = false;
    bool m_markerStale = true; // the marker waits for the bar to unfold
};
