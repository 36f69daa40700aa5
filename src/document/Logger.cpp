#include "Logger.h"

#include <kit/base/Log.h>

void Logger::debug(const QString &message)
{
    Q_UNUSED(message);
}

void Logger::info(const QString &message)
{
    Log::info(message);
}

void Logger::warn(const QString &message)
{
    Log::warn(message);
}
