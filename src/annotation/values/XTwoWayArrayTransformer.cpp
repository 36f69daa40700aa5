#include "XTwoWayArrayTransformer.h"

QVariant XTwoWayArrayTransformer::reverseTransformedValue(const QVariant &value) const
{
    return transformEach(value, Direction::Reverse);
}
