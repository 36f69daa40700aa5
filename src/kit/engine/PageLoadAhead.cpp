#include "PageLoadAhead.h"

#include "mupdf/DocumentHandle.h"
#include "mupdf/MuContext.h"

#include <kit/base/BackgroundQueue.h>

#include <QDeadlineTimer>

#include <utility>

namespace {

// About two screens of pages at the smallest scale a reader scrolls at.
constexpr size_t MaxHeld = 12;
// A turn of the background queue loads for this long, then lets other chores in.
constexpr int SliceMilliseconds = 8;

int referenceCount(fz_context *ctx, const pdf_page *page)
{
    const mu::AllocationLock lock(ctx);
    return page->super.refs;
}

} // namespace

PageLoadAhead::PageLoadAhead(std::shared_ptr<mu::DocumentHandle> handle)
    : m_handle(std::move(handle))
{ }

PageLoadAhead::~PageLoadAhead()
{
    if (m_held.empty() || !m_handle)
        return;
    const mu::Lock lock(m_handle->mutex());
    dropLocked();
}

void PageLoadAhead::want(std::vector<Wanted> pages)
{
    // More would let go of the nearest pages to load the furthest.
    if (pages.size() > MaxHeld)
        pages.resize(MaxHeld);
    const std::lock_guard guard(m_wantedMutex);
    m_wanted = std::move(pages);
    if (m_wanted.empty() || std::exchange(m_loading, true))
        return;
    BackgroundQueue::async([self = shared_from_this()] { self->loadOn(); });
}

void PageLoadAhead::dropLocked()
{
    {
        const std::lock_guard guard(m_wantedMutex);
        m_wanted.clear();
    }
    fz_context *ctx = mu::context();
    for (pdf_page *page : std::exchange(m_held, {}))
        mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &page->super); });
}

void PageLoadAhead::loadOn()
{
    mu::DocumentMutex &mutex = m_handle->mutex();
    const QDeadlineTimer deadline(SliceMilliseconds);
    for (;;) {
        Wanted next;
        {
            const std::lock_guard guard(m_wantedMutex);
            // Nobody else holds this any more: the document was closed or moved on.
            if (m_wanted.empty() || weak_from_this().use_count() <= 1) {
                m_loading = false;
                return;
            }
            if (deadline.hasExpired())
                break;
            next = m_wanted.front();
            m_wanted.erase(m_wanted.begin());
        }
        // A main thread waiting for the document goes first.
        mutex.waitForMainThread();
        const mu::Lock lock(mutex);
        loadLocked(next);
    }
    BackgroundQueue::async([self = shared_from_this()] { self->loadOn(); });
}

void PageLoadAhead::loadLocked(const Wanted &wanted)
{
    fz_context *ctx = mu::context();
    pdf_document *const doc = m_handle->doc();
    pdf_page *loaded = nullptr;
    int object = 0;
    mu::Error error;
    mu::run(ctx, error, [&] {
        if (wanted.index < 0 || wanted.index >= pdf_count_pages(ctx, doc))
            return;
        loaded = pdf_load_page(ctx, doc, wanted.index);
        object = pdf_to_num(ctx, loaded->obj);
    });
    if (!loaded)
        return;
    // Open already (the reader's page holds it), or not the page asked for: nothing to keep.
    if (object != wanted.object || referenceCount(ctx, loaded) > 1) {
        mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &loaded->super); });
        return;
    }
    m_held.push_back(loaded);
    while (m_held.size() > MaxHeld) {
        pdf_page *const oldest = m_held.front();
        m_held.pop_front();
        mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &oldest->super); });
    }
}
