#pragma once

// Character sets as predicates over UTF-16 units, for scanning and for telling text that holds
// something from text that is only blank. Pure functions, any thread.

#include <QChar>
#include <QStringView>

#include <functional>

// True for the units of the set. An empty function is the empty set.
using CharacterSet = std::function<bool(QChar)>;

// Spaces, tabs, line and paragraph separators, U+0085 and the no-break space.
CharacterSet whitespaceAndNewlineCharacterSet();
// Every unit the set above does not hold.
CharacterSet nonWhitespaceAndNewlineCharacterSet();

// Whether text holds at least one unit of the set.
bool containsCharacterFromSet(QStringView text, const CharacterSet &set);
