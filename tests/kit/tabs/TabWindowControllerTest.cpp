// The tabbed window as a user drives it under the offscreen platform: the list of windows, the
// strip's mouse and keyboard handling, the window following its tabs, and the remembered frame.

#include <kit/base/Geometry.h>
#include <kit/base/UserDefaults.h>
#include <kit/tabs/ContentsToolbarController.h>
#include <kit/tabs/QKSubview.h>
#include <kit/tabs/QKThemeProvider.h>
#include <kit/tabs/TabContents.h>
#include <kit/tabs/TabStripModel.h>
#include <kit/tabs/TabStripView.h>
#include <kit/tabs/TabWindowController.h>

#include <QLabel>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

namespace {

class Page : public TabContents
{
public:
    explicit Page(const QString &title, bool allowClose = true)
        : m_allowClose(allowClose)
    {
        setTitle(title);
    }
    bool shouldClose() override { return m_allowClose; }
    bool m_allowClose;

protected:
    std::unique_ptr<QWidget> loadView() override { return std::make_unique<QLabel>(title()); }
};

enum class Bar { None, InLayout, PlainChild };

// Records what the window asks of its toolbar, and shows a 40-pixel bar if told to, put into
// the area through its layout or as a plain child.
class RecordingToolbar : public ContentsToolbarController
{
public:
    explicit RecordingToolbar(Bar bar)
        : m_barKind(bar)
    { }
    void updateToolbarWithContents(TabContents *contents, bool shouldRestoreState) override
    {
        calls << QStringLiteral("update %1 %2").arg(contents->title()).arg(shouldRestoreState);
        if (m_barKind == Bar::None)
            return;
        m_bar = std::make_unique<QWidget>();
        m_bar->setFixedHeight(40);
        if (m_barKind == Bar::PlainChild)
            qk_addSubview(view(), m_bar.get());
        else
            setCurrentToolbar(m_bar.get());
    }
    void removeCurrentToolbar() override
    {
        calls << QStringLiteral("remove");
        ContentsToolbarController::removeCurrentToolbar();
        m_bar.reset();
    }
    QStringList calls;

private:
    Bar m_barKind;
    std::unique_ptr<QWidget> m_bar;
};

class Window : public TabWindowController
{
public:
    explicit Window(Bar bar = Bar::None)
        : m_bar(bar)
    { }
    std::unique_ptr<TabContents> createBlankTabContents() override
    {
        return std::make_unique<Page>(QStringLiteral("Blank"));
    }
    std::unique_ptr<ContentsToolbarController> createToolbarController() override
    {
        return std::make_unique<RecordingToolbar>(m_bar);
    }
    RecordingToolbar *toolbar()
    {
        return static_cast<RecordingToolbar *>(contentsToolbarController());
    }

private:
    Bar m_bar;
};

Window *makeWindow(const QStringList &titles, int selected = 0, Bar bar = Bar::None)
{
    auto *window = TabWindowController::create<Window>(bar);
    for (int i = 0; i < titles.size(); ++i)
        window->tabStripModel()->appendTabContents(
            std::make_unique<Page>(titles[i]), i == selected);
    window->show();
    return window;
}

QStringList titlesOf(TabWindowController *window)
{
    QStringList result;
    for (int i = 0; i < window->tabStripModel()->count(); ++i)
        result << window->tabStripModel()->getTabContentsAtIndex(i)->title();
    return result;
}

} // namespace

Q_DECLARE_METATYPE(Bar)

class TabWindowControllerTest : public QObject
{
    Q_OBJECT

    QTemporaryDir configHome;

private slots:
    void initTestCase()
    {
        QVERIFY(configHome.isValid());
        qputenv("XDG_CONFIG_HOME", configHome.path().toLocal8Bit());
    }
    void cleanup()
    {
        const auto windows = TabWindowController::allControllers();
        for (TabWindowController *window : windows) {
            window->tabStripModel()->closeAllTabs();
            window->close();
        }
        QTRY_VERIFY(TabWindowController::allControllers().isEmpty());
        QKThemeProvider::sharedInstance().setCurrent(QKThemeProvider::sharedInstance().day());
    }

    void windowsAreListedInCreationOrderAndFoundFromTheirWidgets()
    {
        Window *a = makeWindow({ "a1", "a2" });
        Window *b = makeWindow({ "b" });
        Window *c = makeWindow({ "c" });
        QCOMPARE(TabWindowController::allControllers(), QList<TabWindowController *>({ a, b, c }));
        QCOMPARE(TabWindowController::main(), c);
        QCOMPARE(
            TabWindowController::fromView(a->tabStripModel()->getTabContentsAtIndex(1)->view()), a);
        QCOMPARE(TabWindowController::fromView(b->tabStripView()), b);
        QLabel stranger;
        QCOMPARE(TabWindowController::fromView(&stranger), nullptr);
        QCOMPARE(TabWindowController::fromView(nullptr), nullptr);

        b->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(b));
        QCOMPARE(TabWindowController::main(), b);
        QCOMPARE(TabWindowController::allControllers(), QList<TabWindowController *>({ a, b, c }));

        b->close();
        QCOMPARE(TabWindowController::allControllers(), QList<TabWindowController *>({ a, c }));
        QVERIFY(TabWindowController::main() != b);
    }

    void selectedTabDecidesContentsToolbarAndTitle()
    {
        Window *w = makeWindow({ "a", "b", "c" }, 1);
        TabStripModel *model = w->tabStripModel();
        QVERIFY(model->getTabContentsAtIndex(1)->view()->isVisible());
        QVERIFY(!model->getTabContentsAtIndex(0)->view()->isVisible());
        QCOMPARE(w->windowTitle(), "b");
        model->getTabContentsAtIndex(2)->setTitle("Background");
        QCOMPARE(w->windowTitle(), "b");
        model->getTabContentsAtIndex(1)->setTitle("* b");
        QCOMPARE(w->windowTitle(), "* b");
        model->selectTabContentsAt(2, true);
        QVERIFY(model->getTabContentsAtIndex(2)->view()->isVisible());
        QVERIFY(!model->getTabContentsAtIndex(1)->view()->isVisible());
        QCOMPARE(w->windowTitle(), "Background");
        QCOMPARE(w->toolbar()->calls, QStringList({ "update b 0", "update Background 1" }));
    }

    void toolbarSitsBetweenStripAndContents_data()
    {
        QTest::addColumn<Bar>("bar");
        QTest::newRow("in the area's layout") << Bar::InLayout;
        QTest::newRow("as a plain child") << Bar::PlainChild;
    }
    void toolbarSitsBetweenStripAndContents()
    {
        QFETCH(Bar, bar);
        Window *w = makeWindow({ "a" }, 0, bar);
        QWidget *view = w->tabStripModel()->getSelectedTabContents()->view();
        const int stripBottom
            = w->tabStripView()->mapTo(w, QPoint(0, w->tabStripView()->height())).y();
        QTRY_COMPARE(view->mapTo(w, QPoint(0, 0)).y(), stripBottom + 40);
    }

    void windowCloseAsksEveryTabAndStopsAtARefusal()
    {
        QPointer<Window> w = makeWindow({ "a", "dirty", "c" });
        auto *dirty = static_cast<Page *>(w->tabStripModel()->getTabContentsAtIndex(1));
        dirty->m_allowClose = false;
        QVERIFY(!w->close());
        QVERIFY(w->isVisible());
        QCOMPARE(titlesOf(w), QStringList({ "a", "dirty", "c" }));

        dirty->m_allowClose = true;
        QPointer<TabContents> a = w->tabStripModel()->getTabContentsAtIndex(0);
        QVERIFY(w->close());
        QTRY_VERIFY(!w);
        QTRY_VERIFY(!a);
    }

    void keyboardSwitchesTabs_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("expected");
        const Qt::KeyboardModifiers ctrl = Qt::ControlModifier;
        const Qt::KeyboardModifiers ctrlShift = Qt::ControlModifier | Qt::ShiftModifier;
        QTest::newRow("Ctrl+Tab") << int(Qt::Key_Tab) << ctrl << 0 << 1;
        QTest::newRow("Ctrl+Tab wraps") << int(Qt::Key_Tab) << ctrl << 2 << 0;
        QTest::newRow("Ctrl+Shift+Tab") << int(Qt::Key_Backtab) << ctrlShift << 1 << 0;
        QTest::newRow("Ctrl+Shift+Tab wraps") << int(Qt::Key_Backtab) << ctrlShift << 0 << 2;
        QTest::newRow("Ctrl+PgDown") << int(Qt::Key_PageDown) << ctrl << 1 << 2;
        QTest::newRow("Ctrl+PgUp wraps") << int(Qt::Key_PageUp) << ctrl << 0 << 2;
    }
    void keyboardSwitchesTabs()
    {
        QFETCH(int, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(int, start);
        QFETCH(int, expected);
        Window *w = makeWindow({ "a", "b", "c" }, start);
        w->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(w));
        QWidget *target = w->tabStripModel()->getSelectedTabContents()->view();
        QTest::keyClick(target, Qt::Key(key), modifiers);
        QCOMPARE(w->tabStripModel()->selectedIndex(), expected);
    }

    void stripMouseSelectsClosesAndOpensTabs()
    {
        QPointer<Window> w = makeWindow({ "a", "b", "c" });
        TabStripView *strip = w->tabStripView();
        TabStripModel *model = w->tabStripModel();
        QTest::mouseClick(strip, Qt::LeftButton, {}, strip->tabRectAt(2).center());
        QCOMPARE(model->selectedIndex(), 2);
        QTest::mouseClick(strip, Qt::MiddleButton, {}, strip->tabRectAt(0).center());
        QCOMPARE(titlesOf(w), QStringList({ "b", "c" }));
        QTest::mouseClick(strip, Qt::LeftButton, {}, strip->newTabButtonRect().center());
        QCOMPARE(titlesOf(w), QStringList({ "b", "c", "Blank" }));
        QCOMPARE(model->selectedIndex(), 2);
        QTest::mouseDClick(
            strip, Qt::LeftButton, {}, QPoint(strip->width() - 8, strip->height() / 2));
        QCOMPARE(titlesOf(w), QStringList({ "b", "c", "Blank", "Blank" }));
        // A press on a close button that is released elsewhere closes nothing.
        QTest::mousePress(strip, Qt::LeftButton, {}, strip->closeButtonRectAt(0).center());
        QTest::mouseRelease(strip, Qt::LeftButton, {}, strip->tabRectAt(1).center());
        QCOMPARE(model->count(), 4);
        // Clicking the last tab's close button closes the window.
        for (int left = 4; left > 0; --left)
            QTest::mouseClick(strip, Qt::LeftButton, {}, strip->closeButtonRectAt(0).center());
        QVERIFY(!w->isVisible());
        QVERIFY(!TabWindowController::allControllers().contains(w.data()));
        QCOMPARE(w->toolbar()->calls.last(), "remove");
        QTRY_VERIFY(!w);
    }

    void stripFollowsTheThemeAtOnce()
    {
        Window *w = makeWindow({ "a" });
        TabStripView *strip = w->tabStripView();
        const QPoint emptySpot(strip->width() - 3, 2);
        QKThemeProvider &provider = QKThemeProvider::sharedInstance();
        const QColor day = strip->grab().toImage().pixelColor(emptySpot);
        QCOMPARE(day, provider.day().color(QKTheme::TabStripBackground));
        provider.setCurrent(provider.night());
        const QColor night = strip->grab().toImage().pixelColor(emptySpot);
        QCOMPARE(night, provider.night().color(QKTheme::TabStripBackground));
        QVERIFY(day != night);
    }

    void windowFrameIsRememberedUnderItsAutosaveName()
    {
        const QRect frame(40, 50, 520, 380);
        Window *first = makeWindow({ "a" });
        first->setWindowFrameAutosaveName("Test");
        // A new name's frame is written a moment later, not while the window is being made.
        QVERIFY(UserDefaults::standard().stringForKey("TabWindowFrame Test").isEmpty());
        QTRY_COMPARE(
            Geometry::rectFromString(UserDefaults::standard().stringForKey("TabWindowFrame Test")),
            QRectF(first->geometry()));
        first->setGeometry(frame);
        QVERIFY(first->close());
        QCOMPARE(
            Geometry::rectFromString(UserDefaults::standard().stringForKey("TabWindowFrame Test")),
            QRectF(frame));

        Window *second = makeWindow({ "b" });
        second->setWindowFrameAutosaveName("Test");
        QCOMPARE(second->geometry(), frame);
        Window *third = makeWindow({ "c" });
        const QRect before = third->geometry();
        third->setWindowFrameAutosaveName("Other");
        QCOMPARE(third->geometry(), before);
    }
};

QTEST_MAIN(TabWindowControllerTest)
#include "TabWindowControllerTest.moc"
