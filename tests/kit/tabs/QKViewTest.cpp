// The view helpers as the application's views use them: filling subviews and the view life
// cycle.

#include <kit/base/NotificationCenter.h>
#include <kit/tabs/QKSubview.h>
#include <kit/tabs/QKThemeProvider.h>
#include <kit/tabs/QKView.h>

#include <QPointer>
#include <QTest>

namespace {

class LifeCycleView : public QKView
{
public:
    QStringList calls;

protected:
    void onViewInit() override { calls << "init"; }
    void onViewWillShow() override { calls << "show"; }
    void onViewWillHide() override { calls << "hide"; }
    void onThemeChanged(const Notification &notification) override
    {
        calls << "theme " + notification.name;
    }
};

} // namespace

class QKViewTest : public QObject
{
    Q_OBJECT

private slots:
    void addedSubviewKeepsFillingItsParent_data()
    {
        QTest::addColumn<double>("horizontal");
        QTest::addColumn<double>("vertical");
        QTest::newRow("no padding") << 0.0 << 0.0;
        QTest::newRow("padding") << 5.0 << 8.0;
    }
    void addedSubviewKeepsFillingItsParent()
    {
        QFETCH(double, horizontal);
        QFETCH(double, vertical);
        QWidget parent;
        parent.resize(200, 100);
        parent.show();
        auto *child = new QWidget;
        QPointer<QWidget> grandchild = new QWidget(child);
        qk_addSubview(&parent, child, horizontal, vertical, QKWindowOrderingMode::Above, nullptr);
        // Adding it again refits it and leaves its own children alone.
        qk_addSubview(&parent, child, horizontal, vertical, QKWindowOrderingMode::Above, nullptr);
        QVERIFY(grandchild);
        const int h = int(horizontal), v = int(vertical);
        QCOMPARE(child->parentWidget(), &parent);
        QCOMPARE(child->geometry(), QRect(h, v, 200 - 2 * h, 100 - 2 * v));
        parent.resize(300, 250);
        QCOMPARE(child->geometry(), QRect(h, v, 300 - 2 * h, 250 - 2 * v));

        // Once moved to another parent it no longer follows the first.
        QWidget other;
        child->setParent(&other);
        parent.resize(120, 90);
        QCOMPARE(child->geometry(), QRect(h, v, 300 - 2 * h, 250 - 2 * v));
    }

    void subviewIsOrderedAboveOrBelowItsSiblings()
    {
        QWidget parent;
        auto *a = new QWidget(&parent);
        auto *b = new QWidget(&parent);
        auto *c = new QWidget;
        qk_addSubview(&parent, c);
        QCOMPARE(parent.children().last(), c);
        auto *d = new QWidget;
        qk_addSubview(&parent, d, 0, 0, QKWindowOrderingMode::Below, nullptr);
        QCOMPARE(parent.children().first(), d);
        auto *e = new QWidget;
        qk_addSubview(&parent, e, 0, 0, QKWindowOrderingMode::Above, a);
        QCOMPARE(parent.children().indexOf(e), parent.children().indexOf(a) + 1);
        auto *f = new QWidget;
        qk_addSubview(&parent, f, 0, 0, QKWindowOrderingMode::Below, b);
        QCOMPARE(parent.children().indexOf(f), parent.children().indexOf(b) - 1);
    }

    void viewLifeCycleRunsInOrder()
    {
        LifeCycleView view;
        view.show();
        view.hide();
        view.show();
        QKThemeProvider::sharedInstance().setCurrent(QKThemeProvider::sharedInstance().night());
        QKThemeProvider::sharedInstance().setCurrent(QKThemeProvider::sharedInstance().day());
        const QString theme = "theme " + QKThemeProvider::QKThemeDidChangeNotification;
        QCOMPARE(view.calls, QStringList({ "init", "show", "hide", "show", theme, theme }));
    }
};

QTEST_MAIN(QKViewTest)
#include "QKViewTest.moc"
