#include "Unprivileged.h"

#include <QFile>

#include <unistd.h>

namespace {
constexpr uid_t NobodyId = 65534;
}

Unprivileged::Unprivileged()
{
    if (::getuid() != 0)
        return;
    // The saved ids stay 0, which lets the destructor switch back.
    if (::setresgid(NobodyId, NobodyId, 0) != 0 || ::setresuid(NobodyId, NobodyId, 0) != 0)
        qFatal("Unprivileged: cannot switch to user %u", unsigned(NobodyId));
    m_active = true;
}

Unprivileged::~Unprivileged()
{
    if (!m_active)
        return;
    if (::setresuid(0, 0, 0) != 0 || ::setresgid(0, 0, 0) != 0)
        qFatal("Unprivileged: cannot switch back to root");
}

void Unprivileged::giveAway(const QString &path)
{
    if (::geteuid() == 0 && ::chown(QFile::encodeName(path).constData(), NobodyId, NobodyId) != 0)
        qFatal("Unprivileged: cannot hand %s over", qPrintable(path));
}
