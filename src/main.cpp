#include <app/GlobalService.h>
#include <app/PDFContents.h>

#include <QApplication>

int main(int argc, char *argv[])
{
    Q_INIT_RESOURCE(folidoc);
    QApplication app(argc, argv);
    PDFContents::registerAsDocumentContents();
    GlobalService service(QApplication::arguments().mid(1));
    return service.run();
}
