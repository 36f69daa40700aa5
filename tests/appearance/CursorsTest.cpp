// The drawn cursors and note images: nothing before the images are made, then each cursor's hot
// spot sits on what its picture points with, at the screen's density.

#include <appearance/FDCursors.h>
#include <appearance/NSImage+XExtensions.h>
#include <view/PDFToolMode.h>

#include <QApplication>
#include <QtTest>

namespace {

int alphaAt(const QImage &image, QPointF logical)
{
    const QPoint pixel = (logical * image.devicePixelRatio()).toPoint();
    return qAlpha(image.pixel(
        qBound(0, pixel.x(), image.width() - 1), qBound(0, pixel.y(), image.height() - 1)));
}

QImage cursorImage(const QCursor &cursor)
{
    QImage image = cursor.pixmap().toImage().convertToFormat(QImage::Format_ARGB32);
    image.setDevicePixelRatio(cursor.pixmap().devicePixelRatio());
    return image;
}

} // namespace

class CursorsTest : public QObject
{
    Q_OBJECT

private slots:
    void noteCursorsPointWithTheArrowTip_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("ratio");
        for (const double ratio : { 1.0, 2.0 }) {
            for (const char *name : { "textNoteCursor", "lineNoteCursor", "inkNoteCursor" })
                QTest::addRow("%s@%g", name, ratio) << QString::fromLatin1(name) << ratio;
        }
    }

    void noteCursorsPointWithTheArrowTip()
    {
        QFETCH(QString, name);
        QFETCH(double, ratio);
        makeImages();
        const std::optional<QCursor> cursor = FDCursors::cursorNamed(name, ratio);
        QVERIFY(cursor);
        const QImage image = cursorImage(*cursor);
        QCOMPARE(image.size(), QSize(qRound(24 * ratio), qRound(40 * ratio)));
        const QPoint hot = cursor->hotSpot();
        // The tip is drawn at the hot spot, and nothing lies above or to the left of it.
        QVERIFY2(alphaAt(image, QPointF(hot) + QPointF(0.3, 0.3)) > 128,
            qPrintable(
                QStringLiteral("nothing at the hot spot (%1, %2)").arg(hot.x()).arg(hot.y())));
        QCOMPARE(alphaAt(image, QPointF(hot) - QPointF(1.5, 1.5)), 0);
        QCOMPARE(alphaAt(image, QPointF(hot.x() + 4, hot.y() - 1.5)), 0);
        // The note picture hangs below the arrow.
        QVERIFY(alphaAt(image, QPointF(13, 30)) > 0);
    }

    void centredCursorsHaveTheirPictureUnderTheHotSpot_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name :
            { "zoomInCursor", "zoomOutCursor", "resizeDiagonal45Cursor", "resizeDiagonal135Cursor",
                "cameraCursor", "openHandBarCursor", "closedHandBarCursor" })
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void centredCursorsHaveTheirPictureUnderTheHotSpot()
    {
        QFETCH(QString, name);
        makeImages();
        for (const double ratio : { 1.0, 2.0 }) {
            const std::optional<QCursor> cursor = FDCursors::cursorNamed(name, ratio);
            QVERIFY(cursor);
            const QImage image = cursorImage(*cursor);
            QCOMPARE(image.size(), QSize(qRound(16 * ratio), qRound(16 * ratio)));
            QVERIFY(alphaAt(image, cursor->hotSpot()) > 128);
        }
        // The resize arrows turn about the middle of their picture.
        if (name.startsWith(QLatin1String("resize")))
            QCOMPARE(FDCursors::cursorNamed(name, 1.0)->hotSpot(), QPoint(8, 8));
    }

    void toolCursorsHangTheToolUnderAnArrow()
    {
        makeImages();
        QCOMPARE(FDCursors::cursorForToolMode(PDFToolModeHand, 1.0).shape(), Qt::ArrowCursor);
        const QCursor pen = FDCursors::cursorForToolMode(PDFToolModeAnnInk, 2.0);
        QCOMPARE(pen.shape(), Qt::BitmapCursor);
        const QImage image = cursorImage(pen);
        QCOMPARE(image.size(), QSize(48, 80));
        QVERIFY(alphaAt(image, QPointF(pen.hotSpot()) + QPointF(0.3, 0.3)) > 128);
    }
};

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    CursorsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "CursorsTest.moc"
