#include "BackgroundQueue.h"

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
    pool().start(std::move(fn));
}

} // namespace BackgroundQueue
