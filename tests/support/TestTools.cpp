#include "TestTools.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <cstdio>

#include <sys/xattr.h>
#include <unistd.h>

namespace TestTools {

QString findTool(const QString &name)
{
    // The first python3 on PATH may be a build without Debian's pikepdf.
    if (name == QLatin1String("python3") && QFileInfo::exists(QStringLiteral("/usr/bin/python3")))
        return QStringLiteral("/usr/bin/python3");
    return QStandardPaths::findExecutable(name);
}

RunResult run(const QString &program, const QStringList &arguments, int timeoutMs)
{
    QProcess process;
    process.start(program, arguments);
    RunResult result;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        result.err = "timed out or failed to start";
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

namespace {

// A figure of /proc/self/status, in bytes (0 where unknown).
qint64 statusBytes(const QByteArray &key)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith(key))
            return line.mid(key.size()).trimmed().split(' ').value(0).toLongLong() * 1024;
    return 0;
}

} // namespace

qint64 peakResident()
{
    return statusBytes("VmHWM:");
}

qint64 resident()
{
    return statusBytes("VmRSS:");
}

void resetPeakResident()
{
    QFile refs(QStringLiteral("/proc/self/clear_refs"));
    if (refs.open(QIODevice::WriteOnly))
        refs.write("5");
}

QByteArray standardErrorOf(const std::function<void()> &body)
{
    QTemporaryFile capture;
    if (!capture.open())
        return {};
    std::fflush(stderr);
    const int saved = ::dup(STDERR_FILENO);
    ::dup2(capture.handle(), STDERR_FILENO);
    body();
    std::fflush(stderr);
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    capture.seek(0);
    return capture.readAll();
}

bool userAttributesWork()
{
    QTemporaryDir probe;
    return ::setxattr(QFile::encodeName(probe.path()).constData(), "user.probe", "1", 1, 0) == 0;
}

bool hasInk(const QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qGray(image.pixel(x, y)) < 128)
                return true;
        }
    }
    return false;
}

} // namespace TestTools
