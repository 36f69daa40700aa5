// Pages built to exhaust a reader (bombs, floods of operators) fail alone within the work limits.

#include "support/FindRecorder.h"
#include "support/RawPdf.h"

#include <kit/engine/PDFCancellation.h>
#include <kit/engine/PDFDisplayList.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>
#include <kit/engine/PDFWorkLimits.h>
#include <support/TestTools.h>

#include <QElapsedTimer>
#include <QtTest>

#include <thread>

namespace {

// Before, the hostile page, After.
QByteArray documentAround(const QByteArray &hostileContent)
{
    return RawPdf::pagesAround(hostileContent, "Before", "After");
}

const QByteArray Zeros(1 << 20, '\0');
const QByteArray SaveRestore = QByteArray("q Q\n").repeated(1 << 18);
const QByteArray Strokes = QByteArray("0 0 m 9 9 l S\n").repeated(1 << 16);
constexpr int ContentLimit = 64 * 1024;

} // namespace

class PageWorkLimitTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { PDFWorkLimits::setCurrent(PDFWorkLimits()); }

    void hostilePageFailsAlone_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<qint64>("memoryBytes"); // 0: the default limits
        QTest::addColumn<qint64>("contentBytes");
        QTest::addColumn<int>("milliseconds");
        // Drawing straight into an image keeps nothing: only recording runs out of memory.
        QTest::addColumn<bool>("drawingFails");
        QTest::newRow("1.2 GB of zeros")
            << RawPdf::inflatingStream(Zeros, 1200) << qint64(0) << qint64(0) << 0 << true;
        QTest::newRow("1.2 GB of save-restore pairs")
            << RawPdf::inflatingStream(SaveRestore, 1200) << qint64(0) << qint64(0) << 0 << true;
        // A time limit far off, so that only memory decides even in a slow (sanitized) build.
        QTest::newRow("strokes beyond the memory limit")
            << RawPdf::inflatingStream(Strokes, 24) << qint64(24 << 20) << qint64(1) << 300000
            << false;
        QTest::newRow("operators beyond the time limit") << RawPdf::inflatingStream(SaveRestore,
            200) << qint64(0) << (qint64(1) << 30) << 300 << true;
    }

    void hostilePageFailsAlone()
    {
        QFETCH(QByteArray, content);
        QFETCH(qint64, memoryBytes);
        QFETCH(qint64, contentBytes);
        QFETCH(int, milliseconds);
        QFETCH(bool, drawingFails);
        PDFWorkLimits limits;
        if (memoryBytes)
            limits.memoryBytes = memoryBytes;
        if (contentBytes)
            limits.contentBytes = contentBytes > 1 ? contentBytes : limits.memoryBytes * 64;
        if (milliseconds)
            limits.milliseconds = milliseconds;
        PDFWorkLimits::setCurrent(limits);

        auto doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->initWithData(documentAround(content)));
        QCOMPARE(doc->pageCount(), 3);
        TestTools::resetPeakResident();
        const qint64 peakBefore = TestTools::peakResident();
        QElapsedTimer clock;
        clock.start();

        const auto hostile = doc->pageAtIndex(1);
        const auto source = hostile->renderSource(PDFDisplayBox::CropBox);
        QVERIFY(source);
        QVERIFY(!source->buildDisplayList());
        QCOMPARE(
            hostile->imageForBox(PDFDisplayBox::CropBox, QSize(200, 260)).isNull(), drawingFails);
        QVERIFY(hostile->string().isEmpty());
        for (const int index : { 0, 2 }) {
            const auto page = doc->pageAtIndex(index);
            const auto list = page->renderSource(PDFDisplayBox::CropBox)->buildDisplayList();
            QVERIFY(list);
            QVERIFY(TestTools::hasInk(list->renderTile(QRect(0, 0, 612, 792), 1.0)));
        }
        QCOMPARE(doc->pageAtIndex(2)->string().trimmed(), QStringLiteral("After"));
        FindRecorder finds(doc);
        doc->beginFindString(QStringLiteral("After"), 0);
        QVERIFY(finds.waitForEnd(30000));
        QCOMPARE(finds.pages(), QList<int> { 2 });

        QVERIFY2(clock.elapsed() < 60000, qPrintable(QString::number(clock.elapsed())));
        const qint64 grown = TestTools::peakResident() - peakBefore;
        QVERIFY2(grown < (qint64(768) << 20), qPrintable(QString::number(grown >> 20) + " MB"));
    }

    // The limit on decoded content holds whether or not the encoded length alone settles it.
    void contentLimitCountsDecodedBytes_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("drawn");
        const QByteArray word = "BT /F1 48 Tf 72 600 Td (Within) Tj ET\n";
        // Comments of digits that deflate about three to one: far from the bound's 1032.
        QByteArray digits;
        for (int i = 0; digits.size() < 48 * 1024; ++i)
            digits += "% " + QByteArray::number(quint64(i) * 2654435761u % 1000000007u) + '\n';
        const QByteArray filler = QByteArray(" ").repeated(ContentLimit);
        QTest::newRow("plain stream within the limit") << RawPdf::stream({}, word) << true;
        QTest::newRow("plain stream over the limit") << RawPdf::stream({}, word + filler) << false;
        QTest::newRow("deflated stream within the limit, its bound over it") << RawPdf::stream(
            "/Filter /FlateDecode", RawPdf::deflatedRepeat(word + digits, 1)) << true;
        QTest::newRow("deflated stream over the limit") << RawPdf::stream("/Filter [/FlateDecode]",
            RawPdf::deflatedRepeat(word + filler, 1)) << false;
        QTest::newRow("two filters over the limit")
            << RawPdf::stream("/Filter [/ASCIIHexDecode /FlateDecode]",
                   RawPdf::deflatedRepeat(word + filler, 1).toHex() + '>')
            << false;
    }

    void contentLimitCountsDecodedBytes()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, drawn);
        PDFWorkLimits limits;
        limits.contentBytes = ContentLimit;
        PDFWorkLimits::setCurrent(limits);
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->initWithData(documentAround(content)));
        const auto list
            = doc->pageAtIndex(1)->renderSource(PDFDisplayBox::CropBox)->buildDisplayList();
        QCOMPARE(bool(list), drawn);
        if (list)
            QVERIFY(TestTools::hasInk(list->renderTile(QRect(0, 0, 612, 792), 1.0)));
    }

    void cancelStopsARunningJob()
    {
        PDFWorkLimits limits;
        limits.contentBytes = qint64(1) << 40;
        limits.milliseconds = 120000;
        PDFWorkLimits::setCurrent(limits);
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->initWithData(documentAround(RawPdf::inflatingStream(SaveRestore, 1200))));
        const auto source = doc->pageAtIndex(1)->renderSource(PDFDisplayBox::CropBox);
        QVERIFY(source);
        PDFCancellation cancel;
        std::atomic<bool> done { false };
        std::shared_ptr<PDFDisplayList> list;
        std::thread worker([&] {
            list = source->buildDisplayList(&cancel);
            done = true;
        });
        QTest::qWait(300);
        QVERIFY(!done);
        QElapsedTimer clock;
        clock.start();
        cancel.cancel();
        worker.join();
        QVERIFY(!list);
        QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
    }
};

QTEST_MAIN(PageWorkLimitTest)
#include "PageWorkLimitTest.moc"
