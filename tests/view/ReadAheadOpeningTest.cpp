// A view whose file is being read ahead at start-up opens it from that reading, at the page its
// link asked for, and a view closed while it waited leaves nothing behind to call it.

#include "app/support/AppWindow.h"

#include <document/PDFSavingService.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFDocumentPrefetch.h>
#include <kit/engine/PDFPage.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QTemporaryDir>
#include <QtTest>

class ReadAheadOpeningTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        AppWindow::reset();
    }
    void cleanup() { QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0); }

    // The first page of a file read ahead is FDPDFViewTest's.
    void opensWhatWasReadAtTheAskedPage_data()
    {
        QTest::addColumn<int>("pages");
        QTest::addColumn<int>("expectedPage");
        QTest::newRow("page fragment") << 6 << 4;
        // Long enough for the page list to be walked as pages are asked for.
        QTest::newRow("far page of a long file") << 700 << 650;
    }
    void opensWhatWasReadAtTheAskedPage()
    {
        QFETCH(int, pages);
        QFETCH(int, expectedPage);
        const QString path
            = m_dir.filePath(QStringLiteral("ahead-%1.pdf").arg(QTest::currentDataTag()));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(pages, 5, 0), path));
        const PDFDocumentPrefetch prefetch(path);
        FDPDFView view;
        view.resize(600, 500);
        QUrl url = QUrl::fromLocalFile(path);
        url.setFragment(QString::number(expectedPage));
        view.loadDocument(url);
        view.show();
        QTRY_VERIFY(view.document());
        QTRY_VERIFY(!view.isLoading());
        QVERIFY(prefetch.taken());
        QCOMPARE(view.document()->pageCount(), pages);
        QTRY_VERIFY(view.currentPage());
        QTRY_COMPARE(view.document()->indexForPage(view.currentPage()), expectedPage);
        QTRY_VERIFY(view.isVisibleAreaRendered());
        QVERIFY(view.currentPage()->string().contains(
            QStringLiteral("Page %1 line").arg(expectedPage + 1)));
    }

    void viewClosedWhileWaitingIsNotCalled()
    {
        const QString path = m_dir.filePath(QStringLiteral("closed.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(700, 20), path));
        auto prefetch = std::make_unique<PDFDocumentPrefetch>(path);
        auto view = std::make_unique<FDPDFView>();
        view->loadDocument(QUrl::fromLocalFile(path));
        view->show();
        view.reset();
        QVERIFY(!prefetch->taken());
        // The reading ends with the prefetch; whatever it posted finds no view to call.
        prefetch.reset();
        QTest::qWait(50);
        FDPDFView again;
        again.resize(600, 500);
        again.loadDocument(QUrl::fromLocalFile(path));
        again.show();
        QTRY_VERIFY(again.document());
        QCOMPARE(again.document()->pageCount(), 700);
    }

private:
    QTemporaryDir m_dir;
};

FOLIDOC_APP_TEST_MAIN(ReadAheadOpeningTest)

#include "ReadAheadOpeningTest.moc"
