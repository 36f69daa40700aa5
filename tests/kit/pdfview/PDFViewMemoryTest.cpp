// Memory while reading a long document: once the reader has passed every page, what the view and
// the engine keep stays near what the first screens needed.

#include "support/FixtureDocuments.h"
#include "support/PdfFixtures.h"
#include "support/TestTools.h"

#include <kit/base/BackgroundQueue.h>
#include <kit/engine/PDFDisplayList.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFEngineInfo.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>
#include <kit/pdfview/PDFRenderScheduler.h>
#include <kit/pdfview/PDFView.h>

#include <QApplication>
#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include <atomic>
#include <mutex>
#include <thread>

namespace {

// A JPEG picture of its own for each page, so that every page decodes new pixels.
PdfFixtures::Image pagePicture(int page)
{
    const PdfFixtures::Image raw = PdfFixtures::photo(400, 300, quint32(page + 1));
    const QImage image(reinterpret_cast<const uchar *>(raw.data.constData()), raw.width, raw.height,
        raw.width * 3, QImage::Format_RGB888);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 80);
    return { raw.width, raw.height, jpeg, true };
}

const QString DejaVuSans = QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf");

// Writes pages of fonts of their own to path and opens them; null without the system's font.
std::shared_ptr<PDFDocument> openOwnFontPages(const QString &path, int pages)
{
    QFile fontFile(DejaVuSans);
    QFile file(path);
    if (!fontFile.open(QIODevice::ReadOnly) || !file.open(QIODevice::WriteOnly))
        return nullptr;
    file.write(PdfFixtures::ownFontPages(pages, fontFile.readAll(), 2));
    file.close();
    auto document = std::make_shared<PDFDocument>();
    return document->initWithURL(QUrl::fromLocalFile(path)) ? document : nullptr;
}

// Shows the document in the view, at a screen's size; false unless its first screen turns sharp.
bool showSharp(PDFView &view, const std::shared_ptr<PDFDocument> &document)
{
    view.resize(800, 600);
    view.show();
    view.setDocument(document);
    return QTest::qWaitFor([&] { return view.isVisibleAreaRendered(); }, 20000);
}

} // namespace

class PDFViewMemoryTest : public QObject
{
    Q_OBJECT

private slots:
    void memoryAfterEveryPageStaysNearTheFirstScreens()
    {
        constexpr int Pages = 600;
        PdfFixtures::Document source = PdfFixtures::textPages(Pages, 20, 0);
        for (int i = 0; i < Pages; ++i) {
            source.pages[i].image = pagePicture(i);
            source.pages[i].imageRect = QRectF(72, 72, 400, 300);
        }
        QTemporaryDir dir;
        const auto document = FixtureDocuments::open(dir, source, QStringLiteral("pictures.pdf"));
        QVERIFY(document);

        PDFView view;
        QVERIFY(showSharp(view, document));
        QScrollBar *bar = view.verticalScrollBar();
        // The first screens, then every page, each shown sharp.
        const auto readThrough = [&](int lastPage) {
            while (bar->value() < bar->maximum()
                && document->indexForPage(view.currentPage()) < lastPage) {
                bar->setValue(bar->value() + bar->pageStep());
                QTRY_VERIFY_WITH_TIMEOUT(view.isVisibleAreaRendered(), 20000);
            }
        };
        readThrough(10);
        const qint64 firstScreens = TestTools::resident();
        readThrough(Pages);
        QCOMPARE(document->indexForPage(view.currentPage()), Pages - 1);
        // Pictures decoded, pages loaded, display lists and tiles of the pages passed would
        // hold far more than this if any of them grew with the pages visited.
        QTRY_VERIFY_WITH_TIMEOUT(TestTools::resident() - firstScreens < 40LL * 1024 * 1024, 5000);
    }

    // MuPDF's store counts a font by its descriptor alone, so its limit never bites on fonts: the
    // view gives back what the pages passed left, and the engine stays near the first pages' needs.
    void fontsOfThePagesPassedDoNotPileUp()
    {
        if (!QFile::exists(DejaVuSans))
            QSKIP("DejaVu Sans is not installed");
        constexpr int Pages = 80;
        QTemporaryDir dir;
        const auto document = openOwnFontPages(dir.filePath(QStringLiteral("fonts.pdf")), Pages);
        QVERIFY(document);

        PDFView view;
        QVERIFY(showSharp(view, document));
        QScrollBar *bar = view.verticalScrollBar();
        qint64 firstPages = 0;
        qint64 most = 0;
        while (bar->value() < bar->maximum()) {
            bar->setValue(bar->value() + bar->pageStep());
            QTRY_VERIFY_WITH_TIMEOUT(view.isVisibleAreaRendered(), 20000);
            if (document->indexForPage(view.currentPage()) < 4)
                firstPages = PDFEngineInfo::heldBytes();
            else
                most = std::max(most, PDFEngineInfo::heldBytes());
        }
        QCOMPARE(document->indexForPage(view.currentPage()), Pages - 1);
        // Each font read costs its file and more; keeping those of a few screens is the bound.
        const qint64 growth = most - firstPages;
        QVERIFY2(
            growth < 15LL * 1024 * 1024, qPrintable(QStringLiteral("%1 bytes more").arg(growth)));
    }

    // A flick through the same pages, a screen every few milliseconds while the workers draw
    // behind: what they load is given back as soon as it adds up, not once the reader stops.
    void aFlickThroughFontsGivesBackAsItGoes()
    {
        if (!QFile::exists(DejaVuSans))
            QSKIP("DejaVu Sans is not installed");
        QTemporaryDir dir;
        const auto document = openOwnFontPages(dir.filePath(QStringLiteral("fonts.pdf")), 120);
        QVERIFY(document);

        PDFView view;
        QVERIFY(showSharp(view, document));
        const qint64 firstScreen = PDFEngineInfo::heldBytes();
        // What the engine holds, every millisecond, while the flick runs.
        std::atomic<bool> done { false };
        std::atomic<qint64> most { 0 };
        std::thread watcher([&] {
            while (!done) {
                most = std::max(most.load(), PDFEngineInfo::heldBytes());
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
        QScrollBar *bar = view.verticalScrollBar();
        while (bar->value() < bar->maximum()) {
            bar->setValue(bar->value() + bar->pageStep() / 2);
            QTest::qWait(8);
        }
        QTRY_VERIFY_WITH_TIMEOUT(view.isVisibleAreaRendered(), 20000);
        done = true;
        watcher.join();
        // 4 MB before a release and the fonts of a screen or two (7.5-9.2 MB); waiting for pages
        // to be left behind, or 8 MB, let the workers load 11-13 MB.
        const qint64 growth = most - firstScreen;
        QVERIFY2(
            growth < 21LL * 512 * 1024, qPrintable(QStringLiteral("%1 bytes more").arg(growth)));
    }

    // Pages are drawn on three threads while the pages passed are let go over and over, as a reader
    // racing through does: every drawing is the one made alone, nothing is freed under a worker.
    void drawingWhileReleasingDrawsTheSame()
    {
        if (!QFile::exists(DejaVuSans))
            QSKIP("DejaVu Sans is not installed");
        constexpr int Pages = 24;
        constexpr int Threads = 3;
        constexpr int Releases = 40;
        QTemporaryDir dir;
        const auto document = openOwnFontPages(dir.filePath(QStringLiteral("fonts.pdf")), Pages);
        QVERIFY(document);
        const auto draw = [](const PDFPageRenderSource &source) {
            const std::shared_ptr<PDFDisplayList> list = source.buildDisplayList();
            QImage image(153, 198, QImage::Format_ARGB32_Premultiplied);
            return list && list->render(image, source.geometry().pageToView(0.25)) ? image
                                                                                   : QImage();
        };
        std::vector<QImage> alone;
        std::vector<std::shared_ptr<PDFPageRenderSource>> sources;
        for (int i = 0; i < Pages; ++i) {
            sources.push_back(document->pageAtIndex(i)->renderSource(PDFDisplayBox::CropBox));
            alone.push_back(draw(*sources.back()));
            QVERIFY(!alone.back().isNull());
        }
        std::mutex sourcesMutex;
        std::atomic<bool> stop { false };
        std::atomic<int> drawn { 0 };
        std::atomic<int> wrong { 0 };
        std::vector<std::thread> workers;
        for (int t = 0; t < Threads; ++t) {
            workers.emplace_back([&, t] {
                for (int k = t; !stop; k += Threads) {
                    const int page = k % Pages;
                    std::shared_ptr<PDFPageRenderSource> source;
                    {
                        const std::lock_guard lock(sourcesMutex);
                        source = sources[size_t(page)];
                    }
                    ++(draw(*source) == alone[size_t(page)] ? drawn : wrong);
                }
            });
        }
        // The view's part: pages passed let go, the pages reached loaded again for new sources.
        for (int r = 0; r < Releases; ++r) {
            QVERIFY(QTest::qWaitFor([&] { return document->releaseCachedContent(); }, 5000));
            auto source = document->pageAtIndex(r % Pages)->renderSource(PDFDisplayBox::CropBox);
            const std::lock_guard lock(sourcesMutex);
            sources[size_t(r % Pages)] = std::move(source);
        }
        BackgroundQueue::pool().waitForDone();
        stop = true;
        for (std::thread &worker : workers)
            worker.join();
        QCOMPARE(wrong.load(), 0);
        QVERIFY(drawn > Threads);
    }

    // A recorded page holds its pictures, shadings and fonts until its list goes: the pages a
    // screen above and below the view are drawn ahead, but only the page on screen keeps them.
    void onlyThePageOnScreenKeepsWhatItDraws()
    {
        constexpr int Pages = 12;
        PdfFixtures::Document source = PdfFixtures::textPages(Pages, 4, 0);
        for (int i = 0; i < Pages; ++i) {
            source.pages[i].image = PdfFixtures::photo(800, 800, quint32(i + 1));
            source.pages[i].imageRect = QRectF(36, 36, 540, 540);
        }
        QTemporaryDir dir;
        const auto document = FixtureDocuments::open(dir, source, QStringLiteral("pictures.pdf"));
        QVERIFY(document);
        // Whatever the engine holds beyond what the open pages need goes.
        const auto releaseAll = [&] {
            BackgroundQueue::pool().waitForDone();
            const bool released = document->releaseCachedContent();
            BackgroundQueue::pool().waitForDone();
            return released;
        };
        QVERIFY(releaseAll());
        const qint64 opened = PDFEngineInfo::heldBytes();
        qint64 onePage = 0;
        {
            const auto pageSource = document->pageAtIndex(0)->renderSource(PDFDisplayBox::CropBox);
            const auto list = pageSource->buildDisplayList();
            QVERIFY(list);
            QVERIFY(releaseAll());
            onePage = PDFEngineInfo::heldBytes() - opened;
        }
        QVERIFY(releaseAll());

        PDFView view;
        QVERIFY(showSharp(view, document));
        view.goToPage(document->pageAtIndex(Pages / 2));
        QTRY_VERIFY_WITH_TIMEOUT(view.isVisibleAreaRendered(), 20000);
        QCOMPARE(view.visiblePages().size(), size_t(1));
        // The pages around it are drawn ahead before the workers are done; the lists of those
        // off screen go once their last tile has arrived.
        QTRY_VERIFY_WITH_TIMEOUT(view.renderScheduler()->isIdle(), 20000);
        qint64 held = 0;
        QTRY_VERIFY2_WITH_TIMEOUT(
            (releaseAll(), held = PDFEngineInfo::heldBytes() - opened) < 2 * onePage,
            qPrintable(QStringLiteral("%1 bytes held, %2 for one page").arg(held).arg(onePage)),
            5000);
    }
};

QTEST_MAIN(PDFViewMemoryTest)
#include "PDFViewMemoryTest.moc"
