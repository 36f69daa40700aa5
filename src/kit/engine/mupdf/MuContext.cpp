#include "MuContext.h"

#include "WorkBudget.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace mu {
namespace {

// MuPDF takes these around every store, glyph-cache and FreeType call, thousands of times a
// page and almost never against another thread: one atomic exchange each way, and a futex wait
// only when another thread holds the lock. 0 free, 1 held, 2 held with threads waiting.
class TableLock
{
public:
    void lock()
    {
        int state = 0;
        if (m_state.compare_exchange_strong(state, 1, std::memory_order_acquire))
            return;
        if (state != 2)
            state = m_state.exchange(2, std::memory_order_acquire);
        while (state != 0) {
            m_state.wait(2, std::memory_order_relaxed);
            state = m_state.exchange(2, std::memory_order_acquire);
        }
    }
    void unlock()
    {
        if (m_state.fetch_sub(1, std::memory_order_release) != 1) {
            m_state.store(0, std::memory_order_release);
            m_state.notify_one();
        }
    }

private:
    std::atomic<int> m_state { 0 };
};

TableLock g_locks[FZ_LOCK_MAX];

void lockTable(void *, int lock)
{
    g_locks[lock].lock();
}

void unlockTable(void *, int lock)
{
    g_locks[lock].unlock();
}

// MuPDF prints every error and warning, handled or not; the engine reports the failures it
// returns to its callers itself, so the library's own printing is dropped.
void quietSink(void *, const char *)
{ }

void silence(fz_context *ctx)
{
    fz_set_error_callback(ctx, quietSink, nullptr);
    fz_set_warning_callback(ctx, quietSink, nullptr);
}

// The library is loaded on the main thread, so this is the main thread's id.
const std::thread::id g_mainThread = std::this_thread::get_id();

// MuPDF's cache of decoded images and fonts. The reading view keeps its own tile cache, so a
// quarter of MuPDF's default is enough and keeps memory flat through photo documents.
constexpr size_t StoreBytes = 64 << 20;

fz_context *baseContext()
{
    // Never dropped: objects may still be released while the process ends.
    static fz_context *const base = [] {
        static const fz_locks_context locks { nullptr, lockTable, unlockTable };
        fz_context *ctx = fz_new_context(budgetAllocator(), &locks, StoreBytes);
        if (!ctx) {
            std::fputs("MuPDF context could not be created\n", stderr);
            std::abort();
        }
        silence(ctx);
        return ctx;
    }();
    return base;
}

struct ThreadContext
{
    fz_context *ctx = nullptr;
    ~ThreadContext()
    {
        if (ctx)
            fz_drop_context(ctx);
    }
};

thread_local ThreadContext t_context;

} // namespace

bool isMainThread()
{
    return std::this_thread::get_id() == g_mainThread;
}

fz_context *context()
{
    if (std::this_thread::get_id() == g_mainThread)
        return baseContext();
    if (!t_context.ctx) {
        t_context.ctx = fz_clone_context(baseContext());
        if (!t_context.ctx) {
            std::fputs("MuPDF context could not be cloned\n", stderr);
            std::abort();
        }
        silence(t_context.ctx);
    }
    return t_context.ctx;
}

} // namespace mu
