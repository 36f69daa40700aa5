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
        auto context = std::make_unique<QObject>();
        MainQueue::async([&] {
            log << "a";
            // Queued from inside a turn: after everything queued before it.
            MainQueue::async([&] { log << "c"; });
        });
        MainQueue::async(context.get(), [&] { log << "dropped with its context"; });
        MainQueue::asyncAfter(0, context.get(), [&] { log << "dropped later"; });
        MainQueue::async([&] { log << "b"; });
        context.reset();
        QVERIFY(log.isEmpty());
        QTRY_COMPARE(log, QStringList({ "a", "b", "c" }));
    }

    void asyncAfterWaitsItsDelay()
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

    void syncFromAWorkerBlocksUntilTheMainThreadRan()
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
            // Only a call that waited can see the value here.
            sawResult = result == 42;
        }));
        worker->start();
        QTRY_VERIFY(worker->isFinished());
        QVERIFY(!workerIsMain && ranOnMain && sawResult);

        bool ranInline = false;
        MainQueue::sync([&] { ranInline = MainQueue::isMainThread(); });
        QVERIFY(ranInline);
    }

    void workerWorkLandsOnTheMainThread()
    {
        QStringList log;
        const auto record = [&](const QString &what) {
            log << (MainQueue::isMainThread() ? what : "wrong thread");
        };
        std::unique_ptr<QThread> worker(QThread::create([&] {
            MainQueue::asyncAfter(0.01, [&] { record("after"); });
            MainQueue::async([&] { record("async"); });
        }));
        worker->start();
        QTRY_COMPARE(log, QStringList({ "async", "after" }));
        QVERIFY(worker->wait());
    }
};

QTEST_GUILESS_MAIN(MainQueueTest)
#include "MainQueueTest.moc"
