// MuPDF's allocation entry points without its allocation lock on the way that succeeds.
//
// MuPDF takes FZ_LOCK_ALLOC around every malloc, realloc and free, because an allocator it is
// given might not be thread-safe; tens of thousands of times a page, that lock was a tenth of the
// rendering time. The engine's allocator (WorkBudget) is thread-safe: it counts per thread and
// calls the C library. So the library is linked with --wrap for these entry points (see
// src/CMakeLists.txt), and MuPDF's own code calls the functions below, which call the allocator
// straight. Only a refusal goes on to MuPDF's function, which takes the lock, empties its store
// as far as needed and tries again, or throws: the same outcome as before.

#include <mupdf/fitz.h>

#include <cstring>

extern "C" {

void *__real_fz_malloc(fz_context *ctx, size_t size);
void *__real_fz_malloc_no_throw(fz_context *ctx, size_t size);
void *__real_fz_calloc(fz_context *ctx, size_t count, size_t size);
void *__real_fz_calloc_no_throw(fz_context *ctx, size_t count, size_t size);
void *__real_fz_realloc(fz_context *ctx, void *block, size_t size);
void *__real_fz_realloc_no_throw(fz_context *ctx, void *block, size_t size);

} // extern "C"

namespace {

// The allocator straight; MuPDF's own function only when it refuses.
template <void *(*Fallback)(fz_context *, size_t)> void *allocate(fz_context *ctx, size_t size)
{
    if (size == 0)
        return nullptr;
    if (void *block = ctx->alloc.malloc(ctx->alloc.user, size)) [[likely]]
        return block;
    return Fallback(ctx, size);
}

// A product past SIZE_MAX goes to MuPDF's function, which refuses it.
template <void *(*Fallback)(fz_context *, size_t, size_t)>
void *allocateZeroed(fz_context *ctx, size_t count, size_t size)
{
    if (count == 0 || size == 0)
        return nullptr;
    if (count <= SIZE_MAX / size) [[likely]] {
        if (void *block = ctx->alloc.malloc(ctx->alloc.user, count * size)) [[likely]] {
            std::memset(block, 0, count * size);
            return block;
        }
    }
    return Fallback(ctx, count, size);
}

void release(fz_context *ctx, void *block)
{
    if (block)
        ctx->alloc.free(ctx->alloc.user, block);
}

// A failed reallocation leaves the block as it was, so MuPDF's function can try it again.
template <void *(*Fallback)(fz_context *, void *, size_t)>
void *reallocate(fz_context *ctx, void *block, size_t size)
{
    if (size == 0) {
        release(ctx, block);
        return nullptr;
    }
    if (void *moved = ctx->alloc.realloc(ctx->alloc.user, block, size)) [[likely]]
        return moved;
    return Fallback(ctx, block, size);
}

} // namespace

extern "C" {

void *__wrap_fz_malloc(fz_context *ctx, size_t size)
{
    return allocate<__real_fz_malloc>(ctx, size);
}

void *__wrap_fz_malloc_no_throw(fz_context *ctx, size_t size)
{
    return allocate<__real_fz_malloc_no_throw>(ctx, size);
}

void *__wrap_fz_calloc(fz_context *ctx, size_t count, size_t size)
{
    return allocateZeroed<__real_fz_calloc>(ctx, count, size);
}

void *__wrap_fz_calloc_no_throw(fz_context *ctx, size_t count, size_t size)
{
    return allocateZeroed<__real_fz_calloc_no_throw>(ctx, count, size);
}

void __wrap_fz_free(fz_context *ctx, void *block)
{
    release(ctx, block);
}

void *__wrap_fz_realloc(fz_context *ctx, void *block, size_t size)
{
    return reallocate<__real_fz_realloc>(ctx, block, size);
}

void *__wrap_fz_realloc_no_throw(fz_context *ctx, void *block, size_t size)
{
    return reallocate<__real_fz_realloc_no_throw>(ctx, block, size);
}

} // extern "C"
