#include "FDSingleInstance.h"

#include <kit/base/Log.h>

#include <QDataStream>
#include <QLocalServer>
#include <QLocalSocket>
#include <QtEndian>

#include <unistd.h>

namespace {

// One message: the paths as a QStringList in a QDataStream; the answer is one byte.
constexpr char acknowledgement = 'A';
constexpr int maximumMessageSize = 4 * 1024 * 1024;

} // namespace

FDSingleInstance::FDSingleInstance(const QString &serverName, QObject *parent)
    : QObject(parent)
    , m_serverName(serverName)
{ }

FDSingleInstance::~FDSingleInstance() = default;

QString FDSingleInstance::defaultServerName()
{
    return QStringLiteral("folidoc-%1").arg(getuid());
}

bool FDSingleInstance::forwardToRunningInstance(const QStringList &paths, int timeoutMs) const
{
    QLocalSocket socket;
    socket.connectToServer(m_serverName);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    QByteArray message;
    QDataStream out(&message, QIODevice::WriteOnly);
    out << paths;
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

bool FDSingleInstance::listen(PathsHandler handler)
{
    m_handler = std::move(handler);
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(m_serverName)) {
        // Nobody answered on the name (or the caller would not be listening): a socket file
        // left by a process that ended without closing it.
        QLocalServer::removeServer(m_serverName);
        if (!m_server->listen(m_serverName)) {
            Log::warn(QStringLiteral("Can't listen for files from later launches: %1")
                          .arg(m_server->errorString()));
            return false;
        }
    }
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server->nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
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
                QStringList paths;
                in >> paths;
                if (in.status() != QDataStream::Ok) {
                    socket->abort();
                    return;
                }
                socket->putChar(acknowledgement);
                socket->flush();
                if (m_handler)
                    m_handler(paths);
            });
        }
    });
    return true;
}
