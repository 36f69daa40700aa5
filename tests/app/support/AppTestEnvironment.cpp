#include "AppTestEnvironment.h"

#include <kit/base/UserDefaults.h>

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

QString AppTestEnvironment::isolate()
{
    // Lives until the process ends; a child process started by the test inherits the folders.
    static QTemporaryDir root;
    const QString base = root.path();
    for (const char *name : { "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME" }) {
        const QString folder = base + QLatin1Char('/') + QLatin1String(name);
        QDir().mkpath(folder);
        if (qEnvironmentVariableIsEmpty("FOLIDOC_TEST_CHILD"))
            qputenv(name, folder.toLocal8Bit());
    }
    // The single-instance socket: private, as a session's runtime folder is.
    const QString runtime = base + QStringLiteral("/XDG_RUNTIME_DIR");
    QDir().mkpath(runtime);
    QFile::setPermissions(
        runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    if (qEnvironmentVariableIsEmpty("FOLIDOC_TEST_CHILD"))
        qputenv("XDG_RUNTIME_DIR", runtime.toLocal8Bit());
    return base;
}

void AppTestEnvironment::clearStore()
{
    const QSettings settings(UserDefaults::storePath(), QSettings::IniFormat);
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys)
        UserDefaults::standard().removeObjectForKey(key);
    UserDefaults::standard().synchronize();
}
