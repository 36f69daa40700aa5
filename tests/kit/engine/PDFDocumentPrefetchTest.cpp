// A document read ahead opens and draws as one read at once, even if its file changed meanwhile.

#include "support/RawPdf.h"
#include <support/PdfFixtures.h>
#include <support/TestTools.h>

#include <kit/engine/PDFAnnotationSquare.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFDocumentPrefetch.h>
#include <kit/engine/PDFPage.h>

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

namespace {

struct Opened
{
    int pages = -1;
    bool repaired = false;
    QString first;
    QString last;
};

Opened open(const QString &path)
{
    auto document = std::make_shared<PDFDocument>();
    if (!document->initWithURL(QUrl::fromLocalFile(path)))
        return {};
    const int count = document->pageCount();
    return { count, document->wasRepaired(), document->pageAtIndex(0)->string(),
        document->pageAtIndex(count - 1)->string() };
}

// The file with the cross-reference's entry of object number pointing one byte past its start.
QByteArray withObjectOutOfPlace(QByteArray bytes, int number)
{
    const qsizetype table = bytes.lastIndexOf("\nxref\n");
    const qsizetype entries = bytes.indexOf('\n', table + 6) + 1;
    const qsizetype entry = entries + 20 * number;
    const qlonglong offset = bytes.mid(entry, 10).toLongLong();
    bytes.replace(entry, 10, QByteArray::number(offset + 1).rightJustified(10, '0'));
    return bytes;
}

} // namespace

class PDFDocumentPrefetchTest : public QObject
{
    Q_OBJECT

private slots:
    void opensTheSameDocument_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("repaired");
        const QByteArray standard = PdfFixtures::build(PdfFixtures::standard());
        QTest::newRow("six pages") << standard << false;
        // Long enough for the page tree to be walked as pages are asked for.
        QTest::newRow("long") << PdfFixtures::build(PdfFixtures::textPages(700, 3)) << false;
        QTest::newRow("damaged") << PdfFixtures::withoutXref(standard) << true;
        // Found out of place while the first page is read ahead, and repaired as if found first.
        QTest::newRow("object out of place") << withObjectOutOfPlace(standard, 4) << true;
        QTest::newRow("long, last object out of place")
            << withObjectOutOfPlace(PdfFixtures::build(PdfFixtures::textPages(700, 3)), 1400)
            << true;
        // A broken first page whose array the repair's rescan reads on into the second page: the
        // pages reached before the repair are put back, whoever meets the damage first.
        QTest::newRow("page lost by the rescan") << RawPdf::pageLostByRescan() << true;
    }

    void opensTheSameDocument()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, repaired);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("read.pdf"));
        QVERIFY(RawPdf::writeFile(path, bytes));
        const Opened direct = open(path);
        QVERIFY(direct.pages > 0);
        QCOMPARE(direct.repaired, repaired);

        // Taken at once, and taken once the reading thread has read the first page too.
        for (const bool waited : { false, true }) {
            const PDFDocumentPrefetch prefetch(path);
            bool read = false;
            if (waited && PDFDocumentPrefetch::notifyWhenRead(path, this, [&read] { read = true; }))
                QTRY_VERIFY(read);
            const Opened ahead = open(path);
            QVERIFY(prefetch.taken());
            QCOMPARE(ahead.pages, direct.pages);
            QCOMPARE(ahead.repaired, direct.repaired);
            QCOMPARE(ahead.first, direct.first);
            QCOMPARE(ahead.last, direct.last);
        }
    }

    void firstPageDrawsAsReadAtOnce_data()
    {
        QTest::addColumn<QString>("change"); // made before the first page is first drawn
        QTest::newRow("none") << QString();
        QTest::newRow("annotation added") << QStringLiteral("annotation");
        QTest::newRow("pages exchanged") << QStringLiteral("exchange");
        QTest::newRow("page rotated") << QStringLiteral("rotate");
    }

    void firstPageDrawsAsReadAtOnce()
    {
        QFETCH(QString, change);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("drawn.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::standard(), path));
        const auto opened = [&](bool readAhead) {
            std::optional<PDFDocumentPrefetch> prefetch;
            if (readAhead) {
                prefetch.emplace(path);
                bool read = false;
                if (PDFDocumentPrefetch::notifyWhenRead(path, this, [&read] { read = true; })
                    && !QTest::qWaitFor([&read] { return read; }, 10000))
                    return std::shared_ptr<PDFDocument>();
            }
            auto document = std::make_shared<PDFDocument>();
            if (!document->initWithURL(QUrl::fromLocalFile(path))
                || (prefetch && !prefetch->taken()))
                return std::shared_ptr<PDFDocument>();
            if (change == QStringLiteral("annotation")) {
                auto square = std::make_shared<PDFAnnotationSquare>();
                square->initWithBounds(QRectF(100, 500, 200, 100));
                square->setInteriorColor(Qt::black);
                document->pageAtIndex(0)->addAnnotation(square);
            } else if (change == QStringLiteral("exchange")) {
                document->exchangePageAtIndex(0, 1);
            } else if (change == QStringLiteral("rotate")) {
                document->pageAtIndex(0)->setRotation(90);
            }
            return document;
        };
        const auto direct = opened(false);
        const auto ahead = opened(true);
        QVERIFY(direct && ahead);
        for (int index : { 0, 1 }) {
            const QSize size(306, 396);
            const QImage drawn
                = ahead->pageAtIndex(index)->imageForBox(PDFDisplayBox::MediaBox, size);
            QVERIFY(!drawn.isNull());
            QCOMPARE(drawn, direct->pageAtIndex(index)->imageForBox(PDFDisplayBox::MediaBox, size));
        }
    }

    void changedFileIsReadAgain()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("changed.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::standard(), path));
        const PDFDocumentPrefetch prefetch(path);
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(3), path));
        {
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(
                QDateTime::currentDateTime().addSecs(10), QFileDevice::FileModificationTime));
        }
        const Opened opened = open(path);
        QVERIFY(!prefetch.taken());
        QCOMPARE(opened.pages, 3);
        QVERIFY(opened.first.contains(QStringLiteral("Page 1 line")));
    }

    // The owner forbids printing only; read ahead, the file still opens locked.
    void lockedFileStaysLockedWithItsPermissions()
    {
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        QTemporaryDir dir;
        const QString plain = dir.filePath(QStringLiteral("plain.pdf"));
        const QString locked = dir.filePath(QStringLiteral("locked.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::standard(), plain));
        QString error;
        QVERIFY2(PdfFixtures::encryptWithQpdf(qpdf, plain, locked, QStringLiteral("user"),
                     QStringLiteral("owner"), false, true, &error),
            qPrintable(error));

        const PDFDocumentPrefetch prefetch(locked);
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(locked)));
        QVERIFY(prefetch.taken());
        QVERIFY(document->isEncrypted());
        QVERIFY(document->isLocked());
        QCOMPARE(document->pageCount(), 0);
        QVERIFY(!document->unlockWithPassword(QStringLiteral("wrong")));
        QVERIFY(document->unlockWithPassword(QStringLiteral("user")));
        QCOMPARE(document->pageCount(), 6);
        QVERIFY(document->pageAtIndex(0)->string().contains(QStringLiteral("quick brown fox")));
        QVERIFY(!document->allowsPrinting());
        QVERIFY(document->allowsCopying());
    }

    void otherFileIsNotTaken()
    {
        QTemporaryDir dir;
        const QString first = dir.filePath(QStringLiteral("first.pdf"));
        const QString second = dir.filePath(QStringLiteral("second.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::standard(), first));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(2), second));
        const PDFDocumentPrefetch prefetch(first);
        // One read ahead at a time: a second one reads nothing and its file opens as usual.
        const PDFDocumentPrefetch another(second);
        QCOMPARE(open(second).pages, 2);
        QVERIFY(!prefetch.taken());
        QVERIFY(!another.taken());
        QCOMPARE(open(first).pages, 6);
        QVERIFY(prefetch.taken());
    }
};

QTEST_GUILESS_MAIN(PDFDocumentPrefetchTest)
#include "PDFDocumentPrefetchTest.moc"
