#include "PageTreeReadAhead.h"

#include "PageTreeWalk.h"
#include "mupdf/DocumentHandle.h"

#include <kit/base/BackgroundQueue.h>

#include <QDeadlineTimer>

namespace PageTreeReadAhead {
namespace {

// A turn of the background queue walks for this long, then lets other chores in.
constexpr int SliceMilliseconds = 8;

struct Job
{
    std::shared_ptr<mu::DocumentHandle> handle;
    std::shared_ptr<const std::atomic<bool>> walked;
    std::shared_ptr<std::atomic<bool>> running;
    PageTreeWalk walk;
    bool started = false;
};

void walkOn(const std::shared_ptr<Job> &job)
{
    mu::DocumentHandle &handle = *job->handle;
    const QDeadlineTimer deadline(SliceMilliseconds);
    bool more = true;
    while (more) {
        // The job alone holds the document: it was closed; or the reader's walk is through.
        if (job->handle.use_count() == 1 || job->walked->load())
            more = false;
        // A main thread waiting for the document goes first.
        handle.mutex().waitForMainThread();
        const mu::Lock lock(handle.mutex());
        fz_context *ctx = mu::context();
        if (more && !std::exchange(job->started, true))
            more = job->walk.start(ctx, handle.doc()) > 0;
        if (more) {
            pdf_obj *page = nullptr;
            more = job->walk.next(ctx, page) == PageTreeWalk::Step::Page;
            mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, page); });
        }
        if (!more) {
            job->walk.clear();
            job->running->store(false);
            return;
        }
        if (deadline.hasExpired())
            break;
    }
    BackgroundQueue::async([job] { walkOn(job); });
}

} // namespace

void start(const std::shared_ptr<mu::DocumentHandle> &handle,
    const std::shared_ptr<const std::atomic<bool>> &walked,
    const std::shared_ptr<std::atomic<bool>> &running)
{
    if (!handle || !walked || !running)
        return;
    auto job = std::make_shared<Job>();
    job->handle = handle;
    job->walked = walked;
    job->running = running;
    running->store(true);
    BackgroundQueue::async([job] { walkOn(job); });
}

} // namespace PageTreeReadAhead
