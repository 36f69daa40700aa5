#pragma once

// The line height a text view gives a font. Main thread (font metrics need the GUI application).

#include <QFont>

// Ascent, descent and leading of the font: the distance from one baseline to the next.
double defaultViewLineHeight(const QFont &font);
