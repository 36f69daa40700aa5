#include "NSFont+XExtensions.h"

#include <QFontMetricsF>

double defaultViewLineHeight(const QFont &font)
{
    return QFontMetricsF(font).lineSpacing();
}
