#pragma once

// What the editing view remembers of one press, from the press to its release: which gesture the
// press became, and the values every step is computed from, so that nothing accumulates.
// Main thread only.

#include <QMouseEvent>
#include <QPointF>
#include <QRectF>

#include <memory>

class PDFAnnotation;
class PDFPage;

struct XPDFViewGesture
{
    enum class Kind {
        // The press waits for its next event (a move or the release) to decide what it is.
        PendingPress,
        // The kit's own handling: text selection, links.
        Platform,
        Panning,
        SelectingArea,
        Erasing,
        DraggingAnnotation,
        InkStroke,
        // Everything up to the release goes nowhere.
        Swallowing,
    };

    Kind kind = Kind::PendingPress;
    // The press as it came, for the kit when it takes the press after all.
    std::unique_ptr<QMouseEvent> press;
    int clickCount = 1;
    Qt::KeyboardModifiers modifiers;
    int area = 0;
    QPointF pressViewPoint;
    QPointF pressGlobalPoint;
    std::weak_ptr<PDFPage> pressPage;
    QPointF pressPagePoint;
    // The latest pointer place seen, in view and global coordinates.
    QPointF lastViewPoint;
    QPointF lastGlobalPoint;
    Qt::KeyboardModifiers lastModifiers;
    // The pending press's hit so far.
    std::shared_ptr<PDFAnnotation> hit;
    bool editAtEnd = false;
    bool undoGroupOpen = false;
    bool cursorPushed = false;

    // Panning: the visible part of the canvas at the press.
    QRectF startVisibleRect;

    // Area selection: the rect at the press and the handle held (0 moves the rect).
    QRectF startRect;
    bool startRectEmpty = true;
    int areaHandle = 0;

    // Dragging an annotation: the values before the drag.
    std::weak_ptr<PDFAnnotation> annotation;
    QRectF oldBounds;
    bool isLine = false;
    int handle = 0;
    QPointF offset;
    QPointF oldStart;
    QPointF oldEnd;
    QPointF previousDragViewPoint;
    // The end is under way; a second request to end does nothing.
    bool ending = false;
};
