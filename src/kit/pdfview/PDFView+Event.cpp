// PDFView: pointer, wheel and keys; text selection and links.

#include "PDFView.h"
#include "PDFViewDelegate.h"

#include <kit/base/Geometry.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/Pasteboard.h>
#include <kit/base/Workspace.h>
#include <kit/engine/PDFActionGoTo.h>
#include <kit/engine/PDFActionRemoteGoTo.h>
#include <kit/engine/PDFActionURL.h>
#include <kit/engine/PDFAnnotationLink.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QNativeGestureEvent>
#include <QScrollBar>
#include <QStyleHints>
#include <QVariantAnimation>

#include <cmath>

std::shared_ptr<PDFAction> PDFView::linkActionAtPoint(
    const std::shared_ptr<PDFPage> &page, const QPointF &pagePoint) const
{
    if (!page)
        return nullptr;
    // The topmost link wins, as it does on screen.
    const auto &annotations = page->annotations();
    for (auto it = annotations.rbegin(); it != annotations.rend(); ++it) {
        const auto link = std::dynamic_pointer_cast<PDFAnnotationLink>(*it);
        if (link && Geometry::pointInRect(pagePoint, link->bounds())) {
            if (auto action = link->action())
                return action;
        }
    }
    return nullptr;
}

int PDFView::areaOfInterestForMouse(const QMouseEvent *event) const
{
    return event ? areaOfInterestForPoint(event->position()) : NoArea;
}

int PDFView::areaOfInterestForPoint(const QPointF &viewPoint) const
{
    const auto page = pageForPoint(viewPoint, false);
    if (!page)
        return NoArea;
    int area = PageArea;
    const QPointF point = convertPointToPage(viewPoint, page);
    if (linkActionAtPoint(page, point))
        area |= LinkArea;
    if (page->characterIndexAtPoint(point) >= 0)
        area |= TextArea;
    return area;
}

void PDFView::setCurrentSelection(const std::shared_ptr<PDFSelection> &selection, bool animate)
{
    const auto shown = selection && !selection->isEmpty() ? selection : nullptr;
    if (shown == m_selection && !animate)
        return;
    m_selection = shown;
    if (m_selectionAnimation)
        m_selectionAnimation->stop();
    m_selectionEmphasis = 0;
    if (animate && shown) {
        // A short pulse around the selection draws the eye to it.
        auto *animation = new QVariantAnimation(this);
        animation->setStartValue(1.0);
        animation->setEndValue(0.0);
        animation->setDuration(600);
        connect(animation, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
            m_selectionEmphasis = value.toDouble();
            viewport()->update();
        });
        m_selectionAnimation = animation;
        animation->start(QAbstractAnimation::DeleteWhenStopped);
    }
    viewport()->update();
    NotificationCenter::defaultCenter().post(SelectionChangedNotification, this);
}

void PDFView::clearSelection()
{
    m_selectionAnchorPage.reset();
    setCurrentSelection(nullptr);
}

void PDFView::selectAll()
{
    if (!m_document || m_pages.empty())
        return;
    auto selection = std::make_shared<PDFSelection>(m_document);
    for (int index = 0; index < int(m_pages.size()); ++index) {
        const auto page = pageAt(index);
        const int characters = page->numberOfCharacters();
        if (characters > 0)
            selection->addRange(page, PDFTextRange { 0, characters });
    }
    setCurrentSelection(selection);
    offerSelectionForMiddleClick();
}

void PDFView::copy()
{
    if (!m_selection || (m_document && !m_document->allowsCopying()))
        return;
    const QString text = m_selection->string();
    if (text.isEmpty())
        return;
    Pasteboard::general().clearContents();
    Pasteboard::general().setString(text);
}

void PDFView::offerSelectionForMiddleClick() const
{
    QClipboard *const clipboard = QGuiApplication::clipboard();
    if (!m_selection || !clipboard->supportsSelection()
        || (m_document && !m_document->allowsCopying()))
        return;
    const QString text = m_selection->string();
    if (!text.isEmpty())
        clipboard->setText(text, QClipboard::Selection);
}

void PDFView::performAction(const std::shared_ptr<PDFAction> &action)
{
    if (const auto goTo = std::dynamic_pointer_cast<PDFActionGoTo>(action)) {
        goToDestination(goTo->destination());
    } else if (const auto url = std::dynamic_pointer_cast<PDFActionURL>(action)) {
        Workspace::openURL(url->URL());
    } else if (const auto remote = std::dynamic_pointer_cast<PDFActionRemoteGoTo>(action)) {
        Workspace::openURL(remote->URL());
    }
}

void PDFView::activateLink(const std::shared_ptr<PDFAction> &action)
{
    const auto url = std::dynamic_pointer_cast<PDFActionURL>(action);
    if (url && m_delegate)
        m_delegate->PDFViewWillClickOnLink(this, url->URL());
    else
        performAction(action);
}

void PDFView::beginSelection(int index, const QPointF &pagePoint, bool extend)
{
    const auto page = pageAt(index);
    if (!extend || m_selectionAnchorPage.expired()) {
        m_selectionAnchorPage = page;
        m_selectionAnchorPoint = pagePoint;
        setCurrentSelection(nullptr);
    } else {
        extendSelectionTo(convertPointFromPage(pagePoint, page));
    }
    m_selecting = true;
}

void PDFView::extendSelectionTo(const QPointF &viewPoint)
{
    const auto anchor = m_selectionAnchorPage.lock();
    const auto page = pageForPoint(viewPoint, true);
    if (!anchor || !page || !m_document)
        return;
    const QPointF point = convertPointToPage(viewPoint, page);
    const auto selection = anchor == page
        ? page->selectionFromPointToPoint(m_selectionAnchorPoint, point)
        : m_document->selectionFromPage(anchor, m_selectionAnchorPoint, page, point);
    setCurrentSelection(selection);
}

void PDFView::updateCursor(const QPointF &viewPoint, Qt::KeyboardModifiers)
{
    const int area = areaOfInterestForPoint(viewPoint);
    if (area & LinkArea)
        viewport()->setCursor(Qt::PointingHandCursor);
    else if (area & TextArea)
        viewport()->setCursor(Qt::IBeamCursor);
    else
        viewport()->setCursor(Qt::ArrowCursor);
}

void PDFView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    m_pressPoint = event->position();
    m_pressedLink.reset();
    m_selecting = false;
    const auto page = pageForPoint(event->position(), true);
    if (!page)
        return;
    const int index = indexOfPage(page.get());
    const QPointF point = convertPointToPage(event->position(), page);
    // A press soon after a double click, where it was, is the third click: the line.
    const quint64 interval = quint64(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    if (m_lastDoubleClickTime != 0 && event->timestamp() - m_lastDoubleClickTime <= interval
        && (event->position() - m_lastDoubleClickPoint).manhattanLength() < 6) {
        m_lastDoubleClickTime = 0;
        setCurrentSelection(page->selectionForLineAtPoint(point));
        offerSelectionForMiddleClick();
        return;
    }
    if (pageForPoint(event->position(), false)) {
        if (auto link = linkActionAtPoint(page, point)) {
            m_pressedLink = std::move(link);
            return;
        }
    }
    beginSelection(index, point, event->modifiers() & Qt::ShiftModifier);
}

void PDFView::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        updateCursor(event->position(), event->modifiers());
        return;
    }
    if (m_pressedLink
        && (event->position() - m_pressPoint).manhattanLength()
            >= QApplication::startDragDistance()) {
        // Dragging off a link selects text from where the press was.
        m_pressedLink.reset();
        const auto page = pageForPoint(m_pressPoint, true);
        if (page)
            beginSelection(indexOfPage(page.get()), convertPointToPage(m_pressPoint, page), false);
    }
    if (!m_selecting)
        return;
    m_dragPoint = event->position();
    m_documentView.autoscroll(m_dragPoint);
    extendSelectionTo(m_dragPoint);
    // Outside the view the drag keeps scrolling while the pointer rests.
    if (!QRectF(viewport()->rect()).contains(m_dragPoint))
        m_autoscrollTimer.start();
    else
        m_autoscrollTimer.stop();
}

void PDFView::continueAutoscroll()
{
    if (!m_selecting) {
        m_autoscrollTimer.stop();
        return;
    }
    if (m_documentView.autoscroll(m_dragPoint))
        extendSelectionTo(m_dragPoint);
}

void PDFView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mouseReleaseEvent(event);
        return;
    }
    if (m_selecting)
        offerSelectionForMiddleClick();
    m_selecting = false;
    m_autoscrollTimer.stop();
    const auto link = std::move(m_pressedLink);
    m_pressedLink.reset();
    if (!link)
        return;
    const auto page = pageForPoint(event->position(), false);
    if (page && linkActionAtPoint(page, convertPointToPage(event->position(), page)))
        activateLink(link);
}

void PDFView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mouseDoubleClickEvent(event);
        return;
    }
    const auto page = pageForPoint(event->position(), false);
    if (!page)
        return;
    m_lastDoubleClickTime = event->timestamp();
    m_lastDoubleClickPoint = event->position();
    m_selecting = false;
    const QPointF point = convertPointToPage(event->position(), page);
    m_selectionAnchorPage = page;
    m_selectionAnchorPoint = point;
    setCurrentSelection(page->selectionForWordAtPoint(point));
    offerSelectionForMiddleClick();
}

void PDFView::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        // One notch of a wheel is a step of about a fifth.
        const double notches = event->angleDelta().y() / 120.0;
        setScaleFactor(m_scale * std::pow(1.2, notches), event->position());
        event->accept();
        return;
    }
    QScrollBar *bar = verticalScrollBar();
    const int before = bar->value();
    QAbstractScrollArea::wheelEvent(event);
    if (m_layout.isContinuous() || bar->value() != before || event->angleDelta().y() == 0)
        return;
    // At the end of a page shown alone, the wheel turns the page.
    if (event->angleDelta().y() < 0 && canGoToNextPage()) {
        goToNextPage();
    } else if (event->angleDelta().y() > 0 && canGoToPreviousPage()) {
        goToPreviousPage();
        bar->setValue(bar->maximum());
    }
}

bool PDFView::scrollByKey(int dy, bool pageStep)
{
    QScrollBar *bar = verticalScrollBar();
    const int step = pageStep ? std::max(bar->pageStep() - bar->singleStep(), bar->singleStep())
                              : bar->singleStep();
    const int before = bar->value();
    bar->setValue(before + dy * step);
    if (bar->value() != before || m_layout.isContinuous())
        return true;
    if (dy > 0 && canGoToNextPage()) {
        goToNextPage();
        return true;
    }
    if (dy < 0 && canGoToPreviousPage()) {
        goToPreviousPage();
        bar->setValue(bar->maximum());
        return true;
    }
    return false;
}

void PDFView::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy)) {
        copy();
        return;
    }
    if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
        return;
    }
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    QScrollBar *horizontal = horizontalScrollBar();
    switch (event->key()) {
    case Qt::Key_Down:
        scrollByKey(1, false);
        return;
    case Qt::Key_Up:
        scrollByKey(-1, false);
        return;
    case Qt::Key_PageDown:
        scrollByKey(1, true);
        return;
    case Qt::Key_PageUp:
        scrollByKey(-1, true);
        return;
    case Qt::Key_Space:
        scrollByKey(shift ? -1 : 1, true);
        return;
    case Qt::Key_Left:
    case Qt::Key_Right: {
        const int direction = event->key() == Qt::Key_Left ? -1 : 1;
        // Without room to scroll sideways, the arrows turn pages.
        if (horizontal->maximum() > 0)
            horizontal->setValue(horizontal->value() + direction * horizontal->singleStep());
        else if (direction < 0)
            goToPreviousPage();
        else
            goToNextPage();
        return;
    }
    case Qt::Key_Home:
        if (m_layout.isContinuous())
            verticalScrollBar()->setValue(0);
        else
            goToFirstPage();
        return;
    case Qt::Key_End:
        if (m_layout.isContinuous())
            verticalScrollBar()->setValue(verticalScrollBar()->maximum());
        else
            goToLastPage();
        return;
    default:
        QAbstractScrollArea::keyPressEvent(event);
    }
}

bool PDFView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::NativeGesture) {
        const auto *gesture = static_cast<QNativeGestureEvent *>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            setScaleFactor(m_scale * (1.0 + gesture->value()), gesture->position());
            return true;
        }
        if (gesture->gestureType() == Qt::SmartZoomNativeGesture) {
            setScaleFactor(std::abs(m_scale - 1.0) < 1e-3 ? 2.0 : 1.0, gesture->position());
            return true;
        }
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void PDFView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        viewport()->update();
}
