#pragma once

// Turns a value into another and, when it allows it, back; transformers can be filed under a
// name and looked up by it. The names "NSNegateBoolean", "NSIsNil", "NSIsNotNil" and
// "NSUnarchiveFromData" (archived bytes to the value and back) are there from the start.
// Transforming: any thread; the name table: main thread.

#include <QString>
#include <QVariant>

#include <memory>

class ValueTransformer
{
public:
    virtual ~ValueTransformer() = default;

    virtual QVariant transformedValue(const QVariant &value) const = 0;
    virtual bool allowsReverseTransformation() const { return false; }
    // Only meaningful when reversal is allowed; otherwise the invalid QVariant.
    virtual QVariant reverseTransformedValue(const QVariant &value) const;

    // A null transformer removes the name.
    static void setValueTransformer(
        std::shared_ptr<ValueTransformer> transformer, const QString &name);
    // Null for a name nothing is filed under.
    static std::shared_ptr<ValueTransformer> valueTransformerForName(const QString &name);
};
