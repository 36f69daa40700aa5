#include "MainQueue.h"

#include "ThreadHandoff.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <climits>
#include <cmath>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace {

// The kit is loaded before main() runs, so this is the thread that starts the process; it
// answers isMainThread() until a QCoreApplication exists.
const std::thread::id startThread = std::this_thread::get_id();

QCoreApplication *application()
{
    QCoreApplication *const app = QCoreApplication::instance();
    if (!app)
        qWarning("MainQueue: no QCoreApplication, the work is dropped");
    return app;
}

int milliseconds(double seconds)
{
    if (!(seconds > 0))
        return 0;
    return static_cast<int>(std::min(std::llround(seconds * 1000.0), qint64(INT_MAX)));
}

} // namespace

namespace MainQueue {

bool isMainThread()
{
    if (const QCoreApplication *const app = QCoreApplication::instance())
        return QThread::currentThread() == app->thread();
    return std::this_thread::get_id() == startThread;
}

void async(std::function<void()> fn)
{
    if (QCoreApplication *const app = application()) {
        // Marked for the race checker, which cannot see inside Qt's event queue: what the
        // caller wrote before posting is the main thread's to read.
        auto call = std::make_shared<std::function<void()>>(std::move(fn));
        ThreadHandoff::handOver(call.get());
        QMetaObject::invokeMethod(
            app,
            [call] {
                ThreadHandoff::takeOver(call.get());
                (*call)();
            },
            Qt::QueuedConnection);
    }
}

void async(QObject *context, std::function<void()> fn)
{
    // The guard is read on the main thread, where a main-thread context is destroyed.
    async([guard = QPointer<QObject>(context), fn = std::move(fn)] {
        if (guard)
            fn();
    });
}

void asyncAfter(double seconds, std::function<void()> fn)
{
    const int ms = milliseconds(seconds);
    if (isMainThread()) {
        if (QCoreApplication *const app = application())
            QTimer::singleShot(ms, Qt::PreciseTimer, app, std::move(fn));
        return;
    }
    // A timer must start on the main thread so that it fires there; a worker may have no event
    // dispatcher at all.
    async([ms, fn = std::move(fn)] {
        QTimer::singleShot(ms, Qt::PreciseTimer, QCoreApplication::instance(), fn);
    });
}

void asyncAfter(double seconds, QObject *context, std::function<void()> fn)
{
    asyncAfter(seconds, [guard = QPointer<QObject>(context), fn = std::move(fn)] {
        if (guard)
            fn();
    });
}

void sync(std::function<void()> fn)
{
    if (isMainThread()) {
        fn();
        return;
    }
    if (!application())
        return;
    // The waiter is released when the queued call is destroyed: after it ran, or when the event
    // loop throws it away unrun at exit, so a worker never waits for ever. Standard primitives,
    // rather than a blocking queued connection, so that thread checkers see the hand-over.
    struct Done
    {
        std::mutex mutex;
        std::condition_variable condition;
        bool done = false;
    };
    struct Release
    {
        explicit Release(std::shared_ptr<Done> done)
            : state(std::move(done))
        { }
        Release(const Release &) = delete;
        Release &operator=(const Release &) = delete;
        std::shared_ptr<Done> state;
        ~Release()
        {
            const std::lock_guard lock(state->mutex);
            state->done = true;
            state->condition.notify_all();
        }
    };
    const auto state = std::make_shared<Done>();
    async([fn = std::move(fn), release = std::make_shared<Release>(state)] { fn(); });
    std::unique_lock lock(state->mutex);
    state->condition.wait(lock, [&state] { return state->done; });
}

} // namespace MainQueue
