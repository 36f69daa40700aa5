#include "FDSingleInstance.h"

#include <kit/base/Log.h>

#include <QCryptographicHash>
#include <QDataStream>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPointer>
#include <QRegularExpression>
#include <QSocketNotifier>
#include <QtEndian>

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

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
bool peerIsThisUser(int descriptor)
{
    ucred credentials {};
    socklen_t length = sizeof credentials;
    return descriptor >= 0
        && ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &length) == 0
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

// The socket address of path; false when the path does not fit.
bool socketAddress(const QString &path, sockaddr_un &address)
{
    const QByteArray name = encoded(path);
    address = {};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || size_t(name.size()) >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    return true;
}

// Waits until descriptor is ready for events, at most until deadline; false on timeout or error.
bool waitFor(int descriptor, short events, const QDeadlineTimer &deadline)
{
    pollfd watched { descriptor, events, 0 };
    for (;;) {
        const int result
            = ::poll(&watched, 1, int(qMin<qint64>(deadline.remainingTime(), 1 << 30)));
        if (result > 0)
            return true;
        if (result == 0 || errno != EINTR)
            return false;
    }
}

// Writes all of bytes to a non-blocking descriptor before the deadline.
bool writeAll(int descriptor, const QByteArray &bytes, const QDeadlineTimer &deadline)
{
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::send(
            descriptor, bytes.constData() + written, size_t(bytes.size() - written), MSG_NOSIGNAL);
        if (count > 0) {
            written += count;
            continue;
        }
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)
            && waitFor(descriptor, POLLOUT, deadline))
            continue;
        return false;
    }
    return true;
}

// Closes a descriptor when it goes out of scope.
class DescriptorGuard
{
public:
    explicit DescriptorGuard(int descriptor)
        : m_descriptor(descriptor)
    { }
    ~DescriptorGuard()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    DescriptorGuard(const DescriptorGuard &) = delete;
    DescriptorGuard &operator=(const DescriptorGuard &) = delete;
    int get() const { return m_descriptor; }
    int release() { return std::exchange(m_descriptor, -1); }

private:
    int m_descriptor;
};

// One accepted connection: its bytes gathered until a whole message is there.
class Connection : public QObject
{
public:
    Connection(int descriptor, QObject *parent)
        : QObject(parent)
        , m_descriptor(descriptor)
        , m_notifier(descriptor, QSocketNotifier::Read, this)
    { }
    ~Connection() override { ::close(m_descriptor); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    int descriptor() const { return m_descriptor; }
    QSocketNotifier &notifier() { return m_notifier; }
    QByteArray buffer;

private:
    int m_descriptor;
    QSocketNotifier m_notifier;
};

} // namespace

FDSingleInstance::FDSingleInstance(const QString &serverName, QObject *parent)
    : QObject(parent)
    , m_serverName(serverName)
{ }

FDSingleInstance::~FDSingleInstance()
{
    if (m_listener < 0)
        return;
    delete m_acceptNotifier;
    ::close(m_listener);
    // The name is free for the next launch, unless another process has taken it over since.
    struct stat status
    {
    };
    const QByteArray name = encoded(m_listeningPath);
    if (::lstat(name.constData(), &status) == 0 && quint64(status.st_ino) == m_listeningInode)
        ::unlink(name.constData());
}

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
    sockaddr_un address {};
    if (path.isEmpty() || !problemWithSocket(path).isEmpty() || !socketAddress(path, address))
        return false;
    const QDeadlineTimer deadline(timeoutMs);
    const DescriptorGuard socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket.get() < 0)
        return false;
    // A local connection is made at once, or waits only while the listener's queue is full.
    while (::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address)
        != 0) {
        if (errno == EINTR)
            continue;
        if (errno != EAGAIN || !waitFor(socket.get(), POLLOUT, deadline))
            return false;
    }
    // The file may have been replaced since it was looked at: the process itself must be ours.
    if (!peerIsThisUser(socket.get()))
        return false;
    QByteArray message;
    QDataStream out(&message, QIODevice::WriteOnly);
    out.setVersion(streamVersion);
    out << request.paths << request.newWindow;
    QByteArray framed;
    QDataStream header(&framed, QIODevice::WriteOnly);
    header << quint32(message.size());
    framed.append(message);
    if (!writeAll(socket.get(), framed, deadline))
        return false;
    for (;;) {
        char answer = 0;
        const ssize_t count = ::recv(socket.get(), &answer, 1, 0);
        if (count == 1)
            return answer == acknowledgement;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)
            && waitFor(socket.get(), POLLIN, deadline))
            continue;
        return false;
    }
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
    sockaddr_un address {};
    if (problem.isEmpty() && !socketAddress(path, address))
        problem = QStringLiteral("%1: the path is too long for a socket").arg(path);
    if (!problem.isEmpty()) {
        Log::warn(QStringLiteral("Not listening for files from later launches: %1").arg(problem));
        return false;
    }
    DescriptorGuard listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto bindTo = [&] {
        return ::bind(listener.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address)
            == 0;
    };
    bool bound = listener.get() >= 0 && bindTo();
    if (!bound && listener.get() >= 0 && errno == EADDRINUSE) {
        // Nobody answered on the name (or the caller would not be listening): a socket file
        // left by a process of this user that ended without closing it.
        ::unlink(address.sun_path);
        bound = bindTo();
    }
    struct stat status
    {
    };
    // Only this user may connect; the folder is private already.
    if (!bound || ::chmod(address.sun_path, S_IRWXU) != 0 || ::listen(listener.get(), 16) != 0
        || ::lstat(address.sun_path, &status) != 0) {
        Log::warn(QStringLiteral("Can't listen for files from later launches: %1")
                      .arg(QString::fromLocal8Bit(strerror(errno))));
        if (bound)
            ::unlink(address.sun_path);
        return false;
    }
    m_listener = listener.release();
    m_listeningPath = path;
    m_listeningInode = quint64(status.st_ino);
    m_acceptNotifier = new QSocketNotifier(m_listener, QSocketNotifier::Read, this);
    connect(
        m_acceptNotifier, &QSocketNotifier::activated, this, &FDSingleInstance::acceptConnections);
    return true;
}

void FDSingleInstance::acceptConnections()
{
    for (;;) {
        const int descriptor
            = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (descriptor < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        if (!peerIsThisUser(descriptor)) {
            ::close(descriptor);
            continue;
        }
        auto *const connection = new Connection(descriptor, this);
        const QPointer<Connection> guarded(connection);
        connect(&connection->notifier(), &QSocketNotifier::activated, connection, [this, guarded] {
            QList<Request> requests;
            if (!receive(guarded->descriptor(), guarded->buffer, requests)) {
                guarded->notifier().setEnabled(false);
                guarded->deleteLater();
            }
            // Handed on after the reading: a handler may run an event loop of its own.
            for (const Request &request : std::as_const(requests)) {
                if (m_handler)
                    m_handler(request);
            }
        });
    }
}

bool FDSingleInstance::receive(int descriptor, QByteArray &buffer, QList<Request> &requests)
{
    char chunk[4096];
    for (;;) {
        const ssize_t count = ::recv(descriptor, chunk, sizeof chunk, 0);
        if (count > 0) {
            buffer.append(chunk, count);
            if (buffer.size() > qsizetype(sizeof(quint32)) + maximumMessageSize)
                return false;
            continue;
        }
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            break;
        // The other end closed, or the connection failed.
        return false;
    }
    while (buffer.size() >= qsizetype(sizeof(quint32))) {
        quint32 size = 0;
        std::memcpy(&size, buffer.constData(), sizeof size);
        size = qFromBigEndian(size);
        if (size > quint32(maximumMessageSize))
            return false;
        if (buffer.size() < qsizetype(sizeof size + size))
            return true;
        QDataStream in(buffer.mid(sizeof size, size));
        buffer.remove(0, qsizetype(sizeof size + size));
        in.setVersion(streamVersion);
        Request request;
        in >> request.paths >> request.newWindow;
        if (in.status() != QDataStream::Ok)
            return false;
        if (::send(descriptor, &acknowledgement, 1, MSG_NOSIGNAL) != 1)
            return false;
        requests.append(request);
    }
    return true;
}
