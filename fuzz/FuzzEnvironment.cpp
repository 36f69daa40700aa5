#include "FuzzEnvironment.h"

#include <kit/engine/PDFWorkLimits.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace FuzzEnvironment {

namespace {

std::unique_ptr<QTemporaryDir> scratch;

// Qt's and the program's complaints about bad input are expected by the thousand: they would
// only slow the run down.
void quietMessages(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        std::abort();
    }
}

} // namespace

void setUp(int *argc, char ***argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    scratch = std::make_unique<QTemporaryDir>();
    if (!scratch->isValid())
        fail("no scratch folder");
    // The preference store and caches live in the scratch folder, never in the user's.
    qputenv("XDG_CONFIG_HOME", (scratch->path() + QStringLiteral("/config")).toUtf8());
    qputenv("XDG_CACHE_HOME", (scratch->path() + QStringLiteral("/cache")).toUtf8());
    qputenv("XDG_DATA_HOME", (scratch->path() + QStringLiteral("/data")).toUtf8());
    // Never destroyed: libFuzzer ends the process with exit(), after which Qt's globals may
    // already be gone.
    static int keptArgc = *argc;
    new QApplication(keptArgc, *argv);
    QApplication::setApplicationName(QStringLiteral("Folidoc"));
    qInstallMessageHandler(quietMessages);

    PDFWorkLimits limits;
    limits.memoryBytes = qint64(256) << 20;
    limits.contentBytes = qint64(16) << 20;
    limits.milliseconds = 2000;
    PDFWorkLimits::setCurrent(limits);
}

QString scratchPath()
{
    return scratch->path();
}

bool spinUntil(const std::function<bool()> &done, int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QCoreApplication::sendPostedEvents();
        if (!done())
            QThread::msleep(1);
    }
    return true;
}

void fail(const char *what)
{
    std::fprintf(stderr, "FUZZ FAILURE: %s\n", what);
    std::abort();
}

} // namespace FuzzEnvironment
