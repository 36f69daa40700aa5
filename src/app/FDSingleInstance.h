#pragma once

// One running Folidoc per user: the first process listens on a local socket; a later process
// hands its file paths to it and exits. Main thread only.

#include <QObject>
#include <QStringList>

#include <functional>

class QLocalServer;

class FDSingleInstance : public QObject
{
public:
    using PathsHandler = std::function<void(const QStringList &paths)>;

    // serverName: the socket's name; defaultServerName() unless a test wants its own.
    explicit FDSingleInstance(
        const QString &serverName = defaultServerName(), QObject *parent = nullptr);
    ~FDSingleInstance() override;

    // "folidoc-" and the user id, so that each user has a process of their own.
    static QString defaultServerName();

    // Hands the paths to a running process; true when it took them (the caller then exits).
    // Waits at most timeoutMs for the answer.
    bool forwardToRunningInstance(const QStringList &paths, int timeoutMs = 3000) const;
    // Becomes the running process: paths sent by later processes go to handler, in arrival
    // order. A socket left behind by a crashed process is taken over. False if listening failed.
    bool listen(PathsHandler handler);

private:
    QString m_serverName;
    QLocalServer *m_server = nullptr;
    PathsHandler m_handler;
};
