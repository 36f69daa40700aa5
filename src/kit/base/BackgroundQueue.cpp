#include "BackgroundQueue.h"

#include "ThreadHandoff.h"

#include <QThreadPool>

namespace BackgroundQueue {

QThreadPool &pool()
{
    // Made once and kept until the process ends, like Qt's global pool.
    static QThreadPool *const threads = [] {
        auto *const made = new QThreadPool;
        made->setObjectName(QStringLiteral("BackgroundQueue"));
        made->setMaxThreadCount(2);
        return made;
    }();
    return *threads;
}

void async(std::function<void()> fn)
{
    // Held by pointer so that the job, and all it captured, ends on the pool's thread.
    auto *const job = new std::function<void()>(std::move(fn));
    ThreadHandoff::handOver(job);
    pool().start([job] {
        ThreadHandoff::takeOver(job);
        (*job)();
        delete job;
    });
}

} // namespace BackgroundQueue
