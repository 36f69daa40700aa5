#include "Log.h"

#include <cstdio>
#include <mutex>

namespace {

std::mutex &outputMutex()
{
    static std::mutex mutex;
    return mutex;
}

void writeLine(FILE *stream, const char *prefix, const QString &message)
{
    const QByteArray line = QByteArray(prefix) + message.toUtf8() + '\n';
    const std::lock_guard lock(outputMutex());
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stream);
    std::fflush(stream);
}

} // namespace

namespace Log {

void info(const QString &message)
{
    writeLine(stdout, "[INFO] ", message);
}

void warn(const QString &message)
{
    writeLine(stderr, "[WARN] ", message);
}

} // namespace Log
