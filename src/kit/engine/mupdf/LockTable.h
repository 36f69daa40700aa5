#pragma once

// The table of locks MuPDF takes around every allocation, reference count, store, glyph-cache and
// FreeType call: tens of thousands of times a page, and most of the time by one thread alone,
// which then takes them without any atomic instruction.

#include <atomic>
#include <chrono>
#include <cstdint>

namespace mu {

class LockTable
{
public:
    static constexpr int Count = 4; // at least MuPDF's FZ_LOCK_MAX
    // Times in a row one thread takes the allocation lock before it owns the table.
    static constexpr int BiasAfter = 20000;
    // How long after a bias was taken back no thread takes one, so that threads taking turns (a
    // find's two, render workers beside the main thread) settle on the atomic words instead of
    // passing the bias between them.
    static constexpr std::chrono::milliseconds HoldOff { 100 };

    explicit LockTable(int biasAfter = BiasAfter, std::chrono::nanoseconds holdOff = HoldOff);
    LockTable(const LockTable &) = delete;
    LockTable &operator=(const LockTable &) = delete;

    // Whether a thread working alone may come to take the locks without atomic instructions (not
    // where the kernel has no process-wide barrier, nor under the sanitizer for threads), and
    // whether one does now.
    bool mayBias() const { return m_mayBias; }
    bool hasOwner() const { return m_owner.load(std::memory_order_relaxed) != 0; }

    // MuPDF's lock callbacks, with the table as their user pointer.
    static void lockEntry(void *table, int index);
    static void unlockEntry(void *table, int index);

private:
    static constexpr std::uintptr_t Revoking = 1;

    struct alignas(64) Slot
    {
        std::atomic<int> held { 0 };
        std::atomic<int> sleepers { 0 };
        // Guarded by held: who took this lock last, and how many times in a row.
        std::uintptr_t lastThread = 0;
        int streak = 0;
    };

    static std::uintptr_t selfId();
    void lock(int index);
    void unlock(int index);
    void lockShared(int index);
    void unlockShared(int index);
    void acquire(Slot &slot);
    void release(Slot &slot);
    void revoke();
    void tryToBias(std::uintptr_t self);
    friend struct BiasRelease;
    void releaseBias();

    Slot m_slots[Count];
    // The thread whose lock calls need no atomic instruction (0: none), with Revoking set while
    // another thread takes the bias back; changed under biasMutex() only.
    alignas(64) std::atomic<std::uintptr_t> m_owner { 0 };
    // How many locks the owner holds: a counter of the owner's own thread, which no other owner
    // ever shares (one that lost the bias a moment ago may still write its own); set with the
    // owner, under biasMutex().
    std::atomic<int> *m_ownerDepth = nullptr;
    // No bias before then; changed under biasMutex() only.
    std::chrono::steady_clock::time_point m_biasFrom {};
    const bool m_mayBias;
    const int m_biasAfter;
    const std::chrono::nanoseconds m_holdOff;
};

} // namespace mu
