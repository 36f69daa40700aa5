#include "OnlyIntegerValueFormatter.h"

QValidator::State OnlyIntegerValueFormatter::validate(QString &input, int &) const
{
    return isPartialStringValid(input) ? Acceptable : Invalid;
}

bool OnlyIntegerValueFormatter::isPartialStringValid(const QString &text)
{
    // Only ASCII digits: other scripts' digits would not read back as a page number.
    for (const QChar character : text) {
        if (character < QLatin1Char('0') || character > QLatin1Char('9'))
            return false;
    }
    return true;
}
