#include "BenchWindow.h"

#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <view/FDPDFView.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QUrl>
#include <QtCore/qtestsupport_core.h>

PDFContents *openBenchTab(PDFWindowController *window, const QString &path)
{
    auto *const tab = qobject_cast<PDFContents *>(
        window->openPDFDocumentWithURL(QUrl::fromLocalFile(path), true, true));
    if (!tab
        || !QTest::qWaitFor(
            [tab] {
                return tab->primaryPDFView()->document() && !tab->primaryPDFView()->isLoading();
            },
            60000))
        return nullptr;
    return tab;
}

double timedTurn(const std::function<void()> &step)
{
    QElapsedTimer timer;
    timer.start();
    step();
    QCoreApplication::processEvents();
    return timer.nsecsElapsed() / 1e6;
}
