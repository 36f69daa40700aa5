#pragma once

// Root writes into read-only folders and files, so tests of refused writes run the whole
// process as the user "nobody" for the lifetime of this guard; a no-op for other users.

#include <QString>

class Unprivileged
{
public:
    Unprivileged();
    ~Unprivileged();
    Unprivileged(const Unprivileged &) = delete;
    Unprivileged &operator=(const Unprivileged &) = delete;

    // Hands a file or folder to the user the guard switches to, so that it can still be read.
    static void giveAway(const QString &path);
    bool isActive() const { return m_active; }

private:
    bool m_active = false;
};
