// Memory while reading a long document: once the reader has passed every page, what the view and
// the engine keep stays near what the first screens needed.

#include "support/PdfFixtures.h"

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/pdfview/PDFView.h>

#include <QApplication>
#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>

namespace {

// The process's resident memory now, in bytes.
qint64 residentBytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong() * 1024;
    }
    return 0;
}

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
        const QString path = dir.filePath(QStringLiteral("pictures.pdf"));
        QVERIFY(PdfFixtures::write(source, path));
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(path)));

        PDFView view;
        view.resize(800, 600);
        view.show();
        view.setDocument(document);
        QTRY_VERIFY_WITH_TIMEOUT(view.isVisibleAreaRendered(), 20000);
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
        const qint64 firstScreens = residentBytes();
        readThrough(Pages);
        QCOMPARE(document->indexForPage(view.currentPage()), Pages - 1);
        // Pictures decoded, pages loaded, display lists and tiles of the pages passed would
        // hold far more than this if any of them grew with the pages visited.
        QTRY_VERIFY_WITH_TIMEOUT(residentBytes() - firstScreens < 40LL * 1024 * 1024, 5000);
    }
};

QTEST_MAIN(PDFViewMemoryTest)
#include "PDFViewMemoryTest.moc"
