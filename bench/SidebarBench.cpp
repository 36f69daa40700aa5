// folidoc-bench sidebar FILE.pdf: the sidebar on a long document in a real window. The
// thumbnails tab is scrolled from top to bottom, one half screen per step, while the pictures
// are drawn on workers; the longest and the typical main-thread step, the pictures drawn, and
// the memory of the picture cache against its budget, and the process's peak memory. Then an
// outline of 1,500 items (400 siblings under one parent) is written into a copy of the file and
// opened: the time to show it, to expand all of it, and the longest step of following the reader
// over 200 pages.

#include "BenchCommand.h"
#include "BenchWindow.h"

#include <app/FDDefaults.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFOutline.h>
#include <kit/tabs/TabStripModel.h>
#include <navigation/FDOutlineView.h>
#include <navigation/FDPageThumbnailCache.h>
#include <navigation/PDFSidebarContainer.h>
#include <navigation/PDFSidebarController.h>
#include <navigation/PDFSidebarOutlineContents.h>
#include <navigation/PDFSidebarThumbContents.h>
#include <navigation/PDFThumbnailModel.h>
#include <navigation/PDFThumbnailRenderer.h>
#include <view/FDPDFView.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QListView>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QtCore/qtestsupport_core.h>

#include <vector>

namespace {

// 10 chapters; the first holds 400 sections, the others 110 each: 1,500 items in all.
std::shared_ptr<PDFOutline> bigOutline(const PDFDocument &document)
{
    auto root = std::make_shared<PDFOutline>();
    const int pages = document.pageCount();
    int made = 0;
    for (int chapter = 0; chapter < 10; ++chapter) {
        auto top = std::make_shared<PDFOutline>();
        top->setLabel(QStringLiteral("Chapter %1").arg(chapter + 1));
        top->setDestination(std::make_shared<PDFDestination>(
            document.pageAtIndex(chapter * pages / 10), QPointF(0, 0)));
        root->insertChild(top, chapter);
        ++made;
        const int sections = chapter == 0 ? 400 : 109;
        for (int section = 0; section < sections && made < 1500; ++section, ++made) {
            auto item = std::make_shared<PDFOutline>();
            item->setLabel(QStringLiteral("Section %1.%2 with a title long enough to wrap in "
                                          "a narrow sidebar")
                               .arg(chapter + 1)
                               .arg(section + 1));
            const int page = (chapter * pages / 10 + section * pages / 10 / sections) % pages;
            item->setDestination(
                std::make_shared<PDFDestination>(document.pageAtIndex(page), QPointF(0, 0)));
            top->insertChild(item, section);
        }
    }
    return root;
}

int runSidebar(const QStringList &arguments)
{
    if (arguments.size() != 1) {
        fprintf(stderr, "usage: folidoc-bench sidebar FILE.pdf\n");
        return 2;
    }
    QTemporaryDir scratch;
    const QString path = scratch.filePath(QStringLiteral("thumbs.pdf"));
    if (!QFile::copy(arguments.first(), path))
        return 1;
    FDDefaults::registerDefaults();
    PDFContents::registerAsDocumentContents();
    QPointer<PDFWindowController> window = TabWindowController::create<PDFWindowController>();
    window->resize(1200, 900);
    window->openNewTab();
    window->show();

    const double before = processMegabytes("VmRSS:");
    PDFContents *tab = openBenchTab(window, path);
    if (!tab)
        return 1;
    tab->setSidebarMode(PDFSidebarMode::thumbnails);
    auto *const thumbs = qobject_cast<PDFSidebarThumbContents *>(
        tab->sidebarContainer()->controller()->controller(PDFSidebarMode::thumbnails));
    QListView *const list = thumbs->tableView();
    QTest::qWait(200);
    int drawn = 0;
    QObject::connect(thumbs->model()->renderer(), &PDFThumbnailRenderer::thumbnailDidArrive,
        [&drawn] { ++drawn; });
    std::vector<double> steps;
    QElapsedTimer whole;
    whole.start();
    QScrollBar *const bar = list->verticalScrollBar();
    const int stride = std::max(1, list->viewport()->height() / 2);
    for (int place = 0; place <= bar->maximum(); place += stride) {
        steps.push_back(timedTurn([&] { bar->setValue(place); }));
        // A reader's scrolling: the pictures in view come in before the next step.
        (void)QTest::qWaitFor([&] { return thumbs->model()->pendingCount() == 0; }, 2000);
    }
    benchPrint(QStringLiteral("thumbnails pages"), thumbs->model()->rowCount());
    benchPrint(QStringLiteral("thumbnails scroll steps"), double(steps.size()));
    benchPrint(QStringLiteral("thumbnails scroll seconds"), whole.elapsed() / 1000.0);
    benchPrint(QStringLiteral("thumbnails step median ms"), median(steps));
    benchPrint(
        QStringLiteral("thumbnails step max ms"), *std::max_element(steps.begin(), steps.end()));
    benchPrint(QStringLiteral("thumbnails steps over 16 ms"),
        double(std::count_if(steps.begin(), steps.end(), [](double ms) { return ms > 16; })));
    benchPrint(QStringLiteral("thumbnails slowest step"),
        double(std::max_element(steps.begin(), steps.end()) - steps.begin()));
    benchPrint(QStringLiteral("thumbnails drawn"), drawn);
    benchPrint(QStringLiteral("thumbnail cache MB"),
        FDPageThumbnailCache::shared().usedBytes() / 1048576.0);
    benchPrint(QStringLiteral("thumbnail cache budget MB"),
        FDPageThumbnailCache::shared().budget() / 1048576.0);
    benchPrint(QStringLiteral("resident growth MB"), processMegabytes("VmRSS:") - before);
    // The process's peak so far: the pages drawn for the pictures must not add up over the scroll.
    benchPrint(QStringLiteral("thumbnails peak resident MB"), processMegabytes("VmHWM:"));

    // The outline: written into a copy, so that it is read as a file's outline is.
    const QString outlined = scratch.filePath(QStringLiteral("outline.pdf"));
    {
        const auto document = tab->primaryPDFView()->fdDocument();
        document->setOutlineRoot(bigOutline(*document));
        QFile out(outlined);
        if (!out.open(QIODevice::WriteOnly) || out.write(document->dataRepresentation()) <= 0)
            return 1;
    }
    QElapsedTimer shown;
    shown.start();
    PDFContents *const second = openBenchTab(window, outlined);
    if (!second)
        return 1;
    second->setSidebarMode(PDFSidebarMode::toc);
    QCoreApplication::processEvents();
    benchPrint(QStringLiteral("outline open and show ms"), shown.nsecsElapsed() / 1e6);
    auto *const outline = qobject_cast<PDFSidebarOutlineContents *>(
        second->sidebarContainer()->controller()->controller(PDFSidebarMode::toc));
    benchPrint(QStringLiteral("outline expand all ms"),
        timedTurn([&] { outline->outlineView()->expandAll(); }));
    std::vector<double> follow;
    FDPDFView *const view = second->primaryPDFView();
    const int pages = view->document()->pageCount();
    for (int step = 0; step < 200; ++step) {
        const auto page = view->document()->pageAtIndex(int(qint64(step) * 7919 % pages));
        follow.push_back(timedTurn([&] { view->goToPage(page); }) + timedTurn([] {}));
    }
    benchPrint(QStringLiteral("outline follow median ms"), median(follow));
    benchPrint(
        QStringLiteral("outline follow max ms"), *std::max_element(follow.begin(), follow.end()));
    benchPrint(QStringLiteral("outline follow steps over 16 ms"),
        double(std::count_if(follow.begin(), follow.end(), [](double ms) { return ms > 16; })));
    // The outline's own part of following: finding the page's item and showing it selected.
    std::vector<double> select;
    for (int step = 0; step < 200; ++step) {
        const int page = int(qint64(step) * 7919 % pages);
        select.push_back(
            timedTurn([&] { outline->selectOutlineWithItem(outline->outlineItemForPage(page)); }));
    }
    benchPrint(QStringLiteral("outline select for a page median ms"), median(select));
    benchPrint(QStringLiteral("outline select for a page max ms"),
        *std::max_element(select.begin(), select.end()));

    for (PDFContents *const each : { tab, second }) {
        if (const auto document = each->primaryPDFView()->fdDocument())
            document->setNumberOfChanges(0);
    }
    delete window.data();
    (void)QTest::qWaitFor([] { return PDFSavingService::shared().numberOfTasks() == 0; }, 30000);
    return 0;
}

const BenchRegistration registration(
    QStringLiteral("sidebar"), QStringLiteral("FILE.pdf"), runSidebar);

} // namespace
