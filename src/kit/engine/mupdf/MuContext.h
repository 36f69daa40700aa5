#pragma once

// The MuPDF context of the calling thread: one base context with a lock table, and one clone per
// other thread, made on first use and dropped when the thread ends. Private to the engine.

extern "C" {
#include <mupdf/fitz.h>
#include <mupdf/pdf.h>
}

namespace mu {

// The context every MuPDF call of this thread must use.
fz_context *context();
// The most MuPDF's store (its cache of decoded fonts and images) holds, in bytes.
size_t storeBytes();
// Whether the calling thread is the one that loaded the library, the application's main thread.
bool isMainThread();

// Holds MuPDF's allocation lock, under which it changes reference counts and its list of open
// pages. Taken through the context's table: MuPDF's inline fz_lock also checks a table of held
// locks that only its debug builds have.
class AllocationLock
{
public:
    explicit AllocationLock(fz_context *ctx)
        : m_ctx(ctx)
    {
        m_ctx->locks.lock(m_ctx->locks.user, FZ_LOCK_ALLOC);
    }
    ~AllocationLock() { m_ctx->locks.unlock(m_ctx->locks.user, FZ_LOCK_ALLOC); }
    AllocationLock(const AllocationLock &) = delete;
    AllocationLock &operator=(const AllocationLock &) = delete;

private:
    fz_context *m_ctx;
};

} // namespace mu
