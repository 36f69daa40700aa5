#include "MuContext.h"

#include "WorkBudget.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

#include <malloc.h>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace mu {
namespace {

// Lets the other hyperthread of a core run while this one spins.
inline void relax()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

// MuPDF takes these around every allocation, reference count, store, glyph-cache and FreeType
// call, tens of thousands of times a page and almost never against another thread. Taking one is a
// single atomic exchange and giving it back a plain store, where an atomic operation each way
// cost a tenth of the rendering time. A thread that finds the lock held spins briefly (MuPDF holds
// these for a malloc or a glyph), then sleeps on the word; the releaser wakes a sleeper when one
// is counted. As the releaser's store and its read of the count are not ordered, a sleeper may
// miss its wake-up, so it sleeps at most a quarter millisecond before it looks again.
// Each lock has a cache line of its own, so that threads taking different locks do not slow
// each other.
class alignas(64) TableLock
{
public:
    void lock()
    {
        if (m_held.exchange(1, std::memory_order_acquire) != 0) [[unlikely]]
            lockContended();
    }
    void unlock()
    {
        m_held.store(0, std::memory_order_release);
        if (m_sleepers.load(std::memory_order_relaxed) > 0) [[unlikely]]
            wakeSleeper();
    }

private:
    // Out of line, so that the uncontended paths need no stack frame.
    __attribute__((noinline, cold)) void wakeSleeper()
    {
        syscall(SYS_futex, &m_held, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
    }

    __attribute__((noinline, cold)) void lockContended()
    {
        for (int spin = 0; spin < 100; ++spin) {
            relax();
            if (m_held.load(std::memory_order_relaxed) == 0
                && m_held.exchange(1, std::memory_order_acquire) == 0)
                return;
        }
        m_sleepers.fetch_add(1, std::memory_order_seq_cst);
        while (m_held.exchange(1, std::memory_order_acquire) != 0) {
            const timespec nap { 0, 250'000 };
            syscall(SYS_futex, &m_held, FUTEX_WAIT_PRIVATE, 1, &nap, nullptr, 0);
        }
        m_sleepers.fetch_sub(1, std::memory_order_relaxed);
    }

    std::atomic<int> m_held { 0 };
    std::atomic<int> m_sleepers { 0 };
};

static_assert(sizeof(std::atomic<int>) == sizeof(int) && std::atomic<int>::is_always_lock_free);

TableLock g_locks[FZ_LOCK_MAX];

// MuPDF hands back the table as the callbacks' user pointer, which spares reading its address.
void lockTable(void *table, int lock)
{
    static_cast<TableLock *>(table)[lock].lock();
}

void unlockTable(void *table, int lock)
{
    static_cast<TableLock *>(table)[lock].unlock();
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

// MuPDF takes its allocation lock around every malloc and free, so heaps of the C library per
// thread buy its render workers no speed: each heap only keeps the free memory of its own
// thread's highest need, and the process holds the sum of those peaks. One heap for all threads
// reuses whatever any thread freed. Set as the library loads, before any thread starts.
const bool g_oneHeap = mallopt(M_ARENA_MAX, 1) == 1;

// A render allocates pixmaps of megabytes: the page's own at a high zoom, one for each
// transparency group. Above the C library's threshold each is mapped anew, its pages faulted in
// and zeroed by the kernel, and one freed at the heap's top is given back at once, which made a
// page of transparency groups draw ten times slower at 2x. Blocks up to this size come from the
// heap and are reused; its free pages go back when rendering rests (malloc_trim).
constexpr int HeapBlockBytes = 16 << 20;
const bool g_heapKeepsPixmaps = mallopt(M_MMAP_THRESHOLD, HeapBlockBytes) == 1
    && mallopt(M_TRIM_THRESHOLD, 2 * HeapBlockBytes) == 1;

// The library is loaded on the main thread, so this is the main thread's id; the main thread's
// MuPDF memory counts from then on.
const std::thread::id g_mainThread = [] {
    countThreadBytes();
    return std::this_thread::get_id();
}();

// MuPDF's cache of decoded images and fonts. The reading view keeps its own tile cache, so a
// quarter of MuPDF's default is enough and keeps memory flat through photo documents.
constexpr size_t StoreBytes = 64 << 20;

fz_context *baseContext()
{
    // Never dropped: objects may still be released while the process ends.
    static fz_context *const base = [] {
        static const fz_locks_context locks { g_locks, lockTable, unlockTable };
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
        endThreadBytes();
    }
};

thread_local ThreadContext t_context;

} // namespace

size_t storeBytes()
{
    return StoreBytes;
}

bool isMainThread()
{
    return std::this_thread::get_id() == g_mainThread;
}

fz_context *context()
{
    if (std::this_thread::get_id() == g_mainThread)
        return baseContext();
    if (!t_context.ctx) {
        countThreadBytes();
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
