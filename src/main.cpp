#include <app/FDCommandLine.h>
#include <app/FDTranslations.h>
#include <app/GlobalService.h>
#include <app/PDFContents.h>
#include <kit/base/DesktopColorScheme.h>
#include <kit/engine/PDFDocumentPrefetch.h>

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QImageReader>
#include <QThread>

#include <fontconfig/fontconfig.h>

#include <thread>

int main(int argc, char *argv[])
{
    // Help and version need neither a display nor the running instance.
    const FDCommandLine commandLine(FDCommandLine::argumentsOf(argc, argv), QDir::currentPath());
    if (commandLine.action() != FDCommandLine::Run)
        return commandLine.finish();
    for (const QString &problem : commandLine.problems())
        FDCommandLine::complain(problem);

    // Qt takes the first thread that asks for its thread data as the main one: this one, before
    // the threads below start.
    QThread::currentThread();
    // The document shown first is read while the window is made, and the system's font
    // configuration, which the first window's texts need, is read while Qt starts.
    const PDFDocumentPrefetch prefetch(
        commandLine.paths().isEmpty() ? QString() : commandLine.paths().first());
    std::thread fonts([] { FcInit(); });

    Q_INIT_RESOURCE(folidoc);
    QApplication app(argc, argv);
    // The session bus, which Qt's accessibility asks for as the event loop starts, and the
    // desktop's light or dark preference, which the first window's colours need, are asked for
    // on a thread while the first window is made.
    std::thread desktop = DesktopColorScheme::readAheadOnThread();
    // The first image read anywhere loads every image format plugin, asking each whether it
    // reads the format before Qt's own readers are tried; the window's menu bar reads one for
    // its overflow button. They are loaded here, off the main thread.
    std::thread images([] {
        QBuffer empty;
        QImageReader(&empty, "png").canRead();
    });
    FDTranslations::install();
    PDFContents::registerAsDocumentContents();
    GlobalService service(commandLine.paths());
    service.setLaunchInNewWindow(commandLine.newWindow());
    // Qt reads the configuration again if asked before this thread has made it.
    fonts.join();
    const int status = service.run();
    images.join();
    desktop.join();
    return status;
}
