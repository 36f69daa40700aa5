// What the engine keeps of the pages read and gives back when asked: reading a long document
// page by page, with releases as the view makes them, holds no more at the end than after the
// first pages, and what is still on screen draws the same after a release, even once pages
// moved; render threads that take turns reuse the memory the others gave back.

#include <support/PdfFixtures.h>
#include <support/TestTools.h>

#include <kit/engine/PDFDisplayList.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>

#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>

#include <QFile>

#include <malloc.h>

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
    return qint64(mallinfo2().uordblks);
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

bool release(PDFDocument &document)
{
    if (!document.releaseCachedContent())
        return false;
    QThreadPool::globalInstance()->waitForDone();
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

    // Every page is drawn once, as scrolling through does, while the page in view stays open
    // across the releases; the appearances made up for the fields of the pages passed are
    // given back, and those of the page in view are made again.
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

    // A worker that keeps the document busy, recording one display list after another, does not
    // put a release off: what the pages passed left behind is given back while it works.
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
        QThreadPool::globalInstance()->waitForDone();
        stop = true;
        worker.join();
        QVERIFY(released);
        // The appearances made up for the fields of the pages passed alone hold megabytes.
        const qint64 freed = beforeRelease - heapInUse();
        QVERIFY2(freed > 1024 * 1024, qPrintable(QStringLiteral("%1 bytes freed").arg(freed)));
        QCOMPARE(draw(*inView), shown);
    }

    // A drawing still in hand keeps its page open in the engine through a release; once pages
    // move, that page must not stand in for the one that now has its place. A page already
    // loaded when another is deleted keeps its fields drawn.
    void pagesMovedAfterAReleaseDrawAsThemselves()
    {
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(path)));
        const auto drawAt = [&](int index) {
            const auto source = document->pageAtIndex(index)->renderSource(PDFDisplayBox::CropBox);
            return source ? draw(*source) : QImage();
        };
        std::vector<QImage> before;
        for (int i = 0; i < 4; ++i)
            before.push_back(drawAt(i));
        QVERIFY(before[2] != before[3]);
        const auto inHand = document->pageAtIndex(2)->renderSource(PDFDisplayBox::CropBox);
        QVERIFY(release(*document));
        document->insertPage(document->pageAtIndex(0), document->pageCount());
        QCOMPARE(drawAt(1), before[2]);
        QCOMPARE(drawAt(2), before[3]);
        QCOMPARE(drawAt(Pages - 1), before[0]);
        // Deleted, the first page gives its place to the next, which was loaded just above.
        document->removePageAtIndex(0);
        QCOMPARE(drawAt(0), before[2]);
        QCOMPARE(draw(*inHand), before[2]);
    }

    // Render workers live side by side and take turns as the pages they are given come and go:
    // each records and draws its pages, holds their display lists while they are near the
    // view, then lets them go. The memory one gave back is what the next one uses, so later
    // turns add nothing to what the first one needed.
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

private:
    QTemporaryDir dir;
    QString path;
};

QTEST_MAIN(CachedContentTest)
#include "CachedContentTest.moc"
