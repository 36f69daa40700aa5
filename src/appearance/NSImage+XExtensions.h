#pragma once

// The pictures the application draws by code at start: the note images that stand for the
// annotation tools and the images of the tool cursors, filed under their names for the screen
// density asked for, with the helpers that make cursor images and badges from pictures. Main
// thread only.

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QString>
#include <QStringList>

class QPainter;

// Files how to draw every named image, once; runs before the first window. Each image is drawn
// on its first use.
void makeImages();
void makeNoteImages();
void makeCursorImages();

// The nine note images (21 by 19) and the sixteen cursor images (16 by 16, or 24 by 40 for the
// note cursors), in the order they are made.
QStringList noteImageNames();
QStringList cursorImageNames();

// The image filed under name, drawn for devicePixelRatio (its devicePixelRatio() says so); a
// null image for an unknown name, and for every name before makeImages ran.
QImage imageNamed(const QString &name, double devicePixelRatio = 1.0);

// The picture under an arrow pointer: 24 by 40, the arrow at the top left with its tip at
// arrowCursorHotSpot(), the picture below it at x 3.
QImage copyArrowCursorImage(const QImage &image);
// Where the tip of the application's own arrow sits, in logical pixels from the top left.
QPointF arrowCursorHotSpot();
// The arrow alone, as copyArrowCursorImage draws it.
void drawArrowCursor(QPainter &painter);

// Every pixel of the picture in color, keeping its coverage.
QImage imageTintedWithColor(const QImage &image, const QColor &color);
// The picture with a small menu triangle at its lower right, or a plus badge.
QImage copyWithMenuBadge(const QImage &image);
QImage copyWithAddBadge(const QImage &image);
// A round plus badge of 8 by 8 with its centre at point.
void drawAddBadgeAtPoint(QPainter &painter, const QPointF &point);
