#pragma once

// The list transformer that also runs its element transformer backwards over a list.

#include "XOneWayArrayTransformer.h"

class XTwoWayArrayTransformer : public XOneWayArrayTransformer
{
public:
    using XOneWayArrayTransformer::XOneWayArrayTransformer;

    bool allowsReverseTransformation() const override { return true; }
    // A list gives a QVariantList of the elements' reverse transforms; anything else, the
    // invalid QVariant.
    QVariant reverseTransformedValue(const QVariant &value) const override;
};
