#include "DocumentTestEnvironment.h"

#include <QDir>
#include <QTemporaryDir>

QString DocumentTestEnvironment::isolate()
{
    // Lives until the process ends.
    static QTemporaryDir root;
    for (const char *name : { "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME" }) {
        const QString folder = root.path() + QLatin1Char('/') + QLatin1String(name);
        QDir().mkpath(folder);
        qputenv(name, folder.toLocal8Bit());
    }
    return root.path() + QStringLiteral("/XDG_CACHE_HOME");
}
