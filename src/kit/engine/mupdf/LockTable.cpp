#include "LockTable.h"

#include <chrono>
#include <mutex>
#include <thread>

#include <linux/futex.h>
#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

// How the bias works. The table belongs to no thread at first, and every lock is a word taken with
// an atomic exchange. A thread that takes the allocation lock many times in a row, with no
// other thread in between, makes itself the owner, at a moment it holds no lock and while it
// holds every word, so that no other thread is inside. From then on the owner only counts what it
// holds in a word of its own, with plain stores. A thread that wants a lock of a table owned by
// another takes the bias back: it marks the owner as revoking, makes every thread of the process
// pass a memory barrier (membarrier), which pairs with the owner's compiler barrier, and waits
// until the owner holds nothing; the owner, seeing the mark, finishes what it holds and then takes
// the words like everybody else. For a while after that no thread takes a bias (HoldOff), so that
// threads taking turns pay for a revocation a few times a second at most. The sanitizer for threads
// cannot see those barriers, so under it the table never takes a bias.

namespace mu {
namespace {

// Lets the other hyperthread of a core run while this one spins.
inline void relax()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

// How many locks the calling thread holds by their words, and, while it owns a table, without.
__attribute__((tls_model("initial-exec"))) thread_local constinit int t_sharedDepth = 0;
__attribute__((tls_model("initial-exec"))) thread_local constinit std::atomic<int> t_biasDepth {
    0
};

bool membarrierUsable()
{
#if defined(__SANITIZE_THREAD__)
    return false;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
    return false;
#endif
#endif
    const long commands = syscall(SYS_membarrier, MEMBARRIER_CMD_QUERY, 0, 0);
    return commands > 0 && (commands & MEMBARRIER_CMD_PRIVATE_EXPEDITED)
        && syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) == 0;
}

// Registering for the barrier takes a moment's wait for every processor once the process has
// threads (ten milliseconds here), and nothing before: so it is done as the library loads.
const bool g_barrierRegistered = membarrierUsable();

std::mutex &biasMutex()
{
    static std::mutex mutex;
    return mutex;
}

// The table the calling thread came to own (a thread owns one in its life at most), and whether
// it is ending: plain words, still there while the thread's other objects are destroyed.
__attribute__((tls_model("initial-exec"))) thread_local constinit LockTable *t_ownedTable = nullptr;
__attribute__((tls_model("initial-exec"))) thread_local constinit bool t_ending = false;

} // namespace

// Gives up the table a thread owns as the thread ends, before its counter goes away with it; a
// thread's objects destroyed after this (its MuPDF context) take the words.
struct BiasRelease
{
    bool armed = false;
    ~BiasRelease()
    {
        t_ending = true;
        if (t_ownedTable)
            t_ownedTable->releaseBias();
    }
};

namespace {
thread_local BiasRelease t_biasRelease;
} // namespace

LockTable::LockTable(int biasAfter, std::chrono::nanoseconds holdOff)
    : m_mayBias(g_barrierRegistered)
    , m_biasAfter(biasAfter)
    , m_holdOff(holdOff)
{ }

// The thread pointer: one instruction to read, unique among running threads, and aligned, so
// that the low bit can mark a revoking owner.
inline std::uintptr_t LockTable::selfId()
{
    return reinterpret_cast<std::uintptr_t>(__builtin_thread_pointer());
}

inline void LockTable::lock(int index)
{
    const std::uintptr_t self = selfId();
    if (m_owner.load(std::memory_order_relaxed) == self) [[likely]] {
        const int depth = t_biasDepth.load(std::memory_order_relaxed);
        t_biasDepth.store(depth + 1, std::memory_order_relaxed);
        // Paired with the process-wide barrier of the thread taking the bias back: either that
        // thread sees the depth, or this one sees the mark.
        std::atomic_signal_fence(std::memory_order_seq_cst);
        // While the bias is being taken back, the owner finishes what it holds (no revocation ends
        // while it holds any).
        if (m_owner.load(std::memory_order_relaxed) == self || depth > 0) [[likely]]
            return;
        t_biasDepth.store(depth, std::memory_order_release);
    }
    lockShared(index);
}

inline void LockTable::unlock(int index)
{
    // The owner takes no word while it owns the table, and holds no lock without its word once
    // the bias is gone.
    if (m_owner.load(std::memory_order_relaxed) == selfId()) [[likely]] {
        t_biasDepth.store(
            t_biasDepth.load(std::memory_order_relaxed) - 1, std::memory_order_release);
        return;
    }
    unlockShared(index);
}

void LockTable::lockEntry(void *table, int index)
{
    static_cast<LockTable *>(table)->lock(index);
}

void LockTable::unlockEntry(void *table, int index)
{
    static_cast<LockTable *>(table)->unlock(index);
}

// Taking a word is a single atomic exchange and giving it back a plain store. A thread that finds
// it held spins briefly (MuPDF holds these for a malloc or a glyph), then sleeps on the word; the
// releaser wakes a sleeper when one is counted. As the releaser's store and its read of the count
// are not ordered, a sleeper may miss its wake-up, so it sleeps at most a quarter millisecond
// before it looks again.
void LockTable::acquire(Slot &slot)
{
    if (slot.held.exchange(1, std::memory_order_acquire) == 0) [[likely]]
        return;
    for (int spin = 0; spin < 100; ++spin) {
        relax();
        if (slot.held.load(std::memory_order_relaxed) == 0
            && slot.held.exchange(1, std::memory_order_acquire) == 0)
            return;
    }
    slot.sleepers.fetch_add(1, std::memory_order_seq_cst);
    while (slot.held.exchange(1, std::memory_order_acquire) != 0) {
        const timespec nap { 0, 250'000 };
        syscall(SYS_futex, &slot.held, FUTEX_WAIT_PRIVATE, 1, &nap, nullptr, 0);
    }
    slot.sleepers.fetch_sub(1, std::memory_order_relaxed);
}

void LockTable::release(Slot &slot)
{
    slot.held.store(0, std::memory_order_release);
    if (slot.sleepers.load(std::memory_order_relaxed) > 0) [[unlikely]]
        syscall(SYS_futex, &slot.held, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

void LockTable::lockShared(int index)
{
    const std::uintptr_t self = selfId();
    // The owner holding locks while the bias is taken back finishes with them first.
    if (m_owner.load(std::memory_order_relaxed) == (self | Revoking)) {
        const int depth = t_biasDepth.load(std::memory_order_relaxed);
        if (depth > 0) {
            t_biasDepth.store(depth + 1, std::memory_order_relaxed);
            return;
        }
    }
    Slot &slot = m_slots[index];
    for (;;) {
        // A thread holding a word has seen the table unowned, and no bias begins while any word
        // is held: only a thread holding none ever waits for a bias to go.
        if (m_owner.load(std::memory_order_acquire) != 0) {
            revoke();
            continue;
        }
        acquire(slot);
        if (m_owner.load(std::memory_order_acquire) == 0) [[likely]]
            break;
        // A bias began between the look and the exchange.
        release(slot);
    }
    ++t_sharedDepth;
    if (slot.lastThread == self) {
        ++slot.streak;
    } else {
        slot.lastThread = self;
        slot.streak = 0;
    }
}

void LockTable::unlockShared(int index)
{
    // The owner finishing what it held while the bias is taken back.
    if (m_owner.load(std::memory_order_relaxed) == (selfId() | Revoking)) {
        t_biasDepth.store(
            t_biasDepth.load(std::memory_order_relaxed) - 1, std::memory_order_release);
        return;
    }
    Slot &slot = m_slots[index];
    // Only a thread about to hold no lock may take the bias.
    const bool bias = index == 0 && t_sharedDepth == 1 && slot.streak >= m_biasAfter && m_mayBias;
    if (bias)
        slot.streak = 0;
    release(slot);
    --t_sharedDepth;
    if (bias)
        tryToBias(selfId());
}

void LockTable::tryToBias(std::uintptr_t self)
{
    const std::unique_lock guard(biasMutex(), std::try_to_lock);
    if (!guard.owns_lock() || m_owner.load(std::memory_order_relaxed) != 0 || t_ending
        || (t_ownedTable && t_ownedTable != this) || std::chrono::steady_clock::now() < m_biasFrom)
        return;
    // Every word, without waiting for any, so that no other thread is inside.
    int taken = 0;
    while (taken < Count && m_slots[taken].held.exchange(1, std::memory_order_acquire) == 0)
        ++taken;
    if (taken == Count) {
        t_biasRelease.armed = true; // made now, so that it is destroyed before the context
        t_ownedTable = this;
        t_biasDepth.store(0, std::memory_order_relaxed);
        m_ownerDepth = &t_biasDepth;
        m_owner.store(self, std::memory_order_release);
    }
    while (taken > 0)
        release(m_slots[--taken]);
}

void LockTable::revoke()
{
    const std::lock_guard guard(biasMutex());
    const std::uintptr_t owner = m_owner.load(std::memory_order_relaxed);
    if (owner == 0)
        return;
    m_owner.store(owner | Revoking, std::memory_order_seq_cst);
    syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0);
    for (int spin = 0; m_ownerDepth->load(std::memory_order_acquire) != 0; ++spin) {
        if (spin < 100)
            relax();
        else
            std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
    m_owner.store(0, std::memory_order_release);
    m_ownerDepth = nullptr;
    m_biasFrom = std::chrono::steady_clock::now() + m_holdOff;
}

// The ending thread holds no lock, so no one waits for it to finish.
void LockTable::releaseBias()
{
    const std::lock_guard guard(biasMutex());
    if (m_owner.load(std::memory_order_relaxed) == selfId()) {
        m_owner.store(0, std::memory_order_release);
        m_ownerDepth = nullptr;
    }
}

} // namespace mu
