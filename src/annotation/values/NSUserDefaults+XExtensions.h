#pragma once

// Colours in the preference store, kept as archived data. Any thread (the store is).

#include <QColor>
#include <QString>

class UserDefaults;

// Stores the colour archived; an invalid colour removes the key.
void setColorForKey(UserDefaults &defaults, const QColor &color, const QString &key);
// The archived colour (the invalid colour when the data holds none); else, for a non-empty list of
// numbers, r (g b) (alpha) in sRGB as the list gives them (one number is a grey, two a grey with
// alpha; components clamped to 0..1; numbers written as text count); else the clear colour.
QColor colorForKey(const UserDefaults &defaults, const QString &key);
