// folidoc-bench pages FILE.pdf: the pages editor on a long document in a real window. The grid
// is opened and scrolled from top to bottom, one half screen per step, while the pictures are
// drawn on workers; then all pages are turned, 500 are moved to the end as a drag moves them
// (taken out and put back in), and 1,000 are deleted. Each operation is timed with the repaint
// that shows it, in wall and thread time, and so is the turn after it that starts the save.

#include "BenchCommand.h"
#include "BenchWindow.h"

#include <app/Alert.h>
#include <app/FDDefaults.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/engine/PDFPage.h>
#include <navigation/PDFThumbnailModel.h>
#include <pages/PDFCollectionView.h>
#include <pages/PDFPagesEditor.h>
#include <view/FDPDFView.h>

#include <QElapsedTimer>
#include <QFile>
#include <QMimeData>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QtCore/qtestsupport_core.h>

#include <vector>

#include <time.h>

namespace {

// The time this thread has run, in milliseconds: the machine may be shared.
double threadMilliseconds()
{
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

int runPages(const QStringList &arguments)
{
    if (arguments.size() != 1) {
        fprintf(stderr, "usage: folidoc-bench pages FILE.pdf\n");
        return 2;
    }
    QTemporaryDir scratch;
    const QString path = scratch.filePath(QStringLiteral("pages.pdf"));
    if (!QFile::copy(arguments.first(), path))
        return 1;
    FDDefaults::registerDefaults();
    PDFContents::registerAsDocumentContents();
    Alert::setHandlerForTesting([](const AlertRequest &) { return int(Alert::FirstButtonReturn); });
    QPointer<PDFWindowController> window = TabWindowController::create<PDFWindowController>();
    window->resize(1200, 900);
    window->openNewTab();
    window->show();
    auto *const tab = openBenchTab(window, path);
    if (!tab)
        return 1;
    const auto document = tab->primaryPDFView()->fdDocument();
    QTest::qWait(200);

    PDFPagesEditor *const editor = tab->container()->pagesEditorController();
    PDFCollectionView *const grid = editor->primaryCollectionView();
    const double open = timedTurn([tab] { tab->setIsPagesEditingMode(true); });
    benchPrint(QStringLiteral("pages"), document->pageCount());
    benchPrint(QStringLiteral("grid open ms"), open);

    auto *const model = static_cast<PDFThumbnailModel *>(grid->model());
    std::vector<double> steps;
    std::vector<double> cpuSteps;
    const auto turn = [&](const std::function<void()> &step) {
        const double cpu = threadMilliseconds();
        steps.push_back(timedTurn(step));
        cpuSteps.push_back(threadMilliseconds() - cpu);
    };
    QScrollBar *const bar = grid->verticalScrollBar();
    const int stride = std::max(1, grid->viewport()->height() / 2);
    for (int place = 0; place <= bar->maximum(); place += stride) {
        turn([&] { bar->setValue(place); });
        // A reader's scrolling: the pictures in view come in before the next step, and every
        // turn meanwhile counts as a stall of its own.
        QElapsedTimer waiting;
        waiting.start();
        while (model->pendingCount() > 0 && waiting.elapsed() < 2000) {
            QThread::msleep(1);
            turn([] {});
        }
    }
    const auto over16 = [](const std::vector<double> &values) {
        return double(
            std::count_if(values.begin(), values.end(), [](double ms) { return ms > 16; }));
    };
    benchPrint(QStringLiteral("grid scroll turns"), double(steps.size()));
    benchPrint(QStringLiteral("grid turn median ms"), median(steps));
    benchPrint(QStringLiteral("grid turn max ms"), *std::max_element(steps.begin(), steps.end()));
    benchPrint(QStringLiteral("grid turns over 16 ms"), over16(steps));
    benchPrint(QStringLiteral("grid turn max cpu ms"),
        *std::max_element(cpuSteps.begin(), cpuSteps.end()));
    benchPrint(QStringLiteral("grid turns over 16 cpu ms"), over16(cpuSteps));

    // An operation with the grid's repaint that shows it; then the turn that follows, where the
    // editor hands the document to the saving service, which takes its bytes on this thread.
    const auto operation = [&](const QString &name, const std::function<void()> &step) {
        const double cpu = threadMilliseconds();
        QElapsedTimer timer;
        timer.start();
        step();
        grid->viewport()->repaint();
        benchPrint(name + QStringLiteral(" ms"), timer.nsecsElapsed() / 1e6);
        benchPrint(name + QStringLiteral(" cpu ms"), threadMilliseconds() - cpu);
        const double saveCpu = threadMilliseconds();
        timer.restart();
        QCoreApplication::processEvents();
        benchPrint(name + QStringLiteral(", save turn ms"), timer.nsecsElapsed() / 1e6);
        benchPrint(name + QStringLiteral(", save turn cpu ms"), threadMilliseconds() - saveCpu);
        (void)QTest::qWaitFor(
            [] { return PDFSavingService::shared().numberOfTasks() == 0; }, 120000);
    };
    operation(QStringLiteral("select all and rotate"), [&] {
        grid->selectAll();
        editor->rotateSelection(90);
    });
    operation(QStringLiteral("move 500 pages to the end"), [&] {
        // The drop of a drag of the first 500 pages after the last one, as the grid hands it on.
        QList<int> rows;
        for (int row = 0; row < std::min(500, document->pageCount()); ++row)
            rows.append(row);
        grid->selectRows(rows);
        const std::unique_ptr<QMimeData> dragged(editor->collectionViewWillBeginDrag(grid, rows));
        editor->collectionViewAcceptDrop(grid, dragged.get(), document->pageCount());
        editor->collectionViewDragDidEnd(grid);
    });
    const int before = document->pageCount();
    operation(QStringLiteral("delete 1000 pages"), [&] {
        QList<int> rows;
        for (int row = 0; row < std::min(1000, before); ++row)
            rows.append(row);
        grid->selectRows(rows);
        editor->deleteSelection();
    });
    benchPrint(QStringLiteral("pages left"), document->pageCount());
    document->setNumberOfChanges(0);
    delete window.data();
    return before - document->pageCount() == std::min(1000, before) ? 0 : 1;
}

const BenchRegistration registration(QStringLiteral("pages"), QStringLiteral("FILE.pdf"), runPages);

} // namespace
