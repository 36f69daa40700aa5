// The small pictures of the annotation kinds ("Ann_<type>_18pt"), drawn from the application's
// vector images in the colour of text, so that they read like text on any theme.

#include "PDFAnnotation+XExtensions.h"

#include <document/Logger.h>
#include <kit/engine/PDFAnnotation.h>

#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

// The application's images live in a static library: their registration has to be asked for.
// Outside any namespace, as the resource's registration function is.
static void initialiseResources()
{
    static const bool done = [] {
        Q_INIT_RESOURCE(folidoc);
        return true;
    }();
    Q_UNUSED(done);
}

namespace {

constexpr int IconSide = 18;

QPixmap tinted(QSvgRenderer &renderer, int side, const QColor &color)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(0, 0, side, side));
    // Only the image's coverage is kept; the colour is the text's, as for a template image.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();
    return QPixmap::fromImage(image);
}

} // namespace

QIcon iconForType(const QString &type)
{
    static QHash<QString, QIcon> cache;
    const QString name = QStringLiteral("Ann_%1_18pt").arg(type);
    const auto found = cache.constFind(name);
    if (found != cache.constEnd())
        return *found;
    initialiseResources();
    const QString path = QStringLiteral(":/images/%1.svg").arg(name);
    QSvgRenderer renderer;
    if (!QFile::exists(path) || !renderer.load(path)) {
        Logger::warn(QStringLiteral(">>> Not found image for: %1").arg(name));
        return QIcon();
    }
    const QColor color = QGuiApplication::palette().color(QPalette::Text);
    QIcon icon;
    for (const int scale : { 1, 2 })
        icon.addPixmap(tinted(renderer, IconSide * scale, color));
    cache.insert(name, icon);
    return icon;
}

QIcon typeIcon(const PDFAnnotation &annotation)
{
    return iconForType(annotation.type());
}
