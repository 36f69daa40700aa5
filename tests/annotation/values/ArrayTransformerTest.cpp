#include <annotation/values/NSValueTransformer+XExtensions.h>
#include <annotation/values/XTwoWayArrayTransformer.h>

#include <QColor>
#include <QTest>

namespace {

// Centimetres to points and back.
class Centimetres : public ValueTransformer
{
public:
    QVariant transformedValue(const QVariant &cm) const override
    {
        return cm.toDouble() * 72 / 2.54;
    }
    bool allowsReverseTransformation() const override { return true; }
    QVariant reverseTransformedValue(const QVariant &pt) const override
    {
        return pt.toDouble() * 2.54 / 72;
    }
};

bool isTwoWay(const std::shared_ptr<XOneWayArrayTransformer> &transformer)
{
    return transformer && transformer->allowsReverseTransformation()
        && std::dynamic_pointer_cast<XTwoWayArrayTransformer>(transformer);
}

} // namespace

class ArrayTransformerTest : public QObject
{
    Q_OBJECT

private slots:
    void namedTransformersMapEachElement()
    {
        const auto negate = arrayTransformerWithValueTransformerForName("NSNegateBoolean");
        QVERIFY(isTwoWay(negate));
        QCOMPARE(negate->transformedValue(QVariantList { true, false, true }),
            QVariant(QVariantList { false, true, false }));

        const auto isNil = arrayTransformerWithValueTransformerForName("NSIsNil");
        QVERIFY(isNil && !isNil->allowsReverseTransformation());
        QCOMPARE(isNil->transformedValue(QVariantList { QVariant(), 0, QString() }),
            QVariant(QVariantList { true, false, false }));
        QCOMPARE(isNil->reverseTransformedValue(QVariantList { true }), QVariant());

        QVERIFY(!arrayTransformerWithValueTransformerForName("NoSuchTransformer"));
    }

    void coloursTravelAsArchivedData()
    {
        const auto archive = arrayTransformerWithValueTransformerForName("NSUnarchiveFromData");
        QVERIFY(isTwoWay(archive));
        const QVariantList colors { QColor(Qt::red), QColor(10, 20, 30, 40) };
        const QVariantList data = archive->reverseTransformedValue(colors).toList();
        QCOMPARE(data.size(), 2);
        QCOMPARE(data.at(0).typeId(), int(QMetaType::QByteArray));
        QCOMPARE(archive->transformedValue(data), QVariant(colors));
    }

    void ownTransformerRegisteredByName()
    {
        ValueTransformer::setValueTransformer(std::make_shared<Centimetres>(), "Centimetres");
        const auto lengths = arrayTransformerWithValueTransformerForName("Centimetres");
        QVERIFY(isTwoWay(lengths));
        QCOMPARE(lengths->transformedValue(QStringList { "2.54", "0" }),
            QVariant(QVariantList { 72.0, 0.0 }));
        QCOMPARE(lengths->reverseTransformedValue(QVariantList { 72.0 }),
            QVariant(QVariantList { 2.54 }));
        // What is not a list has no elements to transform.
        QCOMPARE(lengths->transformedValue(2.54), QVariant());
        ValueTransformer::setValueTransformer(nullptr, "Centimetres");
        QVERIFY(!arrayTransformerWithValueTransformerForName("Centimetres"));
    }
};

QTEST_APPLESS_MAIN(ArrayTransformerTest)
#include "ArrayTransformerTest.moc"
