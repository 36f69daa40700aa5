#pragma once

// One-line messages on standard output, "[INFO] text" or "[WARN] text". Any thread: lines of
// different threads never interleave.

#include <QString>

namespace Log {

void info(const QString &message);
void warn(const QString &message);

} // namespace Log
