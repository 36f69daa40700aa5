#include <kit/base/NotificationCenter.h>

#include <QObject>
#include <QtTest>

#include <memory>

namespace {

// Records "observer:name" for every delivery it sees.
struct Recorder
{
    QStringList log;
    NotificationCenter::Callback callback(const QString &tag)
    {
        return [this, tag](const Notification &n) { log << tag + u':' + n.name; };
    }
};

char senderA;
char senderB;

// Test tables name senders by number: 0 none, 1 A, 2 B.
const void *senderNumbered(int number)
{
    return number == 1 ? &senderA : number == 2 ? &senderB : nullptr;
}

} // namespace

class NotificationCenterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deliveryFiltersByNameAndSender_data();
    void deliveryFiltersByNameAndSender();
    void deliveryFollowsRegistrationOrderAndCarriesUserInfo();
    void removalDuringDeliverySkipsTheRemoved();
    void additionDuringDeliveryWaitsForTheNextPost();
    void removeObserverTakesAllOrOneKind();
    void destroyedQObjectStopsObserving();
    void centresAreSeparate();
};

void NotificationCenterTest::deliveryFiltersByNameAndSender_data()
{
    QTest::addColumn<QString>("observedName");
    QTest::addColumn<int>("observedSender");
    QTest::addColumn<QString>("postedName");
    QTest::addColumn<int>("postedSender");
    QTest::addColumn<bool>("delivered");

    const int a = 1;
    const int b = 2;
    QTest::newRow("same name, any sender") << "Changed" << 0 << "Changed" << a << true;
    QTest::newRow("same name, null sender") << "Changed" << 0 << "Changed" << 0 << true;
    QTest::newRow("other name") << "Changed" << 0 << "Closed" << a << false;
    QTest::newRow("name is case sensitive") << "Changed" << 0 << "changed" << a << false;
    QTest::newRow("its sender") << "Changed" << a << "Changed" << a << true;
    QTest::newRow("another sender") << "Changed" << a << "Changed" << b << false;
    QTest::newRow("posted without sender") << "Changed" << a << "Changed" << 0 << false;
    QTest::newRow("any name of its sender") << "" << a << "Closed" << a << true;
    QTest::newRow("any name, another sender") << "" << a << "Closed" << b << false;
}

void NotificationCenterTest::deliveryFiltersByNameAndSender()
{
    QFETCH(QString, observedName);
    QFETCH(int, observedSender);
    QFETCH(QString, postedName);
    QFETCH(int, postedSender);
    QFETCH(bool, delivered);

    NotificationCenter center;
    Recorder recorder;
    center.addObserver(
        &recorder, observedName, senderNumbered(observedSender), recorder.callback("r"));
    center.post(postedName, senderNumbered(postedSender));
    QCOMPARE(recorder.log.size(), delivered ? 1 : 0);
}

void NotificationCenterTest::deliveryFollowsRegistrationOrderAndCarriesUserInfo()
{
    NotificationCenter center;
    Recorder recorder;
    QVariantMap seenInfo;
    const void *seenSender = nullptr;
    center.addObserver(&recorder, "Added", nullptr, recorder.callback("first"));
    center.addObserver(&seenInfo, "Added", &senderA, [&](const Notification &n) {
        recorder.log << "second:" + n.name;
        seenInfo = n.userInfo;
        seenSender = n.sender;
    });
    center.addObserver(&recorder, "Added", &senderA, recorder.callback("third"));

    center.post("Added", &senderA, { { "Index", 3 } });
    QCOMPARE(recorder.log, QStringList({ "first:Added", "second:Added", "third:Added" }));
    QCOMPARE(seenInfo, QVariantMap({ { "Index", 3 } }));
    QCOMPARE(seenSender, &senderA);
}

void NotificationCenterTest::removalDuringDeliverySkipsTheRemoved()
{
    NotificationCenter center;
    Recorder recorder;
    int later = 0;
    // The first removes itself and the one registered after it.
    center.addObserver(&recorder, "Tick", nullptr, [&](const Notification &) {
        recorder.log << "remover";
        center.removeObserver(&recorder);
        center.removeObserver(&later);
    });
    center.addObserver(&later, "Tick", nullptr, [&](const Notification &) { ++later; });
    center.addObserver(&recorder, "Tick", nullptr, recorder.callback("own second"));

    center.post("Tick");
    center.post("Tick");
    QCOMPARE(recorder.log, QStringList({ "remover" }));
    QCOMPARE(later, 0);
}

void NotificationCenterTest::additionDuringDeliveryWaitsForTheNextPost()
{
    NotificationCenter center;
    Recorder recorder;
    center.addObserver(&center, "Tick", nullptr, [&](const Notification &) {
        recorder.log << "adder";
        center.addObserver(&recorder, "Tick", nullptr, recorder.callback("added"));
        // A post from inside a delivery is delivered at once, to the new observer as well.
        center.post("Nested");
    });
    center.addObserver(&recorder, "Nested", nullptr, recorder.callback("nested"));

    center.post("Tick");
    QCOMPARE(recorder.log, QStringList({ "adder", "nested:Nested" }));
    center.removeObserver(&center);
    center.post("Tick");
    QCOMPARE(recorder.log.last(), QString("added:Tick"));
}

void NotificationCenterTest::removeObserverTakesAllOrOneKind()
{
    NotificationCenter center;
    Recorder recorder;
    Recorder other;
    center.addObserver(&recorder, "A", nullptr, recorder.callback("r"));
    center.addObserver(&recorder, "B", &senderA, recorder.callback("r"));
    center.addObserver(&recorder, "B", &senderB, recorder.callback("r"));
    center.addObserver(&other, "A", nullptr, other.callback("o"));

    center.removeObserver(&recorder, "B", &senderA);
    center.post("B", &senderA);
    center.post("B", &senderB);
    center.post("A");
    QCOMPARE(recorder.log, QStringList({ "r:B", "r:A" }));

    center.removeObserver(&recorder);
    center.post("A");
    center.post("B", &senderB);
    QCOMPARE(recorder.log.size(), 2);
    QCOMPARE(other.log, QStringList({ "o:A", "o:A" }));
}

void NotificationCenterTest::destroyedQObjectStopsObserving()
{
    NotificationCenter center;
    int calls = 0;
    auto first = std::make_unique<QObject>();
    auto doomed = std::make_unique<QObject>();
    // The first observer destroys the second in the middle of a delivery.
    center.addObserver(first.get(), "Tick", nullptr, [&](const Notification &) {
        ++calls;
        doomed.reset();
    });
    center.addObserver(doomed.get(), "Tick", nullptr, [&](const Notification &) { calls += 100; });
    center.post("Tick");
    QCOMPARE(calls, 1);

    first.reset();
    center.post("Tick");
    QCOMPARE(calls, 1);

    // A removed QObject observer that registers again is still cleaned up on destruction.
    auto again = std::make_unique<QObject>();
    center.addObserver(again.get(), "Tick", nullptr, [&](const Notification &) { ++calls; });
    center.removeObserver(again.get());
    center.addObserver(again.get(), "Tick", nullptr, [&](const Notification &) { ++calls; });
    again.reset();
    center.post("Tick");
    QCOMPARE(calls, 1);
}

void NotificationCenterTest::centresAreSeparate()
{
    Recorder recorder;
    NotificationCenter::qkCenter().addObserver(&recorder, "Tick", nullptr, recorder.callback("qk"));
    NotificationCenter::defaultCenter().post("Tick");
    QVERIFY(recorder.log.isEmpty());
    NotificationCenter::qkCenter().post("Tick");
    QCOMPARE(recorder.log, QStringList({ "qk:Tick" }));
    NotificationCenter::qkCenter().removeObserver(&recorder);
}

QTEST_GUILESS_MAIN(NotificationCenterTest)
#include "NotificationCenterTest.moc"
