// Damaged and lying files in a real tab: the thumbnails, the outline, a search and every page
// operation of the pages editor finish in bounded time and memory, and what they save passes an
// independent check (qpdf) with the pages the reader saw.

#include "support/SidebarFixture.h"

#include <app/Alert.h>
#include <app/FDFilePanel.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFWorkLimits.h>
#include <kit/engine/support/RawPdf.h>
#include <navigation/FDPageThumbnailCache.h>
#include <navigation/PDFOutlineModel.h>
#include <navigation/PDFSidebarContainer.h>
#include <navigation/PDFSidebarController.h>
#include <navigation/PDFSidebarOutlineContents.h>
#include <navigation/PDFSidebarThumbContents.h>
#include <navigation/PDFThumbnailModel.h>
#include <navigation/PDFViewSearcher.h>
#include <pages/PDFCollectionView.h>
#include <pages/PDFPagesEditor.h>
#include <support/TestTools.h>
#include <view/FDPDFView.h>

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

using namespace SidebarFixture;

namespace {

using Objects = QList<QByteArray>;

// Pages "One" (object 3) and "Two" (object 5) under the root (object 2), whose dictionary is
// given; the catalog names outline when it is not empty; extra objects follow from number 7.
QByteArray twoPages(const QByteArray &root, const QByteArray &outline = {}, Objects extra = {})
{
    Objects objects { "<< /Type /Catalog /Pages 2 0 R " + outline + " >>", root, RawPdf::page(2, 4),
        RawPdf::textContent("One"), RawPdf::page(2, 6), RawPdf::textContent("Two") };
    objects += extra;
    return RawPdf::build(objects);
}

// "One", a page of the given content, "Two".
QByteArray around(const QByteArray &content)
{
    return RawPdf::pagesAround(content, "One", "Two");
}

// Each page of a file as its first word and rotation, "One/90"; the error when it does not open.
QStringList pagesOf(const QString &path)
{
    const auto document = std::make_shared<PDFDocument>();
    if (!document->initWithURL(QUrl::fromLocalFile(path)))
        return { document->errorString() };
    QStringList pages;
    for (int index = 0; index < document->pageCount(); ++index) {
        const auto page = document->pageAtIndex(index);
        pages << page->string().simplified().section(QLatin1Char(' '), 0, 0) + QLatin1Char('/')
                + QString::number(page->rotation());
    }
    return pages;
}

} // namespace

class HostileTabTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void init()
    {
        AppWindow::reset();
        FDPageThumbnailCache::shared().clear();
        Alert::setHandlerForTesting(
            [](const AlertRequest &) { return int(Alert::FirstButtonReturn); });
        m_window = makeWindow();
    }
    void cleanup()
    {
        closeWindow(m_window);
        AppWindow::answerAlertsWithTheSecondButton();
        FDFilePanel::setHandlerForTesting({});
        PDFWorkLimits::setCurrent(PDFWorkLimits());
    }

    void everyPartOfTheTabCopes_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("pages"); // first words, as shown
        QTest::addColumn<int>("outlineRows");
        QTest::addColumn<int>("hitsOfTwo");
        const QByteArray outlines = "/Outlines 7 0 R";
        QTest::newRow("kids loop back to the root, outline items loop") << twoPages(
            "<< /Type /Pages /Kids [3 0 R 5 0 R 2 0 R] /Count 3 >>", outlines,
            { "<< /Type /Outlines /First 8 0 R /Last 9 0 R /Count 2 >>",
                "<< /Title (A) /Parent 7 0 R /Next 9 0 R /First 8 0 R /Last 8 0 R "
                "/Count 1 /Dest [3 0 R /Fit] >>",
                "<< /Title (B) /Parent 7 0 R /Prev 8 0 R /Next 8 0 R /Dest [5 0 R /Fit] "
                ">>" }) << QStringList { "One", "Two" } << 2 << 1;
        QTest::newRow("root claims 9,999,999,999 pages")
            << twoPages("<< /Type /Pages /Kids [3 0 R 5 0 R] /Count 9999999999 >>")
            << QStringList { "One", "Two" } << 0 << 1;
        QByteArray thin = RawPdf::page(2, 4);
        QByteArray empty = RawPdf::page(2, 6);
        thin.replace("[0 0 612 792]", "[0 0 1 14400]");
        empty.replace("[0 0 612 792]", "[0 0 0 0]");
        QTest::newRow("pages of 1 by 14,400 points and of no size")
            << RawPdf::build({ "<< /Type /Catalog /Pages 2 0 R >>",
                   "<< /Type /Pages /Kids [3 0 R 5 0 R] /Count 2 >>", thin,
                   RawPdf::textContent("One"), empty, RawPdf::textContent("Two") })
            << QStringList { "One", "Two" } << 0 << 1;
        QTest::newRow("outline points at a page of another tree")
            << twoPages("<< /Type /Pages /Kids [3 0 R 5 0 R] /Count 2 >>", outlines,
                   { "<< /Type /Outlines /First 8 0 R /Last 8 0 R /Count 1 >>",
                       "<< /Title (C) /Parent 7 0 R /Dest [9 0 R /Fit] >>",
                       "<< /Type /Page /MediaBox [0 0 10 10] >>" })
            << QStringList { "One", "Two" } << 1 << 1;
        // Beyond the content limit set below, and small enough for qpdf to check in time.
        QTest::newRow("decompression bomb between two pages")
            << around(RawPdf::inflatingStream(QByteArray(1 << 20, '\0'), 160))
            << QStringList { "One", "", "Two" } << 0 << 1;
        QTest::newRow("a page of 100,000 hits")
            << around(RawPdf::inflatingStream(
                   "BT /F1 1 Tf (" + QByteArray("Two ").repeated(1000) + ") Tj ET\n", 100))
            << QStringList { "One", "Two", "Two" } << 0 << 100001;
    }

    void everyPartOfTheTabCopes()
    {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, pages);
        QFETCH(int, outlineRows);
        QFETCH(int, hitsOfTwo);
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        // Tight enough that a hostile page is given up within the test's time.
        PDFWorkLimits limits;
        limits.contentBytes = qint64(64) << 20;
        limits.milliseconds = 5000;
        PDFWorkLimits::setCurrent(limits);
        const QString path = m_dir.filePath(QStringLiteral("hostile-%1.pdf").arg(m_serial));
        const QString extracted = m_dir.filePath(QStringLiteral("extract-%1.pdf").arg(m_serial++));
        {
            QFile out(path);
            QVERIFY(out.open(QIODevice::WriteOnly) && out.write(file) == file.size());
        }
        TestTools::resetPeakResident();
        const qint64 peakBefore = TestTools::peakResident();
        QElapsedTimer clock;
        clock.start();

        PDFContents *const tab = openTab(m_window, QUrl::fromLocalFile(path));
        QVERIFY(tab);
        const auto document = tab->primaryPDFView()->fdDocument();
        QCOMPARE(document->pageCount(), pages.size());

        // Every thumbnail is drawn or given up.
        PDFSidebarController *const sidebar = tab->sidebarContainer()->controller();
        tab->setSidebarMode(PDFSidebarMode::thumbnails);
        auto *const thumbnails = qobject_cast<PDFSidebarThumbContents *>(
            sidebar->controller(PDFSidebarMode::thumbnails));
        QTRY_VERIFY(thumbnails->isVisible());
        QCOMPARE(thumbnails->model()->rowCount(), pages.size());
        QTRY_COMPARE_WITH_TIMEOUT(thumbnails->model()->pendingCount(), 0, 30000);
        tab->setSidebarMode(PDFSidebarMode::toc);
        auto *const outline
            = qobject_cast<PDFSidebarOutlineContents *>(sidebar->controller(PDFSidebarMode::toc));
        QCOMPARE(outline->model()->rowCount(), outlineRows);
        for (int row = 0; row < outlineRows; ++row)
            outline->model()->index(row, 0).data();

        // A search runs to its end over every page.
        tab->setQueryString(QStringLiteral("Two"));
        QTRY_VERIFY_WITH_TIMEOUT(!tab->primarySearcher()->isSearching(), 30000);
        QCOMPARE(tab->primarySearcher()->realMatchedCount(), hitsOfTwo);
        tab->setQueryString(QString());

        // Each operation of the pages editor: rotate, copy and paste, extract, delete.
        tab->setIsPagesEditingMode(true);
        PDFPagesEditor *const editor = tab->container()->pagesEditorController();
        PDFCollectionView *const grid = editor->collectionView();
        QTRY_VERIFY(grid->isVisible());
        grid->selectAll();
        editor->rotateSelection(90);
        editor->copySelection();
        editor->paste();
        FDFilePanel::setHandlerForTesting(
            [&](const FilePanelRequest &) { return QUrl::fromLocalFile(extracted); });
        grid->selectAll();
        editor->extractSelection();
        grid->selectRows({ 0 });
        editor->deleteSelection();
        // The editor saves on the turn after an edit.
        QTRY_COMPARE(document->numberOfChanges(), 0);
        QVERIFY(waitForSaves());
        QVERIFY2(clock.elapsed() < 120000, qPrintable(QString::number(clock.elapsed())));
        const qint64 grown = TestTools::peakResident() - peakBefore;
        QVERIFY2(grown < (qint64(768) << 20), qPrintable(QString::number(grown >> 20) + " MB"));

        QStringList turned;
        for (const QString &page : pages)
            turned << page + QStringLiteral("/90");
        const QStringList edited = (turned + turned).mid(1);
        QCOMPARE(pagesOf(path), edited);
        QCOMPARE(pagesOf(extracted), turned + turned);
        for (const QString &saved : { path, extracted }) {
            const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), saved });
            QVERIFY2(check.exitCode == 0, check.out.right(400) + check.err.right(400));
        }
    }

private:
    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    int m_serial = 0;
};

FOLIDOC_APP_TEST_MAIN(HostileTabTest)

#include "HostileTabTest.moc"
