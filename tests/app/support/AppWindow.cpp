#include "AppWindow.h"

#include <app/Alert.h>
#include <app/FDDefaults.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/tabs/TabStripModel.h>
#include <view/FDPDFView.h>

namespace AppWindow {

void reset()
{
    AppTestEnvironment::clearStore();
    FDDefaults::registerDefaults();
    PDFContents::registerAsDocumentContents();
    answerAlertsWithTheSecondButton();
}

void answerAlertsWithTheSecondButton()
{
    Alert::setHandlerForTesting(
        [](const AlertRequest &) { return int(Alert::SecondButtonReturn); });
}

PDFWindowController *makeWindow(QSize size)
{
    auto *const window = TabWindowController::create<PDFWindowController>();
    window->resize(size);
    window->openNewTab();
    window->show();
    return window;
}

PDFContents *openTab(PDFWindowController *window, const QUrl &url)
{
    auto *const tab = qobject_cast<PDFContents *>(window->openPDFDocumentWithURL(url, true, true));
    const bool loaded = tab && QTest::qWaitFor([tab] {
        return tab->primaryPDFView()->document() && !tab->primaryPDFView()->isLoading();
    });
    return loaded ? tab : nullptr;
}

bool closeWindow(QPointer<PDFWindowController> &window)
{
    TabStripModel *const model = window ? window->tabStripModel() : nullptr;
    for (int index = 0; model && index < model->count(); ++index) {
        if (auto *const tab = qobject_cast<PDFContents *>(model->getTabContentsAtIndex(index))) {
            for (FDPDFView *const view : { tab->primaryPDFView(), tab->secondaryPDFView() }) {
                if (const auto document = view ? view->fdDocument() : nullptr)
                    document->setNumberOfChanges(0);
            }
        }
    }
    delete window.data();
    return waitForSaves();
}

bool waitForSaves()
{
    return QTest::qWaitFor([] { return PDFSavingService::shared().numberOfTasks() == 0; }, 20000);
}

} // namespace AppWindow
