#include "FileIdentity.h"

#include <QFile>

#include <sys/stat.h>

std::optional<FileIdentity> FileIdentity::of(const QString &path)
{
    struct stat status
    {
    };
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    FileIdentity identity;
    identity.device = status.st_dev;
    identity.inode = status.st_ino;
    identity.size = qint64(status.st_size);
    identity.modificationSeconds = qint64(status.st_mtim.tv_sec);
    identity.modificationNanoseconds = qint64(status.st_mtim.tv_nsec);
    return identity;
}
