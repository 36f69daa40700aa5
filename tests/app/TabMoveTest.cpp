#include "support/AppWindow.h"

#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <kit/tabs/TabStripModel.h>
#include <support/PdfFixtures.h>

#include <QTemporaryDir>
#include <QtTest>

// A document tab moved to another window is the same document there, with that window's undo.
class TabMoveTest : public QObject
{
    Q_OBJECT

private slots:
    void movedTabKeepsItsDocumentAndTakesTheNewWindowsUndo()
    {
        AppWindow::reset();
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("moved.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(3, 10, 0), path));
        auto *from = TabWindowController::create<PDFWindowController>();
        from->show();
        from->openPDFDocumentWithURL(QUrl::fromLocalFile(path), true, true);
        from->openNewTab();
        auto *contents
            = qobject_cast<PDFContents *>(from->tabStripModel()->getTabContentsAtIndex(0));
        QVERIFY(contents);
        from->tabStripModel()->selectTabContentsAt(0, true);
        QTRY_VERIFY(contents->primaryPDFView()->fdDocument());
        const auto document = contents->primaryPDFView()->fdDocument();
        document->setNumberOfAnnotationChanges(1);

        auto *to = TabWindowController::create<PDFWindowController>();
        to->show();
        to->adoptTabContents(from->tabStripModel()->detachTabContentsAt(0), 0);
        QCOMPARE(to->tabStripModel()->getTabContentsAtIndex(0), contents);
        QCOMPARE(contents->primaryPDFView()->fdDocument(), document);
        QVERIFY(document->numberOfChanges() > 0);
        QCOMPARE(contents->undoManager(), to->undoManager());
        QVERIFY(to->isAncestorOf(contents->primaryPDFView()));
        QCOMPARE(from->tabStripModel()->count(), 1);
        document->setNumberOfChanges(0);
        to->tabStripModel()->closeAllTabs();
        from->tabStripModel()->closeAllTabs();
    }
};

FOLIDOC_APP_TEST_MAIN(TabMoveTest)

#include "TabMoveTest.moc"
