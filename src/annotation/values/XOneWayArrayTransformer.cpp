#include "XOneWayArrayTransformer.h"

#include <QVariantList>

XOneWayArrayTransformer::XOneWayArrayTransformer(std::shared_ptr<ValueTransformer> valueTransformer)
    : m_valueTransformer(std::move(valueTransformer))
{ }

QVariant XOneWayArrayTransformer::transformedValue(const QVariant &value) const
{
    return transformEach(value, Direction::Forward);
}

QVariant XOneWayArrayTransformer::transformEach(const QVariant &value, Direction direction) const
{
    const int type = value.typeId();
    if (type != QMetaType::QVariantList && type != QMetaType::QStringList)
        return {};
    const QVariantList elements = value.toList();
    QVariantList result;
    result.reserve(elements.size());
    for (const QVariant &element : elements) {
        if (!m_valueTransformer)
            result.append(QVariant());
        else if (direction == Direction::Forward)
            result.append(m_valueTransformer->transformedValue(element));
        else
            result.append(m_valueTransformer->reverseTransformedValue(element));
    }
    return result;
}
