#include <kit/base/RefArray.h>
#include <kit/base/WeakRef.h>

#include <QtTest>

class RefArrayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void removalIsByIdentityAndTakeFirstDrains()
    {
        RefArray<QString> array;
        const auto a = std::make_shared<QString>("same");
        const auto b = std::make_shared<QString>("same");
        const auto c = std::make_shared<QString>("other");
        for (const auto &item : { a, b, a, c })
            array.append(item);
        QCOMPARE(array.remove(a), qsizetype(2));
        QVERIFY(array.first() == b && !array.contains(a));
        QCOMPARE(array.removeIf([](const auto &item) { return *item == "other"; }), qsizetype(1));
        QVERIFY(array.takeFirst() == b);
        QVERIFY(!array.takeFirst() && !array.first());
    }

    void weakRefDoesNotKeepAlive()
    {
        auto page = std::make_shared<int>(7);
        const WeakRef<int> ref(page);
        QCOMPARE(*ref.lock(), 7);
        QVERIFY(ref.refersTo(page) && !ref.refersTo(std::make_shared<int>(7)));
        page.reset();
        QVERIFY(!ref.isAlive() && !ref.lock());
    }
};

QTEST_GUILESS_MAIN(RefArrayTest)
#include "RefArrayTest.moc"
