#include <QApplication>
#include <QLabel>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Folidoc"));
    QLabel window(QStringLiteral("Folidoc"));
    window.setAlignment(Qt::AlignCenter);
    window.setWindowTitle(QStringLiteral("Folidoc"));
    window.resize(640, 400);
    window.show();
    return app.exec();
}
