#include "PDFView.h"
#include "PDFViewDelegate.h"

#include <kit/base/NotificationCenter.h>

#include <QScrollBar>

#include <algorithm>
#include <cmath>

// Scale factors, zoom steps and automatic scaling.

const std::vector<double> &PDFView::zoomSteps()
{
    static const std::vector<double> steps { 0.1, 0.25, 0.33, 0.5, 0.67, 0.75, 1.0, 1.25, 1.5, 2.0,
        3.0, 4.0, 6.0, 8.0, 10.0 };
    return steps;
}

void PDFView::setScaleFactor(double scale)
{
    setScaleFactor(scale, QPointF(viewport()->rect().center()));
}

void PDFView::setScaleFactor(double scale, const QPointF &viewPoint)
{
    setScaleInternal(scale, viewPoint, false);
}

void PDFView::setScaleInternal(double scale, const QPointF &viewPoint, bool fromAutoScale)
{
    if (!fromAutoScale)
        m_autoScales = false;
    if (!std::isfinite(scale) || scale <= 0)
        return;
    if (m_delegate)
        scale = m_delegate->PDFViewWillChangeScaleFactor(this, scale);
    scale = std::clamp(scale, m_minScale, m_maxScale);
    if (std::abs(scale - m_scale) < 1e-9)
        return;
    const auto anchorPage = pageForPoint(viewPoint, true);
    const int anchor = anchorPage ? indexOfPage(anchorPage.get()) : -1;
    const QPointF pagePoint = pagePointForView(anchor, viewPoint);
    m_scale = scale;
    updateScrollBars();
    ensureVisiblePageSizes();
    if (anchor >= 0) {
        const QPointF moved = viewPointForPage(anchor, pagePoint) - viewPoint;
        horizontalScrollBar()->setValue(
            horizontalScrollBar()->value() + int(std::round(moved.x())));
        verticalScrollBar()->setValue(verticalScrollBar()->value() + int(std::round(moved.y())));
    }
    viewport()->update();
    updatePageViews();
    scheduleRendering();
    NotificationCenter::defaultCenter().post(ScaleChangedNotification, this);
    noteViewChanged();
}

void PDFView::setMinScaleFactor(double scale)
{
    m_minScale = std::clamp(scale, 0.01, m_maxScale);
    if (m_scale < m_minScale)
        setScaleInternal(m_minScale, QPointF(viewport()->rect().center()), m_autoScales);
}

void PDFView::setMaxScaleFactor(double scale)
{
    m_maxScale = std::max(scale, m_minScale);
    if (m_scale > m_maxScale)
        setScaleInternal(m_maxScale, QPointF(viewport()->rect().center()), m_autoScales);
}

void PDFView::setAutoScales(bool autoScales)
{
    m_autoScales = autoScales;
    if (autoScales)
        applyAutoScale();
}

void PDFView::applyAutoScale()
{
    // The current page's row fills the width.
    const auto current = currentPage();
    const int index = current ? indexOfPage(current.get()) : -1;
    if (index < 0)
        return;
    double width = 0;
    for (int i = m_layout.firstPageOfRow(index); i <= m_layout.lastPageOfRow(index); ++i)
        width += m_layout.pageSize(i).width() + 2 * m_layout.margin();
    if (width <= 0)
        return;
    // Room for a vertical scroll bar is always left, so that its coming and going cannot
    // change the fit.
    const double available
        = maximumViewportSize().width() - verticalScrollBar()->sizeHint().width();
    setScaleInternal(available / width, QPointF(0, 0), true);
}

bool PDFView::canZoomIn() const
{
    return m_scale < m_maxScale - 1e-9;
}

bool PDFView::canZoomOut() const
{
    return m_scale > m_minScale + 1e-9;
}

void PDFView::zoomIn()
{
    const auto &steps = zoomSteps();
    const auto next = std::upper_bound(steps.begin(), steps.end(), m_scale * 1.001);
    setScaleFactor(next == steps.end() ? m_maxScale : std::min(*next, m_maxScale));
}

void PDFView::zoomOut()
{
    const auto &steps = zoomSteps();
    const auto next = std::lower_bound(steps.begin(), steps.end(), m_scale / 1.001);
    setScaleFactor(next == steps.begin() ? m_minScale : std::max(*std::prev(next), m_minScale));
}
