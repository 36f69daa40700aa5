#include "WorkBudget.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
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

// Bytes MuPDF holds in all threads. Each thread adds its changes in steps of at least
// PublishStep, so that allocating costs no shared write; what a thread has not added yet is added
// when its MuPDF context ends.
constexpr qint64 PublishStep = 64 << 10;
std::atomic<qint64> g_live { 0 };

// One thread's count and scope. Every MuPDF allocation reads it, so it is one plain struct in the
// static TLS block (the library is linked, never loaded later): a read is one instruction, with
// no TLS lookup call and no guard of a destructor.
struct ThreadBudget
{
    qint64 live; // bytes allocated minus bytes freed by this thread
    qint64 base; // live when the innermost scope began
    qint64 limit; // 0: no limit
    qint64 unpublished; // live changes not yet added to g_live
    bool exceeded;
};
__attribute__((tls_model("initial-exec"))) thread_local constinit ThreadBudget t_budget {};

void count(ThreadBudget &budget, qint64 change)
{
    budget.live += change;
    const qint64 pending = budget.unpublished + change;
    if (pending >= PublishStep || pending <= -PublishStep) {
        g_live.fetch_add(pending, std::memory_order_relaxed);
        budget.unpublished = 0;
    } else {
        budget.unpublished = pending;
    }
}

bool refuses(ThreadBudget &budget, qint64 growth)
{
    if (budget.limit <= 0 || budget.live - budget.base + growth <= budget.limit)
        return false;
    budget.exceeded = true;
    return true;
}

void *budgetMalloc(void *, size_t size)
{
    ThreadBudget &budget = t_budget;
    if (refuses(budget, static_cast<qint64>(size)))
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
    const qint64 growth = static_cast<qint64>(size) - before;
    if (growth > 0 && refuses(budget, growth))
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
    return g_live.load(std::memory_order_relaxed);
}

void publishThreadBytes()
{
    g_live.fetch_add(std::exchange(t_budget.unpublished, 0), std::memory_order_relaxed);
}

BudgetScope::BudgetScope(int *abortWord, qint64 memoryLimit, int milliseconds)
    : m_abortWord(abortWord)
    , m_savedBase(t_budget.base)
    , m_savedLimit(t_budget.limit)
    , m_savedExceeded(t_budget.exceeded)
    , m_hasDeadline(abortWord && milliseconds > 0)
{
    ThreadBudget &budget = t_budget;
    qint64 limit = memoryLimit > 0 ? memoryLimit : 0;
    if (budget.limit > 0) {
        const qint64 left = std::max<qint64>(1, budget.limit - (budget.live - budget.base));
        limit = limit > 0 ? std::min(limit, left) : left;
    }
    budget.base = budget.live;
    budget.limit = limit;
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
    // Usage of the inner scope counts against the outer one: its base stays where it was.
    ThreadBudget &budget = t_budget;
    budget.base = m_savedBase;
    budget.limit = m_savedLimit;
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
    if (limit <= 0)
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
