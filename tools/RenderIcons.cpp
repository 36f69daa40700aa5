// Renders the program's SVG icon as PNG files in the hicolor sizes, for desktops and stores that
// want bitmaps: RenderIcons ICON.svg OUTPUT_DIR SIZE... writes OUTPUT_DIR/SxS/apps/NAME.png.

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 4) {
        std::fprintf(stderr, "usage: RenderIcons ICON.svg OUTPUT_DIR SIZE...\n");
        return 2;
    }
    QSvgRenderer renderer(args.at(1));
    if (!renderer.isValid()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(args.at(1)));
        return 1;
    }
    const QString name = QStringLiteral("org.folidoc.Folidoc.png");
    for (const QString &sizeText : args.mid(3)) {
        bool ok = false;
        const int size = sizeText.toInt(&ok);
        if (!ok || size <= 0 || size > 4096) {
            std::fprintf(stderr, "not a size: %s\n", qPrintable(sizeText));
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        renderer.render(&painter, QRectF(0, 0, size, size));
        painter.end();
        const QString folder = QStringLiteral("%1/%2x%2/apps").arg(args.at(2)).arg(size);
        if (!QDir().mkpath(folder) || !image.save(folder + QLatin1Char('/') + name, "PNG")) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(folder));
            return 1;
        }
    }
    return 0;
}
