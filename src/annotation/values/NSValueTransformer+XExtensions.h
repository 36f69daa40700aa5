#pragma once

// Making a list transformer from an element transformer: two-way when the element transformer
// can go back, one-way otherwise. Main thread (the name table is).

#include "XOneWayArrayTransformer.h"

#include <QString>

#include <memory>

std::shared_ptr<XOneWayArrayTransformer> arrayTransformerWithValueTransformer(
    std::shared_ptr<ValueTransformer> valueTransformer);
// Null when no transformer is filed under the name.
std::shared_ptr<XOneWayArrayTransformer> arrayTransformerWithValueTransformerForName(
    const QString &name);
