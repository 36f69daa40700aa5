// Memory while the thumbnails of a long document are drawn: what the engine loads for the pages
// drawn is given back as the pictures come in, so it stays near what a stretch of pages needs.

#include "support/PdfFixtures.h"
#include "support/TestTools.h"

#include <document/FDDocument.h>
#include <kit/base/BackgroundQueue.h>
#include <kit/engine/PDFEngineInfo.h>
#include <navigation/FDPageThumbnailCache.h>
#include <navigation/PDFThumbnailModel.h>

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include <algorithm>

class PDFThumbnailMemoryTest : public QObject
{
    Q_OBJECT

private slots:
    // Every page's picture drawn in turn, as scrolling the thumbnails through the document
    // asks for them: each arrives drawn, and the fonts of the pages drawn do not pile up.
    void drawingEveryThumbnailGivesBackAsItGoes()
    {
        QFile fontFile(QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"));
        if (!fontFile.open(QIODevice::ReadOnly))
            QSKIP("DejaVu Sans is not installed");
        constexpr int Pages = 160;
        QTemporaryDir dir;
        QFile file(dir.filePath(QStringLiteral("fonts.pdf")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(PdfFixtures::ownFontPages(Pages, fontFile.readAll()));
        file.close();
        auto document = std::make_shared<FDDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(file.fileName()), nullptr));
        FDPageThumbnailCache::shared().clear();
        PDFThumbnailModel model;
        model.setPixelLength(96);
        model.setDocument(document);
        QCOMPARE(model.rowCount(), Pages);

        qint64 firstPages = 0;
        qint64 most = 0;
        for (int row = 0; row < Pages; ++row) {
            (void)model.thumbnailForRow(row);
            QTRY_COMPARE_WITH_TIMEOUT(model.pendingCount(), 0, 20000);
            const QImage picture = model.thumbnailForRow(row);
            QVERIFY2(
                TestTools::hasInk(picture), qPrintable(QStringLiteral("page %1").arg(row + 1)));
            if (row < 4)
                firstPages = PDFEngineInfo::heldBytes();
            else
                most = std::max(most, PDFEngineInfo::heldBytes());
        }
        BackgroundQueue::pool().waitForDone();
        // Each font costs its file (740 KB) and its face: all of them kept hold over 120 MB.
        const qint64 growth = most - firstPages;
        QVERIFY2(
            growth < 40LL * 1024 * 1024, qPrintable(QStringLiteral("%1 bytes more").arg(growth)));
    }
};

QTEST_MAIN(PDFThumbnailMemoryTest)
#include "PDFThumbnailMemoryTest.moc"
