// The drawn cursors: each one's hot spot sits on what its picture points with, at the screen's
// density, and the tools take theirs.

#include <appearance/FDCursors.h>
#include <appearance/NSImage+XExtensions.h>
#include <view/PDFToolMode.h>

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
    void cursorsPointWithTheirHotSpot_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QSize>("size"); // at a ratio of 1
        QTest::addColumn<bool>("tip"); // an arrow whose tip is the hot spot, else centred on it
        for (const char *name : { "textNoteCursor", "lineNoteCursor", "inkNoteCursor" })
            QTest::newRow(name) << QString::fromLatin1(name) << QSize(24, 40) << true;
        for (const char *name :
            { "zoomInCursor", "zoomOutCursor", "resizeDiagonal45Cursor", "resizeDiagonal135Cursor",
                "cameraCursor", "openHandBarCursor", "closedHandBarCursor" })
            QTest::newRow(name) << QString::fromLatin1(name) << QSize(16, 16) << false;
    }

    void cursorsPointWithTheirHotSpot()
    {
        QFETCH(QString, name);
        QFETCH(QSize, size);
        QFETCH(bool, tip);
        makeImages();
        for (const double ratio : { 1.0, 2.0 }) {
            const std::optional<QCursor> cursor = FDCursors::cursorNamed(name, ratio);
            QVERIFY(cursor);
            const QImage image = cursorImage(*cursor);
            QCOMPARE(image.size(), size * ratio);
            const QPointF hot = cursor->hotSpot();
            // Something is drawn at the hot spot; a tip has nothing above or to the left of it.
            QVERIFY2(alphaAt(image, hot + (tip ? QPointF(0.3, 0.3) : QPointF())) > 128,
                qPrintable(QStringLiteral("nothing at the hot spot at %1").arg(ratio)));
            if (!tip)
                continue;
            QCOMPARE(alphaAt(image, hot - QPointF(1.5, 1.5)), 0);
            QCOMPARE(alphaAt(image, hot + QPointF(4, -1.5)), 0);
            // The note picture hangs below the arrow.
            QVERIFY(alphaAt(image, QPointF(13, 30)) > 0);
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

QTEST_MAIN(CursorsTest)
#include "CursorsTest.moc"
