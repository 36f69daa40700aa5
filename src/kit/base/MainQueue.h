#pragma once

// Dispatch onto the main thread's event loop, callable from any thread.

#include <QObject>

#include <functional>

namespace MainQueue {

// Runs fn on the main thread on the next turn of its event loop, after work already queued.
void async(std::function<void()> fn);
// As above, but fn is dropped if context is destroyed before it runs.
void async(QObject *context, std::function<void()> fn);

// Runs fn on the main thread after the given delay (negative counts as zero).
void asyncAfter(double seconds, std::function<void()> fn);
void asyncAfter(double seconds, QObject *context, std::function<void()> fn);

// From a worker: blocks until the main thread has run fn. On the main thread: runs fn at once.
// The caller must not hold anything the main thread waits for.
void sync(std::function<void()> fn);

bool isMainThread();

} // namespace MainQueue
