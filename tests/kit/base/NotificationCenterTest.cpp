#include <kit/base/NotificationCenter.h>

#include <QObject>
#include <QtTest>

#include <memory>

namespace {

// Records "tag:name" for every delivery it sees.
struct Recorder
{
    QStringList log;
    NotificationCenter::Callback callback(const QString &tag)
    {
        return [this, tag](const Notification &n) { log << tag + u':' + n.name; };
    }
};

char senders[3];

// Tables name senders by number: 0 for none.
const void *senderNo(int number)
{
    return number ? &senders[number] : nullptr;
}

} // namespace

class NotificationCenterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deliveryFiltersByNameAndSender_data()
    {
        QTest::addColumn<QString>("observed");
        QTest::addColumn<int>("observedSender");
        QTest::addColumn<QString>("posted");
        QTest::addColumn<int>("postedSender");
        QTest::addColumn<bool>("delivered");
        QTest::newRow("any sender") << "Changed" << 0 << "Changed" << 1 << true;
        QTest::newRow("other name") << "Changed" << 0 << "Closed" << 1 << false;
        QTest::newRow("case sensitive") << "Changed" << 0 << "changed" << 1 << false;
        QTest::newRow("its sender") << "Changed" << 1 << "Changed" << 1 << true;
        QTest::newRow("another sender") << "Changed" << 1 << "Changed" << 2 << false;
        QTest::newRow("posted without sender") << "Changed" << 1 << "Changed" << 0 << false;
        QTest::newRow("any name of its sender") << "" << 1 << "Closed" << 1 << true;
    }

    void deliveryFiltersByNameAndSender()
    {
        QFETCH(QString, observed);
        QFETCH(int, observedSender);
        QFETCH(QString, posted);
        QFETCH(int, postedSender);
        QFETCH(bool, delivered);
        NotificationCenter center;
        Recorder r;
        center.addObserver(&r, observed, senderNo(observedSender), r.callback("r"));
        center.post(posted, senderNo(postedSender));
        QCOMPARE(r.log.size(), delivered ? 1 : 0);
    }

    void deliveryFollowsRegistrationOrderAndCarriesUserInfo()
    {
        NotificationCenter center;
        Recorder r;
        Notification seen;
        center.addObserver(&r, "Added", nullptr, r.callback("first"));
        center.addObserver(&seen, "Added", senderNo(1), [&](const Notification &n) { seen = n; });
        center.addObserver(&r, "Added", senderNo(1), r.callback("third"));
        center.post("Added", senderNo(1), { { "Index", 3 } });
        QCOMPARE(seen.userInfo, QVariantMap({ { "Index", 3 } }));
        QCOMPARE(seen.sender, senderNo(1));
        // The second shared centre is a separate one.
        NotificationCenter::qkCenter().addObserver(&r, "Tick", nullptr, r.callback("qk"));
        NotificationCenter::defaultCenter().post("Tick");
        NotificationCenter::qkCenter().post("Tick");
        NotificationCenter::qkCenter().removeObserver(&r);
        QCOMPARE(r.log, QStringList({ "first:Added", "third:Added", "qk:Tick" }));
    }

    void changesDuringDeliveryTakeEffectForTheNextPost()
    {
        NotificationCenter center;
        Recorder r;
        int removed = 0;
        // The first adds an observer, removes itself and the one registered after it.
        center.addObserver(&center, "Tick", nullptr, [&](const Notification &) {
            r.log << "changer";
            center.addObserver(&r, "Tick", nullptr, r.callback("added"));
            center.removeObserver(&center);
            center.removeObserver(&removed);
            center.post("Nested"); // delivered at once
        });
        center.addObserver(&removed, "Tick", nullptr, [&](const Notification &) { ++removed; });
        center.addObserver(&r, "Nested", nullptr, r.callback("nested"));
        center.post("Tick");
        center.post("Tick");
        QCOMPARE(r.log, QStringList({ "changer", "nested:Nested", "added:Tick" }));
        QCOMPARE(removed, 0);
    }

    void removeObserverTakesAllOrOneKind()
    {
        NotificationCenter center;
        Recorder r;
        center.addObserver(&r, "A", nullptr, r.callback("r"));
        center.addObserver(&r, "B", senderNo(1), r.callback("r"));
        center.addObserver(&r, "B", senderNo(2), r.callback("r"));
        center.removeObserver(&r, "B", senderNo(1));
        center.post("B", senderNo(1));
        center.post("B", senderNo(2));
        center.removeObserver(&r);
        center.post("A");
        center.post("B", senderNo(2));
        QCOMPARE(r.log, QStringList({ "r:B" }));
    }

    void destroyedQObjectStopsObserving()
    {
        NotificationCenter center;
        int calls = 0;
        const auto count = [&](const Notification &) { ++calls; };
        auto first = std::make_unique<QObject>();
        auto doomed = std::make_unique<QObject>();
        // The first observer destroys the second in the middle of a delivery.
        center.addObserver(first.get(), "Tick", nullptr, [&](const Notification &) {
            ++calls;
            doomed.reset();
        });
        center.addObserver(doomed.get(), "Tick", nullptr, count);
        center.post("Tick");
        first.reset();
        // Removed and registered again, it is still cleaned up when destroyed.
        auto again = std::make_unique<QObject>();
        center.addObserver(again.get(), "Tick", nullptr, count);
        center.removeObserver(again.get());
        center.addObserver(again.get(), "Tick", nullptr, count);
        again.reset();
        center.post("Tick");
        QCOMPARE(calls, 1);
    }
};

QTEST_GUILESS_MAIN(NotificationCenterTest)
#include "NotificationCenterTest.moc"
