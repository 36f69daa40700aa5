#include "NSCharacterSet+XExtensions.h"

#include <algorithm>

CharacterSet whitespaceAndNewlineCharacterSet()
{
    return [](QChar c) { return c.isSpace(); };
}

CharacterSet nonWhitespaceAndNewlineCharacterSet()
{
    return [](QChar c) { return !c.isSpace(); };
}

bool containsCharacterFromSet(QStringView text, const CharacterSet &set)
{
    return set && std::any_of(text.begin(), text.end(), set);
}
