#pragma once

// Rectangle and point functions with Cocoa's edge rules, and their text forms.
// Orientation-free: "lower" and "min" mean the smaller coordinate. Pure functions, any thread.

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

namespace Geometry {

enum class RectEdge { MinX, MinY, MaxX, MaxY };

// The lower and left edges belong to a rect, the upper and right ones do not; an empty rect
// contains no point.
bool pointInRect(QPointF point, QRectF rect);
// Floor of the origin, ceiling of the far corner; an empty rect gives the zero rect.
QRectF integralRect(QRectF rect);
// Width or height not above zero.
bool isEmptyRect(QRectF rect);
QRectF insetRect(QRectF rect, double dx, double dy);
QRectF offsetRect(QRectF rect, double dx, double dy);
// An empty rect adds nothing; two empty rects give the zero rect.
QRectF unionRect(QRectF a, QRectF b);
// Rects that only touch or do not meet give the zero rect.
QRectF intersectionRect(QRectF a, QRectF b);
// True when both rects are non-empty and share some area.
bool intersectsRect(QRectF a, QRectF b);
// True when b is non-empty and lies inside a (shared edges allowed).
bool containsRect(QRectF a, QRectF b);
// Cuts `amount` (clamped to the rect's extent) off the given edge into *slice, the rest into
// *remainder. An empty rect gives two zero rects. Either out pointer may be null.
void divideRect(QRectF inRect, QRectF *slice, QRectF *remainder, double amount, RectEdge edge);
bool equalRects(QRectF a, QRectF b);
bool equalPoints(QPointF a, QPointF b);
bool equalSizes(QSizeF a, QSizeF b);
// Negative widths and heights become positive, keeping the covered area.
QRectF standardizeRect(QRectF rect);
QPointF subtractPoints(QPointF a, QPointF b);
QPointF addPoints(QPointF a, QPointF b);

// Text forms "{{x, y}, {w, h}}", "{x, y}" and "{w, h}" with shortest round-trip decimals.
QString stringFromRect(QRectF rect);
QString stringFromPoint(QPointF point);
QString stringFromSize(QSizeF size);
// Read back what the writers produce (spaces around the tokens allowed); other text gives
// the zero value.
QRectF rectFromString(const QString &text);
QPointF pointFromString(const QString &text);
QSizeF sizeFromString(const QString &text);

// The shortest decimal text that reads back as the same double; "-0" is written "0".
QString numberString(double value);

} // namespace Geometry
