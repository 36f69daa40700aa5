#pragma once

// The application's own pointer cursors, made from the named images at first request for the
// density of the screen they show on, and kept. The images must exist (makeImages) first.
// Main thread only.

#include <QCursor>
#include <QString>

#include <optional>

class FDCursors
{
public:
    FDCursors() = delete;

    // Each for the given device pixel ratio; 0 means that of the primary screen.
    static QCursor zoomInCursor(double devicePixelRatio = 0);
    static QCursor zoomOutCursor(double devicePixelRatio = 0);
    static QCursor resizeDiagonal45Cursor(double devicePixelRatio = 0);
    static QCursor resizeDiagonal135Cursor(double devicePixelRatio = 0);
    static QCursor cameraCursor(double devicePixelRatio = 0);
    static QCursor openHandBarCursor(double devicePixelRatio = 0);
    static QCursor closedHandBarCursor(double devicePixelRatio = 0);
    static QCursor textNoteCursor(double devicePixelRatio = 0);
    static QCursor anchoredNoteCursor(double devicePixelRatio = 0);
    static QCursor circleNoteCursor(double devicePixelRatio = 0);
    static QCursor squareNoteCursor(double devicePixelRatio = 0);
    static QCursor highlightNoteCursor(double devicePixelRatio = 0);
    static QCursor underlineNoteCursor(double devicePixelRatio = 0);
    static QCursor strikeOutNoteCursor(double devicePixelRatio = 0);
    static QCursor lineNoteCursor(double devicePixelRatio = 0);
    static QCursor inkNoteCursor(double devicePixelRatio = 0);

    // A cursor by the name of its operation above ("zoomInCursor", "lineNoteCursor"...); none
    // for another name, or before the images were made.
    static std::optional<QCursor> cursorNamed(const QString &name, double devicePixelRatio = 0);
    // The cursor of a tool: the arrow for a tool that is not an annotation tool, otherwise the
    // picture of the tool's annotation kind hanging under an arrow, made once per tool.
    static QCursor cursorForToolMode(int mode, double devicePixelRatio = 0);
    // The hot spot of a named cursor in logical pixels from its top left; (0, 0) for none.
    static QPoint hotSpotForName(const QString &name);

private:
    static QCursor named(const QString &name, double devicePixelRatio);
};
