#include <app/FDCommandLine.h>
#include <app/FDTranslations.h>
#include <app/GlobalService.h>
#include <app/PDFContents.h>
#include <kit/engine/PDFDocumentPrefetch.h>

#include <QApplication>
#include <QDir>

int main(int argc, char *argv[])
{
    // Help and version need neither a display nor the running instance.
    const FDCommandLine commandLine(FDCommandLine::argumentsOf(argc, argv), QDir::currentPath());
    if (commandLine.action() != FDCommandLine::Run)
        return commandLine.finish();
    for (const QString &problem : commandLine.problems())
        FDCommandLine::complain(problem);

    // The document shown first is read while the window is made.
    const PDFDocumentPrefetch prefetch(
        commandLine.paths().isEmpty() ? QString() : commandLine.paths().first());

    Q_INIT_RESOURCE(folidoc);
    QApplication app(argc, argv);
    FDTranslations::install();
    PDFContents::registerAsDocumentContents();
    GlobalService service(commandLine.paths());
    service.setLaunchInNewWindow(commandLine.newWindow());
    return service.run();
}
