#include <kit/base/MainQueue.h>

#include <QElapsedTimer>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <memory>

class MainQueueTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void asyncRunsOnALaterTurnInOrder();
    void asyncIsDroppedWhenItsContextDies();
    void asyncAfterWaitsItsDelay();
    void syncFromAWorkerBlocksUntilTheMainThreadRan();
    void syncOnTheMainThreadRunsInline();
    void workerWorkLandsOnTheMainThread();
};

void MainQueueTest::asyncRunsOnALaterTurnInOrder()
{
    QStringList log;
    MainQueue::async([&] {
        log << "a";
        // Queued from inside a turn: after everything queued before it.
        MainQueue::async([&] { log << "c"; });
    });
    MainQueue::async([&] { log << "b"; });
    QVERIFY(log.isEmpty());
    QTRY_COMPARE(log, QStringList({ "a", "b", "c" }));
}

void MainQueueTest::asyncIsDroppedWhenItsContextDies()
{
    QStringList log;
    auto context = std::make_unique<QObject>();
    MainQueue::async(context.get(), [&] { log << "dropped"; });
    MainQueue::asyncAfter(0, context.get(), [&] { log << "dropped later"; });
    context.reset();
    MainQueue::asyncAfter(0.01, [&] { log << "end"; });
    QTRY_COMPARE(log, QStringList({ "end" }));
}

void MainQueueTest::asyncAfterWaitsItsDelay()
{
    QStringList log;
    QElapsedTimer clock;
    clock.start();
    qint64 ranAfter = -1;
    MainQueue::asyncAfter(0.05, [&] {
        ranAfter = clock.elapsed();
        log << "late";
    });
    MainQueue::async([&] { log << "early"; });
    QTRY_COMPARE(log, QStringList({ "early", "late" }));
    QVERIFY2(ranAfter >= 49, qPrintable(QString::number(ranAfter)));
}

void MainQueueTest::syncFromAWorkerBlocksUntilTheMainThreadRan()
{
    std::atomic<bool> ranOnMain = false;
    std::atomic<bool> sawResult = false;
    std::atomic<bool> workerIsMain = true;
    std::unique_ptr<QThread> worker(QThread::create([&] {
        workerIsMain = MainQueue::isMainThread();
        int result = 0;
        MainQueue::sync([&] {
            ranOnMain = MainQueue::isMainThread();
            result = 42;
        });
        // Only a blocking call can see the value here.
        sawResult = result == 42;
    }));
    worker->start();
    QTRY_VERIFY(worker->isFinished());
    QVERIFY(!workerIsMain);
    QVERIFY(ranOnMain);
    QVERIFY(sawResult);
}

void MainQueueTest::syncOnTheMainThreadRunsInline()
{
    QVERIFY(MainQueue::isMainThread());
    bool ran = false;
    MainQueue::sync([&] { ran = true; });
    QVERIFY(ran);
}

void MainQueueTest::workerWorkLandsOnTheMainThread()
{
    QStringList log;
    std::unique_ptr<QThread> worker(QThread::create([&] {
        MainQueue::asyncAfter(
            0.01, [&] { log << (MainQueue::isMainThread() ? "after" : "wrong"); });
        MainQueue::async([&] { log << (MainQueue::isMainThread() ? "async" : "wrong"); });
    }));
    worker->start();
    QTRY_COMPARE(log, QStringList({ "async", "after" }));
    QVERIFY(worker->wait());
}

QTEST_GUILESS_MAIN(MainQueueTest)
#include "MainQueueTest.moc"
