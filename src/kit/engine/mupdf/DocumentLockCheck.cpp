#include "DocumentLockCheck.h"

#ifdef FOLIDOC_LOCK_CHECK

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include <execinfo.h>

namespace mu::DocumentLockCheck {
namespace {

// The shared documents and their locks. Looked up on every object resolved, by every thread, so
// a fixed table of atomics rather than a map behind a mutex, which would serialise the workers.
struct Shared
{
    std::atomic<const pdf_document *> doc { nullptr };
    std::atomic<const DocumentMutex *> mutex { nullptr };
};
std::array<Shared, 256> g_shared;

// The locks this thread holds, innermost last. Plain data, with no destructor: a thread's
// objects destroyed after its thread-locals (the main thread's statics at exit) still take locks.
constexpr int MaxHeld = 32;
struct Held
{
    const DocumentMutex *locks[MaxHeld];
    int count; // past MaxHeld: the thread goes unchecked until it is back under
};
thread_local constinit Held t_held {};

// A PDF document is its own fz_document: either pointer finds it.
void check(const void *doc, const char *call)
{
    if (!doc)
        return;
    for (const Shared &entry : g_shared) {
        if (static_cast<const void *>(entry.doc.load(std::memory_order_acquire)) != doc)
            continue;
        const DocumentMutex *const mutex = entry.mutex.load(std::memory_order_acquire);
        if (!mutex)
            return;
        if (t_held.count > MaxHeld)
            return;
        for (int i = 0; i < t_held.count; ++i) {
            if (t_held.locks[i] == mutex)
                return;
        }
        std::fprintf(stderr, "%s on a shared document without its lock\n", call);
        void *frames[48];
        backtrace_symbols_fd(frames, backtrace(frames, 48), 2);
        std::abort();
    }
}

} // namespace

void shareDocument(const pdf_document *doc, const DocumentMutex *mutex)
{
    for (Shared &entry : g_shared) {
        const pdf_document *empty = nullptr;
        if (entry.doc.load() == nullptr && entry.mutex.load() == nullptr
            && entry.doc.compare_exchange_strong(empty, doc)) {
            entry.mutex.store(mutex, std::memory_order_release);
            return;
        }
    }
    // A full table leaves the document unchecked.
}

void forgetDocument(const pdf_document *doc)
{
    for (Shared &entry : g_shared) {
        if (entry.doc.load() == doc) {
            entry.doc.store(nullptr);
            entry.mutex.store(nullptr);
        }
    }
}

void lockTaken(const DocumentMutex *mutex)
{
    if (t_held.count < MaxHeld)
        t_held.locks[t_held.count] = mutex;
    ++t_held.count;
}

void lockReleased(const DocumentMutex *mutex)
{
    if (t_held.count > MaxHeld) {
        --t_held.count;
        return;
    }
    for (int i = t_held.count - 1; i >= 0; --i) {
        if (t_held.locks[i] == mutex) {
            std::copy(t_held.locks + i + 1, t_held.locks + t_held.count, t_held.locks + i);
            --t_held.count;
            return;
        }
    }
}

} // namespace mu::DocumentLockCheck

// The calls checked, through --wrap (see src/CMakeLists.txt).
extern "C" {

pdf_obj *__real_pdf_resolve_indirect(fz_context *ctx, pdf_obj *ref);
pdf_obj *__real_pdf_resolve_indirect_chain(fz_context *ctx, pdf_obj *ref);
pdf_page *__real_pdf_load_page(fz_context *ctx, pdf_document *doc, int number);
pdf_font_desc *__real_pdf_load_font(fz_context *ctx, pdf_document *doc, pdf_obj *rdb, pdf_obj *obj);
fz_page *__real_fz_keep_page(fz_context *ctx, fz_page *page);
void __real_fz_drop_page(fz_context *ctx, fz_page *page);

pdf_obj *__wrap_pdf_resolve_indirect(fz_context *ctx, pdf_obj *ref)
{
    mu::DocumentLockCheck::check(pdf_get_indirect_document(ctx, ref), "resolving an object");
    return __real_pdf_resolve_indirect(ctx, ref);
}

pdf_obj *__wrap_pdf_resolve_indirect_chain(fz_context *ctx, pdf_obj *ref)
{
    mu::DocumentLockCheck::check(pdf_get_indirect_document(ctx, ref), "resolving an object");
    return __real_pdf_resolve_indirect_chain(ctx, ref);
}

pdf_page *__wrap_pdf_load_page(fz_context *ctx, pdf_document *doc, int number)
{
    mu::DocumentLockCheck::check(doc, "loading a page");
    return __real_pdf_load_page(ctx, doc, number);
}

pdf_font_desc *__wrap_pdf_load_font(fz_context *ctx, pdf_document *doc, pdf_obj *rdb, pdf_obj *obj)
{
    mu::DocumentLockCheck::check(doc, "loading a font");
    return __real_pdf_load_font(ctx, doc, rdb, obj);
}

fz_page *__wrap_fz_keep_page(fz_context *ctx, fz_page *page)
{
    if (page)
        mu::DocumentLockCheck::check(page->doc, "keeping a page");
    return __real_fz_keep_page(ctx, page);
}

void __wrap_fz_drop_page(fz_context *ctx, fz_page *page)
{
    if (page)
        mu::DocumentLockCheck::check(page->doc, "dropping a page");
    __real_fz_drop_page(ctx, page);
}

} // extern "C"

#endif
