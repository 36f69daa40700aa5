#include "support/AppWindow.h"

#include <app/FDRecentDocuments.h>
#include <app/NewTabContents.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <document/FDDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>
#include <kit/tabs/TabStripModel.h>
#include <kit/tabs/TabStripView.h>
#include <support/PdfFixtures.h>

#include <QAccessible>
#include <QListWidget>
#include <QTemporaryDir>
#include <QtTest>

// What a screen reader reaches through Qt's accessibility interfaces (the same objects its
// AT-SPI bridge serves): the tabs, the reading view's pages and their text, the start tab's list.
class AccessibilityTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        AppWindow::reset();
        m_path = m_dir.filePath(QStringLiteral("standard.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::standard(), m_path));
        m_window = TabWindowController::create<PDFWindowController>();
        m_window->resize(1000, 800);
        m_window->show();
        m_window->openPDFDocumentWithURL(QUrl::fromLocalFile(m_path), true, true);
        m_document
            = qobject_cast<PDFContents *>(m_window->tabStripModel()->getTabContentsAtIndex(0));
        QVERIFY(m_document);
        QTRY_VERIFY(m_document->primaryPDFView()->fdDocument());
        QTRY_VERIFY(!m_document->primaryPDFView()->visiblePages().empty());
    }

    void cleanupTestCase() { m_window->tabStripModel()->closeAllTabs(); }

    void tabsArePageTabsWithCloseButtons()
    {
        m_window->openNewTab();
        QAccessibleInterface *strip
            = QAccessible::queryAccessibleInterface(m_window->tabStripView());
        QVERIFY(strip);
        QCOMPARE(strip->role(), QAccessible::PageTabList);
        // Two tabs and the new-tab button.
        QCOMPARE(strip->childCount(), 3);
        QAccessibleInterface *first = strip->child(0);
        QCOMPARE(first->role(), QAccessible::PageTab);
        QCOMPARE(first->text(QAccessible::Name), QStringLiteral("standard"));
        QCOMPARE(first->parent(), strip);
        QCOMPARE(strip->indexOfChild(first), 0);
        QVERIFY(!first->state().selected);
        QVERIFY(strip->child(1)->state().selected);
        QCOMPARE(strip->child(2)->text(QAccessible::Name), QStringLiteral("New Tab"));
        QVERIFY(first->rect().intersects(strip->rect()));

        // Pressing a tab selects it; its close button closes it.
        first->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(m_window->tabStripModel()->selectedIndex(), 0);
        QVERIFY(first->state().selected);
        QAccessibleInterface *close = strip->child(1)->child(0);
        QCOMPARE(close->role(), QAccessible::Button);
        QCOMPARE(close->text(QAccessible::Name), QStringLiteral("Close Tab"));
        QCOMPARE(strip->childAt(close->rect().center().x(), close->rect().center().y()),
            strip->child(1));
        close->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(m_window->tabStripModel()->count(), 1);
        QCOMPARE(strip->childCount(), 2);
    }

    void pagesOfferTheirText()
    {
        FDPDFView *view = m_document->primaryPDFView();
        QAccessibleInterface *reading = QAccessible::queryAccessibleInterface(view);
        QCOMPARE(reading->role(), QAccessible::Document);
        QCOMPARE(reading->text(QAccessible::Name), QStringLiteral("standard.pdf"));
        QAccessibleInterface *page = pageZero();
        QVERIFY(page);
        QCOMPARE(page->text(QAccessible::Name), QStringLiteral("Page i"));
        QCOMPARE(page->parent(), reading);
        QAccessibleTextInterface *text = page->textInterface();
        QVERIFY(text);
        const QString all = view->document()->pageAtIndex(0)->string();
        QCOMPARE(text->characterCount(), all.size());
        QVERIFY(all.startsWith(QLatin1String("The quick brown fox")));

        // At an offset, by each boundary: the text there and the text after it.
        const QList<std::tuple<int, QAccessible::TextBoundaryType, QString, QString>> cases {
            { 4, QAccessible::CharBoundary, "q", "u" },
            { 6, QAccessible::WordBoundary, "quick", " " },
            { 10, QAccessible::LineBoundary, "The quick brown fox jumps over the lazy dog\n",
                "Alpha beta gamma delta\n" },
        };
        for (const auto &[offset, type, at, after] : cases) {
            int start = -1;
            int end = -1;
            QCOMPARE(text->textAtOffset(offset, type, &start, &end), at);
            QCOMPARE(all.mid(start, end - start), at);
            QCOMPARE(text->textAfterOffset(offset, type, &start, &end), after);
            QCOMPARE(text->textBeforeOffset(start, type, &start, &end), at);
        }

        // Characters sit where the page shows them, and a point finds its character.
        const QRect q = text->characterRect(4);
        QVERIFY(!q.isEmpty());
        QVERIFY(page->rect().contains(q));
        QCOMPARE(text->offsetAtPoint(q.center()), 4);
    }

    void caretAndSelectionFollowTheView()
    {
        FDPDFView *view = m_document->primaryPDFView();
        QAccessibleTextInterface *text = pageZero()->textInterface();
        text->setCursorPosition(10);
        QCOMPARE(text->cursorPosition(), 10);
        text->setSelection(0, 4, 9);
        QVERIFY(view->currentSelection());
        QCOMPARE(view->currentSelection()->string(), QStringLiteral("quick"));
        QCOMPARE(text->selectionCount(), 1);
        int start = -1;
        int end = -1;
        text->selection(0, &start, &end);
        QCOMPARE(start, 4);
        QCOMPARE(end, 9);
        // A selection made in the view shows too, and removing it clears the view's.
        view->setCurrentSelection(view->document()->pageAtIndex(0)->selectionForRange({ 10, 5 }));
        text->selection(0, &start, &end);
        QCOMPARE(text->text(start, end), QStringLiteral("brown"));
        text->removeSelection(0);
        QCOMPARE(text->selectionCount(), 0);
    }

    void startTabListsRecentDocumentsByName()
    {
        FDRecentDocuments::noteNewRecentDocumentURL(QUrl::fromLocalFile(m_path));
        m_window->openNewTab();
        auto *start
            = qobject_cast<NewTabContents *>(m_window->tabStripModel()->getSelectedTabContents());
        QVERIFY(start);
        QTRY_VERIFY(start->recentsCollectionView()->count() > 0);
        QAccessibleInterface *list
            = QAccessible::queryAccessibleInterface(start->recentsCollectionView());
        QCOMPARE(list->role(), QAccessible::List);
        QCOMPARE(list->text(QAccessible::Name), QStringLiteral("Recent Documents"));
        QVERIFY(list->childCount() >= 1);
        QCOMPARE(list->child(0)->role(), QAccessible::ListItem);
        QCOMPARE(list->child(0)->text(QAccessible::Name), QStringLiteral("standard"));
    }

private:
    QAccessibleInterface *pageZero();

    QTemporaryDir m_dir;
    QString m_path;
    PDFWindowController *m_window = nullptr;
    PDFContents *m_document = nullptr;
};

QAccessibleInterface *AccessibilityTest::pageZero()
{
    FDPDFView *view = m_document->primaryPDFView();
    view->goToPage(view->document()->pageAtIndex(0));
    QAccessibleInterface *reading = QAccessible::queryAccessibleInterface(view);
    if (!reading || reading->childCount() < 1)
        return nullptr;
    return reading->child(0);
}

FOLIDOC_APP_TEST_MAIN(AccessibilityTest)

#include "AccessibilityTest.moc"
