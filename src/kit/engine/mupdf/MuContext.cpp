#include "MuContext.h"

#include "LockTable.h"
#include "WorkBudget.h"

#include <cstdio>
#include <cstdlib>
#include <thread>

#include <malloc.h>

namespace mu {
namespace {

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
        static_assert(FZ_LOCK_MAX <= LockTable::Count);
        static LockTable table;
        static const fz_locks_context locks { &table, LockTable::lockEntry,
            LockTable::unlockEntry };
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
