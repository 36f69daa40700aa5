#pragma once

// The application's log: one line per message on standard output through the kit's Log.
// Any thread.

#include <QString>

class Logger
{
public:
    Logger() = delete;

    // Dropped: the application keeps no debug output.
    static void debug(const QString &message);
    static void info(const QString &message);
    static void warn(const QString &message);
};
