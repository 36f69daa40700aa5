#include "support/AppFixtures.h"
#include "support/AppWindow.h"

#include <app/Alert.h>
#include <app/FDFilePanel.h>
#include <app/FDRecentDocuments.h>
#include <app/FDThumbnailCache.h>
#include <app/NewTabContents.h>
#include <app/NewTabDropFileArea.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <document/FDDocument.h>
#include <kit/engine/PDFDocument.h>
#include <kit/tabs/TabStripModel.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QFile>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

class NewTabContentsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppWindow::reset();
        m_window = TabWindowController::create<PDFWindowController>();
        m_window->resize(900, 700);
        m_window->show();
    }

    void cleanup()
    {
        m_window->tabStripModel()->closeAllTabs();
        delete m_window;
    }

    void recentsAreListedNewestFirstWithThumbnailsAndOpen()
    {
        const QString red = m_files.filePath(QStringLiteral("Red Paper.pdf"));
        const QString gone = m_files.filePath(QStringLiteral("gone.pdf"));
        const QString notPDF = m_files.filePath(QStringLiteral("notes.pdf"));
        QVERIFY(AppFixtures::writeColourPDF(red, QColor(220, 20, 20)));
        QFile text(notPDF);
        QVERIFY(text.open(QIODevice::WriteOnly) && text.write("plain words"));
        text.close();
        FDRecentDocuments::noteNewRecentDocumentURL(QUrl::fromLocalFile(gone));
        FDRecentDocuments::noteNewRecentDocumentURL(QUrl::fromLocalFile(notPDF));
        FDRecentDocuments::noteNewRecentDocumentURL(QUrl::fromLocalFile(red));

        NewTabContents *tab = startTab();
        QVERIFY(tab);
        QVERIFY(tab->isShowingRecents());
        QVERIFY(tab->clearButton()->isEnabled());
        const auto &items = tab->recentItems();
        QCOMPARE(items.size(), 3);
        QCOMPARE(items.at(0).title, QStringLiteral("Red Paper"));
        QCOMPARE(items.at(1).title, QStringLiteral("notes"));
        QCOMPARE(items.at(2).title, QStringLiteral("gone"));
        QCOMPARE(tab->recentsCollectionView()->count(), 3);
        // Files that can't give a thumbnail are still listed, by title.
        QVERIFY(items.at(1).thumb.isNull());
        QVERIFY(items.at(2).thumb.isNull());
        const QImage thumb = items.at(0).thumb;
        QVERIFY(!thumb.isNull());
        QVERIFY(thumb.width() <= 140 && thumb.height() <= 180);
        QCOMPARE(thumb.height(), 180); // a 2:3 page fills the height
        const QColor middle = thumb.pixelColor(thumb.width() / 2, thumb.height() / 2);
        QVERIFY2(middle.red() > 180 && middle.green() < 80, qPrintable(middle.name()));
        // The thumbnail was stored for other programs, keyed by URI and modification time.
        const QImage stored(FDThumbnailCache::largeThumbnailPath(QUrl::fromLocalFile(red)));
        QVERIFY(!stored.isNull());
        QCOMPARE(stored.text(QStringLiteral("Thumb::URI")),
            QStringLiteral("file://%1").arg(m_files.path()) + QStringLiteral("/Red%20Paper.pdf"));
        QVERIFY(!stored.text(QStringLiteral("Thumb::MTime")).isEmpty());

        // Choosing a file opens it in place of the start tab.
        QListWidget *grid = tab->recentsCollectionView();
        QTRY_VERIFY(grid->isVisible());
        const QRect cell = grid->visualItemRect(grid->item(0));
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
        TabStripModel *model = m_window->tabStripModel();
        QCOMPARE(model->count(), 1);
        auto *document = qobject_cast<PDFContents *>(model->getSelectedTabContents());
        QVERIFY(document);
        QCOMPARE(document->url(), QUrl::fromLocalFile(red).toString(QUrl::FullyEncoded));
    }

    void aStoredThumbnailIsTakenFromTheCacheUnlessStale()
    {
        const QString path = m_files.filePath(QStringLiteral("cached.pdf"));
        QVERIFY(AppFixtures::writeColourPDF(path, Qt::white));
        const QUrl url = QUrl::fromLocalFile(path);
        QImage made = FDThumbnailCache::thumbnailForURL(url, { 140, 180 });
        QVERIFY(!made.isNull());
        // Another program's thumbnail for the same file and time is used as it is.
        QImage theirs(128, 192, QImage::Format_RGB32);
        theirs.fill(QColor(0, 0, 255));
        const QImage ours(FDThumbnailCache::largeThumbnailPath(url));
        theirs.setText(QStringLiteral("Thumb::URI"), ours.text(QStringLiteral("Thumb::URI")));
        theirs.setText(QStringLiteral("Thumb::MTime"), ours.text(QStringLiteral("Thumb::MTime")));
        QVERIFY(theirs.save(FDThumbnailCache::largeThumbnailPath(url), "png"));
        QCOMPARE(FDThumbnailCache::thumbnailForURL(url, { 140, 180 }).pixelColor(10, 10),
            QColor(0, 0, 255));
        // A stale one (other modification time) is made again from the file.
        theirs.setText(QStringLiteral("Thumb::MTime"), QStringLiteral("12"));
        QVERIFY(theirs.save(FDThumbnailCache::largeThumbnailPath(url), "png"));
        QCOMPARE(FDThumbnailCache::thumbnailForURL(url, { 140, 180 }).pixelColor(10, 10),
            QColor(Qt::white));

        // A turned page gives a landscape thumbnail.
        const QUrl turned = QUrl::fromLocalFile(m_files.filePath(QStringLiteral("turned.pdf")));
        QVERIFY(AppFixtures::writeColourPDF(turned.toLocalFile(), Qt::gray, { 200, 300 }));
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(turned));
        document->pageAtIndex(0)->setRotation(90);
        QVERIFY(document->writeToURL(turned));
        QCOMPARE(FDThumbnailCache::thumbnailForURL(turned, { 140, 180 }).size(), QSize(140, 93));
    }

    void clearingSlidesAwayAndShowsTheDropArea()
    {
        const QString path = m_files.filePath(QStringLiteral("a.pdf"));
        QVERIFY(AppFixtures::writeColourPDF(path, Qt::green));
        FDRecentDocuments::noteNewRecentDocumentURL(QUrl::fromLocalFile(path));
        NewTabContents *tab = startTab();
        QVERIFY(tab && tab->isShowingRecents());
        QSignalSpy rebuilt(tab, &NewTabContents::viewRebuilt);
        QTest::mouseClick(tab->clearButton(), Qt::LeftButton);
        QVERIFY(FDRecentDocuments::recentDocumentURLs().isEmpty());
        // While it plays the grid is still there, on its way out.
        QVERIFY(tab->isShowingRecents());
        QVERIFY(rebuilt.wait(3000));
        QVERIFY(!tab->isShowingRecents());
        QVERIFY(tab->dragAndDropView()->isVisible());
        QVERIFY(!tab->clearButton()->isEnabled());
        NewTabContents *next = startTab();
        QVERIFY(next && !next->isShowingRecents());
    }

    void dropAreaDrawsInEveryTheme()
    {
        for (const auto &[theme, innerLevel] :
            { std::pair { FDTheme::blue, 0.85 }, std::pair { FDTheme::night, 0.15 } }) {
            FDThemeProvider::setCurrent(FDThemeProvider::themeFor(theme));
            NewTabDropFileArea area;
            area.resize(700, 500);
            const QImage image = area.grab().toImage();
            // Inside the smallest circle, away from the text: grey of the level, 0.9 over the
            // window.
            const QColor inner = image.pixelColor(350, 250 - 80);
            QVERIFY2(qAbs(inner.redF() - innerLevel) < 0.08, qPrintable(inner.name()));
        }
    }

    void compressReplacesTheStartTab()
    {
        NewTabContents *tab = startTab();
        QVERIFY(tab);
        const int count = m_window->tabStripModel()->count();
        QTest::mouseClick(tab->compressButton(), Qt::LeftButton);
        QCOMPARE(m_window->tabStripModel()->count(), count);
        TabContents *compress = m_window->tabStripModel()->getSelectedTabContents();
        QCOMPARE(compress->title(), QStringLiteral("Compress"));
        // From a tab that is no start tab, a compression tab is added.
        m_window->openCompressTab();
        QCOMPARE(m_window->tabStripModel()->count(), count + 1);
    }

    void mergeAndConvertOpenANewDocumentOfTheFilesPages_data()
    {
        // Files: "N.pdf" a PDF of N pages whose text names the file and page, "x.png" a picture,
        // "bad.png" bytes of no picture. Pages: the text of each page, "picture" for one without.
        QTest::addColumn<bool>("convert");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QStringList>("pages");
        QTest::addColumn<bool>("alert");
        QTest::newRow("merge keeps the files' order")
            << false << QStringList { "2.pdf", "1.pdf" } << QStringList { "2p1", "2p2", "1p1" }
            << false;
        QTest::newRow("convert makes a page of each picture")
            << true << QStringList { "x.png", "bad.png", "y.png" }
            << QStringList { "picture", "picture" } << false;
        QTest::newRow("nothing readable says so")
            << true << QStringList { "bad.png" } << QStringList() << true;
    }

    void mergeAndConvertOpenANewDocumentOfTheFilesPages()
    {
        QFETCH(bool, convert);
        QFETCH(QStringList, files);
        QFETCH(QStringList, pages);
        QFETCH(bool, alert);
        QList<QUrl> urls;
        for (const QString &name : files) {
            const QString path = m_files.filePath(name);
            const int count = name.section(QLatin1Char('.'), 0, 0).toInt();
            if (name.endsWith(QLatin1String(".pdf"))) {
                PdfFixtures::Document document;
                for (int page = 1; page <= count; ++page) {
                    document.pages.append(PdfFixtures::Page());
                    document.pages.last().lines
                        = QStringList { QStringLiteral("%1p%2").arg(count).arg(page) };
                }
                QVERIFY(PdfFixtures::write(document, path));
            } else if (name == QLatin1String("bad.png")) {
                QFile file(path);
                QVERIFY(file.open(QIODevice::WriteOnly));
                file.write("no picture");
            } else {
                QImage image(40, 30, QImage::Format_RGB32);
                image.fill(Qt::red);
                QVERIFY(image.save(path));
            }
            urls << QUrl::fromLocalFile(path);
        }
        FilePanelRequest asked;
        FDFilePanel::setURLsHandlerForTesting([&](const FilePanelRequest &request) {
            asked = request;
            return urls;
        });
        QStringList alerts;
        Alert::setHandlerForTesting([&](const AlertRequest &request) {
            alerts << request.messageText;
            return int(Alert::FirstButtonReturn);
        });
        NewTabContents *tab = startTab();
        QVERIFY(tab);
        QTest::mouseClick(convert ? tab->convertButton() : tab->mergeButton(), Qt::LeftButton);
        FDFilePanel::setURLsHandlerForTesting({});
        QVERIFY(asked.allowsMultipleSelection);
        QCOMPARE(asked.allowedFileTypes.first(),
            convert ? QStringLiteral("png") : QStringLiteral("pdf"));

        auto *const made
            = qobject_cast<PDFContents *>(m_window->tabStripModel()->getSelectedTabContents());
        QVERIFY(made);
        QCOMPARE(m_window->tabStripModel()->count(), 1);
        QTRY_VERIFY(made->primaryPDFView()->fdDocument());
        const auto document = made->primaryPDFView()->fdDocument();
        QTRY_COMPARE(document->pageCount(), int(pages.size()));
        QTRY_COMPARE(alerts.size(), alert ? 1 : 0);
        QVERIFY(made->isPagesEditingMode());
        QVERIFY(document->fileURL().isEmpty());
        QStringList texts;
        for (int index = 0; index < document->pageCount(); ++index) {
            const QString text = document->pageAtIndex(index)->string().trimmed();
            texts << (text.isEmpty() ? QStringLiteral("picture") : text);
        }
        QCOMPARE(texts, pages);
        AppWindow::answerAlertsWithTheSecondButton();
        document->setNumberOfChanges(0);
    }

private:
    NewTabContents *startTab();
    QTemporaryDir m_files;
    PDFWindowController *m_window = nullptr;
};

NewTabContents *NewTabContentsTest::startTab()
{
    m_window->openNewTab();
    auto *tab = qobject_cast<NewTabContents *>(m_window->tabStripModel()->getSelectedTabContents());
    return tab && tab->view() ? tab : nullptr;
}

FOLIDOC_APP_TEST_MAIN(NewTabContentsTest)

#include "NewTabContentsTest.moc"
