#pragma once

// Colours as the pickers and lists compare, sort, show and script them, and the few fixed
// highlight colours. Colours are taken in sRGB. Pure functions, any thread, except that the kept
// colours are made on first use.

#include <QColor>
#include <QGradientStops>
#include <QList>
#include <QRectF>
#include <QString>

class QPainter;

// A sort key: hue, saturation, brightness and alpha, each scaled to a byte, from the highest byte
// down, so that numeric order is hue first. A grey counts as hue 0; an invalid colour gives 0.
quint32 uint32HSBAValue(const QColor &color);
// -1, 0 or 1 by uint32HSBAValue.
int colorCompare(const QColor &color, const QColor &other);

// Equal when no sRGB component (alpha included) differs by more than 0.05. Two invalid colours
// are equal; an invalid and a valid one are not.
bool isEqual_(const QColor &color, const QColor &other);

// Fills rect with the colour in a rounded rectangle with a thin border; a translucent colour is
// laid over a checkerboard so that its transparency shows.
void drawSwatchInRoundedRect(const QColor &color, QPainter &painter, QRectF rect);

// Red, green, blue and alpha times 65535, rounded; the reverse reads a shorter list as zeros,
// with a missing alpha as opaque, and clamps each value to 0..65535.
QList<int> scriptingRgbaColorDescriptor(const QColor &color);
QColor scriptingRgbaColorWithDescriptor(const QList<int> &descriptor);

// A short spoken description: a colour name ("dark blue", "light grey"), with the opacity in
// percent when the colour is translucent ("red, 50% opaque").
QString accessibilityValue(const QColor &color);

// Two-stop gradients of the source-list highlight, top to bottom.
QGradientStops keySourceListHighlightColor();
QGradientStops mainSourceListHighlightColor();
QGradientStops disabledSourceListHighlightColor();

QColor selectionHighlightColor();
QColor selectionHighlightInteriorColor();
QColor disabledSelectionHighlightColor();
QColor disabledSelectionHighlightInteriorColor();
