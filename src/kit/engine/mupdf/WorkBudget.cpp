#include "WorkBudget.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <map>
#include <mutex>
#include <thread>

namespace mu {
namespace {

// Each block carries its size in front, so frees and reallocations keep the count exact.
struct alignas(16) Header
{
    size_t size;
};

thread_local qint64 t_live = 0; // bytes allocated minus bytes freed by this thread
thread_local qint64 t_base = 0; // t_live when the innermost scope began
thread_local qint64 t_limit = 0; // 0: no limit
thread_local bool t_exceeded = false;

// Bytes MuPDF holds in all threads. Each thread adds its changes in steps of at least
// PublishStep, so that allocating costs no shared write; what a thread has not added yet is added
// when it ends.
constexpr qint64 PublishStep = 64 << 10;
std::atomic<qint64> g_live { 0 };

struct Unpublished
{
    qint64 bytes = 0;
    ~Unpublished() { g_live.fetch_add(bytes, std::memory_order_relaxed); }
};
thread_local Unpublished t_unpublished;

void count(qint64 change)
{
    t_live += change;
    qint64 &pending = t_unpublished.bytes;
    pending += change;
    if (pending >= PublishStep || pending <= -PublishStep) {
        g_live.fetch_add(pending, std::memory_order_relaxed);
        pending = 0;
    }
}

bool refuses(qint64 growth)
{
    if (t_limit <= 0 || t_live - t_base + growth <= t_limit)
        return false;
    t_exceeded = true;
    return true;
}

void *budgetMalloc(void *, size_t size)
{
    if (refuses(static_cast<qint64>(size)))
        return nullptr;
    auto *header = static_cast<Header *>(std::malloc(size + sizeof(Header)));
    if (!header)
        return nullptr;
    header->size = size;
    count(static_cast<qint64>(size));
    return header + 1;
}

void *budgetRealloc(void *, void *old, size_t size)
{
    if (!old)
        return budgetMalloc(nullptr, size);
    Header *header = static_cast<Header *>(old) - 1;
    const qint64 growth = static_cast<qint64>(size) - static_cast<qint64>(header->size);
    if (growth > 0 && refuses(growth))
        return nullptr;
    auto *moved = static_cast<Header *>(std::realloc(header, size + sizeof(Header)));
    if (!moved)
        return nullptr;
    moved->size = size;
    count(growth);
    return moved + 1;
}

void budgetFree(void *, void *block)
{
    if (!block)
        return;
    Header *header = static_cast<Header *>(block) - 1;
    count(-static_cast<qint64>(header->size));
    std::free(header);
}

// Raises abort words at their deadlines, from one thread that sleeps until the next one.
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
            if (m_entries.empty()) {
                m_wake.wait(lock);
                continue;
            }
            const auto next = m_entries.begin()->first;
            if (std::chrono::steady_clock::now() < next) {
                m_wake.wait_until(lock, next);
                continue;
            }
            std::atomic_ref<int>(*m_entries.begin()->second).store(1);
            m_entries.erase(m_entries.begin());
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::multimap<std::chrono::steady_clock::time_point, int *> m_entries;
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

BudgetScope::BudgetScope(int *abortWord, qint64 memoryLimit, int milliseconds)
    : m_abortWord(abortWord)
    , m_savedBase(t_base)
    , m_savedLimit(t_limit)
    , m_savedExceeded(t_exceeded)
    , m_hasDeadline(abortWord && milliseconds > 0)
{
    qint64 limit = memoryLimit > 0 ? memoryLimit : 0;
    if (t_limit > 0) {
        const qint64 left = std::max<qint64>(1, t_limit - (t_live - t_base));
        limit = limit > 0 ? std::min(limit, left) : left;
    }
    t_base = t_live;
    t_limit = limit;
    t_exceeded = false;
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
    t_base = m_savedBase;
    t_limit = m_savedLimit;
    t_exceeded = m_savedExceeded || t_exceeded;
}

bool BudgetScope::memoryExceeded() const
{
    return t_exceeded;
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
