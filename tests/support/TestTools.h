#pragma once

// Helpers shared by every test executable: external checking tools and process runs.

#include <QImage>
#include <QString>
#include <QStringList>

#include <functional>

namespace TestTools {

// Full path of a command on PATH (Debian's python3 is preferred for pikepdf), or empty.
QString findTool(const QString &name);

struct RunResult
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// Runs a command to completion (at most timeoutMs) and captures its output.
RunResult run(const QString &program, const QStringList &arguments, int timeoutMs = 60000);

// The process's peak resident memory since the last reset, in bytes (0 where unknown).
qint64 peakResident();
void resetPeakResident();
// The process's resident memory now, in bytes (0 where unknown).
qint64 resident();

// What the process writes on standard error, where warnings go, while body runs.
QByteArray standardErrorOf(const std::function<void()> &body);

// Whether the temporary folder's file system keeps extended attributes in the user namespace.
bool userAttributesWork();

// Whether the picture has ink on it (a pixel darker than mid-grey): a page drawn, not blank.
bool hasInk(const QImage &image);

} // namespace TestTools

#define FOLIDOC_REQUIRE_USER_ATTRIBUTES()                                                          \
    if (!TestTools::userAttributesWork())                                                          \
    QSKIP("this file system refuses extended attributes in the user namespace")

// Skips the current test with a message when a checking tool is not installed.
#define FOLIDOC_REQUIRE_TOOL(path, name)                                                           \
    const QString path = TestTools::findTool(QStringLiteral(name));                                \
    if (path.isEmpty())                                                                            \
    QSKIP("checking tool '" name "' is not installed")
