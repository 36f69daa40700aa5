// Opening, page list changes, labels and saving of PDFDocument, checked where installed by qpdf.

#include "support/FindRecorder.h"
#include "support/RawPdf.h"

#include <support/PdfFixtures.h>
#include <support/TestTools.h>

#include <kit/base/BackgroundQueue.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFDocumentDelegate.h>
#include <kit/engine/PDFOutline.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QBuffer>
#include <QImage>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>

#include <cmath>
#include <numeric>
#include <thread>
#include <vector>

namespace {

class TaggedPage : public PDFPage
{
public:
    int tag = 0;
};

class TaggingDelegate : public PDFDocumentDelegate
{
public:
    PDFPageFactory classForPage() const override
    {
        return [this] {
            auto page = std::make_shared<TaggedPage>();
            page->tag = ++made;
            return page;
        };
    }
    mutable int made = 0;
};

std::shared_ptr<PDFDocument> openData(const QByteArray &bytes)
{
    auto doc = std::make_shared<PDFDocument>();
    return doc->initWithData(bytes) ? doc : nullptr;
}

std::shared_ptr<PDFDocument> openFile(const QString &path)
{
    auto doc = std::make_shared<PDFDocument>();
    return doc->initWithURL(QUrl::fromLocalFile(path)) ? doc : nullptr;
}

// The first words of each page, to follow pages through edits.
QStringList firstWords(const PDFDocument &doc)
{
    QStringList words;
    for (int i = 0; i < doc.pageCount(); ++i)
        words.append(doc.pageAtIndex(i)->string().section(QLatin1Char(' '), 0, 0));
    return words;
}

// A page tree as it stands: node 2 is the root, page n is object 10 + n, n * 10 + 100 points wide.
QByteArray treePdf(const QList<QByteArray> &nodes, int pageCount,
    const QByteArray &catalog = "<< /Type /Catalog /Pages 2 0 R >>",
    const std::function<int(int)> &parentOf = nullptr, const QByteArray &pageKeys = {})
{
    QList<QByteArray> objects(9 + pageCount, "null");
    objects[0] = catalog;
    for (int i = 0; i < nodes.size(); ++i)
        objects[1 + i] = nodes[i];
    for (int n = 0; n < pageCount; ++n) {
        const QByteArray parent
            = parentOf ? " /Parent " + QByteArray::number(parentOf(n)) + " 0 R" : QByteArray();
        objects[9 + n] = "<< /Type /Page" + parent + pageKeys + " /MediaBox [0 0 "
            + QByteArray::number(n * 10 + 100) + " 200] >>";
    }
    return RawPdf::build(objects);
}

// 0, 1, ..., count - 1.
QList<int> indexes(int count)
{
    QList<int> list(count);
    std::iota(list.begin(), list.end(), 0);
    return list;
}

// Pages by the width that names them (see treePdf), in the order the document gives them.
QList<int> pageNames(const PDFDocument &doc, const QList<int> &order)
{
    QList<int> names(doc.pageCount(), -1);
    for (const int i : order) {
        const double width = doc.pageAtIndex(i)->boundsForBox(PDFDisplayBox::MediaBox).width();
        names[i] = int(std::lround((width - 100) / 10));
    }
    return names;
}

// treePdf's 600 pages in nodes 3 and 4 under a root claiming rootCount; parents: named upwards.
QList<QByteArray> twoNodeTree(int firstNodePages, int rootCount, bool parents)
{
    QByteArray first;
    QByteArray second;
    for (int n = 0; n < 600; ++n)
        (n < firstNodePages ? first : second) += QByteArray::number(10 + n) + " 0 R ";
    const QByteArray parent = parents ? " /Parent 2 0 R" : "";
    return { "<< /Type /Pages /Kids [3 0 R 4 0 R] /Count " + QByteArray::number(rootCount) + " >>",
        "<< /Type /Pages" + parent + " /Kids [" + first + "] /Count "
            + QByteArray::number(firstNodePages) + " >>",
        "<< /Type /Pages" + parent + " /Kids [" + second + "] /Count "
            + QByteArray::number(600 - firstNodePages) + " >>" };
}

} // namespace

class PDFDocumentTest : public QObject
{
    Q_OBJECT

private slots:
    void savingOnAWorkerWhilePagesAreRead()
    {
        // Bytes made on a worker while the main thread edits annotations: a race for the
        // sanitizers.
        PdfFixtures::Document fixture = PdfFixtures::textPages(8, 4, 0);
        for (PdfFixtures::Page &page : fixture.pages)
            page.annotations.append(
                { "/Subtype /Square /Rect [100 100 200 200] /C [1 0 0]", {}, {} });
        const QByteArray original = PdfFixtures::build(fixture);
        for (int round = 0; round < 4; ++round) {
            auto doc = openData(original);
            QVERIFY(doc);
            QByteArray bytes;
            std::thread saver([&] { bytes = doc->dataRepresentation(); });
            size_t seen = 0;
            for (int i = 0; i < doc->pageCount(); ++i) {
                const auto page = doc->pageAtIndex(i);
                seen += page->annotations().size();
                if (i == round)
                    page->removeAnnotation(page->annotations().front());
            }
            saver.join();
            QCOMPARE(seen, size_t(8));
            const auto saved = openData(bytes);
            QVERIFY(saved);
            QCOMPARE(saved->pageAtIndex(7)->annotations().size(), size_t(1));
        }
    }

    void initTestCase()
    {
        QVERIFY(dir.isValid());
        standardPath = dir.filePath(QStringLiteral("standard.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::standard(), standardPath));
    }

    void opensOnlyReadablePdfs_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("opens");
        QTest::addColumn<int>("pages");
        QTest::addColumn<bool>("repaired");
        const QByteArray good = PdfFixtures::build(PdfFixtures::standard());
        QImage png(8, 8, QImage::Format_RGB32);
        png.fill(Qt::red);
        QByteArray pngBytes;
        QBuffer buffer(&pngBytes);
        buffer.open(QIODevice::WriteOnly);
        png.save(&buffer, "PNG");
        QTest::newRow("sound") << good << true << 6 << false;
        QTest::newRow("lost xref is repaired")
            << PdfFixtures::withoutXref(good) << true << 6 << true;
        // Cut in the middle of the page objects: what was read survives.
        QTest::newRow("cut short") << PdfFixtures::truncated(good, 0.3) << true << 6 << true;
        QTest::newRow("header only") << QByteArray("%PDF-1.7\n") << false << 0 << false;
        QTest::newRow("plain text")
            << QByteArray("hello, this is not a PDF\n") << false << 0 << false;
        QTest::newRow("PNG image") << pngBytes << false << 0 << false;
        QTest::newRow("missing file") << QByteArray() << false << 0 << false;
    }
    void opensOnlyReadablePdfs()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, opens);
        QFETCH(int, pages);
        QFETCH(bool, repaired);
        const QString path
            = dir.filePath(QStringLiteral("input-%1.pdf").arg(QTest::currentDataTag()));
        if (!bytes.isNull())
            QVERIFY(RawPdf::writeFile(path, bytes));
        auto doc = std::make_shared<PDFDocument>();
        QCOMPARE(doc->initWithURL(QUrl::fromLocalFile(path)), opens);
        if (!opens) {
            QVERIFY(!doc->errorString().isEmpty());
            if (bytes.isNull()) // the message names the file
                QVERIFY(doc->errorString().contains(QFileInfo(path).fileName()));
            return;
        }
        QCOMPARE(doc->pageCount(), pages);
        QCOMPARE(doc->wasRepaired(), repaired);
        QVERIFY(doc->pageAtIndex(0)->string().contains(QLatin1String("quick brown fox")));
    }

    // The object check of long files is split between two threads: either half finds misplacement.
    void objectsOutOfPlaceAreFoundInLongFiles_data()
    {
        QTest::addColumn<int>("misplaced"); // object number whose offset is off by one; 0: none
        QTest::addColumn<int>("update"); // 0: none; 1: object 4 replaced; 2: and out of place
        QTest::addColumn<bool>("repaired");
        QTest::newRow("sound") << 0 << 0 << false;
        QTest::newRow("early object") << 5000 << 0 << true;
        QTest::newRow("last object") << 39999 << 0 << true;
        QTest::newRow("sound, updated") << 0 << 1 << false;
        QTest::newRow("early object, updated") << 5000 << 1 << true;
        QTest::newRow("last object, updated") << 39999 << 1 << true;
        QTest::newRow("replaced object out of place") << 0 << 2 << true;
    }
    void objectsOutOfPlaceAreFoundInLongFiles()
    {
        QFETCH(int, misplaced);
        QFETCH(int, update);
        QFETCH(bool, repaired);
        constexpr int Objects = 40000;
        QList<QByteArray> objects { "<</Type/Catalog/Pages 2 0 R>>",
            "<</Type/Pages/Kids[3 0 R]/Count 1>>",
            "<</Type/Page/Parent 2 0 R/MediaBox[0 0 200 300]>>" };
        for (int number = 4; number < Objects; ++number)
            objects.append("<</N " + QByteArray::number(number) + ">>");
        QByteArray bytes = RawPdf::build(objects);
        const qint64 xref = RawPdf::lastXrefOffset(bytes);
        if (misplaced > 0) {
            const qsizetype entry = bytes.indexOf('\n', xref + 5) + 1 + 20 * misplaced;
            const qint64 offset = bytes.mid(entry, 10).toLongLong() + 1;
            bytes.replace(entry, 10, QByteArray::number(offset).rightJustified(10, '0'));
        }
        if (update > 0) {
            const qsizetype replaced = bytes.size() + (update == 2 ? 1 : 0);
            bytes += "4 0 obj\n<</N 4/Replaced true>>\nendobj\n";
            const qsizetype updateXref = bytes.size();
            bytes += "xref\n4 1\n" + QByteArray::number(replaced).rightJustified(10, '0')
                + " 00000 n \ntrailer\n<</Size " + QByteArray::number(Objects) + "/Root 1 0 R/Prev "
                + QByteArray::number(xref) + ">>\nstartxref\n" + QByteArray::number(updateXref)
                + "\n%%EOF\n";
        }
        const QString path
            = dir.filePath(QStringLiteral("long-%1-%2.pdf").arg(misplaced).arg(update));
        QVERIFY(RawPdf::writeFile(path, bytes));
        auto doc = openFile(path);
        QVERIFY(doc);
        QCOMPARE(doc->wasRepaired(), repaired);
        QCOMPARE(doc->pageCount(), 1);
        QCOMPARE(
            doc->pageAtIndex(0)->boundsForBox(PDFDisplayBox::MediaBox).size(), QSizeF(200, 300));
    }

    // Bytes damaged anywhere open (repaired) or refuse with a message; what opens never crashes.
    void damagedBytesNeverCrash()
    {
        const QByteArray good = PdfFixtures::build(PdfFixtures::standard());
        quint32 state = 12345;
        int opened = 0;
        for (int round = 0; round < 40; ++round) {
            QByteArray bytes = good;
            for (int k = 0; k < 1 + round % 7; ++k) {
                state = state * 1664525u + 1013904223u;
                const qsizetype at = qsizetype(state % quint32(bytes.size()));
                bytes[at] = char(state >> 24);
            }
            if (round % 5 == 4)
                bytes.remove(bytes.size() / 3, 200);
            auto doc = std::make_shared<PDFDocument>();
            if (!doc->initWithData(bytes)) {
                QVERIFY(!doc->errorString().isEmpty());
                continue;
            }
            ++opened;
            for (int i = 0; i < doc->pageCount(); ++i) {
                const auto page = doc->pageAtIndex(i);
                page->string();
                page->imageForBox(PDFDisplayBox::CropBox, QSize(30, 40));
            }
            if (doc->outlineRoot())
                doc->outlineRoot()->numberOfChildren();
            doc->dataRepresentation();
        }
        QVERIFY(opened > 0);
    }

    void delegateBuildsEveryPage()
    {
        auto delegate = std::make_shared<TaggingDelegate>();
        auto doc = std::make_shared<PDFDocument>();
        doc->setDelegate(delegate);
        QVERIFY(doc->initWithURL(QUrl::fromLocalFile(standardPath)));
        QCOMPARE(delegate->made, 6);
        QVERIFY(!doc->pageAtIndex(-1));
        QVERIFY(!doc->pageAtIndex(6));
        QCOMPARE(doc->indexForPage(doc->pageAtIndex(3)), 3);
        QCOMPARE(doc->indexForPage(std::make_shared<PDFPage>()), -1);
        QStringList labels;
        for (int i = 0; i < doc->pageCount(); ++i) {
            auto page = std::dynamic_pointer_cast<TaggedPage>(doc->pageAtIndex(i));
            QVERIFY(page);
            QCOMPARE(page->tag, i + 1);
            labels.append(page->label());
        }
        QCOMPARE(labels, QStringList({ "i", "ii", "A-5", "A-6", "A-7", "A-8" }));
        // A copy is of the class the page was built as, and outside the label tree.
        const auto copy = doc->pageAtIndex(0)->copy();
        QVERIFY(std::dynamic_pointer_cast<TaggedPage>(copy));
        QVERIFY(copy->label().isNull());
    }

    void labelStyles_data()
    {
        QTest::addColumn<char>("style"); // '-': no label tree
        QTest::addColumn<int>("start");
        QTest::addColumn<QString>("third");
        QTest::newRow("no label tree") << '-' << 1 << "3";
        QTest::newRow("upper roman") << 'R' << 12 << "XIV";
        QTest::newRow("lower letters") << 'a' << 25 << "aa";
        QTest::newRow("upper letters") << 'A' << 1 << "C";
        QTest::newRow("decimal") << 'D' << 99 << "101";
        QTest::newRow("prefix only") << char(0) << 1 << "Cover";
    }
    void labelStyles()
    {
        QFETCH(char, style);
        QFETCH(int, start);
        QFETCH(QString, third);
        PdfFixtures::Document spec = PdfFixtures::textPages(4);
        if (style != '-')
            spec.labels = { { 0, style, style ? QString() : QStringLiteral("Cover"), start } };
        auto doc = openData(PdfFixtures::build(spec));
        QVERIFY(doc);
        QCOMPARE(doc->pageAtIndex(2)->label(), third);
    }

    // Trees walked lazily, in any order of asking and of any shape, number pages as readers do.
    void pageTreesOfEveryShapeNumberPagesAlike_data()
    {
        QTest::addColumn<QList<QByteArray>>("nodes");
        QTest::addColumn<int>("objects");
        QTest::addColumn<QList<int>>("expected");
        QTest::newRow("flat") << QList<QByteArray> { "<< /Type /Pages /Kids [10 0 R 11 0 R 12 0 R "
                                                     "13 0 R] /Count 4 >>" }
                              << 4 << QList<int> { 0, 1, 2, 3 };
        QTest::newRow("nested, out of object order")
            << QList<QByteArray> { "<< /Type /Pages /Kids [3 0 R 4 0 R] /Count 5 >>",
                   "<< /Type /Pages /Kids [13 0 R 5 0 R] /Count 3 >>",
                   "<< /Type /Pages /Kids [11 0 R 10 0 R] /Count 2 >>",
                   "<< /Type /Pages /Kids [12 0 R 14 0 R] /Count 2 >>" }
            << 5 << QList<int> { 3, 2, 4, 1, 0 };
        QTest::newRow("a node of one page")
            << QList<QByteArray> { "<< /Type /Pages /Kids [10 0 R 3 0 R 12 0 R] /Count 3 >>",
                   "<< /Type /Pages /Kids [11 0 R] /Count 1 >>" }
            << 3 << QList<int> { 0, 1, 2 };
        QTest::newRow("more pages than counted")
            << QList<QByteArray> { "<< /Type /Pages /Kids [10 0 R 11 0 R 12 0 R] /Count 2 >>" } << 3
            << QList<int> { 0, 1 };
        QTest::newRow("fewer pages than counted")
            << QList<QByteArray> { "<< /Type /Pages /Kids [10 0 R 3 0 R] /Count 4 >>",
                   "<< /Type /Pages /Kids [11 0 R] /Count 3 >>" }
            << 2 << QList<int> { 0, 1 };
        // Damage past the first pages of a long tree is met late, and the tree rebuilt then.
        const auto late = [](int rootCount, const QByteArray &from, const QByteArray &to) {
            QList<QByteArray> nodes = twoNodeTree(550, rootCount, false);
            nodes[2].replace(from, to);
            return nodes;
        };
        const QList<int> all600 = indexes(600);
        QTest::newRow("a loop back to the root, late")
            << late(601, "] /Count 50", "2 0 R] /Count 51") << 600 << all600;
        QTest::newRow("a page listed twice, late")
            << late(601, "] /Count 50", "10 0 R] /Count 51") << 600 << all600;
        QTest::newRow("a count too small, late")
            << late(599, "/Count 50", "/Count 49") << 600 << all600.mid(0, 599);
    }
    void pageTreesOfEveryShapeNumberPagesAlike()
    {
        QFETCH(QList<QByteArray>, nodes);
        QFETCH(int, objects);
        QFETCH(QList<int>, expected);
        const QByteArray bytes = treePdf(nodes, objects);
        auto inOrder = openData(bytes);
        QVERIFY(inOrder);
        const QList<int> forward = indexes(inOrder->pageCount());
        QList<int> backward(forward.rbegin(), forward.rend());
        auto lastFirst = openData(bytes);
        QVERIFY(lastFirst);
        // The tree's /Count may lie; the pages that exist come out alike in any order of asking.
        const QList<int> names = pageNames(*inOrder, forward);
        QCOMPARE(pageNames(*lastFirst, backward), names);
        QCOMPARE(names.mid(0, expected.size()), expected);
        // A page found beyond a count too small has joined either list.
        QCOMPARE(inOrder->pageCount(), lastFirst->pageCount());
        // Every page the document names renders with its own size.
        for (int i = 0; i < expected.size(); ++i) {
            const QImage image = lastFirst->pageAtIndex(i)->imageForBox(
                PDFDisplayBox::MediaBox, QSize(expected[i] + 10, 20));
            QVERIFY2(!image.isNull(), qPrintable(QStringLiteral("page %1").arg(i)));
        }
        // What is saved is a sound tree of the pages found, which opens without a repair.
        auto reread = openData(inOrder->dataRepresentation());
        QVERIFY(reread);
        QVERIFY(!reread->wasRepaired());
        QCOMPARE(
            pageNames(*reread, indexes(reread->pageCount())).mid(0, expected.size()), expected);
    }

    // The outline is read without walking the page tree until an item's page is asked for.
    void outlinesWalkThePageTreeOnlyForTheirPages_data()
    {
        QTest::addColumn<bool>("withOutline");
        QTest::newRow("no outline") << false;
        QTest::newRow("an item on the last page") << true;
    }
    void outlinesWalkThePageTreeOnlyForTheirPages()
    {
        QFETCH(bool, withOutline);
        // The root counts one page too few: only a walk to the end finds the last one.
        const QList<QByteArray> nodes = twoNodeTree(550, 599, false)
            + QList<QByteArray> { "<< /First 6 0 R /Last 6 0 R /Count 1 >>",
                  "<< /Title (Last) /Parent 5 0 R /Dest [609 0 R /XYZ 0 200 0] >>" };
        auto doc = openData(treePdf(nodes, 600,
            withOutline ? "<< /Type /Catalog /Pages 2 0 R /Outlines 5 0 R >>"
                        : "<< /Type /Catalog /Pages 2 0 R >>"));
        QVERIFY(doc);
        QCOMPARE(doc->pageCount(), 599);
        const auto root = doc->outlineRoot();
        QCOMPARE(bool(root), withOutline);
        QCOMPARE(doc->pageCount(), 599);
        if (withOutline) {
            const auto target = root->childAtIndex(0)->destination();
            QCOMPARE(doc->pageCount(), 600);
            QCOMPARE(target->page(), doc->pageAtIndex(599));
            QCOMPARE(pageNames(*doc, { 599 }).last(), 599);
        }
    }

    // An item's page is found from its parents without a walk, and followed through moves.
    void outlineItemsFindTheirPagesWithoutAWalk()
    {
        // The root counts one page too few, so a walk to the end shows in the count.
        const QList<QByteArray> nodes = twoNodeTree(550, 599, true)
            + QList<QByteArray> { "<< /First 6 0 R /Last 7 0 R /Count 2 >>",
                  "<< /Title (Named) /Parent 5 0 R /Next 7 0 R /Dest (far) >>",
                  "<< /Title (Moved) /Parent 5 0 R /Prev 6 0 R"
                  " /A << /S /GoTo /D [21 0 R /Fit] >> >>" };
        auto doc = openData(treePdf(nodes, 600,
            "<< /Type /Catalog /Pages 2 0 R /Outlines 5 0 R"
            " /Names << /Dests << /Names [(far) [309 0 R /XYZ 0 100 0]] >> >> >>",
            [](int n) { return n < 550 ? 3 : 4; }));
        QVERIFY(doc);
        const auto root = doc->outlineRoot();
        QVERIFY(root);
        const auto named = root->childAtIndex(0)->destination();
        QVERIFY(named && named->page());
        QCOMPARE(doc->pageCount(), 599);
        QCOMPARE(doc->indexForPage(named->page()), 299);
        QCOMPARE(named->point().y(), 100.0);

        doc->exchangePageAtIndex(10, 11);
        const auto moved = root->childAtIndex(1)->destination();
        QVERIFY(moved);
        QCOMPARE(doc->indexForPage(moved->page()), 10);
        QCOMPARE(pageNames(*doc, { 10 }).at(10), 11);

        auto reread = openData(doc->dataRepresentation());
        QVERIFY(reread);
        const auto written = reread->outlineRoot();
        QCOMPARE(reread->indexForPage(written->childAtIndex(0)->destination()->page()), 299);
        QCOMPARE(reread->indexForPage(written->childAtIndex(1)->destination()->page()), 10);
    }

    // A find begun before a long tree is walked goes through every page in order without waiting,
    // the page a rebuilt tree adds at the end included.
    void findsGoThroughATreeStillBeingWalked_data()
    {
        QTest::addColumn<int>("pagesKnown");
        QTest::newRow("the first screen's") << 1;
        QTest::newRow("a hundred") << 100;
    }
    void findsGoThroughATreeStillBeingWalked()
    {
        QFETCH(int, pagesKnown);
        const QList<QByteArray> nodes = twoNodeTree(550, 599, false)
            + QList<QByteArray> { "null", "null", "null",
                  RawPdf::stream({}, "BT /F1 12 Tf 20 100 Td (needle) Tj ET"),
                  "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>" };
        auto doc = openData(treePdf(nodes, 600, "<< /Type /Catalog /Pages 2 0 R >>", nullptr,
            " /Contents 8 0 R /Resources << /Font << /F1 9 0 R >> >>"));
        QVERIFY(doc);
        QVERIFY(doc->pageAtIndex(pagesKnown - 1));
        FindRecorder finds(doc);
        doc->beginFindString(QStringLiteral("needle"), 0);
        QCOMPARE(doc->pageCount(), 599);
        QVERIFY(finds.waitForEnd(20000));
        QCOMPARE(doc->pageCount(), 600);
        QCOMPARE(finds.pages(), indexes(600));
    }

    // The tree read ahead on a worker while pages move and the document goes: a sanitizer race.
    void pageTreesReadAheadWhileThePagesChange()
    {
        const QByteArray file = treePdf(twoNodeTree(300, 600, true), 600,
            "<< /Type /Catalog /Pages 2 0 R >>", [](int n) { return n < 300 ? 3 : 4; });
        for (int round = 0; round < 3; ++round) {
            auto doc = openData(file);
            QVERIFY(doc);
            doc->readPageTreeAhead();
            QCOMPARE(pageNames(*doc, { 450 }).at(450), 450);
            if (round > 0) {
                doc->exchangePageAtIndex(0, 599);
                doc->removePageAtIndex(1);
                QCOMPARE(doc->pageCount(), 599);
                QCOMPARE(pageNames(*doc, { 0, 1, 598 }),
                    (QList<int> { 599, 2 }) + QList<int>(596, -1) + QList<int> { 0 });
            }
            // The last round lets the document go while the tree is still read.
            if (round == 2)
                doc.reset();
        }
        BackgroundQueue::pool().waitForDone();
    }

    // Pages are readied only as far as a due read ahead has parsed the tree.
    void pagesAreReadiedNoFurtherThanTheTreeIsRead()
    {
        const QByteArray file = treePdf(twoNodeTree(300, 600, true), 600,
            "<< /Type /Catalog /Pages 2 0 R >>", [](int n) { return n < 300 ? 3 : 4; });
        const QList<int> all = indexes(600);
        const QDeadlineTimer noLimit(QDeadlineTimer::Forever);
        auto alone = openData(file);
        QVERIFY(alone);
        QCOMPARE(alone->readyPages(0, 599, noLimit), 600);
        QCOMPARE(pageNames(*alone, all), all);

        // The background threads are kept busy: the read ahead is due but has not begun.
        const int threads = BackgroundQueue::pool().maxThreadCount();
        QSemaphore busy;
        QSemaphore release;
        for (int i = 0; i < threads; ++i)
            BackgroundQueue::async([&] {
                busy.release();
                release.acquire();
            });
        busy.acquire(threads);
        auto doc = openData(file);
        QVERIFY(doc);
        QCOMPARE(pageNames(*doc, { 0 }).at(0), 0);
        doc->readPageTreeAhead();
        QCOMPARE(doc->readyPages(0, 599, noLimit), 1);
        release.release(threads);
        QTRY_COMPARE(doc->readyPages(0, 599, noLimit), 600);
        QCOMPARE(pageNames(*doc, all), all);
        BackgroundQueue::pool().waitForDone();
    }

    // A lazily opened document writes whole, and after giving memory back keeps its edits.
    void lazilyOpenedDocumentsWriteAndReleaseWhole_data()
    {
        QTest::addColumn<bool>("release");
        QTest::newRow("written at once") << false;
        QTest::newRow("written after giving memory back") << true;
    }
    void lazilyOpenedDocumentsWriteAndReleaseWhole()
    {
        QFETCH(bool, release);
        auto doc = openFile(standardPath);
        const QString text = doc->pageAtIndex(0)->string();
        const QImage before
            = doc->pageAtIndex(0)->imageForBox(PDFDisplayBox::CropBox, QSize(153, 198));
        if (release) {
            doc->pageAtIndex(3)->setRotation(90);
            QVERIFY(doc->releaseCachedContent());
            BackgroundQueue::pool().waitForDone();
            QCOMPARE(doc->pageAtIndex(0)->string(), text);
            QCOMPARE(
                doc->pageAtIndex(0)->imageForBox(PDFDisplayBox::CropBox, QSize(153, 198)), before);
        }
        const QString out = dir.filePath(QStringLiteral("lazy-%1.pdf").arg(release));
        QVERIFY(doc->writeToURL(QUrl::fromLocalFile(out)));
        auto reread = openFile(out);
        QCOMPARE(firstWords(*reread),
            QStringList({ "The", "Cropped", "Rotated", "Rotated", "Rotated", "Picture" }));
        QVERIFY(reread->outlineRoot());
        QCOMPARE(reread->outlineRoot()->numberOfChildren(), 3);
        QCOMPARE(
            reread->outlineRoot()->childAtIndex(1)->destination()->page(), reread->pageAtIndex(4));
        QCOMPARE(reread->pageAtIndex(2)->label(), QStringLiteral("A-5"));
        QCOMPARE(reread->pageAtIndex(3)->rotation(), release ? 90 : 180);
    }

    void pageChangesReachTheWrittenFile()
    {
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        auto doc = openFile(standardPath);
        const auto removed = doc->pageAtIndex(1);
        doc->removePageAtIndex(1); // Cropped
        doc->exchangePageAtIndex(0, 3); // Rotated(270) <-> The
        // Callers add to the old rotation with no wrap.
        doc->pageAtIndex(0)->setRotation(270 + 90);
        doc->pageAtIndex(1)->setRotation(90 - 180);
        doc->insertPage(removed, 5);
        const QStringList expected
            = { "Rotated", "Rotated", "Rotated", "The", "Picture", "Cropped" };
        QCOMPARE(firstWords(*doc), expected);

        const QString out = dir.filePath(QStringLiteral("changed.pdf"));
        QVERIFY(doc->writeToURL(QUrl::fromLocalFile(out)));
        QCOMPARE(TestTools::run(qpdf, { QStringLiteral("--check"), out }).exitCode, 0);
        auto reread = openFile(out);
        QVERIFY(!reread->wasRepaired());
        QCOMPARE(firstWords(*reread), expected);
        QList<int> rotations;
        for (int i = 0; i < reread->pageCount(); ++i)
            rotations.append(reread->pageAtIndex(i)->rotation());
        QCOMPARE(rotations, QList<int>({ 0, 270, 180, 0, 0, 0 }));
        QCOMPARE(reread->pageAtIndex(5)->boundsForBox(PDFDisplayBox::CropBox),
            QRectF(QPointF(10, 20), QPointF(590, 780)));
    }

    // poppler must read a long string written before an unused object number whole.
    void longStringsBeforeAnUnusedNumberReadWholeInPoppler()
    {
        FOLIDOC_REQUIRE_TOOL(pdfinfo, "pdfinfo");
        const QByteArray title
            = QByteArray("A title well over a hundred and twenty-eight bytes long, ")
                  .repeated(4)
                  .trimmed();
        QList<QByteArray> objects = { "<< /Type /Catalog /Pages 3 0 R /Filler 6 0 R >>",
            "<< /Title (" + title + ") >>", "<< /Type /Pages /Kids [4 0 R] /Count 1 >>",
            RawPdf::page(3, 5), RawPdf::textContent("Filler") };
        QByteArray filler = "[";
        for (int number = 7; number < 1000; ++number) {
            filler += QByteArray::number(number) + " 0 R ";
            objects.append(QByteArray::number(number));
        }
        objects.insert(5, filler + "]");
        objects.append("(nothing refers to this)");
        auto doc = openData(RawPdf::build(objects, "/Root 1 0 R /Info 2 0 R"));
        QVERIFY(doc);

        const QString out = dir.filePath(QStringLiteral("unused-number.pdf"));
        QVERIFY(doc->writeToURL(QUrl::fromLocalFile(out)));
        const auto info = TestTools::run(pdfinfo, { out });
        QCOMPARE(info.exitCode, 0);
        QVERIFY2(!info.err.contains("Syntax Error"), info.err.constData());
        const qsizetype line = info.out.indexOf("Title:");
        QCOMPARE(info.out.mid(line + 6, info.out.indexOf('\n', line) - line - 6).trimmed(), title);
    }

    void removedPageLivesOnAndMovesToAnotherDocument()
    {
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        auto source = openFile(standardPath);
        auto page = source->pageAtIndex(1);
        source->removePageAtIndex(1);
        QVERIFY(!page->document());
        QCOMPARE(source->indexForPage(page), -1);
        // The source is written (and collected) while the removed page is held.
        QVERIFY(!source->dataRepresentation().isEmpty());
        QVERIFY(page->string().startsWith(QLatin1String("Cropped page text")));
        QVERIFY(!page->imageForBox(PDFDisplayBox::CropBox, QSize(58, 76)).isNull());

        auto target = openData(PdfFixtures::build(PdfFixtures::textPages(2)));
        QVERIFY(target);
        target->insertPage(page, 1);
        QCOMPARE(page->document(), target);
        QCOMPARE(target->pageAtIndex(1), page);
        QCOMPARE(
            page->boundsForBox(PDFDisplayBox::CropBox), QRectF(QPointF(10, 20), QPointF(590, 780)));
        source.reset();

        // A page still in one document moves when another takes it.
        auto third = std::make_shared<PDFDocument>();
        QVERIFY(third->init());
        const auto moved = target->pageAtIndex(0);
        third->insertPage(moved, 0);
        QCOMPARE(target->pageCount(), 2);
        QCOMPARE(third->pageAtIndex(0), moved);

        const QString out = dir.filePath(QStringLiteral("target.pdf"));
        QVERIFY(target->writeToURL(QUrl::fromLocalFile(out)));
        QCOMPARE(TestTools::run(qpdf, { QStringLiteral("--check"), out }).exitCode, 0);
        auto reread = openFile(out);
        QCOMPARE(firstWords(*reread), QStringList({ "Cropped", "Page" }));
    }

    void imagePagesAndCopiesJoinADocument()
    {
        QImage image(200, 100, QImage::Format_RGB32);
        image.fill(QColor(0, 0, 255));
        image.setDotsPerMeterX(2835); // 72 dpi: one pixel per point
        image.setDotsPerMeterY(2835);
        auto page = std::make_shared<PDFPage>();
        QVERIFY(page->initWithImage(image));
        QCOMPARE(page->boundsForBox(PDFDisplayBox::MediaBox), QRectF(0, 0, 200, 100));
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->init());
        doc->insertPage(page, 0);
        doc->insertPage(page->copy(), 1);
        auto reread = openData(doc->dataRepresentation());
        QVERIFY(reread);
        QCOMPARE(reread->pageCount(), 2);
        const QImage shown
            = reread->pageAtIndex(1)->imageForBox(PDFDisplayBox::MediaBox, QSize(20, 10));
        QCOMPARE(QColor(shown.pixel(10, 5)), QColor(0, 0, 255));
    }

private:
    QTemporaryDir dir;
    QString standardPath;
};

QTEST_MAIN(PDFDocumentTest)
#include "PDFDocumentTest.moc"
