#include "NSValueTransformer+XExtensions.h"

#include "XTwoWayArrayTransformer.h"

std::shared_ptr<XOneWayArrayTransformer> arrayTransformerWithValueTransformer(
    std::shared_ptr<ValueTransformer> valueTransformer)
{
    if (valueTransformer && valueTransformer->allowsReverseTransformation())
        return std::make_shared<XTwoWayArrayTransformer>(std::move(valueTransformer));
    return std::make_shared<XOneWayArrayTransformer>(std::move(valueTransformer));
}

std::shared_ptr<XOneWayArrayTransformer> arrayTransformerWithValueTransformerForName(
    const QString &name)
{
    std::shared_ptr<ValueTransformer> transformer = ValueTransformer::valueTransformerForName(name);
    if (!transformer)
        return nullptr;
    return arrayTransformerWithValueTransformer(std::move(transformer));
}
