#pragma once

// Colours from components on the 0 to 255 scale, as designers write them. Any thread.

#include <QColor>

// Red, green, blue and alpha, each from 0 to 255; fractions are kept.
QColor QKColor(double red, double green, double blue, double alpha = 255.0);
// A grey of level white (0 black, 1 white) with alpha from 0 to 1.
QColor QKGray(double white, double alpha = 1.0);
