// Tiles as the reader sees them at device pixel ratios of 2 and 1.5, against the engine's own
// rendering: bands, edits, zoom, a page that cannot render, the cache and the first screen.

#include "support/PdfFixtures.h"
#include "support/TestTools.h"

#include <kit/engine/PDFAnnotationSquare.h>
#include <kit/engine/PDFDisplayList.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>
#include <kit/pdfview/PDFRenderScheduler.h>
#include <kit/pdfview/PDFTileCache.h>
#include <kit/pdfview/PDFView.h>

#include <QApplication>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

// Two pages: a blue square, then a page whose image is too large to draw.
QByteArray brokenPdf()
{
    const QList<QByteArray> objects = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R 4 0 R] /Count 2 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Contents 5 0 R >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Resources << /XObject << /X 6 0 R "
        ">> >> /Contents 7 0 R >>",
        "<< /Length 24 >>\nstream\n0 0 1 rg 0 0 50 50 re f\nendstream",
        "<< /Type /XObject /Subtype /Image /Width 100000 /Height 100000 /ColorSpace /DeviceRGB "
        "/BitsPerComponent 8 /Length 3 >>\nstream\nabc\nendstream",
        "<< /Length 28 >>\nstream\nq 200 0 0 200 0 0 cm /X Do Q\nendstream",
    };
    return PdfFixtures::fromObjects(objects);
}

// One page of everything that crosses a band's edge differently: a shading over the whole page,
// an interpolated picture, thick curves, and text.
QByteArray mixedPdf()
{
    QByteArray pixels;
    for (int i = 0; i < 16 * 16; ++i)
        for (const int value : { i * 7, 255 - i, i * 13 })
            pixels.append(char(value % 256));
    const QByteArray content = "q /S sh Q q 200 0 0 150 50 100 cm /I Do Q "
                               "1 0 0 RG 7 w 10 10 m 150 290 290 10 290 290 c S "
                               "BT /F 31 Tf 20 250 Td (Bands of one tile) Tj ET";
    const QList<QByteArray> objects = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Contents 4 0 R /Resources << "
        "/Shading << /S << /ShadingType 2 /ColorSpace /DeviceRGB /Coords [0 0 300 300] "
        "/Function << /FunctionType 2 /Domain [0 1] /C0 [1 1 0] /C1 [0 0 1] /N 1 >> "
        "/Extend [true true] >> >> /XObject << /I 5 0 R >> "
        "/Font << /F << /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> >> >> >>",
        "<< /Length " + QByteArray::number(content.size()) + " >>\nstream\n" + content
            + "\nendstream",
        "<< /Type /XObject /Subtype /Image /Width 16 /Height 16 /ColorSpace /DeviceRGB "
        "/BitsPerComponent 8 /Interpolate true /Length "
            + QByteArray::number(pixels.size()) + " >>\nstream\n" + pixels + "\nendstream",
    };
    return PdfFixtures::fromObjects(objects);
}

QImage viewImage(PDFView &view)
{
    return view.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

int darkPixels(const QImage &image, const QRect &rect)
{
    const QRect area = rect.intersected(image.rect());
    int dark = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            dark += qGray(image.pixel(x, y)) < 100 ? 1 : 0;
    return dark;
}

} // namespace

class PDFRenderingTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::shared_ptr<PDFDocument> m_document;

    std::shared_ptr<PDFDocument> openWritten(const QString &name, const QByteArray &bytes)
    {
        QFile file(m_dir.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            return nullptr;
        file.close();
        auto document = std::make_shared<PDFDocument>();
        return document->initWithURL(QUrl::fromLocalFile(file.fileName())) ? document : nullptr;
    }

    void show(PDFView &view, const std::shared_ptr<PDFDocument> &document, double scale)
    {
        view.resize(700, 500);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        view.setDocument(document);
        view.setScaleFactor(scale);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_document = openWritten(
            QStringLiteral("standard.pdf"), PdfFixtures::build(PdfFixtures::standard()));
        QVERIFY(m_document);
    }

    // A zoom shows the old tiles stretched until sharp ones come, drawn at the device pixel ratio
    // as the engine draws the page.
    void zoomedTilesMatchTheEngineAtTheDevicePixelRatio()
    {
        PDFView view;
        show(view, m_document, 0.5);
        QTRY_VERIFY(view.isVisibleAreaRendered());
        QTRY_VERIFY(view.renderScheduler()->isIdle());
        const auto page = m_document->pageAtIndex(0);
        const double ratio = view.viewport()->devicePixelRatioF();
        QVERIFY(ratio > 1);
        QSignalSpy tiles(view.renderScheduler(), &PDFRenderScheduler::tileFinished);
        view.setScaleFactor(1.0, QPointF(0, 0));
        const QRectF line = view.convertRectFromPage(QRectF(72, 712, 260, 14), page);
        QVERIFY(!view.isVisibleAreaRendered());
        QVERIFY2(darkPixels(
                     viewImage(view), QRectF(line.topLeft() * ratio, line.size() * ratio).toRect())
                > 0,
            "the page is not blank while it renders");
        // An odd scroll position puts the page between device pixels at a ratio of 1.5.
        view.verticalScrollBar()->setValue(1);
        QTRY_VERIFY(view.isVisibleAreaRendered());
        QVERIFY(!tiles.isEmpty());
        for (const auto &arguments : std::as_const(tiles))
            QCOMPARE(arguments.at(0).value<PDFTileKey>().devicePixelsPerPoint(), ratio);

        const QRect rect
            = view.convertRectFromPage(page->boundsForBox(PDFDisplayBox::CropBox), page).toRect();
        QImage shown = viewImage(view).copy(
            QRect((QPointF(rect.topLeft()) * ratio).toPoint(), QSize(700, 600)));
        shown.setDevicePixelRatio(1);
        const QImage engine
            = page->imageForBox(PDFDisplayBox::CropBox, (QSizeF(612, 792) * ratio).toSize())
                  .convertToFormat(QImage::Format_RGB32)
                  .copy(0, 0, 700, 600);
        QCOMPARE(shown, engine);
    }

    // The screen's bottom edge cuts the second row of tiles: their rows on screen arrive first,
    // as the same pixels the whole tile has, and scrolling into the rest shows it right.
    void rowsOnScreenOfACutTileComeFirst()
    {
        PDFView view;
        QSignalSpy tops(view.renderScheduler(), &PDFRenderScheduler::tileTopDrawn);
        QSignalSpy whole(view.renderScheduler(), &PDFRenderScheduler::tileFinished);
        show(view, m_document, 1.0);
        const double ratio = view.viewport()->devicePixelRatioF();
        const auto page = m_document->pageAtIndex(0);
        const QRect rect
            = view.convertRectFromPage(page->boundsForBox(PDFDisplayBox::CropBox), page).toRect();
        // A screen that ends 120 device pixels into the second row of tiles.
        view.resize(700,
            view.height() - view.viewport()->height() + rect.top()
                + int((PDFTileKey::TileSize + 120) / ratio));
        QTRY_VERIFY(view.isVisibleAreaRendered());
        const int shownRows = int(std::ceil((view.viewport()->height() - rect.top()) * ratio))
            - PDFTileKey::TileSize;
        QVERIFY(shownRows > 0 && shownRows < PDFTileKey::TileSize);
        QVERIFY(!tops.isEmpty());
        for (const auto &top : std::as_const(tops)) {
            const auto key = top.at(0).value<PDFTileKey>();
            const QImage rows = top.at(1).value<QImage>();
            QCOMPARE(key.row, 1);
            QVERIFY(rows.height() >= shownRows && rows.height() < PDFTileKey::TileSize);
            QTRY_VERIFY(std::any_of(whole.begin(), whole.end(),
                [&](const QList<QVariant> &w) { return w.at(0).value<PDFTileKey>() == key; }));
            const auto done = std::find_if(whole.begin(), whole.end(),
                [&](const QList<QVariant> &w) { return w.at(0).value<PDFTileKey>() == key; });
            QCOMPARE(done->at(1).value<QImage>().copy(0, 0, rows.width(), rows.height()), rows);
        }

        view.verticalScrollBar()->setValue(view.verticalScrollBar()->value() + 150);
        QTRY_VERIFY(view.isVisibleAreaRendered());
        const QRect moved
            = view.convertRectFromPage(page->boundsForBox(PDFDisplayBox::CropBox), page).toRect();
        const QRect part(QPoint(0, int(std::ceil(-moved.top() * ratio))), QSize(600, 600));
        QImage shown = viewImage(view).copy(
            part.translated(int(moved.left() * ratio), 0).translated(0, int(moved.top() * ratio)));
        shown.setDevicePixelRatio(1);
        const QImage engine
            = page->imageForBox(PDFDisplayBox::CropBox, (QSizeF(612, 792) * ratio).toSize())
                  .convertToFormat(QImage::Format_RGB32)
                  .copy(part);
        QCOMPARE(shown, engine);
    }

    void bandsOfATileMatchTheTileDrawnWhole()
    {
        const auto document = openWritten(QStringLiteral("mixed.pdf"), mixedPdf());
        QVERIFY(document);
        PDFView view;
        show(view, document, 2.0);
        view.horizontalScrollBar()->setValue(0);
        view.verticalScrollBar()->setValue(0);
        QTRY_VERIFY(view.isVisibleAreaRendered());
        const auto page = document->pageAtIndex(0);
        const double ratio = view.viewport()->devicePixelRatioF();
        const QRect rect = view.convertRectFromPage(QRectF(0, 0, 300, 300), page).toRect();
        // The page's first tile, whole on screen and drawn in bands, against the same tile drawn
        // in one piece.
        const QRect tile(0, 0, PDFTileKey::TileSize, PDFTileKey::TileSize);
        QImage shown
            = viewImage(view).copy(tile.translated((QPointF(rect.topLeft()) * ratio).toPoint()));
        shown.setDevicePixelRatio(1);
        const auto list = page->renderSource(PDFDisplayBox::CropBox)->buildDisplayList();
        QVERIFY(list);
        const QImage whole
            = list->renderTile(tile, 2 * ratio).convertToFormat(QImage::Format_RGB32);
        // Shadings and scaled pictures may step a few units apart where a drawing starts, as at a
        // tile's edge; a band drawn out of place or not at all differs by far more.
        QCOMPARE(shown.size(), whole.size());
        int largest = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                const QRgb a = shown.pixel(x, y);
                const QRgb b = whole.pixel(x, y);
                largest = std::max({ largest, std::abs(qRed(a) - qRed(b)),
                    std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b)) });
            }
        }
        QVERIFY2(largest <= 4, qPrintable(QStringLiteral("largest difference %1").arg(largest)));
    }

    void anEditRendersOnlyWhatTheEngineDraws_data()
    {
        QTest::addColumn<int>("edits"); // property edits in one turn
        QTest::addColumn<bool>("renders");
        QTest::newRow("one edit") << 1 << true;
        QTest::newRow("a drag's worth of edits in one turn") << 30 << true;
        QTest::newRow("reported without a change") << 0 << false;
    }

    void anEditRendersOnlyWhatTheEngineDraws()
    {
        QFETCH(int, edits);
        QFETCH(bool, renders);
        // A document of its own: no square of another row shows.
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(m_document->documentURL()));
        PDFView view;
        show(view, document, 0.4);
        const auto visible = view.visiblePages();
        QVERIFY(visible.size() >= 2);
        const auto edited = visible[1];
        auto square = std::make_shared<PDFAnnotationSquare>();
        QVERIFY(square->initWithBounds(QRectF(100, 600, 200, 100)));
        square->setInteriorColor(Qt::white);
        edited->addAnnotation(square);
        QTRY_VERIFY(view.isVisibleAreaRendered());
        // Tiles rendered ahead of the visible area may still be on their way.
        QTRY_VERIFY(view.renderScheduler()->isIdle());
        QSignalSpy tiles(view.renderScheduler(), &PDFRenderScheduler::tileFinished);
        for (int step = 0; step < edits; ++step) {
            square->setBounds(QRectF(100 + step, 600, 200, 100));
            // The last edit fills it: the page shown must be the page as it is now.
            if (step == edits - 1)
                square->setInteriorColor(Qt::black);
            view.annotationsChangedOnPage(edited);
        }
        if (edits == 0)
            view.annotationsChangedOnPage(edited);
        QCOMPARE(view.isVisibleAreaRendered(), !renders);
        QTest::qWait(200);
        QTRY_VERIFY(view.isVisibleAreaRendered());
        QCOMPARE(!tiles.isEmpty(), renders);
        const double ratio = view.viewport()->devicePixelRatioF();
        const QRectF inside = view.convertRectFromPage(QRectF(150 + edits, 620, 100, 60), edited);
        const QRect pixels((inside.topLeft() * ratio).toPoint(), (inside.size() * ratio).toSize());
        const int dark = darkPixels(viewImage(view), pixels);
        // Filled black once edited; the page's own text covers far less.
        QCOMPARE(dark > pixels.width() * pixels.height() * 9 / 10, edits > 0);
        // The edited page only, each of its tiles once, however many edits the turn held.
        QSet<int> seen;
        for (const auto &arguments : std::as_const(tiles)) {
            const PDFTileKey key = arguments.at(0).value<PDFTileKey>();
            QCOMPARE(key.page, static_cast<const void *>(edited.get()));
            QVERIFY(!seen.contains(key.row * 1000 + key.column));
            seen.insert(key.row * 1000 + key.column);
        }
    }

    void theFirstScreenComesBeforeThePagesAheadOfIt()
    {
        const auto document = openWritten(
            QStringLiteral("text5.pdf"), PdfFixtures::build(PdfFixtures::textPages(5, 10, 0)));
        QVERIFY(document);
        PDFView view;
        QSignalSpy tiles(view.renderScheduler(), &PDFRenderScheduler::tileFinished);
        qsizetype firstScreenTiles = -1;
        connect(&view, &PDFView::visibleAreaRendered, this, [&] {
            if (firstScreenTiles < 0)
                firstScreenTiles = tiles.size();
        });
        show(view, document, 1.0);
        QTRY_VERIFY(firstScreenTiles > 0);
        // The first screen shows page 1 only, and none of the second page's tiles came first.
        const auto first = document->pageAtIndex(0);
        const auto second = document->pageAtIndex(1);
        QCOMPARE(view.visiblePages(), std::vector { first });
        for (qsizetype i = 0; i < firstScreenTiles; ++i)
            QCOMPARE(tiles.at(i).at(0).value<PDFTileKey>().page, first.get());
        // Then the page below is drawn ahead: scrolled into view, it is sharp at once, shows
        // its text and answers for its own points.
        QTRY_VERIFY(view.renderScheduler()->isIdle());
        view.verticalScrollBar()->setValue(400);
        QVERIFY(view.isVisibleAreaRendered());
        const QRectF line = view.convertRectFromPage(QRectF(56, 750, 300, 14), second);
        const double ratio = view.viewport()->devicePixelRatioF();
        QVERIFY2(darkPixels(
                     viewImage(view), QRectF(line.topLeft() * ratio, line.size() * ratio).toRect())
                > 0,
            "the second page's first line is not drawn");
        QCOMPARE(view.pageForPoint(line.center(), false), second);
        QCOMPARE(view.convertPointToPage(line.topLeft(), second).toPoint(), QPoint(56, 764));
    }

    void aPageThatCannotRenderShowsBlankWithAMark()
    {
        const auto document = openWritten(QStringLiteral("broken.pdf"), brokenPdf());
        QVERIFY(document);
        QCOMPARE(document->pageCount(), 2);

        PDFView view;
        const QByteArray log = TestTools::standardErrorOf([&] {
            show(view, document, 1.0);
            QTRY_VERIFY(view.isVisibleAreaRendered());
        });
        QVERIFY(!QTest::currentTestFailed());
        QCOMPARE(log.count("[WARN] "), 1);
        QVERIFY(log.contains("Page 2"));

        const QImage image = viewImage(view);
        const auto good = document->pageAtIndex(0);
        const auto bad = document->pageAtIndex(1);
        const QRect goodRect
            = view.convertRectFromPage(good->boundsForBox(PDFDisplayBox::CropBox), good).toRect();
        const QRect badRect
            = view.convertRectFromPage(bad->boundsForBox(PDFDisplayBox::CropBox), bad).toRect();
        // The square of the first page, a red mark at the corner of the second, white beside it.
        const double ratio = view.viewport()->devicePixelRatioF();
        QCOMPARE(
            image.pixelColor((goodRect.bottomLeft() + QPoint(10, -10)) * ratio), QColor(Qt::blue));
        const QColor mark = image.pixelColor((badRect.topLeft() + QPoint(13, 8)) * ratio);
        QVERIFY(mark.red() > 150 && mark.green() < 100);
        QCOMPARE(image.pixelColor(badRect.center() * ratio), QColor(Qt::white));
    }

    void cacheStaysWithinItsBudgetAndOffersNearestStandIns()
    {
        PDFTileCache cache(3 * 100 * 100);
        const int page = 0;
        const auto key = [&page](int column, qint64 scale, quint64 revision = 1) {
            return PDFTileKey { &page, revision, scale, column, 0 };
        };
        const QImage image(100, 100, QImage::Format_ARGB32_Premultiplied);
        cache.insert(key(0, 1000000), image);
        cache.insert(key(1, 1000000), image);
        cache.insert(key(2, 1000000), image);
        QVERIFY(cache.find(key(0, 1000000)));
        cache.insert(key(3, 1000000), image);
        QCOMPARE(cache.pixelCount(), qint64(3 * 100 * 100));
        QVERIFY2(!cache.contains(key(1, 1000000)), "the least recently used tile goes first");
        QVERIFY(cache.contains(key(0, 1000000)));

        cache.clear();
        cache.setPixelBudget(10 * 100 * 100);
        cache.insert(key(0, 500000), image);
        cache.insert(key(0, 4000000), image);
        cache.insert(key(0, 1500000, 0), image);
        cache.insert(key(0, 1500000), image);
        const auto standIns = cache.standIns(&page, 1, 2000000);
        QCOMPARE(standIns.size(), size_t(4));
        QCOMPARE(standIns.back().key.scale, qint64(1500000));
        QCOMPARE(standIns.back().key.revision, quint64(1));
        QCOMPARE(standIns.front().key.revision, quint64(0));
        cache.removeOtherRevisions(&page, 1);
        QCOMPARE(cache.tileCount(), 3);
    }
};

int main(int argc, char *argv[])
{
    // The ratio comes from the test's registration: 2 by default, also run at 1.5.
    qputenv("QT_SCALE_FACTOR",
        qgetenv("FOLIDOC_TEST_SCALE").isEmpty() ? "2" : qgetenv("FOLIDOC_TEST_SCALE"));
    QApplication app(argc, argv);
    PDFRenderingTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "PDFRenderingTest.moc"
