// Tabs dragged as in a browser, driven by mouse events under the offscreen platform: along the
// strip, out of the window into a new one, into another window, and more tabs than fit.

#include <kit/tabs/TabContents.h>
#include <kit/tabs/TabStripModel.h>
#include <kit/tabs/TabStripView.h>
#include <kit/tabs/TabWindowController.h>

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QTest>

namespace {

class Page : public TabContents
{
public:
    explicit Page(const QString &title) { setTitle(title); }

protected:
    std::unique_ptr<QWidget> loadView() override { return std::make_unique<QLabel>(title()); }
};

class Window : public TabWindowController
{
public:
    TabWindowController *createWindowForDetachedTab() override
    {
        return TabWindowController::create<Window>();
    }
};

QStringList titlesOf(TabWindowController *window)
{
    QStringList titles;
    TabStripModel *model = window->tabStripModel();
    for (int i = 0; i < model->count(); ++i)
        titles << model->getTabContentsAtIndex(i)->title();
    return titles;
}

void sendMouse(QWidget *widget, QEvent::Type type, QPoint global, Qt::MouseButtons buttons)
{
    const QPointF local = widget->mapFromGlobal(QPointF(global));
    QMouseEvent event(type, local, QPointF(global),
        type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

// Presses on tab index of the window's strip, moves the pointer in steps to global, lets go.
void dragTab(TabWindowController *window, int index, QPoint global)
{
    TabStripView *strip = window->tabStripView();
    const QPoint start = strip->mapToGlobal(strip->tabRectAt(index).center());
    sendMouse(strip, QEvent::MouseButtonPress, start, Qt::LeftButton);
    for (int step = 1; step <= 8; ++step)
        sendMouse(strip, QEvent::MouseMove, start + (global - start) * step / 8, Qt::LeftButton);
    sendMouse(strip, QEvent::MouseButtonRelease, global, Qt::NoButton);
}

} // namespace

class TabDragTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        for (TabWindowController *window : TabWindowController::allControllers()) {
            window->tabStripModel()->closeAllTabs();
            delete window;
        }
    }

    void draggedAlongTheStripTheTabMovesAndStaysSelected()
    {
        Window *w = makeWindow({ "a", "b", "c" }, QPoint(0, 0));
        w->tabStripModel()->selectTabContentsAt(0, true);
        TabStripView *strip = w->tabStripView();
        dragTab(w, 0, strip->mapToGlobal(strip->tabRectAt(2).center()));
        QCOMPARE(titlesOf(w), QStringList({ "b", "c", "a" }));
        QCOMPARE(w->tabStripModel()->selectedIndex(), 2);
    }

    void draggedOutOfTheWindowTheTabMakesANewWindow()
    {
        Window *w = makeWindow({ "a", "b", "c" }, QPoint(50, 50));
        TabContents *b = w->tabStripModel()->getTabContentsAtIndex(1);
        const QPoint away = w->frameGeometry().bottomLeft() + QPoint(300, 150);
        dragTab(w, 1, away);
        QCOMPARE(titlesOf(w), QStringList({ "a", "c" }));
        QCOMPARE(TabWindowController::allControllers().size(), 2);
        TabWindowController *made = TabWindowController::allControllers().last();
        QVERIFY(made->isVisible());
        // The same tab, not a copy, now shown in the new window near where it was let go.
        QCOMPARE(made->tabStripModel()->getTabContentsAtIndex(0), b);
        QCOMPARE(made->tabStripModel()->selectedIndex(), 0);
        QVERIFY(made->isAncestorOf(b->view()));
        QVERIFY((made->geometry().topLeft() - away).manhattanLength() < 120);
        QCOMPARE(made->size(), w->size());
    }

    void droppedOnAnotherWindowTheTabMovesThere_data()
    {
        QTest::addColumn<int>("gap"); // where in the other strip: before tab gap
        QTest::addColumn<QStringList>("after");
        QTest::newRow("before the first tab") << 0 << QStringList({ "b", "x", "y" });
        QTest::newRow("between") << 1 << QStringList({ "x", "b", "y" });
        QTest::newRow("after the last") << 2 << QStringList({ "x", "y", "b" });
    }

    void droppedOnAnotherWindowTheTabMovesThere()
    {
        QFETCH(int, gap);
        QFETCH(QStringList, after);
        Window *from = makeWindow({ "a", "b" }, QPoint(0, 0));
        Window *to = makeWindow({ "x", "y" }, QPoint(0, 800));
        TabContents *b = from->tabStripModel()->getTabContentsAtIndex(1);
        TabStripView *target = to->tabStripView();
        const QRect first = target->tabRectAt(0);
        const QPoint spot(first.left() + gap * first.width() + 3, first.center().y());
        dragTab(from, 1, target->mapToGlobal(spot));
        QCOMPARE(titlesOf(to), after);
        QCOMPARE(titlesOf(from), QStringList({ "a" }));
        QCOMPARE(TabWindowController::allControllers().size(), 2);
        QCOMPARE(to->tabStripModel()->getSelectedTabContents(), b);
        QVERIFY(to->isAncestorOf(b->view()));
        QVERIFY(b->view()->isVisible());
    }

    void aWindowsLastTabMovedAwayClosesTheWindow()
    {
        QPointer<Window> from = makeWindow({ "only" }, QPoint(0, 0));
        Window *to = makeWindow({ "x" }, QPoint(0, 800));
        TabContents *only = from->tabStripModel()->getTabContentsAtIndex(0);
        dragTab(from, 0, to->tabStripView()->mapToGlobal(to->tabStripView()->rect().center()));
        QTRY_VERIFY(!from);
        QCOMPARE(TabWindowController::allControllers(), QList<TabWindowController *>({ to }));
        QVERIFY(to->tabStripModel()->getIndexOfTabContents(only) >= 0);
    }

    void letGoNearTheStripTheTabStays()
    {
        Window *w = makeWindow({ "a", "b" }, QPoint(0, 0));
        TabStripView *strip = w->tabStripView();
        dragTab(w, 0,
            strip->mapToGlobal(QPoint(strip->tabRectAt(0).center().x(), strip->height() + 10)));
        QCOMPARE(titlesOf(w), QStringList({ "a", "b" }));
        // Let go over its own window's page: nothing moves either.
        dragTab(
            w, 0, strip->mapToGlobal(QPoint(strip->tabRectAt(0).center().x(), w->height() / 2)));
        QCOMPARE(titlesOf(w), QStringList({ "a", "b" }));
        QCOMPARE(TabWindowController::allControllers().size(), 1);
    }

    void manyTabsKeepAMinimumWidthAndScroll()
    {
        QStringList titles;
        for (int i = 0; i < 40; ++i)
            titles << QString::number(i);
        Window *w = makeWindow(titles, QPoint(0, 0));
        TabStripView *strip = w->tabStripView();
        TabStripModel *model = w->tabStripModel();
        // The last tab opened is selected and scrolled into sight, at a readable width.
        QCOMPARE(model->selectedIndex(), 39);
        QVERIFY(strip->tabRectAt(39).width() >= 72);
        QVERIFY(strip->scrollOffset() > 0);
        QVERIFY(strip->tabRectAt(39).right() <= strip->newTabButtonRect().left());
        QCOMPARE(strip->tabIndexAt(strip->tabRectAt(39).center()), 39);
        // Tabs scrolled away are not under the pointer, and the new-tab button stays in sight.
        QVERIFY(strip->tabRectAt(0).right() < 0);
        QVERIFY(strip->rect().contains(strip->newTabButtonRect()));

        // The wheel scrolls back to the first tab, and a click there selects it.
        for (int i = 0; i < 80; ++i) {
            QWheelEvent wheel(QPointF(100, 10), strip->mapToGlobal(QPointF(100, 10)), QPoint(),
                QPoint(0, 120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
            QApplication::sendEvent(strip, &wheel);
        }
        QCOMPARE(strip->scrollOffset(), 0.0);
        QTest::mouseClick(strip, Qt::LeftButton, {}, strip->tabRectAt(0).center());
        QCOMPARE(model->selectedIndex(), 0);
        // Selecting by keyboard brings the tab back into sight.
        model->selectLastTab();
        QVERIFY(strip->tabRectAt(39).left() >= 0);
        QVERIFY(strip->tabRectAt(39).right() <= strip->newTabButtonRect().left());
    }

private:
    Window *makeWindow(const QStringList &titles, QPoint at)
    {
        auto *window = TabWindowController::create<Window>();
        window->resize(640, 400);
        window->move(at);
        for (const QString &title : titles)
            window->tabStripModel()->appendTabContents(std::make_unique<Page>(title), true);
        window->show();
        if (!QTest::qWaitForWindowExposed(window))
            qWarning("window not exposed");
        return window;
    }
};

QTEST_MAIN(TabDragTest)
#include "TabDragTest.moc"
