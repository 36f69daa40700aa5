#include "FDFileDiagnosis.h"

#include <kit/engine/PDFDocument.h>

#include <QFile>
#include <QUrl>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A PDF file names itself within its first kilobyte; the engine tolerates some bytes before.
constexpr qint64 headerWindow = 1024;

} // namespace

namespace {

// Opens and reads the file's first kilobyte into head; answers the system's problem, if any.
QString readHead(const QString &path, QByteArray *head)
{
    const QByteArray name = QFile::encodeName(path);
    const int descriptor = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        switch (errno) {
        case ENOENT:
        case ENOTDIR:
            return QStringLiteral("No such file");
        case EACCES:
        case EPERM:
            return QStringLiteral("Permission denied");
        default:
            return QString::fromLocal8Bit(std::strerror(errno));
        }
    }
    struct stat status
    {
    };
    head->fill('\0', headerWindow);
    ssize_t read = -1;
    int readError = 0;
    if (::fstat(descriptor, &status) == 0 && !S_ISDIR(status.st_mode)) {
        read = ::read(descriptor, head->data(), size_t(head->size()));
        readError = errno;
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    ::close(descriptor);
    if (isFolder)
        return QStringLiteral("Is a folder");
    if (read < 0)
        return QString::fromLocal8Bit(std::strerror(readError));
    head->truncate(read);
    return {};
}

} // namespace

QString FDFileDiagnosis::problemBeforeReading(const QString &path)
{
    QByteArray head;
    return readHead(path, &head);
}

QString FDFileDiagnosis::problemWithFile(const QString &path)
{
    QByteArray head;
    if (QString problem = readHead(path, &head); !problem.isEmpty())
        return problem;
    auto document = std::make_shared<PDFDocument>();
    if (document->initWithURL(QUrl::fromLocalFile(path)))
        return {};
    return head.contains("%PDF-") ? QStringLiteral("Damaged beyond repair")
                                  : QStringLiteral("Not a PDF file");
}
