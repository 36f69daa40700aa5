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
    void asyncRunsOnLaterTurnsInOrder()
    {
        QStringList log;
        QElapsedTimer clock;
        clock.start();
        qint64 lateAfter = -1;
        auto context = std::make_unique<QObject>();
        MainQueue::asyncAfter(0.05, [&] {
            lateAfter = clock.elapsed();
            log << "late";
        });
        MainQueue::async([&] {
            log << "a";
            // Queued from inside a turn: after everything queued before it.
            MainQueue::async([&] { log << "c"; });
        });
        MainQueue::async(context.get(), [&] { log << "dropped with its context"; });
        MainQueue::async([&] { log << "b"; });
        context.reset();
        QVERIFY(log.isEmpty());
        QTRY_COMPARE(log, QStringList({ "a", "b", "c", "late" }));
        QVERIFY2(lateAfter >= 49, qPrintable(QString::number(lateAfter)));
    }

    void workerCallsRunOnTheMainThread()
    {
        QStringList log;
        std::atomic<bool> sawResult = false;
        std::atomic<bool> workerIsMain = true;
        const auto record = [&](const QString &what) {
            log << (MainQueue::isMainThread() ? what : "wrong thread");
        };
        std::unique_ptr<QThread> worker(QThread::create([&] {
            workerIsMain = MainQueue::isMainThread();
            int result = 0;
            MainQueue::sync([&] {
                record("sync");
                result = 42;
            });
            // Only a call that waited for the main thread can see the value here.
            sawResult = result == 42;
            MainQueue::asyncAfter(0.01, [&] { record("after"); });
            MainQueue::async([&] { record("async"); });
        }));
        worker->start();
        QTRY_COMPARE(log, QStringList({ "sync", "async", "after" }));
        QVERIFY(sawResult && !workerIsMain);
        QVERIFY(worker->wait());

        MainQueue::sync([&] { record("inline"); });
        QCOMPARE(log.last(), QString("inline"));
    }
};

QTEST_GUILESS_MAIN(MainQueueTest)
#include "MainQueueTest.moc"
