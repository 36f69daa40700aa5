#include "PDFViewContainer.h"

#include "PDFPageIndicator.h"
#include "PDFViewInfoBarContainer.h"
#include "PageNavigatorController.h"

#include <app/PDFContents.h>
#include <kit/base/NotificationCenter.h>
#include <view/FDPDFView.h>

#include <QChildEvent>
#include <QResizeEvent>
#include <QVBoxLayout>

namespace {

constexpr int IndicatorBottomMargin = 24;

QVBoxLayout *fillingLayout(QWidget *widget)
{
    auto *const layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return layout;
}

} // namespace

PDFViewContainer::PDFViewContainer(PDFContents *contents, QWidget *parent)
    : QWidget(parent)
{
    m_contents = contents;
    m_infoBarContainer = new PDFViewInfoBarContainer(contents);
    m_infoBarContainer->setFixedHeight(0);
    // The tab adds its view below the bar, filling the rest.
    fillingLayout(this)->addWidget(m_infoBarContainer);
    m_pageIndicator = new PDFPageIndicator(this);
}

PDFViewContainer::~PDFViewContainer()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

FDPDFView *PDFViewContainer::pdfView() const
{
    return findChild<FDPDFView *>(QString(), Qt::FindDirectChildrenOnly);
}

void PDFViewContainer::onViewInit()
{
    if (m_hasInited)
        return;
    m_hasInited = true;
    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.addObserver(this, PDFContents::SplitModeDidChangeNotification, m_contents.data(),
        [this](const Notification &) { onSplitModeChanged(); });
    center.addObserver(this, PDFContents::PDFViewsDidSwapNotification, m_contents.data(),
        [this](const Notification &) { onViewsMoved(); });
    center.addObserver(this, FDPDFView::PageNavigatorVisibilityDidChangeNotification, nullptr,
        [this](const Notification &notification) {
            if (notification.sender == static_cast<const void *>(pdfView()))
                onPageNavigatorVisibilityDidChange();
        });
    m_infoBarContainer->onViewInit();
    onViewsMoved();
    onSplitModeChanged();
}

void PDFViewContainer::onViewsMoved()
{
    FDPDFView *const view = pdfView();
    m_infoBarContainer->setPDFView(view);
    m_pageIndicator->setPDFView(view);
    if (m_pageNavController && m_pageNavController->pdfView() != view) {
        m_pageNavController->hide();
        m_pageNavController->deleteLater();
        m_pageNavController = nullptr;
    }
    placeOverlays();
}

void PDFViewContainer::onSplitModeChanged()
{
    const bool split = m_contents && m_contents->splitMode() != PDFSplitViewMode::none;
    // The bar shows only where there are two views to tell apart.
    m_infoBarContainer->setFixedHeight(
        split && !isCollapsed() ? PDFViewInfoBarContainer::barHeight : 0);
    if (!isPrimary())
        setVisible(!isCollapsed());
    m_infoBarContainer->update_();
}

void PDFViewContainer::onPageNavigatorVisibilityDidChange()
{
    if (!isPrimary() && isCollapsed())
        return;
    FDPDFView *const view = pdfView();
    if (!view)
        return;
    if (!view->isPageNavigatorHidden() && !m_pageNavController) {
        m_pageNavController = new PageNavigatorController(view, this);
        m_pageIndicator->hide();
        m_pageNavController->show();
        m_pageNavController->raise();
        placeOverlays();
    } else if (view->isPageNavigatorHidden() && m_pageNavController) {
        // The field may be what is closing it: it goes after this event.
        m_pageNavController->hide();
        m_pageNavController->deleteLater();
        m_pageNavController = nullptr;
        m_pageIndicator->show();
    }
}

void PDFViewContainer::childEvent(QChildEvent *event)
{
    QWidget::childEvent(event);
    // A view arrives or leaves as the tab places and swaps its views.
    if (m_hasInited
        && (event->type() == QEvent::ChildAdded || event->type() == QEvent::ChildRemoved)
        && event->child()->isWidgetType())
        onViewsMoved();
}

void PDFViewContainer::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeOverlays();
}

void PDFViewContainer::placeOverlays()
{
    const QRect area = rect();
    for (QWidget *const overlay :
        { static_cast<QWidget *>(m_pageIndicator), static_cast<QWidget *>(m_pageNavController) }) {
        if (!overlay)
            continue;
        const QSize size = overlay->sizeHint();
        overlay->setGeometry(QRect(QPoint(area.center().x() - size.width() / 2,
                                       area.bottom() - IndicatorBottomMargin - size.height()),
            size));
        overlay->raise();
    }
}
