#include "WorkBudget.h"

#include "ContentBound.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <limits>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include <malloc.h>

namespace mu {
namespace {

// A block counts as the bytes the C library gives it, which it tells for every block it made,
// so that frees and reallocations keep the count exact without a size stored in front of each
// block (MuPDF's blocks are mostly a few dozen bytes, which such a header makes half as large
// again).
qint64 blockBytes(void *block)
{
    return static_cast<qint64>(malloc_usable_size(block));
}

// The ceiling of a thread outside any limited scope: never reached, and far enough from the
// type's end that subtracting a count (negative where a thread frees what others allocated) never
// overflows.
constexpr qint64 NoCeiling = std::numeric_limits<qint64>::max() / 2;

// One thread's count and scope. Every MuPDF allocation reads it, so it is one plain struct in the
// static TLS block (the library is linked, never loaded later): a read is one instruction, with
// no TLS lookup call and no guard of a destructor. Only its thread writes live, which
// liveBytes() reads from others as it is, so a block costs no shared write.
struct ThreadBudget
{
    qint64 live; // bytes allocated minus bytes freed by this thread
    qint64 ceiling; // what live may reach in the innermost scope; NoCeiling: no limit
    bool exceeded;
    bool counted; // in the list of threads liveBytes() sums
    ThreadBudget *next;
};
__attribute__((tls_model("initial-exec"))) thread_local constinit ThreadBudget t_budget { 0,
    NoCeiling, false, false, nullptr };

// The threads with a MuPDF context, and what ended ones left behind.
constinit std::mutex g_threadsMutex;
constinit ThreadBudget *g_threads = nullptr; // guarded by g_threadsMutex
constinit qint64 g_endedBytes = 0; // guarded by g_threadsMutex

qint64 liveOf(const ThreadBudget &budget)
{
    return std::atomic_ref<const qint64>(budget.live).load(std::memory_order_relaxed);
}

// Only the owning thread writes, so a plain load and store: no locked instruction.
void count(ThreadBudget &budget, qint64 change)
{
    std::atomic_ref<qint64>(budget.live).store(budget.live + change, std::memory_order_relaxed);
}

// Whether growth would take live past the ceiling; notes the refusal. A size_t past the
// signed range is refused too.
bool refuses(ThreadBudget &budget, size_t growth)
{
    const qint64 room = budget.ceiling - budget.live;
    if (room >= 0 && growth <= static_cast<size_t>(room)) [[likely]]
        return false;
    budget.exceeded = true;
    return true;
}

void *budgetMalloc(void *, size_t size)
{
    ThreadBudget &budget = t_budget;
    if (refuses(budget, size))
        return nullptr;
    void *block = std::malloc(size);
    if (block)
        count(budget, blockBytes(block));
    return block;
}

// MuPDF never reallocates to zero bytes (it frees instead), so a null result is a failure that
// left the old block as it was.
void *budgetRealloc(void *, void *old, size_t size)
{
    if (!old)
        return budgetMalloc(nullptr, size);
    ThreadBudget &budget = t_budget;
    const qint64 before = blockBytes(old);
    if (size > static_cast<size_t>(before) && refuses(budget, size - static_cast<size_t>(before)))
        return nullptr;
    void *moved = std::realloc(old, size);
    if (moved)
        count(budget, blockBytes(moved) - before);
    return moved;
}

void budgetFree(void *, void *block)
{
    if (!block)
        return;
    count(t_budget, -blockBytes(block));
    std::free(block);
}

// Raises abort words at their deadlines, from one thread that sleeps until the next one. Work
// that ends in time only takes its entry out: the thread, woken at that deadline for nothing,
// looks for the next one. So adding an entry wakes it only when it sleeps past the new deadline,
// and a page rendered costs no wake-up of another thread.
class Watchdog
{
public:
    static Watchdog &instance()
    {
        // Never destroyed: its thread runs until the process ends.
        static Watchdog *const watchdog = new Watchdog;
        return *watchdog;
    }

    void add(int *word, std::chrono::steady_clock::time_point deadline)
    {
        const std::lock_guard lock(m_mutex);
        m_entries.emplace(deadline, word);
        if (!m_started) {
            m_started = true;
            std::thread([this] { loop(); }).detach();
        }
        if (deadline < m_wakeAt)
            m_wake.notify_one();
    }

    void remove(int *word)
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_entries, [word](const auto &entry) { return entry.second == word; });
    }

private:
    void loop()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            const auto now = std::chrono::steady_clock::now();
            while (!m_entries.empty() && m_entries.begin()->first <= now) {
                std::atomic_ref<int>(*m_entries.begin()->second).store(1);
                m_entries.erase(m_entries.begin());
            }
            if (m_entries.empty()) {
                m_wakeAt = std::chrono::steady_clock::time_point::max();
                m_wake.wait(lock);
            } else {
                m_wakeAt = m_entries.begin()->first;
                m_wake.wait_until(lock, m_wakeAt);
            }
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::multimap<std::chrono::steady_clock::time_point, int *> m_entries;
    // When the thread looks next (max: only when woken); guarded by m_mutex.
    std::chrono::steady_clock::time_point m_wakeAt = std::chrono::steady_clock::time_point::max();
    bool m_started = false;
};

} // namespace

const fz_alloc_context *budgetAllocator()
{
    static const fz_alloc_context allocator { nullptr, budgetMalloc, budgetRealloc, budgetFree };
    return &allocator;
}

qint64 liveBytes()
{
    const std::lock_guard lock(g_threadsMutex);
    qint64 bytes = g_endedBytes;
    for (const ThreadBudget *budget = g_threads; budget; budget = budget->next)
        bytes += liveOf(*budget);
    return bytes;
}

void countThreadBytes()
{
    ThreadBudget &budget = t_budget;
    if (budget.counted)
        return;
    const std::lock_guard lock(g_threadsMutex);
    budget.counted = true;
    budget.next = g_threads;
    g_threads = &budget;
}

void endThreadBytes()
{
    ThreadBudget &budget = t_budget;
    if (!budget.counted)
        return;
    const std::lock_guard lock(g_threadsMutex);
    for (ThreadBudget **link = &g_threads; *link; link = &(*link)->next) {
        if (*link == &budget) {
            *link = budget.next;
            break;
        }
    }
    g_endedBytes += budget.live;
    budget.counted = false;
}

BudgetScope::BudgetScope(int *abortWord, qint64 memoryLimit, int milliseconds)
    : m_abortWord(abortWord)
    , m_savedCeiling(t_budget.ceiling)
    , m_savedExceeded(t_budget.exceeded)
    , m_hasDeadline(abortWord && milliseconds > 0)
{
    ThreadBudget &budget = t_budget;
    qint64 limit = memoryLimit > 0 ? memoryLimit : 0;
    if (budget.ceiling != NoCeiling) {
        const qint64 left = std::max<qint64>(1, budget.ceiling - budget.live);
        limit = limit > 0 ? std::min(limit, left) : left;
    }
    budget.ceiling = limit > 0 ? budget.live + std::min(limit, NoCeiling / 2) : NoCeiling;
    budget.exceeded = false;
    if (m_hasDeadline) {
        m_deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        Watchdog::instance().add(m_abortWord, m_deadline);
    }
}

BudgetScope::~BudgetScope()
{
    if (m_hasDeadline)
        Watchdog::instance().remove(m_abortWord);
    // Usage of the inner scope counts against the outer one: its ceiling stays where it was.
    ThreadBudget &budget = t_budget;
    budget.ceiling = m_savedCeiling;
    budget.exceeded = m_savedExceeded || budget.exceeded;
}

bool BudgetScope::memoryExceeded() const
{
    return t_budget.exceeded;
}

bool BudgetScope::timedOut() const
{
    return m_hasDeadline && std::chrono::steady_clock::now() >= m_deadline;
}

void checkContentLength(fz_context *ctx, pdf_page *page, fz_cookie *cookie, qint64 limit)
{
    checkContentLength(ctx, page->doc, pdf_page_contents(ctx, page), cookie, limit);
}

void checkContentLength(
    fz_context *ctx, pdf_document *doc, pdf_obj *contents, fz_cookie *cookie, qint64 limit)
{
    if (limit <= 0 || contentsDecodeWithin(ctx, contents, limit))
        return;
    fz_stream *stream = pdf_open_contents_stream(ctx, doc, contents);
    fz_try(ctx)
    {
        qint64 total = 0;
        for (;;) {
            const size_t skipped = fz_skip(ctx, stream, 1 << 20);
            total += static_cast<qint64>(skipped);
            if (total > limit)
                fz_throw(ctx, FZ_ERROR_GENERIC, "page content is larger than %lld bytes",
                    static_cast<long long>(limit));
            if (skipped == 0 || (cookie && std::atomic_ref<int>(cookie->abort).load()))
                break;
        }
    }
    fz_always(ctx)
    {
        fz_drop_stream(ctx, stream);
    }
    fz_catch(ctx)
    {
        fz_rethrow(ctx);
    }
}

} // namespace mu
