#include "AtomicFileWriter.h"

#include "Logger.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

// Linux gives up on more links than this, too.
constexpr int MaxSymbolicLinks = 40;

QString systemError(const QString &what, int error)
{
    return QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(error)));
}

// The path that the bytes go to: the file itself, or the end of its chain of links.
std::optional<QString> resolveTarget(const QString &path, QString *error)
{
    QString current = QFileInfo(path).absoluteFilePath();
    for (int hop = 0; hop <= MaxSymbolicLinks; ++hop) {
        const QFileInfo info(current);
        if (!info.isSymLink())
            return current;
        const QString target = info.symLinkTarget();
        if (target.isEmpty()) {
            *error = QCoreApplication::translate("AtomicFileWriter", "Cannot read the link “%1”.")
                         .arg(current);
            return std::nullopt;
        }
        current = QDir::cleanPath(target);
    }
    *error = QCoreApplication::translate(
        "AtomicFileWriter", "Too many levels of symbolic links at “%1”.")
                 .arg(path);
    return std::nullopt;
}

mode_t currentUmask()
{
    // The mask can only be read without changing it through /proc, whose files have no size.
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> lines = status.readAll().split('\n');
        for (const QByteArray &line : lines) {
            if (line.startsWith("Umask:")) {
                bool ok = false;
                const uint mask = line.mid(6).trimmed().toUInt(&ok, 8);
                if (ok)
                    return mode_t(mask);
            }
        }
    }
    return 022;
}

QString writeAll(int fd, const QByteArray &data)
{
    const char *cursor = data.constData();
    qsizetype left = data.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, cursor, size_t(left));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return systemError(
                QCoreApplication::translate("AtomicFileWriter", "Writing failed"), errno);
        }
        cursor += written;
        left -= written;
    }
    return {};
}

// Copies every attribute of the user namespace; other namespaces belong to the system.
QString copyUserAttributes(const QByteArray &from, int toFd)
{
    ssize_t size = ::listxattr(from.constData(), nullptr, 0);
    if (size < 0)
        return errno == ENOTSUP ? QString()
                                : systemError(QCoreApplication::translate("AtomicFileWriter",
                                                  "Reading the file's attributes failed"),
                                    errno);
    QByteArray names(qsizetype(size), Qt::Uninitialized);
    size = ::listxattr(from.constData(), names.data(), size_t(names.size()));
    if (size < 0)
        return systemError(
            QCoreApplication::translate("AtomicFileWriter", "Reading the file's attributes failed"),
            errno);
    names.truncate(qsizetype(size));
    for (const QByteArray &name : names.split('\0')) {
        if (!name.startsWith("user."))
            continue;
        const ssize_t length = ::getxattr(from.constData(), name.constData(), nullptr, 0);
        if (length < 0)
            return systemError(
                QCoreApplication::translate("AtomicFileWriter", "Reading the attribute %1 failed")
                    .arg(QString::fromUtf8(name)),
                errno);
        QByteArray value(qsizetype(length), Qt::Uninitialized);
        const ssize_t read
            = ::getxattr(from.constData(), name.constData(), value.data(), size_t(length));
        if (read < 0)
            return systemError(
                QCoreApplication::translate("AtomicFileWriter", "Reading the attribute %1 failed")
                    .arg(QString::fromUtf8(name)),
                errno);
        if (::fsetxattr(toFd, name.constData(), value.constData(), size_t(read), 0) != 0)
            return systemError(
                QCoreApplication::translate("AtomicFileWriter", "Copying the attribute %1 failed")
                    .arg(QString::fromUtf8(name)),
                errno);
    }
    return {};
}

// Gives the new file what the user had on the old one, or the usual mode for a new file.
QString copyMetadata(const QByteArray &original, int fd)
{
    struct stat status
    {
    };
    if (::stat(original.constData(), &status) != 0) {
        if (errno != ENOENT)
            return systemError(QCoreApplication::translate(
                                   "AtomicFileWriter", "Reading the file's permissions failed"),
                errno);
        if (::fchmod(fd, 0666 & ~currentUmask()) != 0)
            return systemError(
                QCoreApplication::translate("AtomicFileWriter", "Setting permissions failed"),
                errno);
        return {};
    }
    if (!S_ISREG(status.st_mode))
        return QCoreApplication::translate("AtomicFileWriter", "“%1” is not a regular file.")
            .arg(QFile::decodeName(original));
    // Only root can give a file away; anyone else keeps the file as theirs.
    if (status.st_uid != ::geteuid() || status.st_gid != ::getegid())
        (void)::fchown(fd, status.st_uid, status.st_gid);
    if (::fchmod(fd, status.st_mode & 07777) != 0)
        return systemError(
            QCoreApplication::translate("AtomicFileWriter", "Setting permissions failed"), errno);
    return copyUserAttributes(original, fd);
}

// The last part of a name that mkostemp() makes.
bool isTemporarySuffix(QStringView suffix)
{
    if (suffix.size() != 6)
        return false;
    for (const QChar c : suffix) {
        if (!(c.isDigit() || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z')))
            return false;
    }
    return true;
}

bool isOurLeftover(const QString &path, qint64 now)
{
    const QByteArray native = QFile::encodeName(path);
    struct stat status
    {
    };
    if (::lstat(native.constData(), &status) != 0 || !S_ISREG(status.st_mode)
        || status.st_uid != ::geteuid()
        || qint64(status.st_mtim.tv_sec) > now - AtomicFileWriter::LeftoverAge)
        return false;
    if (status.st_size == 0)
        return true;
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(5) == "%PDF-";
}

// Closes and removes the temporary file unless it was renamed into place.
class TemporaryFile
{
public:
    explicit TemporaryFile(QByteArray pattern)
        : m_path(std::move(pattern))
    {
        m_fd = ::mkostemp(m_path.data(), O_CLOEXEC);
        if (m_fd < 0) {
            m_error = errno;
            m_path.clear();
        }
    }
    ~TemporaryFile()
    {
        closeFile();
        if (!m_path.isEmpty())
            ::unlink(m_path.constData());
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    int fd() const { return m_fd; }
    int creationError() const { return m_error; }
    const QByteArray &path() const { return m_path; }
    int closeFile()
    {
        if (m_fd < 0)
            return 0;
        const int result = ::close(m_fd);
        m_fd = -1;
        return result;
    }
    void release() { m_path.clear(); }

private:
    QByteArray m_path;
    int m_fd = -1;
    int m_error = 0;
};

} // namespace

QString AtomicFileWriter::write(const QString &path, const QByteArray &data)
{
    QString error;
    const std::optional<QString> target = resolveTarget(path, &error);
    if (!target)
        return error;
    const QFileInfo targetInfo(*target);
    const QByteArray targetPath = QFile::encodeName(*target);
    const QByteArray folder = QFile::encodeName(targetInfo.absolutePath());

    TemporaryFile temporary(folder + "/." + QFile::encodeName(targetInfo.fileName()) + ".XXXXXX");
    if (temporary.fd() < 0)
        return systemError(
            QCoreApplication::translate("AtomicFileWriter", "Cannot create a file in “%1”")
                .arg(QFile::decodeName(folder)),
            temporary.creationError());
    error = writeAll(temporary.fd(), data);
    if (error.isEmpty())
        error = copyMetadata(targetPath, temporary.fd());
    if (!error.isEmpty())
        return error;
    if (::fsync(temporary.fd()) != 0)
        return systemError(
            QCoreApplication::translate("AtomicFileWriter", "Syncing the file failed"), errno);
    if (temporary.closeFile() != 0)
        return systemError(
            QCoreApplication::translate("AtomicFileWriter", "Closing the file failed"), errno);
    if (::rename(temporary.path().constData(), targetPath.constData()) != 0) {
        const int renameError = errno;
        return systemError(
            QCoreApplication::translate("AtomicFileWriter", "Cannot replace “%1”").arg(*target),
            renameError);
    }
    temporary.release();

    // The bytes are in place; a folder that cannot be synced only weakens durability.
    const int folderFd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderFd < 0 || ::fsync(folderFd) != 0) {
        const int syncError = errno;
        Logger::warn(systemError(
            QCoreApplication::translate("AtomicFileWriter", "Syncing the folder %1 failed")
                .arg(QFile::decodeName(folder)),
            syncError));
    }
    if (folderFd >= 0)
        ::close(folderFd);
    return {};
}

int AtomicFileWriter::removeLeftovers(const QString &path)
{
    QString error;
    const std::optional<QString> target = resolveTarget(path, &error);
    if (!target)
        return 0;
    const QFileInfo targetInfo(*target);
    const QString prefix = QLatin1Char('.') + targetInfo.fileName() + QLatin1Char('.');
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    int removed = 0;
    // No name filter: its wildcards would read brackets in the file's own name as patterns.
    QDirIterator entries(targetInfo.absolutePath(), QDir::Files | QDir::Hidden);
    while (entries.hasNext()) {
        const QString candidate = entries.next();
        const QString name = entries.fileName();
        if (!name.startsWith(prefix) || !isTemporarySuffix(QStringView(name).mid(prefix.size()))
            || !isOurLeftover(candidate, now))
            continue;
        if (::unlink(QFile::encodeName(candidate).constData()) == 0) {
            ++removed;
            Logger::info(
                QStringLiteral("Removed %1, left by a save that did not end").arg(candidate));
        }
    }
    return removed;
}
