#pragma once

// The kit's own work in the background that nobody waits for (giving back what the engine kept,
// returning the heap's free pages), on threads of its own. Qt's global pool stays free: the
// raster painter splits a large fill among that pool's threads while the main thread waits for
// them, so a chore queued there would hold up painting.

#include <functional>
#include <utility>

class QThreadPool;

namespace BackgroundQueue {

// Runs fn on a background thread, after work already queued there. What fn holds is let go
// there too.
void async(std::function<void()> fn);
// Lets go of value on a background thread: what it alone holds (pixels, display lists) is freed
// there, where giving pages back to the system costs no frame.
template <typename T>
void dispose(T &&value)
{
    async([held = std::forward<T>(value)] { });
}
// The threads themselves, for waiting until what was queued is done (tests, shutdown).
QThreadPool &pool();

} // namespace BackgroundQueue
