// XPDFView: the press, its next event and its release as one state machine. A press decides what
// it is in a fixed order; where that order depends on the next event (is it a click or a drag?),
// the press waits in PendingPress and the first move or the release decides.

#include "PDFViewDelegate2.h"
#include "XPDFView.h"
#include "XPDFViewGesture.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/PDFAnnotationFreeText+XExtensions.h>
#include <document/PDFPage+XExtensions.h>
#include <kit/base/Geometry.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QApplication>
#include <QKeyEvent>

namespace {

// Half the side of the square around a press in which text makes the press select text.
constexpr double TextReach = 40;

} // namespace

bool XPDFView::isTrackingGesture() const
{
    return m_gesture != nullptr;
}

void XPDFView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        PDFView::mousePressEvent(event);
        return;
    }
    beginPress(event, 1);
}

void XPDFView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        PDFView::mouseDoubleClickEvent(event);
        return;
    }
    beginPress(event, 2);
}

void XPDFView::beginPress(QMouseEvent *event, int clickCount)
{
    // A press while a gesture is still open means its release never came.
    if (m_gesture)
        endGesture();
    if (!hasFocus())
        setFocus(Qt::MouseFocusReason);
    if (const auto selected = selectedAnn(); selected && isLink(*selected))
        setSelectedAnn(nullptr);
    auto gesture = std::make_unique<XPDFViewGesture>();
    gesture->press.reset(static_cast<QMouseEvent *>(event->clone()));
    gesture->clickCount = clickCount;
    gesture->modifiers = event->modifiers();
    gesture->area = areaOfInterestForMouse(event);
    gesture->pressViewPoint = event->position();
    gesture->pressGlobalPoint = event->globalPosition();
    gesture->lastViewPoint = event->position();
    gesture->lastGlobalPoint = event->globalPosition();
    gesture->lastModifiers = event->modifiers();
    m_gesture = std::move(gesture);
    XPDFViewGesture &g = *m_gesture;

    if (!document() || document()->isLocked()) {
        handToPlatform();
        return;
    }
    if (m_viewMode == 2) {
        // Presentation: every click that is not on a link turns the page.
        if (g.area & LinkArea) {
            handToPlatform();
        } else {
            goToNextPage();
            startSwallowing(false);
        }
        return;
    }
    const auto page = pageForPoint(event->position(), true);
    g.pressPage = page;
    if (page)
        g.pressPagePoint = convertPointToPage(event->position(), page);
    // Outside the pages every tool pans.
    if (g.area == NoArea || !page) {
        startDragToScroll();
        return;
    }
    switch (toolMode()) {
    case PDFToolModeHand:
        setCurrentSelection(nullptr);
        if (g.area & LinkArea)
            handToPlatform();
        else
            startDragToScroll();
        return;
    case PDFToolModeAreaSelection:
        setCurrentSelection(nullptr);
        startSelectArea();
        return;
    case PDFToolModeEraser:
        // The press itself erases nothing.
        g.kind = XPDFViewGesture::Kind::Erasing;
        return;
    default:
        break;
    }
    if (!hitAnnotationBegin())
        return;
    // Without a page there is no next event to wait for.
    continueAfterHit(hitAnnotationEnd(false));
}

// The oldest annotation under the pointer wins (the eraser takes the newest instead); the handles
// of the selected annotation come first. True when the hit is already decided, false when the
// press waits for its next event.
bool XPDFView::hitAnnotationBegin()
{
    XPDFViewGesture &g = *m_gesture;
    const auto page = g.pressPage.lock();
    if (!page)
        return true;
    const QPointF p = g.pressPagePoint;
    const auto selected = selectedAnn();
    if (selected && selected->page() == page && isResizable(*selected)
        && resizeHandleForPoint(*selected, p, scaleFactor()) != AnnotationResizeHandleNone) {
        g.hit = selected;
    } else {
        // Notes are stored against the media box, the pointer speaks of the display box.
        const QPointF repaired = p - offsetBasedOnMediaBoxInPage(page, displayBox());
        for (const auto &annotation : validAnnotations(*page)) {
            const QPointF at = isText(*annotation) ? repaired : p;
            if (hitTest(*annotation, at) && !isEditing(*annotation)) {
                g.hit = annotation;
                break;
            }
        }
    }
    g.kind = XPDFViewGesture::Kind::PendingPress;
    return false;
}

bool XPDFView::hitAnnotationEnd(bool nextIsDrag)
{
    XPDFViewGesture &g = *m_gesture;
    const auto page = g.pressPage.lock();
    const int tool = toolMode();
    if (page && !g.hit && isAnnToolMode(tool) && !isAnnMarkupToolMode(tool)
        && tool != PDFToolModeAnnInk
        && Geometry::pointInRect(g.pressPagePoint, page->boundsForBox(displayBox()))) {
        const auto selected = selectedAnn();
        const bool textTool = tool == PDFToolModeAnnText || tool == PDFToolModeAnnFreeText;
        if ((textTool || nextIsDrag) && !(selected && isEditing(*selected))) {
            // Everything the gesture makes is one undo step.
            if (m_undoManager && !g.undoGroupOpen) {
                m_undoManager->beginUndoGrouping();
                g.undoGroupOpen = true;
            }
            g.hit = addAnnotationWithType(
                annTypeForToolMode(tool), page, QRectF(g.pressPagePoint, QSizeF(0, 0)));
            // A click makes a box of the usable default size.
            if (g.hit && !nextIsDrag) {
                if (auto *freeText = dynamic_cast<PDFAnnotationFreeText *>(g.hit.get()))
                    adjustBoundsIfNeeded(*freeText);
            }
            // A page the annotation could not join leaves nothing selected.
            if (g.hit && !g.hit->page())
                g.hit.reset();
        }
    }
    // Dragging from a highlight selects text.
    if (g.hit && isMarkup(*g.hit) && nextIsDrag)
        g.hit.reset();
    // Ink is drawn over other annotations; a click still selects them.
    if (g.hit && tool == PDFToolModeAnnInk && nextIsDrag && g.hit != selectedAnn())
        g.hit.reset();
    if (g.hit != selectedAnn())
        setSelectedAnn(g.hit);
    return g.hit != nullptr;
}

void XPDFView::resolvePendingPress(bool nextIsDrag)
{
    continueAfterHit(hitAnnotationEnd(nextIsDrag));
}

void XPDFView::continueAfterHit(bool hit)
{
    XPDFViewGesture &g = *m_gesture;
    const auto page = g.pressPage.lock();
    if (hit) {
        const auto annotation = g.hit;
        if (g.clickCount == 2 && isEditable(*annotation)) {
            startSwallowing(true);
        } else if (isMovable(*annotation)) {
            startDragAnnotation();
        } else {
            // A markup: the kit selects text through it.
            handToPlatform();
        }
        return;
    }
    if (page && hitBookmarkIndicatorWithPoint(g.pressPagePoint, page)) {
        startSwallowing(false);
        return;
    }
    const int tool = toolMode();
    if (tool == PDFToolModeAnnInk && page) {
        newPendingInkPath();
        return;
    }
    setSelectedAnn(nullptr);
    bool nearText = false;
    if (page) {
        const QRectF square(
            g.pressPagePoint - QPointF(TextReach, TextReach), QSizeF(2 * TextReach, 2 * TextReach));
        const auto selection = page->selectionForRect(square);
        nearText = selection && !selection->string().isEmpty();
    }
    if (isAnnToolMode(tool) && !isAnnMarkupToolMode(tool)) {
        handToPlatform();
        return;
    }
    // A press on blank page pans; a press near text selects it.
    const bool barePage = (g.area & (PageArea | LinkArea)) == PageArea;
    if (g.modifiers == Qt::NoModifier && barePage && !nearText)
        startDragToScroll();
    else
        handToPlatform();
}

void XPDFView::handToPlatform()
{
    XPDFViewGesture &g = *m_gesture;
    g.kind = XPDFViewGesture::Kind::Platform;
    if (g.clickCount == 2)
        PDFView::mouseDoubleClickEvent(g.press.get());
    else
        PDFView::mousePressEvent(g.press.get());
}

void XPDFView::startSwallowing(bool editAtEnd)
{
    m_gesture->kind = XPDFViewGesture::Kind::Swallowing;
    m_gesture->editAtEnd = editAtEnd;
}

void XPDFView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_gesture && !(event->buttons() & Qt::LeftButton)) {
        // The release went elsewhere: the gesture ends where it was.
        endGesture();
    }
    if (!m_gesture) {
        if (event->buttons() != Qt::NoButton) {
            PDFView::mouseMoveEvent(event);
            return;
        }
        const auto cursor = getCursorForEvent(event->position(), event->modifiers());
        if (cursor && m_cursorStack.empty())
            viewport()->setCursor(*cursor);
        else if (m_cursorStack.empty())
            PDFView::mouseMoveEvent(event);
        return;
    }
    m_gesture->lastViewPoint = event->position();
    m_gesture->lastGlobalPoint = event->globalPosition();
    m_gesture->lastModifiers = event->modifiers();
    if (m_gesture->kind == XPDFViewGesture::Kind::PendingPress) {
        resolvePendingPress(true);
        if (!m_gesture)
            return;
    }
    gestureMove(event);
}

void XPDFView::gestureMove(QMouseEvent *event)
{
    using Kind = XPDFViewGesture::Kind;
    switch (m_gesture->kind) {
    case Kind::Platform:
        PDFView::mouseMoveEvent(event);
        break;
    case Kind::Panning:
        dragToScrollTo(event->globalPosition());
        break;
    case Kind::SelectingArea:
        selectAreaTo(event->position(), event->modifiers());
        break;
    case Kind::Erasing:
        eraseAt(event->position());
        break;
    case Kind::DraggingAnnotation:
        dragAnnotationStep(true);
        break;
    case Kind::InkStroke:
        extendPendingInkPath(event->position());
        break;
    case Kind::PendingPress:
    case Kind::Swallowing:
        break;
    }
}

void XPDFView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_gesture) {
        PDFView::mouseReleaseEvent(event);
        return;
    }
    m_gesture->lastViewPoint = event->position();
    m_gesture->lastGlobalPoint = event->globalPosition();
    m_gesture->lastModifiers = event->modifiers();
    if (m_gesture->kind == XPDFViewGesture::Kind::PendingPress) {
        resolvePendingPress(false);
        if (!m_gesture)
            return;
    }
    gestureRelease(event);
}

void XPDFView::gestureRelease(QMouseEvent *event)
{
    if (m_gesture->kind == XPDFViewGesture::Kind::Platform) {
        PDFView::mouseReleaseEvent(event);
        // A markup tool turns the text selected by the drag into its markup; the tool stays.
        const auto selection = currentSelection();
        if (isAnnMarkupToolMode() && selection && !selection->string().isEmpty()) {
            const auto page = pageForPoint(event->position(), true);
            addAnnotationWithType(annTypeForToolMode(toolMode()), page, QRectF());
            setSelectedAnn(nullptr);
        }
    }
    finishGesture(true);
}

void XPDFView::endGesture()
{
    if (m_gesture)
        finishGesture(false);
}

// The end of every gesture, by its release or without one: the last step is taken where the
// pointer was last seen, the undo step closes and the gesture's cursor goes.
void XPDFView::finishGesture(bool released)
{
    // What the last step sets off (an added ink, its notifications) may ask to end again.
    if (!m_gesture || m_gesture->ending)
        return;
    m_gesture->ending = true;
    m_gestureTicks.stop();
    using Kind = XPDFViewGesture::Kind;
    if (m_gesture->kind == Kind::SelectingArea)
        endSelectArea();
    else if (m_gesture->kind == Kind::InkStroke)
        endPendingInkPath(m_gesture->lastViewPoint);
    const std::unique_ptr<XPDFViewGesture> ended = std::move(m_gesture);
    if (ended->undoGroupOpen && m_undoManager)
        m_undoManager->endUndoGrouping();
    if (ended->cursorPushed)
        popCursor();
    if (ended->editAtEnd && released)
        editSelectedAnnotation();
    // The kit's own cursor update goes first.
    QMetaObject::invokeMethod(
        this,
        [view = QPointer<XPDFView>(this)] {
            if (view)
                view->doUpdateCursor();
        },
        Qt::QueuedConnection);
}

void XPDFView::focusOutEvent(QFocusEvent *event)
{
    // A popup, a dialog or another window took the keyboard: no release will reach this view.
    endGesture();
    PDFView::focusOutEvent(event);
}

void XPDFView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::ActivationChange && !isActiveWindow())
        endGesture();
    PDFView::changeEvent(event);
}

void XPDFView::hideEvent(QHideEvent *event)
{
    endGesture();
    PDFView::hideEvent(event);
}

bool XPDFView::viewportEvent(QEvent *event)
{
    // Another widget grabbed the mouse.
    if (event->type() == QEvent::UngrabMouse)
        endGesture();
    return PDFView::viewportEvent(event);
}

void XPDFView::keyPressEvent(QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers
        = event->modifiers() & ~(Qt::KeypadModifier | Qt::GroupSwitchModifier);
    if (event->key() == Qt::Key_Escape && modifiers == Qt::NoModifier) {
        endGesture();
        if (m_delegate2)
            m_delegate2->PDFViewESCKeyDown(this);
        else
            setSelectedAnn(nullptr);
        event->accept();
        return;
    }
    if (m_viewMode == 2) {
        PDFView::keyPressEvent(event);
        return;
    }
    // Delete and backspace take the selected annotation away, as the Edit menu's Delete does.
    if ((event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace)
        && modifiers == Qt::NoModifier && selectedAnn()) {
        removeAnnotation(selectedAnn());
        event->accept();
        return;
    }
    // Return opens the editor of the selected note or text box.
    const int tool = toolMode();
    if ((tool == PDFToolModeTextSelection || isAnnToolMode(tool)) && selectedAnn()
        && modifiers == Qt::NoModifier
        && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        editSelectedAnnotation();
        event->accept();
        return;
    }
    PDFView::keyPressEvent(event);
}
