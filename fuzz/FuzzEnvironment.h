#pragma once

// What every fuzz target's process sets up before its first input: an offscreen application, a
// preference store and scratch folder of its own, and work limits tight enough that one input is
// judged in seconds. Main thread only.

#include <QString>

#include <functional>

namespace FuzzEnvironment {

// Called from LLVMFuzzerInitialize with libFuzzer's arguments, which the application keeps.
void setUp(int *argc, char ***argv);
// A folder of this process, removed at its end.
QString scratchPath();
// Runs the main thread's event loop until done() or the deadline; false on the deadline.
bool spinUntil(const std::function<bool()> &done, int milliseconds);
// Reports a broken promise of the program (not a crash of its own) as a crash of the target, so
// that libFuzzer keeps the input.
[[noreturn]] void fail(const char *what);

} // namespace FuzzEnvironment
