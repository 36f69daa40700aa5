#pragma once

// A real main window for the shell's tests: shown with its start tab, documents opened in it and
// waited for, and closed without an unsaved change asked about or a save left running.

#include "AppTestEnvironment.h"

#include <app/PDFContents.h>

#include <QApplication>
#include <QPointer>
#include <QSize>
#include <QTest>
#include <QUrl>

class PDFWindowController;

namespace AppWindow {

// Empties the store, registers the defaults, and answers alerts as below.
void reset();
// Answers every alert with its second button (Cancel, Don't Save): no one is there to click, and a
// real dialog would wait for ever.
void answerAlertsWithTheSecondButton();
// A window of this size with a start tab, shown.
PDFWindowController *makeWindow(QSize size = { 900, 700 });
// Opens url in the window and waits until its primary view shows the document; null if not.
PDFContents *openTab(PDFWindowController *window, const QUrl &url);
// Drops what the tabs changed, closes the window and waits for the saving service; false if a
// save is still running after 20 seconds.
bool closeWindow(QPointer<PDFWindowController> &window);
// Waits until the saving service has no task left; false after 20 seconds.
bool waitForSaves();

} // namespace AppWindow

// The main() of a shell test: its own XDG folders, a QApplication and document tabs.
#define FOLIDOC_APP_TEST_MAIN(TestClass)                                                           \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        AppTestEnvironment::isolate();                                                             \
        QApplication app(argc, argv);                                                              \
        PDFContents::registerAsDocumentContents();                                                 \
        TestClass test;                                                                            \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
