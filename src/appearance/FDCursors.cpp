#include "FDCursors.h"

#include "NSImage+XExtensions.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <view/XPDFView.h>

#include <QGuiApplication>
#include <QHash>
#include <QIcon>
#include <QPixmap>
#include <QScreen>

namespace {

struct CursorEntry
{
    QString image;
    QPoint hotSpot;
};

// Operation name to image and hot spot in logical pixels from the top left.
const QHash<QString, CursorEntry> &cursorTable()
{
    static const QHash<QString, CursorEntry> table = [] {
        QHash<QString, CursorEntry> entries;
        entries.insert(
            QStringLiteral("zoomInCursor"), { QStringLiteral("ZoomInCursor"), { 6, 6 } });
        entries.insert(
            QStringLiteral("zoomOutCursor"), { QStringLiteral("ZoomOutCursor"), { 6, 6 } });
        entries.insert(QStringLiteral("resizeDiagonal45Cursor"),
            { QStringLiteral("ResizeDiagonal45Cursor"), { 8, 8 } });
        entries.insert(QStringLiteral("resizeDiagonal135Cursor"),
            { QStringLiteral("ResizeDiagonal135Cursor"), { 8, 8 } });
        entries.insert(
            QStringLiteral("cameraCursor"), { QStringLiteral("CameraCursor"), { 8, 8 } });
        // Where an open or closed hand takes hold: the middle of its 16 by 16 picture.
        entries.insert(
            QStringLiteral("openHandBarCursor"), { QStringLiteral("OpenHandBarCursor"), { 8, 8 } });
        entries.insert(QStringLiteral("closedHandBarCursor"),
            { QStringLiteral("ClosedHandBarCursor"), { 8, 8 } });
        const QPoint tip = arrowCursorHotSpot().toPoint();
        for (const QString &note : noteImageNames()) {
            QString operation = note + QStringLiteral("Cursor");
            operation[0] = operation.at(0).toLower();
            entries.insert(operation, { note + QStringLiteral("Cursor"), tip });
        }
        return entries;
    }();
    return table;
}

double ratioOrScreen(double devicePixelRatio)
{
    if (devicePixelRatio > 0)
        return devicePixelRatio;
    const QScreen *const screen = QGuiApplication::primaryScreen();
    return screen ? screen->devicePixelRatio() : 1.0;
}

QCursor cursorFromImage(const QImage &image, const QPoint &hotSpot)
{
    // The hot spot is in logical pixels; the pixmap carries its density.
    return QCursor(QPixmap::fromImage(image), hotSpot.x(), hotSpot.y());
}

} // namespace

QCursor FDCursors::named(const QString &name, double devicePixelRatio)
{
    const std::optional<QCursor> cursor = cursorNamed(name, devicePixelRatio);
    return cursor.value_or(QCursor(Qt::ArrowCursor));
}

std::optional<QCursor> FDCursors::cursorNamed(const QString &name, double devicePixelRatio)
{
    const auto entry = cursorTable().constFind(name);
    if (entry == cursorTable().constEnd())
        return std::nullopt;
    const double ratio = ratioOrScreen(devicePixelRatio);
    static QHash<QString, QCursor> made;
    const QString key = name + QLatin1Char('@') + QString::number(ratio);
    if (const auto found = made.constFind(key); found != made.constEnd())
        return *found;
    const QImage image = imageNamed(entry->image, ratio);
    if (image.isNull())
        return std::nullopt;
    const QCursor cursor = cursorFromImage(image, entry->hotSpot);
    made.insert(key, cursor);
    return cursor;
}

QPoint FDCursors::hotSpotForName(const QString &name)
{
    return cursorTable().value(name).hotSpot;
}

QCursor FDCursors::cursorForToolMode(int mode, double devicePixelRatio)
{
    if (!XPDFView::isAnnToolMode(mode))
        return QCursor(Qt::ArrowCursor);
    const double ratio = ratioOrScreen(devicePixelRatio);
    static QHash<QString, QCursor> made;
    const QString key = QString::number(mode) + QLatin1Char('@') + QString::number(ratio);
    if (const auto found = made.constFind(key); found != made.constEnd())
        return *found;
    const QString type = XPDFView::annTypeForToolMode(mode);
    const QIcon icon = type.isEmpty() ? QIcon() : iconForType(type);
    QImage picture(qRound(18 * ratio), qRound(18 * ratio), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    if (!icon.isNull())
        picture = icon.pixmap(QSize(18, 18), ratio).toImage();
    picture.setDevicePixelRatio(ratio);
    const QImage image = copyArrowCursorImage(picture);
    const QCursor cursor = cursorFromImage(image, arrowCursorHotSpot().toPoint());
    made.insert(key, cursor);
    return cursor;
}

#define FD_NAMED_CURSOR(operation)                                                                 \
    QCursor FDCursors::operation(double devicePixelRatio)                                          \
    {                                                                                              \
        return named(QStringLiteral(#operation), devicePixelRatio);                                \
    }

FD_NAMED_CURSOR(zoomInCursor)
FD_NAMED_CURSOR(zoomOutCursor)
FD_NAMED_CURSOR(resizeDiagonal45Cursor)
FD_NAMED_CURSOR(resizeDiagonal135Cursor)
FD_NAMED_CURSOR(cameraCursor)
FD_NAMED_CURSOR(openHandBarCursor)
FD_NAMED_CURSOR(closedHandBarCursor)
FD_NAMED_CURSOR(textNoteCursor)
FD_NAMED_CURSOR(anchoredNoteCursor)
FD_NAMED_CURSOR(circleNoteCursor)
FD_NAMED_CURSOR(squareNoteCursor)
FD_NAMED_CURSOR(highlightNoteCursor)
FD_NAMED_CURSOR(underlineNoteCursor)
FD_NAMED_CURSOR(strikeOutNoteCursor)
FD_NAMED_CURSOR(lineNoteCursor)
FD_NAMED_CURSOR(inkNoteCursor)
