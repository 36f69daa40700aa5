#pragma once

// One-line messages: "[INFO] text" on standard output, "[WARN] text" on standard error. Any
// thread: lines of different threads never interleave.

#include <QString>

namespace Log {

void info(const QString &message);
void warn(const QString &message);

} // namespace Log
