#pragma once

// One running Folidoc per user and display: the first process listens on a local socket in the
// user's private runtime folder; a later process of the same user hands its files to it and exits.
// Nothing is handed to, or taken from, a process of another user. Main thread only. Plain Unix
// sockets: a network library would add a dozen libraries to every start.

#include <QObject>
#include <QStringList>

#include <functional>

class QSocketNotifier;

class FDSingleInstance : public QObject
{
public:
    // What a later launch hands over.
    struct Request
    {
        QStringList paths;
        // The files want a window of their own rather than the main window.
        bool newWindow = false;
        bool operator==(const Request &) const = default;
    };
    using RequestHandler = std::function<void(const Request &request)>;

    // serverName: a file name inside runtimeFolder() (defaultServerName() unless a test wants
    // its own), or an absolute path.
    explicit FDSingleInstance(
        const QString &serverName = defaultServerName(), QObject *parent = nullptr);
    ~FDSingleInstance() override;

    // "folidoc-" and the display this process shows on (WAYLAND_DISPLAY on Wayland, DISPLAY on
    // X), so that two sessions of one user never share a process.
    static QString defaultServerName();
    // The user's private folder: $XDG_RUNTIME_DIR, else <temp>/folidoc-<uid>, made with mode 0700.
    // Empty, with the reason in *problem, when the folder is not the user's alone.
    static QString runtimeFolder(QString *problem = nullptr);
    // The socket's path; empty when there is no safe place for it.
    QString socketPath() const;

    // Hands the request to a running process of this user; true when it took it (the caller
    // then exits). A socket or a process of another user gets nothing. Waits at most timeoutMs.
    bool forwardToRunningInstance(const Request &request, int timeoutMs = 3000) const;
    // Becomes the running process: requests of later launches go to handler, in arrival order.
    // A socket left behind by a crashed process of this user is taken over; one of another user
    // is left alone. False, with a warning, if listening failed or was refused.
    bool listen(RequestHandler handler);

private:
    void acceptConnections();
    // Reads what the connection sent, answers each whole request and adds it to requests;
    // false when the connection is to be closed.
    bool receive(int descriptor, QByteArray &buffer, QList<Request> &requests);

    QString m_serverName;
    QString m_listeningPath;
    // The socket file made by listen(), removed at the end only if it is still that one.
    quint64 m_listeningInode = 0;
    int m_listener = -1;
    QSocketNotifier *m_acceptNotifier = nullptr;
    RequestHandler m_handler;
};
