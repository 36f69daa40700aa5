// folidoc-bench shots FILE.pdf WORD OUTDIR: pictures of the search and the annotation list in a
// real window, for the project's notes: the results of WORD beside the view once the search has
// ended, then a few annotations on the first pages with the annotations tab beside them.

#include "BenchCommand.h"
#include "BenchWindow.h"

#include <annotation/FDAnnotationCircle.h>
#include <annotation/FDAnnotationFreeText.h>
#include <annotation/FDAnnotationSquare.h>
#include <annotation/FDAnnotationText.h>
#include <app/FDDefaults.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFPage.h>
#include <navigation/PDFViewSearcher.h>
#include <view/FDPDFView.h>

#include <QDir>
#include <QtCore/qtestsupport_core.h>

namespace {

bool save(QWidget *window, const QString &path)
{
    QCoreApplication::processEvents();
    QTest::qWait(1500); // pages drawn on workers
    return window->grab().save(path);
}

int runShots(const QStringList &arguments)
{
    if (arguments.size() < 3)
        return 2;
    const QDir out(arguments.at(2));
    FDDefaults::registerDefaults();
    PDFContents::registerAsDocumentContents();
    QPointer<PDFWindowController> window = TabWindowController::create<PDFWindowController>();
    window->resize(1280, 820);
    window->show();
    auto *const tab = openBenchTab(window, arguments.at(0));
    if (!tab)
        return 1;
    FDPDFView *const view = tab->primaryPDFView();
    bool ended = false;
    int observer = 0;
    NotificationCenter::qkCenter().addObserver(&observer, PDFViewSearcher::SearchDidEndNotification,
        view, [&](const Notification &) { ended = true; });
    tab->setQueryString(arguments.at(1));
    if (!QTest::qWaitFor([&] { return ended; }, 300000))
        return 1;
    NotificationCenter::qkCenter().removeObserver(&observer);
    const bool searched = save(window, out.filePath(QStringLiteral("search.png")));

    tab->setQueryString(QString());
    view->goToPage(view->document()->pageAtIndex(0));
    const auto stamp = [](PDFAnnotation &annotation, const QString &author, int daysAgo) {
        annotation.setUserName(author);
        annotation.setModificationDate(QDateTime::currentDateTime().addDays(-daysAgo));
    };
    const struct
    {
        int page;
        QString text;
    } notes[] = { { 0, QStringLiteral("Check this paragraph against the new release") },
        { 0, QStringLiteral("Typo in the second line") }, { 1, QString() },
        { 2,
            QStringLiteral("A longer remark that wraps over more than one line in the list, "
                           "so that its row is measured taller than the others") } };
    for (const auto &note : notes) {
        auto annotation = std::make_shared<FDAnnotationText>();
        annotation->initWithBounds(QRectF(60 + 30 * note.page, 600 - 40 * note.page, 20, 20));
        annotation->setContents(note.text);
        stamp(*annotation, note.page == 1 ? QString() : QStringLiteral("Ana"), note.page);
        view->addAnnotation(annotation, view->document()->pageAtIndex(note.page));
    }
    auto square = std::make_shared<FDAnnotationSquare>();
    square->initWithBounds(QRectF(300, 500, 160, 90));
    square->setColor(QColor(40, 120, 220));
    stamp(*square, QStringLiteral("Ben"), 3);
    view->addAnnotation(square, view->document()->pageAtIndex(1));
    auto circle = std::make_shared<FDAnnotationCircle>();
    circle->initWithBounds(QRectF(320, 300, 120, 120));
    circle->setColor(QColor(220, 60, 40));
    stamp(*circle, QStringLiteral("Ben"), 8);
    view->addAnnotation(circle, view->document()->pageAtIndex(0));
    auto freeText = std::make_shared<FDAnnotationFreeText>();
    freeText->initWithBounds(QRectF(80, 700, 220, 40));
    freeText->setContents(QStringLiteral("Draft: do not circulate"));
    freeText->setFontColor(QColor(200, 30, 120));
    stamp(*freeText, QStringLiteral("Ana"), 1);
    view->addAnnotation(freeText, view->document()->pageAtIndex(0));
    view->setSelectedAnn(nullptr);
    tab->setIsSidebarHidden(false);
    tab->setSidebarMode(PDFSidebarMode::annotations);
    view->goToPage(view->document()->pageAtIndex(0));
    const bool listed = save(window, out.filePath(QStringLiteral("annotations.png")));

    if (const auto document = view->fdDocument())
        document->setNumberOfChanges(0);
    delete window.data();
    (void)QTest::qWaitFor([] { return PDFSavingService::shared().numberOfTasks() == 0; }, 30000);
    return searched && listed ? 0 : 1;
}

const BenchRegistration registration(
    QStringLiteral("shots"), QStringLiteral("FILE.pdf WORD OUTDIR"), runShots);

} // namespace
