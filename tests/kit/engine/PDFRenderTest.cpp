// Page space, view space and rendering: display lists, tiles, drawing calls and cancellation.

#include "support/RawPdf.h"

#include <support/PdfFixtures.h>

#include <kit/engine/PDFCancellation.h>
#include <kit/engine/PDFDisplayList.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>
#include <kit/engine/PageGeometry.h>

#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

// A 200 × 100 page, crop box from (10, 20) to (190, 90), a black square at x 20–30, y 30–40.
std::shared_ptr<PDFDocument> markedDocument(int rotation)
{
    PdfFixtures::Page page;
    page.mediaBox = QRectF(0, 0, 200, 100);
    page.cropBox = QRectF(QPointF(10, 20), QPointF(190, 90));
    page.rotate = rotation;
    page.fills = { { QRectF(20, 30, 10, 10), 0, 0, 0 } };
    PdfFixtures::Document spec;
    spec.pages = { page };
    auto doc = std::make_shared<PDFDocument>();
    return doc->initWithData(PdfFixtures::build(spec)) ? doc : nullptr;
}

bool isDark(const QImage &image, QPointF at)
{
    return qGray(image.pixel(at.toPoint())) < 60;
}

// A page of 20 × 20 blue squares at (30i + 10, 30j + 10), each number spelled one of the ways
// writers do, compressed so that tokens straddle the buffers the content is read in.
QByteArray spelledSquaresPdf()
{
    const auto spell = [](int value, int way) -> QByteArray {
        const QByteArray digits = QByteArray::number(value);
        switch (way % 6) {
        case 0:
            return digits;
        case 1:
            return digits + '.';
        case 2:
            return '+' + digits + ".000";
        case 3:
            return "00" + digits;
        case 4:
            return digits + ".00000001";
        default:
            return QByteArray::number(value - 1) + ".99999999999";
        }
    };
    QByteArray content = "/Blue cs 1 scn\n";
    int way = 0;
    for (int i = 0; i < 20; ++i) {
        for (int j = 0; j < 20; ++j) {
            const QByteArray x = spell(30 * i + 10, way++);
            const QByteArray y = spell(30 * j + 10, way++);
            content += "q " + x + ' ' + y + " 10 -10.0 re\n% a comment\n0 +10 m /Name#20x gs f Q\n";
        }
    }
    const QByteArray packed = qCompress(content).mid(4);
    return RawPdf::build(
        { "<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
            "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 600 600] /Contents 4 0 R /Resources << "
            "/ColorSpace << /Blue [/Separation /B /DeviceRGB << /FunctionType 2 /Domain [0 1] "
            "/C0 [1 1 1] /C1 [0 0 1] /N 1 >>] >> /ExtGState << /Name#20x << /CA 1 >> >> >> >>",
            RawPdf::stream("/Filter /FlateDecode", packed) });
}

} // namespace

class PDFRenderTest : public QObject
{
    Q_OBJECT

private slots:
    // The square at page (20, 30)-(30, 40) lands where the geometry puts it, and the engine
    // draws it there, on each turn of the page.
    void pageAndViewSpaceMeet_data()
    {
        QTest::addColumn<int>("rotation");
        QTest::addColumn<QRectF>("viewRect"); // of the square, at scale 1, crop box shown
        QTest::addColumn<QSizeF>("viewSize");
        QTest::newRow("0") << 0 << QRectF(10, 50, 10, 10) << QSizeF(180, 70);
        QTest::newRow("90") << 90 << QRectF(10, 10, 10, 10) << QSizeF(70, 180);
        QTest::newRow("180") << 180 << QRectF(160, 10, 10, 10) << QSizeF(180, 70);
        QTest::newRow("270") << 270 << QRectF(50, 160, 10, 10) << QSizeF(70, 180);
    }
    void pageAndViewSpaceMeet()
    {
        QFETCH(int, rotation);
        QFETCH(QRectF, viewRect);
        QFETCH(QSizeF, viewSize);
        const PageGeometry geometry(QRectF(10, 20, 180, 70), rotation);
        QCOMPARE(geometry.viewSize(), viewSize);
        QCOMPARE(geometry.viewRect(QRectF(20, 30, 10, 10)), viewRect);
        QCOMPARE(geometry.pageRect(viewRect), QRectF(20, 30, 10, 10));
        QCOMPARE(
            geometry.pagePoint(geometry.viewPoint(QPointF(33, 44), 2.5), 2.5), QPointF(33, 44));

        auto doc = markedDocument(rotation);
        QVERIFY(doc);
        const auto page = doc->pageAtIndex(0);
        QCOMPARE(page->rotation(), rotation);
        QCOMPARE(page->boundsForBox(PDFDisplayBox::MediaBox), QRectF(0, 0, 200, 100));
        QCOMPARE(page->boundsForBox(PDFDisplayBox::CropBox), QRectF(10, 20, 180, 70));
        // Missing boxes answer the crop box.
        QCOMPARE(page->boundsForBox(PDFDisplayBox::TrimBox), QRectF(10, 20, 180, 70));
        const auto source = page->renderSource(PDFDisplayBox::CropBox);
        QVERIFY(source);
        const double scale = 2.0;
        const QSizeF size = source->geometry().viewSize(scale);
        QCOMPARE(size, viewSize * scale);
        const auto list = source->buildDisplayList();
        QVERIFY(list);
        const QImage image = list->renderTile(QRect(QPoint(0, 0), size.toSize()), scale);
        QCOMPARE(image.size(), size.toSize());
        QCOMPARE(image.format(), QImage::Format_ARGB32_Premultiplied);
        const QRectF square = source->geometry().viewRect(QRectF(20, 30, 10, 10), scale);
        QCOMPARE(square, QRectF(viewRect.topLeft() * scale, viewRect.size() * scale));
        QVERIFY(isDark(image, square.center()));
        QVERIFY(!isDark(image, square.center() + QPointF(square.width(), 0)));
        QVERIFY(!isDark(image, square.center() + QPointF(0, square.height())));
        // The crop box cuts the media box: the view shows no more than the crop box.
        QVERIFY(!isDark(image, QPointF(1, 1)));
    }

    // Lists built on workers while the main thread reads the pages, and one list drawn in bands
    // by several workers at once, draw what the page draws in one piece.
    void workersBuildAndDrawListsAlike()
    {
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->initWithData(PdfFixtures::build(PdfFixtures::textPages(8))));
        std::vector<std::shared_ptr<PDFPageRenderSource>> sources;
        for (int i = 0; i < doc->pageCount(); ++i)
            sources.push_back(doc->pageAtIndex(i)->renderSource(PDFDisplayBox::CropBox));
        std::vector<std::shared_ptr<PDFDisplayList>> lists(sources.size());
        std::vector<QImage> images(sources.size());
        std::vector<std::thread> workers;
        for (size_t i = 0; i < sources.size(); ++i) {
            workers.emplace_back([&, i] {
                lists[i] = sources[i]->buildDisplayList();
                if (lists[i])
                    images[i] = lists[i]->renderTile(QRect(0, 0, 306, 396), 0.5);
            });
        }
        for (int i = 0; i < doc->pageCount(); ++i)
            QVERIFY(
                doc->pageAtIndex(i)->string().startsWith(QStringLiteral("Page %1 ").arg(i + 1)));
        for (auto &worker : workers)
            worker.join();
        for (size_t i = 0; i < images.size(); ++i) {
            QVERIFY(!images[i].isNull());
            QCOMPARE(images[i],
                doc->pageAtIndex(static_cast<int>(i))
                    ->imageForBox(PDFDisplayBox::CropBox, QSize(306, 396)));
        }

        const double scale = 1.5;
        const QSize size = sources[0]->geometry().viewSize(scale).toSize();
        const QImage whole = lists[0]->renderTile(QRect(QPoint(0, 0), size), scale);
        const int tileHeight = 128;
        const int tiles = (size.height() + tileHeight - 1) / tileHeight;
        std::vector<QImage> parts(static_cast<size_t>(tiles));
        workers.clear();
        for (int i = 0; i < tiles; ++i) {
            workers.emplace_back([&, i] {
                const QRect tile(0, i * tileHeight, size.width(),
                    std::min(tileHeight, size.height() - i * tileHeight));
                parts[static_cast<size_t>(i)] = lists[0]->renderTile(tile, scale);
            });
        }
        for (auto &worker : workers)
            worker.join();
        for (int i = 0; i < tiles; ++i) {
            const QImage &part = parts[static_cast<size_t>(i)];
            QVERIFY(!part.isNull());
            QCOMPARE(part, whole.copy(0, i * tileHeight, size.width(), part.height()));
        }
    }

    // A worker recording or drawing a heavy page gives the lock up when the main thread asks
    // for it, and the page it hands back after starting over is whole.
    void workersGiveWayToTheMainThread()
    {
        PdfFixtures::Page heavy;
        heavy.fontSize = 2;
        heavy.leading = 0.12;
        heavy.textObjectPerLine = true;
        for (int l = 0; l < 6000; ++l)
            heavy.lines.append(QStringLiteral("line %1 of a long page").arg(l));
        heavy.fills = { { QRectF(20, 30, 40, 40), 0, 0, 0 } };
        PdfFixtures::Document spec;
        spec.pages = { heavy, PdfFixtures::Page() };
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->initWithData(PdfFixtures::build(spec)));
        const auto source = doc->pageAtIndex(0)->renderSource(PDFDisplayBox::CropBox);
        const QSize size = source->geometry().viewSize().toSize();
        QElapsedTimer timer;
        timer.start();
        const QImage expected = source->buildDisplayList()->renderTile(QRect(QPoint(), size), 1);
        const double recording = double(timer.nsecsElapsed()) / 1e6;
        QVERIFY(!expected.isNull());

        for (const bool straight : { false, true }) {
            std::atomic<bool> done { false };
            QImage image;
            std::thread worker([&] {
                if (straight) {
                    image = QImage(size, QImage::Format_ARGB32_Premultiplied);
                    if (!source->render(image, source->geometry().pageToView()))
                        image = QImage();
                } else if (const auto list = source->buildDisplayList()) {
                    image = list->renderTile(QRect(QPoint(), size), 1);
                }
                done = true;
            });
            double longestWait = 0;
            // Three times in a recording, as a busy main thread might; then the worker is left
            // to finish.
            for (int ask = 0; ask < 3 && !done; ++ask) {
                std::this_thread::sleep_for(
                    std::chrono::duration<double, std::milli>(recording / 3));
                // Drawing another page takes the lock on the main thread.
                timer.restart();
                QVERIFY(doc->pageAtIndex(1)->renderSource(PDFDisplayBox::CropBox));
                longestWait = std::max(longestWait, double(timer.nsecsElapsed()) / 1e6);
            }
            worker.join();
            QVERIFY(!image.isNull());
            QCOMPARE(image, expected);
            QVERIFY2(longestWait < recording / 2,
                qPrintable(QStringLiteral("waited %1 ms, recording the page takes %2 ms")
                               .arg(longestWait)
                               .arg(recording)));
        }
    }

    void cancelledWorkAnswersNothing()
    {
        auto doc = markedDocument(0);
        const auto source = doc->pageAtIndex(0)->renderSource(PDFDisplayBox::CropBox);
        PDFCancellation cancel;
        const auto list = source->buildDisplayList(&cancel);
        QVERIFY(list);
        cancel.cancel();
        QVERIFY(!source->buildDisplayList(&cancel));
        QImage image(50, 50, QImage::Format_ARGB32_Premultiplied);
        QVERIFY(!list->render(image, QTransform(), &cancel));
        QVERIFY(!source->render(image, QTransform(), &cancel));
        QVERIFY(source->render(image, QTransform()));
        QImage wrongFormat(50, 50, QImage::Format_RGB888);
        QVERIFY(!list->render(wrongFormat, QTransform()));
    }

    void drawingFollowsThePainterTransform()
    {
        auto doc = markedDocument(90);
        const auto page = doc->pageAtIndex(0);
        QImage canvas(140, 360, QImage::Format_ARGB32_Premultiplied);
        canvas.fill(Qt::red);
        {
            QPainter painter(&canvas);
            painter.scale(2, 2);
            page->drawWithBox(painter, PDFDisplayBox::CropBox);
        }
        const QImage direct = page->imageForBox(PDFDisplayBox::CropBox, QSize(140, 360));
        QCOMPARE(canvas.convertToFormat(QImage::Format_RGB32),
            direct.convertToFormat(QImage::Format_RGB32));
        // Drawing in page space through the page's transform lands on the rendered square.
        QImage overlay(140, 360, QImage::Format_ARGB32_Premultiplied);
        overlay.fill(Qt::white);
        {
            QPainter painter(&overlay);
            painter.scale(2, 2);
            page->transformContextForBox(painter, PDFDisplayBox::CropBox);
            painter.fillRect(QRectF(20, 30, 10, 10), Qt::black);
        }
        const QRectF square
            = PageGeometry(QRectF(10, 20, 180, 70), 90).viewRect(QRectF(20, 30, 10, 10), 2);
        QVERIFY(isDark(overlay, square.center()));
        QVERIFY(isDark(direct, square.center()));
    }

    // The squares stand where their numbers say, however they are spelled.
    void contentNumbersReadAsWritten()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("spelled.pdf"));
        QVERIFY(RawPdf::writeFile(path, spelledSquaresPdf()));
        PDFDocument document;
        QVERIFY(document.initWithURL(QUrl::fromLocalFile(path)));
        const QImage image
            = document.pageAtIndex(0)->imageForBox(PDFDisplayBox::MediaBox, QSize(600, 600));
        QVERIFY(!image.isNull());
        int wrong = 0;
        for (int i = 0; i < 20; ++i) {
            for (int j = 0; j < 20; ++j) {
                // Page y grows upwards; a square spans y - 10 to y.
                const QPoint inside(30 * i + 15, 600 - (30 * j + 5));
                const QPoint beside(30 * i + 25, 600 - (30 * j + 5));
                wrong += image.pixelColor(inside) != QColor(Qt::blue);
                wrong += image.pixelColor(beside) != QColor(Qt::white);
            }
        }
        QCOMPARE(wrong, 0);
    }

    void areaExports()
    {
        auto doc = markedDocument(0);
        const auto page = doc->pageAtIndex(0);
        const QByteArray pdf = page->PDFDataForRect(QRectF(15, 25, 20, 20));
        auto area = std::make_shared<PDFDocument>();
        QVERIFY(area->initWithData(pdf));
        QCOMPARE(
            area->pageAtIndex(0)->boundsForBox(PDFDisplayBox::CropBox), QRectF(15, 25, 20, 20));
        const QImage tiff = QImage::fromData(page->TIFFDataForRect(QRectF(15, 25, 20, 20)), "TIFF");
        if (!tiff.isNull()) {
            QCOMPARE(tiff.size(), QSize(20, 20));
            QVERIFY(isDark(tiff, QPointF(10, 10)));
        }
        QVERIFY(page->TIFFDataForRect(QRectF(15, 25, 20, 20)).startsWith("II*"));
    }
};

QTEST_MAIN(PDFRenderTest)
#include "PDFRenderTest.moc"
