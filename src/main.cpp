#include <app/GlobalService.h>

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    GlobalService service(QApplication::arguments().mid(1));
    return service.run();
}
