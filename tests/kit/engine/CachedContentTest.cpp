// What the engine keeps of the pages read, and gives back when asked without changing what shows.

#include "support/RawPdf.h"

#include <support/PdfFixtures.h>
#include <support/TestTools.h>

#include <kit/base/BackgroundQueue.h>
#include <kit/engine/PDFDisplayList.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>

#include <QScopeGuard>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>

#include <malloc.h>

#ifdef __SANITIZE_ADDRESS__
// The sanitizer's runtime counts what its allocator hands out (GCC ships no header for it).
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

#include <semaphore>
#include <thread>

namespace {

constexpr int Pages = 160;
constexpr int FieldsPerPage = 24;
// The view releases once the reader has left this many pages behind.
constexpr int ReleaseEvery = 16;

// Text fields with no appearance of their own, as forms made by typesetting tools come: every
// reader has to make one up to show them.
PdfFixtures::Document formPages()
{
    PdfFixtures::Document document = PdfFixtures::textPages(Pages, 4, 0);
    for (int i = 0; i < Pages; ++i) {
        for (int f = 0; f < FieldsPerPage; ++f) {
            const double y = 60 + f * 26;
            const QByteArray name = "p" + QByteArray::number(i) + "f" + QByteArray::number(f);
            document.pages[i].annotations.append({ "/Subtype /Widget /FT /Tx /T (" + name
                    + ") /V (Field " + name + " holds a value) /F 4 /Rect [300 "
                    + QByteArray::number(y) + " 560 " + QByteArray::number(y + 20)
                    + "] /DA (/Helv 11 Tf 0 g) /MK << /BG [0.55 0.75 1] /BC [0 0 0.5] >>",
                {}, {} });
        }
    }
    return document;
}

// Bytes the allocator hands out now: what the engine holds, whatever the heap's fragments.
qint64 heapInUse()
{
#ifdef __SANITIZE_ADDRESS__
    // The sanitizer's allocator stands in for the C library's, whose counts stay at zero.
    return qint64(__sanitizer_get_current_allocated_bytes());
#else
    return qint64(mallinfo2().uordblks);
#endif
}

QImage draw(const PDFPageRenderSource &source)
{
    const std::shared_ptr<PDFDisplayList> list = source.buildDisplayList();
    if (!list)
        return {};
    QImage image(153, 198, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    return list->render(image, source.geometry().pageToView(0.25)) ? image : QImage();
}

// Pages set in bitmap fonts, as typesetting tools embed fonts drawn at one resolution: Type 3
// fonts whose every glyph is an image mask, shared by all pages, each page a line in each font.
QByteArray bitmapFontPages(int pages, int fonts, int glyphs)
{
    constexpr int Width = 64;
    constexpr int Height = 80;
    QList<QByteArray> objects { "<< /Type /Catalog /Pages 2 0 R >>", {} };
    QByteArray fontResources;
    for (int f = 0; f < fonts; ++f) {
        const int fontObject = int(objects.size()) + 1;
        QByteArray differences = "65";
        QByteArray procs;
        QByteArray widths;
        for (int g = 0; g < glyphs; ++g) {
            const QByteArray name = "/g" + QByteArray::number(g);
            differences += ' ' + name;
            procs += name + ' ' + QByteArray::number(fontObject + 1 + g) + " 0 R ";
            widths += "70 ";
        }
        objects.append("<< /Type /Font /Subtype /Type3 /FontBBox [0 0 " + QByteArray::number(Width)
            + ' ' + QByteArray::number(Height)
            + "] /FontMatrix [0.01 0 0 0.01 0 0] /Resources << /ProcSet [/PDF /ImageB] >> "
              "/FirstChar 65 /LastChar "
            + QByteArray::number(64 + glyphs) + " /Widths [" + widths
            + "] /Encoding << /Type /Encoding /Differences [" + differences + "] >> /CharProcs << "
            + procs + ">> >>");
        for (int g = 0; g < glyphs; ++g) {
            // A block letter of its own: a frame whose bars depend on the glyph and the font.
            QByteArray bits(Width / 8 * Height, char(0xff));
            for (int y = 0; y < Height; ++y) {
                for (int x = 0; x < Width; ++x) {
                    const bool frame = x < 6 || x >= Width - 6 || y < 6 || y >= Height - 6;
                    const bool bar = (y / 8 + x / 8 + g + f) % 5 == 0;
                    if (frame || bar)
                        bits[y * Width / 8 + x / 8]
                            = char(bits[y * Width / 8 + x / 8] & ~(0x80 >> (x % 8)));
                }
            }
            const QByteArray content = "70 0 0 0 " + QByteArray::number(Width) + ' '
                + QByteArray::number(Height) + " d1\nq " + QByteArray::number(Width) + " 0 0 "
                + QByteArray::number(Height) + " 0 0 cm\nBI /W " + QByteArray::number(Width)
                + " /H " + QByteArray::number(Height) + " /IM true /BPC 1 /D [1 0]\nID " + bits
                + "\nEI\nQ\n";
            objects.append(RawPdf::stream({}, content));
        }
        fontResources
            += "/T" + QByteArray::number(f) + ' ' + QByteArray::number(fontObject) + " 0 R ";
    }
    QByteArray text;
    for (int g = 0; g < glyphs; ++g)
        text += char('A' + g);
    QByteArray kids;
    for (int i = 0; i < pages; ++i) {
        const int pageObject = int(objects.size()) + 1;
        kids += QByteArray::number(pageObject) + " 0 R ";
        QByteArray content = "BT\n";
        for (int f = 0; f < fonts; ++f) {
            content += "/T" + QByteArray::number(f) + " 20 Tf 1 0 0 1 30 "
                + QByteArray::number(740 - 40 * f) + " Tm (" + text + ") Tj\n";
        }
        content += "ET\n";
        objects.append(
            "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Resources << /Font << "
            + fontResources + ">> >> /Contents " + QByteArray::number(pageObject + 1) + " 0 R >>");
        objects.append(RawPdf::stream({}, content));
    }
    objects[1] = "<< /Type /Pages /Kids [" + kids + "] /Count " + QByteArray::number(pages) + " >>";
    return PdfFixtures::fromObjects(objects);
}

// The page at the index as the document has it now; null when it cannot be drawn.
QImage drawAt(const PDFDocument &document, int index)
{
    const auto source = document.pageAtIndex(index)->renderSource(PDFDisplayBox::CropBox);
    return source ? draw(*source) : QImage();
}

bool release(PDFDocument &document)
{
    if (!document.releaseCachedContent())
        return false;
    BackgroundQueue::pool().waitForDone();
    return true;
}

} // namespace

class CachedContentTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        path = dir.filePath(QStringLiteral("form.pdf"));
        QVERIFY(PdfFixtures::write(formPages(), path));
    }

    // Scrolling through with releases gives back the field appearances made up for pages passed.
    void readingEveryPageKeepsNoMoreThanTheFirstPages()
    {
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(path)));
        const auto inView = document->pageAtIndex(0)->renderSource(PDFDisplayBox::CropBox);
        QVERIFY(inView);
        const QImage shown = draw(*inView);
        QVERIFY(!shown.isNull());
        // The fields are drawn: their light blue background is on the page.
        QCOMPARE(shown.pixelColor(120, 180).rgb(), QColor(140, 191, 255).rgb());

        qint64 afterFirstPages = 0;
        for (int i = 1; i < Pages; ++i) {
            QVERIFY(
                !draw(*document->pageAtIndex(i)->renderSource(PDFDisplayBox::CropBox)).isNull());
            if (i % ReleaseEvery == 0) {
                QVERIFY(release(*document));
                if (i == ReleaseEvery)
                    afterFirstPages = heapInUse();
                // The page in view draws as it did, fields and all.
                QCOMPARE(draw(*inView), shown);
            }
        }
        QVERIFY(release(*document));
        // Made-up appearances of every field read would hold several megabytes here.
        const qint64 growth = heapInUse() - afterFirstPages;
        QVERIFY2(growth < 1024 * 1024, qPrintable(QStringLiteral("%1 bytes more").arg(growth)));
    }

    // A worker recording display lists without pause does not put a release off.
    void releaseGoesThroughWhileAWorkerIsInside()
    {
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(path)));
        const auto inView = document->pageAtIndex(0)->renderSource(PDFDisplayBox::CropBox);
        QVERIFY(inView);
        const QImage shown = draw(*inView);
        for (int i = 1; i <= 2 * ReleaseEvery; ++i) {
            QVERIFY(
                !draw(*document->pageAtIndex(i)->renderSource(PDFDisplayBox::CropBox)).isNull());
        }
        const qint64 beforeRelease = heapInUse();
        std::atomic<bool> stop { false };
        std::atomic<int> recorded { 0 };
        std::thread worker([&] {
            while (!stop) {
                if (inView->buildDisplayList())
                    ++recorded;
            }
        });
        QTRY_VERIFY(recorded > 0);
        const bool released = document->releaseCachedContent();
        BackgroundQueue::pool().waitForDone();
        stop = true;
        worker.join();
        QVERIFY(released);
        // The appearances made up for the fields of the pages passed alone hold megabytes.
        const qint64 freed = beforeRelease - heapInUse();
        QVERIFY2(freed > 1024 * 1024, qPrintable(QStringLiteral("%1 bytes freed").arg(freed)));
        QCOMPARE(draw(*inView), shown);
    }

    // A page kept open through a release by a drawing in hand must not stand in for another once
    // pages move.
    void pagesMovedAfterAReleaseDrawAsThemselves()
    {
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(path)));
        std::vector<QImage> before;
        for (int i = 0; i < 4; ++i)
            before.push_back(drawAt(*document, i));
        QVERIFY(before[2] != before[3]);
        const auto inHand = document->pageAtIndex(2)->renderSource(PDFDisplayBox::CropBox);
        QVERIFY(release(*document));
        document->insertPage(document->pageAtIndex(0), document->pageCount());
        QCOMPARE(drawAt(*document, 1), before[2]);
        QCOMPARE(drawAt(*document, 2), before[3]);
        QCOMPARE(drawAt(*document, Pages - 1), before[0]);
        // Deleted, the first page gives its place to the next, which was loaded just above.
        document->removePageAtIndex(0);
        QCOMPARE(drawAt(*document, 0), before[2]);
        QCOMPARE(draw(*inHand), before[2]);
    }

    // Pages loaded ahead draw as the page each place holds now, after moves and releases; a
    // document closed while they load leaves nothing behind.
    void pagesLoadedAheadDrawAsThemselves()
    {
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(path)));
        std::vector<QImage> before;
        for (int i = 0; i < 12; ++i)
            before.push_back(drawAt(*document, i));
        QVERIFY(release(*document));
        const auto ahead = [&](int first, int last) {
            std::vector<std::shared_ptr<PDFPage>> pages;
            for (int i = first; i <= last; ++i)
                pages.push_back(document->pageAtIndex(i));
            document->loadPagesAhead(pages);
            BackgroundQueue::pool().waitForDone();
        };
        ahead(4, 11);
        // The last page moves to the front: every page loaded ahead now has the next place.
        document->exchangePageAtIndex(4, 11);
        document->insertPage(document->pageAtIndex(Pages - 1), 0);
        QCOMPARE(drawAt(*document, 5), before[11]);
        for (int i = 6; i <= 11; ++i)
            QCOMPARE(drawAt(*document, i), before[size_t(i - 1)]);
        QCOMPARE(drawAt(*document, 12), before[4]);

        ahead(20, 27);
        QVERIFY(release(*document));
        for (int i = 20; i <= 27; ++i)
            QVERIFY(!drawAt(*document, i).isNull());

        // Closed while its pages load: the sanitizers' builds see anything left behind.
        std::vector<std::shared_ptr<PDFPage>> pages;
        for (int i = 40; i < 60; ++i)
            pages.push_back(document->pageAtIndex(i));
        document->loadPagesAhead(pages);
        pages.clear();
        document.reset();
        BackgroundQueue::pool().waitForDone();
    }

    // Render threads taking turns reuse the memory the previous ones gave back.
    void renderThreadsTakingTurnsShareWhatTheyGiveBack()
    {
        constexpr int Threads = 4;
        constexpr int PagesPerTurn = 40;
        QTemporaryDir textDir;
        const QString textPath = textDir.filePath(QStringLiteral("text.pdf"));
        PdfFixtures::Document text = PdfFixtures::textPages(Threads * PagesPerTurn, 60, 0);
        for (PdfFixtures::Page &page : text.pages)
            page.textObjectPerLine = true;
        QVERIFY(PdfFixtures::write(text, textPath));
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(textPath)));
        std::vector<std::shared_ptr<PDFPageRenderSource>> sources;
        for (int i = 0; i < document->pageCount(); ++i)
            sources.push_back(document->pageAtIndex(i)->renderSource(PDFDisplayBox::CropBox));

        std::binary_semaphore turnDone { 0 };
        std::vector<std::unique_ptr<std::binary_semaphore>> turns;
        for (int t = 0; t < Threads; ++t)
            turns.push_back(std::make_unique<std::binary_semaphore>(0));
        std::atomic<int> failures { 0 };
        std::vector<std::thread> workers;
        for (int t = 0; t < Threads; ++t) {
            workers.emplace_back([&, t] {
                turns[size_t(t)]->acquire();
                std::vector<std::shared_ptr<PDFDisplayList>> near;
                for (int i = t * PagesPerTurn; i < (t + 1) * PagesPerTurn; ++i) {
                    near.push_back(sources[size_t(i)]->buildDisplayList());
                    QImage image(306, 396, QImage::Format_ARGB32_Premultiplied);
                    if (!near.back()
                        || !near.back()->render(
                            image, sources[size_t(i)]->geometry().pageToView(0.5)))
                        ++failures;
                }
                near.clear();
                turnDone.release();
            });
        }
        qint64 afterFirstTurn = 0;
        for (int t = 0; t < Threads; ++t) {
            turns[size_t(t)]->release();
            turnDone.acquire();
            if (t == 0)
                afterFirstTurn = TestTools::resident();
        }
        for (std::thread &worker : workers)
            worker.join();
        QCOMPARE(failures.load(), 0);
        // Each worker keeping the free memory of its own turn would hold several megabytes more.
        const qint64 growth = TestTools::resident() - afterFirstTurn;
        QVERIFY2(growth < 1024 * 1024, qPrintable(QStringLiteral("%1 bytes more").arg(growth)));
    }

    // Bitmap fonts loaded again after each release are given back at the next, and what is on
    // screen looks as it did.
    void readingBitmapFontPagesKeepsNoMoreThanTheFirstPages()
    {
        constexpr int FontPages = 64;
        constexpr int ReleaseEveryFew = 4;
        const QString fontPath = dir.filePath(QStringLiteral("bitmap-fonts.pdf"));
        QVERIFY(RawPdf::writeFile(fontPath, bitmapFontPages(FontPages, 4, 40)));
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(fontPath)));
        const auto inView = document->pageAtIndex(0)->renderSource(PDFDisplayBox::CropBox);
        QVERIFY(inView);
        const std::shared_ptr<PDFDisplayList> onScreen = inView->buildDisplayList();
        QVERIFY(onScreen);
        QImage shown(153, 198, QImage::Format_ARGB32_Premultiplied);
        QVERIFY(onScreen->render(shown, inView->geometry().pageToView(0.25)));
        QVERIFY(TestTools::hasInk(shown));

        // The page on screen is drawn again and again meanwhile, as its tiles are, while the
        // fonts of the pages passed are given back.
        std::atomic<bool> stop { false };
        std::atomic<int> redrawn { 0 };
        std::atomic<int> changed { 0 };
        std::thread tiles([&] {
            QImage again(shown.size(), QImage::Format_ARGB32_Premultiplied);
            while (!stop) {
                if (!onScreen->render(again, inView->geometry().pageToView(0.25)) || again != shown)
                    ++changed;
                ++redrawn;
            }
        });
        // A failed check returns early: the drawing stops first.
        const auto joinTiles = qScopeGuard([&] {
            stop = true;
            if (tiles.joinable())
                tiles.join();
        });
        qint64 afterFirstPages = 0;
        for (int i = 1; i < FontPages; ++i) {
            const QImage page
                = draw(*document->pageAtIndex(i)->renderSource(PDFDisplayBox::CropBox));
            // Every page has the same lines.
            QCOMPARE(page, shown);
            if (i % ReleaseEveryFew == 0) {
                QVERIFY(release(*document));
                if (i == ReleaseEveryFew)
                    afterFirstPages = heapInUse();
            }
        }
        QTRY_VERIFY(redrawn > 0);
        stop = true;
        tiles.join();
        QCOMPARE(changed.load(), 0);
        QVERIFY(release(*document));
        QCOMPARE(draw(*document->pageAtIndex(0)->renderSource(PDFDisplayBox::CropBox)), shown);
        QVERIFY(release(*document));
        // Sixteen copies of the four fonts, one for each release, hold several megabytes.
        const qint64 growth = heapInUse() - afterFirstPages;
        QVERIFY2(growth < 1024 * 1024, qPrintable(QStringLiteral("%1 bytes more").arg(growth)));
    }

private:
    QTemporaryDir dir;
    QString path;
};

QTEST_MAIN(CachedContentTest)
#include "CachedContentTest.moc"
