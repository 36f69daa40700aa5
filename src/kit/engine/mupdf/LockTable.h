#pragma once

// The table of locks MuPDF takes around every allocation, reference count, store, glyph-cache and
// FreeType call: tens of thousands of times a page, and most of the time by one thread alone,
// which then takes them without any atomic instruction.

#include <atomic>
#include <cstdint>

namespace mu {

class LockTable
{
public:
    static constexpr int Count = 4; // at least MuPDF's FZ_LOCK_MAX
    // Times in a row one thread takes the allocation lock before it owns the table.
    static constexpr int BiasAfter = 20000;

    explicit LockTable(int biasAfter = BiasAfter);
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

    Slot m_slots[Count];
    // The thread whose lock calls need no atomic instruction (0: none), with Revoking set while
    // another thread takes the bias back; changed under biasMutex() only.
    alignas(64) std::atomic<std::uintptr_t> m_owner { 0 };
    // How many locks the owner holds; written by the owner alone.
    alignas(64) std::atomic<int> m_ownerDepth { 0 };
    const bool m_mayBias;
    const int m_biasAfter;
};

} // namespace mu
