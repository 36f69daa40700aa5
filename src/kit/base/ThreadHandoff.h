#pragma once

// Marks where work passes from one thread to another through Qt's thread pools and event queue
// for ThreadSanitizer, which cannot see inside Qt's libraries (not built with it) that handing
// over orders the two threads' memory. Compiles to nothing in other builds.

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace ThreadHandoff {

// By the thread handing over, after its last write to what it hands over; token is any address
// both sides know, such as the object handed over.
inline void handOver([[maybe_unused]] const void *token)
{
#if defined(__SANITIZE_THREAD__)
    __tsan_release(const_cast<void *>(token));
#endif
}

// By the thread taking over, before its first read of it.
inline void takeOver([[maybe_unused]] const void *token)
{
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(const_cast<void *>(token));
#endif
}

} // namespace ThreadHandoff
