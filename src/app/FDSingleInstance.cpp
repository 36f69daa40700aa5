#include "FDSingleInstance.h"

#include <kit/base/Log.h>

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QtEndian>

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// One message: the size, then the paths (QStringList) and the new-window flag in a QDataStream;
// the answer is one byte.
constexpr char acknowledgement = 'A';
constexpr int maximumMessageSize = 4 * 1024 * 1024;
constexpr QDataStream::Version streamVersion = QDataStream::Qt_6_0;

QByteArray encoded(const QString &path)
{
    return QFile::encodeName(path);
}

// True when the process at the other end of a connected local socket runs as this user.
bool peerIsThisUser(qintptr descriptor)
{
    ucred credentials {};
    socklen_t length = sizeof credentials;
    return descriptor >= 0
        && ::getsockopt(int(descriptor), SOL_SOCKET, SO_PEERCRED, &credentials, &length) == 0
        && length == sizeof credentials && credentials.uid == ::geteuid();
}

// Empty when a socket may be at path: nothing is there, or a socket of this user.
QString problemWithSocket(const QString &path)
{
    struct stat status
    {
    };
    if (::lstat(encoded(path).constData(), &status) != 0)
        return errno == ENOENT ? QString() : QString::fromLocal8Bit(strerror(errno));
    if (!S_ISSOCK(status.st_mode))
        return QStringLiteral("%1 is no socket").arg(path);
    if (status.st_uid != ::geteuid())
        return QStringLiteral("%1 belongs to another user").arg(path);
    return {};
}

// Empty when folder is a folder of this user that nobody else can write into.
QString problemWithFolder(const QString &folder, bool followLink)
{
    struct stat status
    {
    };
    const QByteArray name = encoded(folder);
    if ((followLink ? ::stat(name.constData(), &status) : ::lstat(name.constData(), &status)) != 0)
        return QStringLiteral("%1: %2").arg(folder, QString::fromLocal8Bit(strerror(errno)));
    if (!S_ISDIR(status.st_mode))
        return QStringLiteral("%1 is no folder").arg(folder);
    if (status.st_uid != ::geteuid())
        return QStringLiteral("%1 belongs to another user").arg(folder);
    if (status.st_mode & (S_IWGRP | S_IWOTH))
        return QStringLiteral("%1 can be written by other users").arg(folder);
    return {};
}

// The display as a file name; a long one (Wayland allows a path) is shortened to a hash.
QString displayTag(QString display)
{
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9._-]"));
    display.replace(unsafe, QStringLiteral("_"));
    if (display.size() > 32)
        display = QString::fromLatin1(
            QCryptographicHash::hash(display.toUtf8(), QCryptographicHash::Sha1).toHex().left(16));
    return display;
}

} // namespace

FDSingleInstance::FDSingleInstance(const QString &serverName, QObject *parent)
    : QObject(parent)
    , m_serverName(serverName)
{ }

FDSingleInstance::~FDSingleInstance() = default;

QString FDSingleInstance::defaultServerName()
{
    // The display that this process really uses: a nested X server inside a Wayland session has
    // both variables set.
    const QString platform = QGuiApplication::platformName();
    const QString wayland = qEnvironmentVariable("WAYLAND_DISPLAY");
    const QString x = qEnvironmentVariable("DISPLAY");
    QString display;
    if (platform.startsWith(QLatin1String("wayland")))
        display = wayland.isEmpty() ? QStringLiteral("wayland-0") : wayland;
    else if (platform == QLatin1String("xcb"))
        display = x;
    else
        display = !wayland.isEmpty() ? wayland : x;
    if (display.isEmpty())
        display = platform.isEmpty() ? QStringLiteral("nodisplay") : platform;
    return QStringLiteral("folidoc-") + displayTag(display);
}

QString FDSingleInstance::runtimeFolder(QString *problem)
{
    QString found;
    QString reason;
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty()) {
        reason = problemWithFolder(runtime, true);
        found = runtime;
    } else {
        // A folder of our own in the shared temporary folder: made private, and refused when
        // someone else made it first.
        found = QDir::tempPath() + QStringLiteral("/folidoc-%1").arg(::geteuid());
        const QByteArray name = encoded(found);
        if (::mkdir(name.constData(), 0700) != 0 && errno != EEXIST)
            reason = QStringLiteral("%1: %2").arg(found, QString::fromLocal8Bit(strerror(errno)));
        else
            reason = problemWithFolder(found, false);
        if (reason.isEmpty())
            ::chmod(name.constData(), 0700);
    }
    if (problem)
        *problem = reason;
    return reason.isEmpty() ? found : QString();
}

QString FDSingleInstance::socketPath() const
{
    if (QDir::isAbsolutePath(m_serverName))
        return m_serverName;
    const QString folder = runtimeFolder();
    return folder.isEmpty() ? QString() : folder + QLatin1Char('/') + m_serverName;
}

bool FDSingleInstance::forwardToRunningInstance(const Request &request, int timeoutMs) const
{
    const QString path = socketPath();
    if (path.isEmpty() || !problemWithSocket(path).isEmpty())
        return false;
    QLocalSocket socket;
    socket.connectToServer(path);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    // The file may have been replaced since it was looked at: the process itself must be ours.
    if (!peerIsThisUser(socket.socketDescriptor()))
        return false;
    QByteArray message;
    QDataStream out(&message, QIODevice::WriteOnly);
    out.setVersion(streamVersion);
    out << request.paths << request.newWindow;
    QByteArray framed;
    QDataStream header(&framed, QIODevice::WriteOnly);
    header << quint32(message.size());
    framed.append(message);
    socket.write(framed);
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    while (socket.bytesAvailable() < 1) {
        if (!socket.waitForReadyRead(timeoutMs))
            return false;
    }
    char answer = 0;
    return socket.getChar(&answer) && answer == acknowledgement;
}

bool FDSingleInstance::listen(RequestHandler handler)
{
    m_handler = std::move(handler);
    QString problem;
    QString path = socketPath();
    if (path.isEmpty())
        runtimeFolder(&problem);
    else
        problem = problemWithSocket(path);
    if (!problem.isEmpty()) {
        Log::warn(QStringLiteral("Not listening for files from later launches: %1").arg(problem));
        return false;
    }
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(path)) {
        // Nobody answered on the name (or the caller would not be listening): a socket file
        // left by a process of this user that ended without closing it.
        QLocalServer::removeServer(path);
        if (!m_server->listen(path)) {
            Log::warn(QStringLiteral("Can't listen for files from later launches: %1")
                          .arg(m_server->errorString()));
            return false;
        }
    }
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server->nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            if (!peerIsThisUser(socket->socketDescriptor())) {
                socket->abort();
                continue;
            }
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] { receive(socket); });
        }
    });
    return true;
}

void FDSingleInstance::receive(QLocalSocket *socket)
{
    if (socket->bytesAvailable() < qint64(sizeof(quint32)))
        return;
    quint32 size = 0;
    socket->peek(reinterpret_cast<char *>(&size), sizeof size);
    size = qFromBigEndian(size);
    if (size > quint32(maximumMessageSize)) {
        socket->abort();
        return;
    }
    if (socket->bytesAvailable() < qint64(sizeof size + size))
        return;
    socket->skip(sizeof size);
    QDataStream in(socket->read(size));
    in.setVersion(streamVersion);
    Request request;
    in >> request.paths >> request.newWindow;
    if (in.status() != QDataStream::Ok) {
        socket->abort();
        return;
    }
    socket->putChar(acknowledgement);
    socket->flush();
    if (m_handler)
        m_handler(request);
}
