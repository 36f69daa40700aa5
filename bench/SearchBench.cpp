// folidoc-bench search FILE.pdf WORD: a search in a real window, as a user starts it with
// Return. The time to the first batch of rows, to the end, the hits, the longest main-thread
// step while the search runs and while the finished list is scrolled from top to bottom, and
// the time pdftotext and mutool take to extract the same file's text, for comparison.

#include "BenchCommand.h"
#include "BenchWindow.h"

#include <app/FDDefaults.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/base/NotificationCenter.h>
#include <navigation/PDFSearchResultView.h>
#include <navigation/PDFSearchSidebarContainer.h>
#include <navigation/PDFSearchSidebarContents.h>
#include <navigation/PDFViewSearcher.h>
#include <view/FDPDFView.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QScrollBar>
#include <QTimer>
#include <QtCore/qtestsupport_core.h>

#include <sys/resource.h>
#include <time.h>

namespace {

// Processor time (user and system) of this process or of its finished children, in ms: on a
// machine others load, it compares work where wall time compares luck.
double cpuMilliseconds(int who)
{
    rusage usage {};
    getrusage(who, &usage);
    const auto ms = [](const timeval &t) { return t.tv_sec * 1e3 + t.tv_usec / 1e3; };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

// Processor time of the calling thread, in ms: what a step cost the main thread itself, apart
// from the time other processes held the processor.
double threadCpuMilliseconds()
{
    timespec t {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

struct ToolTimes
{
    double wall = -1;
    double cpu = -1;
};

// Wall and processor time of a tool over the file; -1 when it cannot run.
ToolTimes toolTime(const QString &program, const QStringList &arguments)
{
    QProcess process;
    QElapsedTimer timer;
    const double cpuBefore = cpuMilliseconds(RUSAGE_CHILDREN);
    timer.start();
    process.start(program, arguments);
    if (!process.waitForStarted(5000) || !process.waitForFinished(600000))
        return {};
    return { timer.nsecsElapsed() / 1e6, cpuMilliseconds(RUSAGE_CHILDREN) - cpuBefore };
}

int runSearch(const QStringList &arguments)
{
    if (arguments.size() < 2)
        return 2;
    const QString path = arguments.at(0);
    const QString word = arguments.at(1);
    FDDefaults::registerDefaults();
    PDFContents::registerAsDocumentContents();
    QPointer<PDFWindowController> window = TabWindowController::create<PDFWindowController>();
    window->resize(1200, 900);
    window->show();
    auto *const tab = openBenchTab(window, path);
    if (!tab)
        return 1;
    FDPDFView *const view = tab->primaryPDFView();
    double firstBatch = -1;
    bool ended = false;
    QElapsedTimer timer;
    NotificationCenter &qk = NotificationCenter::qkCenter();
    int observer = 0;
    qk.addObserver(&observer, PDFViewSearcher::SearchDidFindMatchesNotification, view,
        [&](const Notification &) {
            if (firstBatch < 0)
                firstBatch = timer.nsecsElapsed() / 1e6;
        });
    qk.addObserver(&observer, PDFViewSearcher::SearchDidEndNotification, view,
        [&](const Notification &) { ended = true; });
    const double cpuBefore = cpuMilliseconds(RUSAGE_SELF);
    timer.start();
    tab->setQueryString(word);
    // The main thread sleeps in its event loop as the program's does; a timer that should fire
    // every few milliseconds measures how long the thread was kept from it.
    double searchStall = 0;
    double searchStallCpu = 0;
    {
        constexpr int tick = 2;
        QEventLoop loop;
        QTimer ticker;
        ticker.setTimerType(Qt::PreciseTimer);
        QElapsedTimer sinceTick;
        sinceTick.start();
        double cpuAtTick = threadCpuMilliseconds();
        QObject::connect(&ticker, &QTimer::timeout, &loop, [&] {
            searchStall = std::max(searchStall, sinceTick.nsecsElapsed() / 1e6 - tick);
            sinceTick.restart();
            const double cpu = threadCpuMilliseconds();
            searchStallCpu = std::max(searchStallCpu, cpu - cpuAtTick);
            cpuAtTick = cpu;
            if (ended)
                loop.quit();
        });
        ticker.start(tick);
        loop.exec();
    }
    const double total = timer.nsecsElapsed() / 1e6;
    const double totalCpu = cpuMilliseconds(RUSAGE_SELF) - cpuBefore;
    qk.removeObserver(&observer);
    // The finished list scrolled from top to bottom, half a screen a step.
    PDFSearchResultView *const list = tab->searchSidebarContainer()->controller()->listView();
    QScrollBar *const bar = list->verticalScrollBar();
    double scrollStall = 0;
    double scrollStallCpu = 0;
    for (int value = 0; value <= bar->maximum(); value += std::max(1, bar->pageStep() / 2)) {
        QElapsedTimer turn;
        turn.start();
        const double cpuBeforeStep = threadCpuMilliseconds();
        bar->setValue(value);
        list->viewport()->repaint();
        QCoreApplication::processEvents();
        scrollStall = std::max(scrollStall, turn.nsecsElapsed() / 1e6);
        scrollStallCpu = std::max(scrollStallCpu, threadCpuMilliseconds() - cpuBeforeStep);
    }
    benchPrint(QStringLiteral("first_batch_ms"), firstBatch);
    benchPrint(QStringLiteral("total_ms"), total);
    benchPrint(QStringLiteral("hits"), tab->primarySearcher()->realMatchedCount());
    benchPrint(QStringLiteral("max_stall_ms"), std::max(searchStall, scrollStall));
    benchPrint(QStringLiteral("search_stall_ms"), searchStall);
    benchPrint(QStringLiteral("scroll_stall_ms"), scrollStall);
    // The same as processor time of the main thread, which other processes cannot inflate.
    benchPrint(QStringLiteral("max_stall_cpu_ms"), std::max(searchStallCpu, scrollStallCpu));
    benchPrint(QStringLiteral("search_stall_cpu_ms"), searchStallCpu);
    benchPrint(QStringLiteral("scroll_stall_cpu_ms"), scrollStallCpu);
    benchPrint(QStringLiteral("total_cpu_ms"), totalCpu);
    const ToolTimes pdftotext
        = toolTime(QStringLiteral("pdftotext"), { path, QStringLiteral("/dev/null") });
    const ToolTimes mutool = toolTime(QStringLiteral("mutool"),
        { QStringLiteral("draw"), QStringLiteral("-F"), QStringLiteral("text"),
            QStringLiteral("-o"), QStringLiteral("/dev/null"), path });
    benchPrint(QStringLiteral("pdftotext_ms"), pdftotext.wall);
    benchPrint(QStringLiteral("pdftotext_cpu_ms"), pdftotext.cpu);
    benchPrint(QStringLiteral("mutool_text_ms"), mutool.wall);
    benchPrint(QStringLiteral("mutool_text_cpu_ms"), mutool.cpu);
    delete window.data();
    (void)QTest::qWaitFor([] { return PDFSavingService::shared().numberOfTasks() == 0; }, 30000);
    return 0;
}

const BenchRegistration registration(
    QStringLiteral("search"), QStringLiteral("FILE.pdf WORD"), runSearch);

} // namespace
