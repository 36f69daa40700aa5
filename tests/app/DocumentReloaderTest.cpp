#include "support/AppWindow.h"

#include <app/Alert.h>
#include <app/FDDocumentReloader.h>
#include <document/FDDocument.h>
#include <kit/engine/PDFPage.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

class DocumentReloaderTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppWindow::reset();
        m_asked.clear();
        Alert::setHandlerForTesting([this](const AlertRequest &request) {
            m_asked.append(request);
            return m_answer;
        });
        m_path = m_dir.filePath(QStringLiteral("%1.pdf").arg(QTest::currentTestFunction()));
        QFile::remove(m_path);
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(8, 30, 0), m_path));
    }

    void cleanup()
    {
        m_reloader.reset();
        m_view.reset();
        AppWindow::answerAlertsWithTheSecondButton();
    }

    void changedFileReloadsInPlace_data()
    {
        QTest::addColumn<int>("how");
        QTest::newRow("rewritten in place") << int(Change::inPlace);
        QTest::newRow("replaced atomically") << int(Change::atomicReplace);
        QTest::newRow("removed and written again") << int(Change::removeAndRecreate);
    }

    void changedFileReloadsInPlace()
    {
        QFETCH(int, how);
        open();
        const auto before = m_view->fdDocument();
        change(Change(how), 12);
        QTRY_COMPARE_WITH_TIMEOUT(m_view->document()->pageCount(), 12, 5000);
        QVERIFY(m_view->fdDocument() != before);
        QTRY_COMPARE(currentIndex(), 5);
        QCOMPARE(m_view->scaleFactor(), 1.5);
        QVERIFY(m_asked.isEmpty());

        // The replaced file is watched too: a second change is followed as well.
        change(Change(how), 7);
        QTRY_COMPARE_WITH_TIMEOUT(m_view->document()->pageCount(), 7, 5000);
        QTRY_COMPARE(currentIndex(), 5);
        QCOMPARE(m_reloader->watchedPath(), m_path);
    }

    void unsavedChangesAreNeverOverwrittenWithoutAsking_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<int>("pagesAfter");
        QTest::newRow("keep my version") << int(Alert::FirstButtonReturn) << 8;
        QTest::newRow("reload") << int(Alert::SecondButtonReturn) << 12;
    }

    void unsavedChangesAreNeverOverwrittenWithoutAsking()
    {
        QFETCH(int, answer);
        QFETCH(int, pagesAfter);
        m_answer = answer;
        open();
        const auto mine = m_view->fdDocument();
        mine->setNumberOfAnnotationChanges(1);
        change(Change::atomicReplace, 12);
        QTRY_COMPARE_WITH_TIMEOUT(m_asked.size(), 1, 5000);
        QVERIFY(m_asked.first().messageText.contains(QLatin1String("changed by another program")));
        QTRY_COMPARE(m_view->document()->pageCount(), pagesAfter);
        if (pagesAfter == 8) {
            QCOMPARE(m_view->fdDocument(), mine);
            QVERIFY(mine->numberOfChanges() > 0);
            // The same change is not asked about again; a newer one is.
            QTest::qWait(FDDocumentReloader::settleMs * 3);
            QCOMPARE(m_asked.size(), 1);
            change(Change::inPlace, 9);
            QTRY_COMPARE_WITH_TIMEOUT(m_asked.size(), 2, 5000);
            QCOMPARE(m_view->fdDocument(), mine);
        } else {
            QCOMPARE(m_view->fdDocument()->numberOfChanges(), 0);
            QTRY_COMPARE(currentIndex(), 5);
        }
    }

    void reloadByHandReadsTheFileAgain()
    {
        open();
        const auto before = m_view->fdDocument();
        m_reloader->reloadByHand();
        QVERIFY(m_view->fdDocument() != before);
        QTRY_COMPARE(currentIndex(), 5);
        QCOMPARE(m_view->scaleFactor(), 1.5);
        QVERIFY(m_asked.isEmpty());

        // With unsaved changes it asks, and keeping them keeps the document.
        const auto mine = m_view->fdDocument();
        mine->setNumberOfAnnotationChanges(1);
        m_answer = Alert::FirstButtonReturn;
        m_reloader->reloadByHand();
        QCOMPARE(m_asked.size(), 1);
        QCOMPARE(m_view->fdDocument(), mine);
    }

private:
    enum class Change { inPlace, atomicReplace, removeAndRecreate };
    void change(Change how, int pages);
    // A shown view at page 5 with zoom 1.5 of an eight-page file, and its reloader.
    void open()
    {
        m_view = std::make_unique<FDPDFView>();
        m_view->resize(700, 600);
        m_view->loadDocument(QUrl::fromLocalFile(m_path));
        m_view->show();
        QTRY_VERIFY(!m_view->isLoading());
        m_reloader = std::make_unique<FDDocumentReloader>(m_view.get());
        QCOMPARE(m_reloader->watchedPath(), m_path);
        m_view->setScaleFactor(1.5);
        m_view->goToPage(m_view->document()->pageAtIndex(5));
        QCOMPARE(currentIndex(), 5);
    }
    int currentIndex() const { return m_view->document()->indexForPage(m_view->currentPage()); }

    QTemporaryDir m_dir;
    QString m_path;
    std::unique_ptr<FDPDFView> m_view;
    std::unique_ptr<FDDocumentReloader> m_reloader;
    QList<AlertRequest> m_asked;
    int m_answer = Alert::FirstButtonReturn;
};

void DocumentReloaderTest::change(Change how, int pages)
{
    const QByteArray bytes = PdfFixtures::build(PdfFixtures::textPages(pages, 30, 0));
    if (how == Change::atomicReplace) {
        // As editors and converters save: a new file renamed over the old one.
        const QString temporary = m_path + QStringLiteral(".new");
        QFile file(temporary);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        QVERIFY(::rename(QFile::encodeName(temporary), QFile::encodeName(m_path)) == 0);
        return;
    }
    if (how == Change::removeAndRecreate) {
        QVERIFY(QFile::remove(m_path));
        QTest::qWait(50);
    }
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    // In two parts, as a slow writer would: the reload waits for the writing to settle.
    file.write(bytes.left(bytes.size() / 2));
    file.flush();
    QTest::qWait(20);
    file.write(bytes.mid(bytes.size() / 2));
}

FOLIDOC_APP_TEST_MAIN(DocumentReloaderTest)

#include "DocumentReloaderTest.moc"
