#include "TabStripView.h"

#include "QKDrawing.h"
#include "QKThemeProvider.h"
#include "TabContents.h"
#include "TabStripAccessible.h"
#include "TabStripModel.h"
#include "TabStripPainter.h"

#include <kit/base/NotificationCenter.h>

#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QVariantAnimation>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

// Sizes in device-independent pixels.
constexpr int kStripHeight = 36;
constexpr double kTabTop = 6;
constexpr double kStripMargin = 8;
constexpr double kTabMaxWidth = 232;
// Tabs shrink to share the strip down to this width; with more tabs than fit, the strip scrolls.
constexpr double kTabMinWidth = 72;
// Below this width only the selected tab keeps its close button.
constexpr double kTabCloseButtonMinWidth = 96;
constexpr double kFootRadius = TabStripPainter::footRadius;
constexpr double kCloseButtonSize = 18;
constexpr double kCloseButtonInset = 8;
constexpr double kNewTabButtonSize = 28;
constexpr double kNewTabButtonGap = 6;
constexpr int kSlideDurationMs = 150;
// A dragged tab let go this far above or below the strip leaves it.
constexpr int kDetachDistance = 24;

} // namespace

TabStripView::TabStripView(TabStripModel *model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
{
    setObjectName(QStringLiteral("TabStripView"));
    TabStripAccessible::registerFactory();
    setFixedHeight(kStripHeight);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_slide = new QVariantAnimation(this);
    m_slide->setStartValue(0.0);
    m_slide->setEndValue(1.0);
    m_slide->setDuration(kSlideDurationMs);
    m_slide->setEasingCurve(QEasingCurve::OutCubic);
    connect(m_slide, &QVariantAnimation::valueChanged, this, [this] { update(); });
    connect(m_slide, &QVariantAnimation::finished, this, [this] { m_slideFrom.clear(); });
    if (m_model)
        m_model->addObserver(this);
    NotificationCenter::qkCenter().addObserver(this, QKThemeProvider::QKThemeDidChangeNotification,
        nullptr, [this](const Notification &) { update(); });
}

TabStripView::~TabStripView()
{
    if (m_model)
        m_model->removeObserver(this);
}

QSize TabStripView::sizeHint() const
{
    return { 480, kStripHeight };
}

TabStripView::Layout TabStripView::layout() const
{
    Layout result;
    result.left = kStripMargin;
    result.visibleWidth = std::max(
        0.0, width() - 2 * kStripMargin - kNewTabButtonGap - kNewTabButtonSize - kFootRadius);
    const int count = m_model ? m_model->count() : 0;
    if (count == 0)
        return result;
    result.tabWidth
        = std::clamp(std::floor(result.visibleWidth / count), kTabMinWidth, kTabMaxWidth);
    result.maxScroll = std::max(0.0, count * result.tabWidth - result.visibleWidth);
    result.left -= std::clamp(m_scrollX, 0.0, result.maxScroll);
    return result;
}

QRectF TabStripView::tabRectF(int index) const
{
    if (!m_model || !m_model->containsIndex(index))
        return {};
    const Layout l = layout();
    return { l.left + index * l.tabWidth, kTabTop, l.tabWidth, height() - kTabTop };
}

QRect TabStripView::tabRectAt(int index) const
{
    return tabRectF(index).toAlignedRect();
}

QRectF TabStripView::drawnTabRect(int index) const
{
    QRectF rect = tabRectF(index);
    if (const TabContents *contents = m_model ? m_model->getTabContentsAtIndex(index) : nullptr) {
        const auto offset = m_slideFrom.constFind(contents);
        if (offset != m_slideFrom.constEnd())
            rect.translate(*offset * (1.0 - m_slide->currentValue().toDouble()), 0);
    }
    if (m_dragging && m_pressContents && m_model->getTabContentsAtIndex(index) == m_pressContents) {
        const Layout l = layout();
        const double maxX = l.left + (m_model->count() - 1) * l.tabWidth;
        rect.moveLeft(std::clamp(m_dragX, l.left, maxX));
    }
    return rect;
}

QRectF TabStripView::closeButtonRectIn(const QRectF &tabRect) const
{
    return { tabRect.right() - kCloseButtonInset - kCloseButtonSize,
        tabRect.center().y() - kCloseButtonSize / 2, kCloseButtonSize, kCloseButtonSize };
}

bool TabStripView::showsCloseButton(int index) const
{
    return layout().tabWidth >= kTabCloseButtonMinWidth
        || (m_model && index == m_model->selectedIndex());
}

QRect TabStripView::closeButtonRectAt(int index) const
{
    if (!m_model || !m_model->containsIndex(index) || !showsCloseButton(index))
        return {};
    return closeButtonRectIn(drawnTabRect(index)).toAlignedRect();
}

QRect TabStripView::newTabButtonRect() const
{
    const int count = m_model ? m_model->count() : 0;
    const Layout l = layout();
    double tabsRight = std::min(l.left + count * l.tabWidth, kStripMargin + l.visibleWidth);
    // While tabs glide back after a close, the button keeps clear of them.
    for (int i = 0; !m_slideFrom.isEmpty() && i < count; ++i) {
        if (!(m_dragging && m_model->getTabContentsAtIndex(i) == m_pressContents))
            tabsRight = std::max(tabsRight, drawnTabRect(i).right());
    }
    const double x = tabsRight + kNewTabButtonGap + (count > 0 ? kFootRadius : 0);
    const double y = kTabTop + (height() - kTabTop - kNewTabButtonSize) / 2;
    return QRectF(x, y, kNewTabButtonSize, kNewTabButtonSize).toAlignedRect();
}

int TabStripView::tabIndexAt(QPoint point) const
{
    if (!m_model)
        return -1;
    // Tabs scrolled out of sight are not under the pointer.
    const Layout l = layout();
    if (l.maxScroll > 0
        && (point.x() < kStripMargin || point.x() > kStripMargin + l.visibleWidth + kFootRadius))
        return -1;
    for (int i = 0; i < m_model->count(); ++i) {
        if (drawnTabRect(i).contains(point))
            return i;
    }
    return -1;
}

void TabStripView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QKTheme &t = QKThemeProvider::sharedInstance().current();
    painter.fillRect(rect(), t.color(QKTheme::TabStripBackground));

    const double lineWidth = qk_lineWidth(this);
    painter.setPen(t.tabStripBottomLineColor());
    qk_strokeHoriLine(painter, 0, width(), height() - lineWidth / 2, lineWidth);

    if (m_model) {
        painter.save();
        const Layout l = layout();
        if (l.maxScroll > 0)
            painter.setClipRect(
                QRectF(0, 0, kStripMargin + l.visibleWidth + kFootRadius, height()));
        const int selected = m_model->selectedIndex();
        // Unselected tabs first, then the selected one over its neighbours' separators, and a
        // dragged tab above all.
        const TabStripPainter tabs(painter, *this);
        int dragged = -1;
        for (int i = 0; i < m_model->count(); ++i) {
            if (m_dragging && m_model->getTabContentsAtIndex(i) == m_pressContents)
                dragged = i;
            else if (i != selected)
                tabs.paintTab(tabToPaint(i, drawnTabRect(i)));
        }
        if (selected >= 0 && selected != dragged)
            tabs.paintTab(tabToPaint(selected, drawnTabRect(selected)));
        if (dragged >= 0)
            tabs.paintTab(tabToPaint(dragged, drawnTabRect(dragged)));
        painter.restore();
        m_shownLefts.clear();
        for (int i = 0; i < m_model->count(); ++i)
            m_shownLefts.insert(m_model->getTabContentsAtIndex(i), drawnTabRect(i).left());
    }
    TabStripPainter(painter, *this)
        .paintNewTabButton(newTabButtonRect(), m_hoverNewTab, m_pressedNewTab);
}

TabStripPainter::Tab TabStripView::tabToPaint(int index, const QRectF &rect) const
{
    TabStripPainter::Tab tab;
    tab.rect = rect;
    tab.title = m_model->getTabContentsAtIndex(index)->title();
    tab.selected = index == m_model->selectedIndex();
    const bool hovered = index == m_hoverIndex && !m_dragging;
    tab.highlighted
        = hovered || (m_dragging && m_model->getTabContentsAtIndex(index) == m_pressContents);
    const int next = index + 1;
    tab.separator
        = next < m_model->count() && next != m_model->selectedIndex() && next != m_hoverIndex;
    tab.closeShown = showsCloseButton(index);
    tab.closeRect = closeButtonRectIn(rect);
    tab.closeHovered = hovered && m_hoverClose;
    tab.closePressed
        = tab.closeHovered && m_pressedCloseContents == m_model->getTabContentsAtIndex(index);
    return tab;
}

bool TabStripView::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && m_model) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const int index = tabIndexAt(help->pos());
        QString text;
        if (newTabButtonRect().contains(help->pos()))
            text = tr("New Tab");
        else if (index >= 0 && closeButtonRectAt(index).contains(help->pos()))
            text = tr("Close Tab");
        else if (index >= 0)
            text = m_model->getTabContentsAtIndex(index)->title();
        if (text.isEmpty())
            QToolTip::hideText();
        else
            QToolTip::showText(help->globalPos(), text, this);
        return true;
    }
    return QWidget::event(event);
}

void TabStripView::mousePressEvent(QMouseEvent *event)
{
    if (!m_model)
        return;
    const QPoint point = event->position().toPoint();
    const int index = tabIndexAt(point);
    if (event->button() == Qt::MiddleButton) {
        m_middlePressContents = m_model->getTabContentsAtIndex(index);
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    if (newTabButtonRect().contains(point)) {
        m_pressedNewTab = true;
        update();
        return;
    }
    if (index < 0)
        return;
    if (closeButtonRectAt(index).contains(point)) {
        m_pressedCloseContents = m_model->getTabContentsAtIndex(index);
        update();
        return;
    }
    m_pressContents = m_model->getTabContentsAtIndex(index);
    m_pressPoint = point;
    m_grabOffset = point.x() - tabRectF(index).left();
    m_model->selectTabContentsAt(index, true);
}

void TabStripView::mouseDoubleClickEvent(QMouseEvent *event)
{
    // A double click on the free part of the strip opens a tab, as the new-tab button does.
    const QPoint point = event->position().toPoint();
    if (event->button() == Qt::LeftButton && tabIndexAt(point) < 0
        && !newTabButtonRect().contains(point)) {
        emit newTabButtonClicked();
        return;
    }
    mousePressEvent(event);
}

void TabStripView::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint point = event->position().toPoint();
    if (m_pressContents && (event->buttons() & Qt::LeftButton)) {
        if (!m_dragging
            && (point - m_pressPoint).manhattanLength() >= QApplication::startDragDistance()) {
            m_dragging = true;
        }
        if (m_dragging) {
            dragTo(point.x());
            return;
        }
    }
    updateHover(point);
}

void TabStripView::dragTo(double pointerX)
{
    const int from = m_model->getIndexOfTabContents(m_pressContents);
    if (from < 0) {
        endDrag();
        return;
    }
    m_dragX = pointerX - m_grabOffset;
    const Layout l = layout();
    // The dragged tab takes the place its centre is over.
    const double centre = m_dragX + l.tabWidth / 2;
    const int to
        = std::clamp(int(std::floor((centre - l.left) / l.tabWidth)), 0, m_model->count() - 1);
    if (to != from)
        m_model->moveTabContentsAt(from, to, false);
    update();
}

void TabStripView::endDrag()
{
    m_dragging = false;
    m_pressContents = nullptr;
    update();
}

void TabStripView::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_model)
        return;
    const QPoint point = event->position().toPoint();
    const int index = tabIndexAt(point);
    if (event->button() == Qt::MiddleButton) {
        TabContents *const pressed = m_middlePressContents;
        m_middlePressContents = nullptr;
        if (pressed && m_model->getTabContentsAtIndex(index) == pressed)
            closeTab(pressed);
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    if (m_pressedNewTab) {
        m_pressedNewTab = false;
        update();
        if (newTabButtonRect().contains(point))
            emit newTabButtonClicked();
        return;
    }
    if (m_pressedCloseContents) {
        TabContents *const pressed = m_pressedCloseContents;
        m_pressedCloseContents = nullptr;
        update();
        if (m_model->getTabContentsAtIndex(index) == pressed
            && closeButtonRectAt(index).contains(point)) {
            closeTab(pressed);
        }
        return;
    }
    if (m_pressContents) {
        const QPointer<TabContents> dragged = m_dragging ? m_pressContents : nullptr;
        endDrag();
        // Let go away from the strip: the window moves the tab to another window or a new one.
        if (dragged && !rect().adjusted(0, -kDetachDistance, 0, kDetachDistance).contains(point)) {
            emit tabDraggedOut(dragged, event->globalPosition().toPoint());
            return;
        }
    }
    updateHover(point);
}

int TabStripView::insertionIndexAt(QPoint point) const
{
    if (!m_model || m_model->count() == 0)
        return 0;
    const Layout l = layout();
    const int index = int(std::floor((point.x() - l.left + l.tabWidth / 2) / l.tabWidth));
    return std::clamp(index, 0, m_model->count());
}

void TabStripView::wheelEvent(QWheelEvent *event)
{
    const Layout l = layout();
    if (l.maxScroll <= 0) {
        QWidget::wheelEvent(event);
        return;
    }
    const QPoint delta = event->angleDelta();
    const int steps = std::abs(delta.x()) > std::abs(delta.y()) ? delta.x() : delta.y();
    // One notch moves by about half a tab.
    setScrollOffset(m_scrollX - steps / 120.0 * l.tabWidth / 2);
    event->accept();
}

double TabStripView::scrollOffset() const
{
    return std::clamp(m_scrollX, 0.0, layout().maxScroll);
}

void TabStripView::setScrollOffset(double offset)
{
    const double clamped = std::clamp(offset, 0.0, layout().maxScroll);
    if (clamped == m_scrollX)
        return;
    m_scrollX = clamped;
    m_shownLefts.clear();
    updateHoverFromPointer();
    update();
}

void TabStripView::scrollToShow(int index)
{
    if (!m_model || !m_model->containsIndex(index))
        return;
    const Layout l = layout();
    const double scroll = std::clamp(m_scrollX, 0.0, l.maxScroll);
    const double tabLeft = index * l.tabWidth;
    if (tabLeft < scroll)
        setScrollOffset(tabLeft);
    else if (tabLeft + l.tabWidth > scroll + l.visibleWidth)
        setScrollOffset(tabLeft + l.tabWidth - l.visibleWidth);
}

void TabStripView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_model)
        scrollToShow(m_model->selectedIndex());
}

void TabStripView::closeTab(TabContents *contents)
{
    const int index = m_model->getIndexOfTabContents(contents);
    if (index >= 0)
        m_model->closeTabContentsAtIndex(index, TabStripModel::CloseUserGesture);
    // The window may be gone now that its last tab closed; this widget is still alive (deletion
    // is deferred), so refreshing the hover state is safe.
    updateHoverFromPointer();
}

void TabStripView::updateHoverFromPointer()
{
    // Asking where the pointer is waits for the display server: only a strip under the pointer
    // asks, which a window being made is not.
    updateHover(isVisible() && underMouse() ? mapFromGlobal(QCursor::pos()) : QPoint(-1, -1));
}

void TabStripView::updateHover(QPoint point)
{
    const bool inside = rect().contains(point);
    const int index = inside ? tabIndexAt(point) : -1;
    const bool onClose = index >= 0 && closeButtonRectAt(index).contains(point);
    const bool onNewTab = inside && newTabButtonRect().contains(point);
    if (index != m_hoverIndex || onClose != m_hoverClose || onNewTab != m_hoverNewTab) {
        m_hoverIndex = index;
        m_hoverClose = onClose;
        m_hoverNewTab = onNewTab;
        update();
    }
}

void TabStripView::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    m_hoverIndex = -1;
    m_hoverClose = false;
    m_hoverNewTab = false;
    update();
}

void TabStripView::slideFromShownPlaces()
{
    // Each tab starts where it was last drawn and glides to its new place; the dragged tab stays
    // under the pointer.
    QHash<const TabContents *, double> from;
    for (int i = 0; m_model && i < m_model->count(); ++i) {
        const TabContents *contents = m_model->getTabContentsAtIndex(i);
        const auto shown = m_shownLefts.constFind(contents);
        if (shown == m_shownLefts.constEnd() || (m_dragging && contents == m_pressContents))
            continue;
        const double distance = *shown - tabRectF(i).left();
        if (std::abs(distance) >= 0.5)
            from.insert(contents, distance);
    }
    m_slide->stop();
    m_slideFrom = from;
    if (!m_slideFrom.isEmpty() && isVisible())
        m_slide->start();
    else
        m_slideFrom.clear();
}

void TabStripView::tabInsertedAt(TabContents *, int index, bool foreground)
{
    if (foreground)
        scrollToShow(index);
    update();
}

void TabStripView::tabDetachedAt(TabContents *contents, int)
{
    if (contents == m_pressContents)
        endDrag();
    m_shownLefts.remove(contents);
    slideFromShownPlaces();
    m_hoverIndex = -1;
    update();
}

void TabStripView::tabSelectedAt(TabContents *, TabContents *, int index, bool)
{
    scrollToShow(index);
    update();
}

void TabStripView::tabMoved(TabContents *, int, int)
{
    slideFromShownPlaces();
    update();
}

void TabStripView::tabChangedAt(TabContents *, int, TabChangeType)
{
    update();
}

void TabStripView::tabReplacedAt(TabContents *oldContents, TabContents *, int)
{
    if (oldContents == m_pressContents)
        endDrag();
    update();
}

void TabStripView::tabStripEmpty()
{
    update();
}

void TabStripView::tabStripModelDeleted(TabStripModel *)
{
    m_model = nullptr;
    m_slide->stop();
    m_slideFrom.clear();
    m_shownLefts.clear();
    m_dragging = false;
    update();
}
