// The main toolbar, the second row and the zoom and layout popovers on a real document tab: what
// the popovers do and how they close, a page that stays put, and Ctrl+F.

#include "app/support/AppWindow.h"

#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <app/PDFWindowMenus.h>
#include <appearance/FDPopoverController.h>
#include <appearance/PDFLayoutPicker.h>
#include <appearance/PDFMainToolbar.h>
#include <appearance/PDFSecondaryToolbar.h>
#include <appearance/PDFZoomPicker.h>
#include <document/FDDocument.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

class ToolbarsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        m_window = AppWindow::makeWindow({ 1000, 700 });
        const QString path = m_dir.filePath(QStringLiteral("bars.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(6, 30, 0), path));
        m_tab = AppWindow::openTab(m_window, QUrl::fromLocalFile(path));
        QVERIFY(m_tab);
        QVERIFY(mainToolbar());
    }

    void cleanup()
    {
        FDPopoverController::shared().hide();
        QVERIFY(AppWindow::closeWindow(m_window));
    }

    void zoomTextTruncates_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<QString>("text");
        QTest::newRow("just under a whole") << 0.995 << "99%";
        QTest::newRow("fraction") << 1.2345 << "123%";
        QTest::newRow("step") << 1.5 << "150%";
    }

    void zoomTextTruncates()
    {
        QFETCH(double, scale);
        QFETCH(QString, text);
        FDPDFView *const view = m_tab->selectedPDFView();
        view->setScaleMode(PDFViewScaleMode::none);
        view->setScaleFactor(scale);
        QTest::mouseClick(mainToolbar()->zoomButton(), Qt::LeftButton);
        PDFZoomPicker &picker = PDFZoomPicker::shared();
        QCOMPARE(picker.zoomTextField()->text(), text);
        const int on = int(std::count_if(picker.stepButtons().cbegin(), picker.stepButtons().cend(),
            [](const QToolButton *button) { return button->isChecked(); }));
        QCOMPARE(on, scale == 1.5 ? 1 : 0);
    }

    void popoverClosesOnEscapeAndRunsItsHookOnce()
    {
        QWidget content;
        int willShow = 0;
        int closed = 0;
        FDPopoverController &popover = FDPopoverController::shared();
        popover.showContent({ &content, [&willShow] { ++willShow; }, [&closed] { ++closed; } },
            mainToolbar()->zoomButton());
        QVERIFY(popover.isVisible());
        QCOMPARE(willShow, 1);
        // It hangs below its button.
        const QPoint buttonBottom = mainToolbar()->zoomButton()->mapToGlobal(
            QPoint(0, mainToolbar()->zoomButton()->height()));
        QVERIFY(popover.geometry().top() >= buttonBottom.y());
        QTest::keyClick(&popover, Qt::Key_Escape);
        QVERIFY(!popover.isVisible());
        QCOMPARE(closed, 1);
        QVERIFY(!popover.contentWidget());
        QVERIFY(content.parent() == nullptr);
        // Another popover opening closes the first one through the same hook.
        popover.showContent(
            { &content, nullptr, [&closed] { ++closed; } }, mainToolbar()->zoomButton());
        QTest::mouseClick(mainToolbar()->layoutButton(), Qt::LeftButton);
        QCOMPARE(closed, 2);
        QCOMPARE(popover.contentWidget(), &PDFLayoutPicker::shared());
    }

    void zoomPopoverZoomsAndFollowsOnlyWhileOpen()
    {
        FDPDFView *const view = m_tab->selectedPDFView();
        QTest::mouseClick(mainToolbar()->zoomButton(), Qt::LeftButton);
        PDFZoomPicker &picker = PDFZoomPicker::shared();
        QTest::mouseClick(picker.stepButtons().at(3), Qt::LeftButton);
        QCOMPARE(view->scaleFactor(), 1.5);
        QVERIFY(picker.stepButtons().at(3)->isChecked());
        QCOMPARE(picker.zoomTextField()->text(), QStringLiteral("150%"));
        QTest::mouseClick(picker.zoomInButton(), Qt::LeftButton);
        QVERIFY(view->scaleFactor() > 1.5);
        QVERIFY(!picker.stepButtons().at(3)->isChecked());
        QTest::mouseClick(picker.zoomFitPageButton(), Qt::LeftButton);
        QCOMPARE(view->scaleMode(), PDFViewScaleMode::fitPage);
        QVERIFY(PDFZoomPicker::isMarked(picker.zoomFitPageIndicatorImgView()));
        QVERIFY(!PDFZoomPicker::isMarked(picker.zoomFitWidthIndicatorImgView()));
        // A zoom from elsewhere shows while open...
        view->setScaleMode(PDFViewScaleMode::none);
        view->setScaleFactor(0.5);
        QCOMPARE(picker.zoomTextField()->text(), QStringLiteral("50%"));
        QTest::keyClick(&FDPopoverController::shared(), Qt::Key_Escape);
        // ...and no longer once closed.
        view->setScaleFactor(2.0);
        QCOMPARE(picker.zoomTextField()->text(), QStringLiteral("50%"));
    }

    void layoutPopoverActsOnBothViewsAndShowsDocumentsOnlyWhenSplit()
    {
        QTest::mouseClick(mainToolbar()->layoutButton(), Qt::LeftButton);
        PDFLayoutPicker &picker = PDFLayoutPicker::shared();
        QVERIFY(picker.lowerSection()->isHidden());
        const int unsplitHeight = picker.totalHeight();
        QTest::mouseClick(picker.twoPagesButton(), Qt::LeftButton);
        QCOMPARE(m_tab->primaryPDFView()->displayMode(), int(PDFView::TwoUpContinuous));
        QCOMPARE(m_tab->secondaryPDFView()->displayMode(), int(PDFView::TwoUpContinuous));
        QVERIFY(picker.twoPagesButton()->isChecked());
        QVERIFY(!picker.singlePageButton()->isChecked());
        QTest::mouseClick(picker.splitVertButton(), Qt::LeftButton);
        QCOMPARE(m_tab->splitMode(), PDFSplitViewMode::vertical);
        QVERIFY(!picker.lowerSection()->isHidden());
        QVERIFY(picker.totalHeight() > unsplitHeight);
        QVERIFY(!picker.imageForLeft().isNull());

        // A document chosen for the right side goes into the view in the right place.
        const QString other = m_dir.filePath(QStringLiteral("other.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(2, 10, 0), other));
        picker.rightDocumentDidChangeWithUrl(QUrl::fromLocalFile(other));
        QTRY_VERIFY(m_tab->secondaryPDFView()->document()
            && m_tab->secondaryPDFView()->document()->pageCount() == 2);
        QTest::mouseClick(picker.swapButton(), Qt::LeftButton);
        QCOMPARE(m_tab->primaryPDFView()->parentWidget(), m_tab->container()->bottomContainer());
        QTest::mouseClick(picker.splitNoneButton(), Qt::LeftButton);
        QCOMPARE(m_tab->splitMode(), PDFSplitViewMode::none);
        QVERIFY(picker.lowerSection()->isHidden());
        QCOMPARE(picker.totalHeight(), unsplitHeight);
    }

    void secondRowLeavesThePageWhereItWas_data()
    {
        QTest::addColumn<int>("scaleMode");
        QTest::newRow("fixed zoom") << int(PDFViewScaleMode::none);
        QTest::newRow("fit width") << int(PDFViewScaleMode::fitWidth);
    }

    void secondRowLeavesThePageWhereItWas()
    {
        QFETCH(int, scaleMode);
        FDPDFView *const view = m_tab->selectedPDFView();
        view->setScaleMode(PDFViewScaleMode(scaleMode));
        if (scaleMode == int(PDFViewScaleMode::none))
            view->setScaleFactor(1.25);
        view->goToPage(view->document()->pageAtIndex(2));
        QCoreApplication::processEvents();
        auto *const row = m_tab->container()->findChild<PDFSecondaryToolbar *>();
        QVERIFY(row);
        for (int round = 0; round < 2; ++round) {
            const auto before = view->currentDestination();
            const bool wasShown = row->isVisible();
            QTest::mouseClick(mainToolbar()->annBarButton(), Qt::LeftButton);
            QTRY_VERIFY(!view->isClipViewFrozen());
            QCOMPARE(row->isVisible(), !wasShown);
            QCOMPARE(row->height(), wasShown ? 0 : PDFSecondaryToolbar::shownHeight);
            const auto after = view->currentDestination();
            QCOMPARE(after->page(), before->page());
            const double moved = QLineF(after->point(), before->point()).length();
            QVERIFY2(moved < 0.5, qPrintable(QStringLiteral("moved by %1").arg(moved)));
        }
    }

    void findKeyFocusesTheSearchFieldAndClearingEndsTheSearch()
    {
        QApplication::setActiveWindow(m_window);
        QLineEdit *const field = mainToolbar()->searchField();
        QCOMPARE(field->accessibleName(), QStringLiteral("Search (Ctrl+F)"));
        field->setText(QStringLiteral("needle"));
        m_tab->selectedPDFView()->setFocus();
        QAction *const find
            = m_window->menus()->actionForCommand(QStringLiteral("performFindPanelAction:"));
        QVERIFY(find);
        find->trigger();
        QTRY_VERIFY(field->hasFocus());
        QCOMPARE(field->selectedText(), QStringLiteral("needle"));
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(m_tab->queryString().value_or(QString()), QStringLiteral("needle"));
        // The field's clear button, made once the field was used, ends the search.
        auto *const clear = field->findChild<QToolButton *>();
        QVERIFY(clear);
        clear->click();
        QVERIFY(field->text().isEmpty());
        QVERIFY(!m_tab->queryString().has_value());
    }

private:
    PDFMainToolbar *mainToolbar() const { return qobject_cast<PDFMainToolbar *>(m_tab->toolbar()); }

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    QPointer<PDFContents> m_tab;
};

FOLIDOC_APP_TEST_MAIN(ToolbarsTest)

#include "ToolbarsTest.moc"
