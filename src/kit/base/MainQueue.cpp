#include "MainQueue.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThread>
#include <QTimer>

#include <cmath>
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
    if (QCoreApplication *const app = application())
        QMetaObject::invokeMethod(app, std::move(fn), Qt::QueuedConnection);
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
    if (QCoreApplication *const app = application())
        QMetaObject::invokeMethod(app, std::move(fn), Qt::BlockingQueuedConnection);
}

} // namespace MainQueue
