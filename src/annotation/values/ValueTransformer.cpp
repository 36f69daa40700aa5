#include "ValueTransformer.h"

#include <kit/base/Archiver.h>

#include <QHash>

namespace {

class NegateBoolean : public ValueTransformer
{
public:
    QVariant transformedValue(const QVariant &value) const override { return !value.toBool(); }
    bool allowsReverseTransformation() const override { return true; }
    QVariant reverseTransformedValue(const QVariant &value) const override
    {
        return !value.toBool();
    }
};

class IsNil : public ValueTransformer
{
public:
    explicit IsNil(bool negated)
        : m_negated(negated)
    { }
    QVariant transformedValue(const QVariant &value) const override
    {
        return value.isValid() == m_negated;
    }

private:
    bool m_negated;
};

class UnarchiveFromData : public ValueTransformer
{
public:
    QVariant transformedValue(const QVariant &value) const override
    {
        return value.isValid() ? Archiver::unarchive(value.toByteArray()) : QVariant();
    }
    bool allowsReverseTransformation() const override { return true; }
    QVariant reverseTransformedValue(const QVariant &value) const override
    {
        const QByteArray data = Archiver::archivedData(value);
        return data.isEmpty() ? QVariant() : QVariant(data);
    }
};

QHash<QString, std::shared_ptr<ValueTransformer>> &registry()
{
    static QHash<QString, std::shared_ptr<ValueTransformer>> table {
        { QStringLiteral("NSNegateBoolean"), std::make_shared<NegateBoolean>() },
        { QStringLiteral("NSIsNil"), std::make_shared<IsNil>(false) },
        { QStringLiteral("NSIsNotNil"), std::make_shared<IsNil>(true) },
        { QStringLiteral("NSUnarchiveFromData"), std::make_shared<UnarchiveFromData>() },
    };
    return table;
}

} // namespace

QVariant ValueTransformer::reverseTransformedValue(const QVariant &) const
{
    return {};
}

void ValueTransformer::setValueTransformer(
    std::shared_ptr<ValueTransformer> transformer, const QString &name)
{
    if (transformer)
        registry().insert(name, std::move(transformer));
    else
        registry().remove(name);
}

std::shared_ptr<ValueTransformer> ValueTransformer::valueTransformerForName(const QString &name)
{
    return registry().value(name);
}
