#pragma once

// The place of one document view in a tab: the information bar above the view, the view itself,
// and over it the page indicator or, while it shows, the page navigator. Each subclass is one of
// the three places and decides from the tab's split mode whether it shows and whether its bar
// has any height. Main thread only.

#include <QPointer>
#include <QWidget>

#include <memory>

class FDPDFView;
#include "PageNavigatorController.h"
class PDFContents;
class PDFPageIndicator;
class PDFViewInfoBarContainer;

class PDFViewContainer : public QWidget
{
    Q_OBJECT

public:
    explicit PDFViewContainer(PDFContents *contents, QWidget *parent = nullptr);
    ~PDFViewContainer() override;

    PDFContents *contents() const { return m_contents; }
    // The view is a direct child, below the bar; the tab moves views between containers.
    PDFViewInfoBarContainer *infoBarContainer() const { return m_infoBarContainer; }
    PDFPageIndicator *pageIndicator() const { return m_pageIndicator; }
    PageNavigatorController *pageNavController() const { return m_pageNavController; }

    // Nothing to tell this place's view from another (the first place), or not this place's
    // split (the others).
    virtual bool isCollapsed() const = 0;
    virtual bool isVertical() const = 0;
    virtual bool isPrimary() const = 0;
    // The view in this place now.
    FDPDFView *pdfView() const;

    // Starts following the tab; the tab calls this once its views are placed.
    void onViewInit();
    void onSplitModeChanged();
    void onPageNavigatorVisibilityDidChange();

protected:
    void childEvent(QChildEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void onViewsMoved();
    void placeOverlays();

    QPointer<PDFContents> m_contents;
    PDFViewInfoBarContainer *m_infoBarContainer = nullptr;
    PDFPageIndicator *m_pageIndicator = nullptr;
    QPointer<PageNavigatorController> m_pageNavController;
    bool m_hasInited = false;
};
