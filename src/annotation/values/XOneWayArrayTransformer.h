#pragma once

// Applies a value transformer to each element of a list, keeping the order and the count (an
// element the transformer turns into nothing stays as the invalid QVariant). One way only.

#include "ValueTransformer.h"

#include <memory>

class XOneWayArrayTransformer : public ValueTransformer
{
public:
    explicit XOneWayArrayTransformer(std::shared_ptr<ValueTransformer> valueTransformer);

    const std::shared_ptr<ValueTransformer> &valueTransformer() const { return m_valueTransformer; }

    // A list (a string list too) gives a QVariantList; anything else, the invalid QVariant.
    QVariant transformedValue(const QVariant &value) const override;
    bool allowsReverseTransformation() const override { return false; }

protected:
    enum class Direction { Forward, Reverse };
    QVariant transformEach(const QVariant &value, Direction direction) const;

private:
    std::shared_ptr<ValueTransformer> m_valueTransformer;
};
