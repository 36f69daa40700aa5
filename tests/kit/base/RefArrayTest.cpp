#include <kit/base/RefArray.h>
#include <kit/base/WeakRef.h>

#include <QtTest>

class RefArrayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void removalIsByIdentity();
    void takeFirstDrainsInOrder();
    void weakRefDoesNotKeepAlive();
};

void RefArrayTest::removalIsByIdentity()
{
    RefArray<QString> array;
    const auto a = std::make_shared<QString>("same");
    const auto b = std::make_shared<QString>("same");
    array.append(a);
    array.append(b);
    array.append(a);
    QCOMPARE(array.remove(a), qsizetype(2));
    QCOMPARE(array.count(), qsizetype(1));
    QVERIFY(array.first() == b);
    QVERIFY(!array.contains(a));
    QCOMPARE(array.removeIf([](const auto &item) { return *item == "same"; }), qsizetype(1));
    QVERIFY(array.isEmpty());
    QVERIFY(!array.first());
}

void RefArrayTest::takeFirstDrainsInOrder()
{
    RefArray<int> array;
    for (int i = 0; i < 3; ++i)
        array.append(std::make_shared<int>(i));
    QList<int> drained;
    while (const auto head = array.takeFirst())
        drained << *head;
    QCOMPARE(drained, QList<int>({ 0, 1, 2 }));
    QVERIFY(!array.takeFirst());
}

void RefArrayTest::weakRefDoesNotKeepAlive()
{
    auto page = std::make_shared<int>(7);
    const WeakRef<int> ref(page);
    QVERIFY(ref.isAlive());
    QCOMPARE(*ref.lock(), 7);
    QVERIFY(ref.refersTo(page));
    QVERIFY(!ref.refersTo(std::make_shared<int>(7)));
    page.reset();
    QVERIFY(!ref.isAlive());
    QVERIFY(!ref.lock());
}

QTEST_GUILESS_MAIN(RefArrayTest)
#include "RefArrayTest.moc"
