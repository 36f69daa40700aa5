// The tab strip model as its observers and its owner see it: every change reported in order,
// selection following closes and moves, refusals leaving the tabs alone.

#include <kit/tabs/TabContents.h>
#include <kit/tabs/TabStripModel.h>
#include <kit/tabs/TabStripModelDelegate.h>

#include <QCoreApplication>
#include <QPointer>
#include <QProcess>
#include <QTest>
#include <QUrl>

#include <sys/resource.h>

namespace {

// A tab that records its life into a shared journal.
class RecordingContents : public TabContents
{
public:
    RecordingContents(const QString &name, QStringList *journal, bool allowClose = true)
        : m_journal(journal)
        , m_allowClose(allowClose)
    {
        setTitle(name);
    }

    void tabDidBecomeSelected() override { m_journal->append("didBecomeSelected " + title()); }
    void destroy(TabStripModel *model) override
    {
        m_journal->append(QStringLiteral("destroy %1 %2").arg(title()).arg(model ? "model" : "-"));
    }
    bool shouldClose() override
    {
        m_journal->append("shouldClose " + title());
        return m_allowClose;
    }

private:
    QStringList *m_journal;
    bool m_allowClose;
};

QString nameOf(const TabContents *contents)
{
    return contents ? contents->title() : QStringLiteral("-");
}

// Writes every notification as one line, and checks that the model agrees with what it reports
// and is under its re-entrancy guard while it does.
class RecordingObserver : public TabStripModelObserver
{
public:
    RecordingObserver(TabStripModel *model, QStringList *journal)
        : m_model(model)
        , m_journal(journal)
    { }

    void tabInsertedAt(TabContents *contents, int index, bool foreground) override
    {
        record(at(index) == contents,
            { "insert", nameOf(contents), n(index), foreground ? "fg" : "bg" });
    }
    void tabClosingAt(TabContents *contents, int index) override
    {
        record(at(index) == contents, { "closing", nameOf(contents), n(index) });
    }
    void tabDetachedAt(TabContents *contents, int index) override
    {
        record(
            m_model->getIndexOfTabContents(contents) < 0, { "detach", nameOf(contents), n(index) });
    }
    void tabSelectedAt(
        TabContents *oldContents, TabContents *newContents, int index, bool gesture) override
    {
        record(m_model->selectedIndex() == index && at(index) == newContents,
            { "select", nameOf(oldContents), nameOf(newContents), n(index),
                gesture ? "gesture" : "auto" });
    }
    void tabMoved(TabContents *contents, int from, int to) override
    {
        record(at(to) == contents, { "move", nameOf(contents), n(from), n(to) });
    }
    void tabChangedAt(TabContents *contents, int index, TabChangeType change) override
    {
        record(at(index) == contents,
            { "change", nameOf(contents), n(index),
                change == TabChangeType::Title ? "title" : "url" });
    }
    void tabReplacedAt(TabContents *oldContents, TabContents *newContents, int index) override
    {
        record(at(index) == newContents,
            { "replace", nameOf(oldContents), nameOf(newContents), n(index) });
    }
    void tabStripEmpty() override { record(m_model->isEmpty(), { "empty" }); }

    bool allConsistent = true;

private:
    TabContents *at(int index) const { return m_model->getTabContentsAtIndex(index); }
    static QString n(int number) { return QString::number(number); }
    void record(bool consistent, const QStringList &words)
    {
        allConsistent = allConsistent && consistent && m_model->isNotifying();
        m_journal->append(words.join(' '));
    }

    TabStripModel *m_model;
    QStringList *m_journal;
};

// Closes a tab from inside a selection notification: the fault the model must stop.
class MeddlingObserver : public TabStripModelObserver
{
public:
    explicit MeddlingObserver(TabStripModel *model)
        : m_model(model)
    { }
    void tabSelectedAt(TabContents *, TabContents *, int, bool) override
    {
        m_model->closeTabContentsAtIndex(0, TabStripModel::CloseNone);
    }

private:
    TabStripModel *m_model;
};

class CountingDelegate : public TabStripModelDelegate
{
public:
    explicit CountingDelegate(TabStripModel *model)
        : m_model(model)
    { }
    bool canCloseContentsAt(int index) override
    {
        asked.append(index);
        return m_model->getTabContentsAtIndex(index)->shouldClose();
    }
    QList<int> asked;

private:
    TabStripModel *m_model;
};

} // namespace

class TabStripModelTest : public QObject
{
    Q_OBJECT

private:
    QStringList journal;
    std::unique_ptr<TabStripModel> model;
    std::unique_ptr<RecordingObserver> observer;

    TabContents *add(const QString &name, bool foreground, bool allowClose = true)
    {
        auto contents = std::make_unique<RecordingContents>(name, &journal, allowClose);
        TabContents *raw = contents.get();
        model->appendTabContents(std::move(contents), foreground);
        return raw;
    }
    // A, B, C with B selected, and a clean journal.
    void makeThree()
    {
        add("A", true);
        add("B", true);
        add("C", false);
        journal.clear();
    }
    QStringList titles() const
    {
        QStringList result;
        for (int i = 0; i < model->count(); ++i)
            result << model->getTabContentsAtIndex(i)->title();
        return result;
    }

private slots:
    void init()
    {
        journal.clear();
        model = std::make_unique<TabStripModel>();
        observer = std::make_unique<RecordingObserver>(model.get(), &journal);
        model->addObserver(observer.get());
    }
    void cleanup()
    {
        QVERIFY(observer->allConsistent);
        QVERIFY(!model->isNotifying());
        model->removeObserver(observer.get());
        model.reset();
    }

    void appendReportsInsertionThenSelection()
    {
        // Background tabs alone leave nothing selected.
        add("A", false);
        add("B", false);
        QCOMPARE(model->selectedIndex(), -1);
        QCOMPARE(model->getSelectedTabContents(), nullptr);
        model->selectNextTab();
        add("C", true);
        const QStringList expected { "insert A 0 bg", "insert B 1 bg", "select - A 0 gesture",
            "didBecomeSelected A", "insert C 2 fg", "select A C 2 auto", "didBecomeSelected C" };
        QCOMPARE(journal, expected);
        QCOMPARE(model->selectedIndex(), 2);
        // An insertion before the selection keeps the selected contents.
        journal.clear();
        model->insertTabContentsAt(0, std::make_unique<RecordingContents>("Z", &journal), false);
        QCOMPARE(titles(), QStringList({ "Z", "A", "B", "C" }));
        QCOMPARE(nameOf(model->getSelectedTabContents()), "C");
        QCOMPARE(model->selectedIndex(), 3);
        QCOMPARE(journal, QStringList { "insert Z 0 bg" });
    }

    void selectionByIndexAndWrapping_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("expected");
        QTest::newRow("next") << "next" << 0 << 1;
        QTest::newRow("next wraps to first") << "next" << 2 << 0;
        QTest::newRow("previous") << "previous" << 2 << 1;
        QTest::newRow("previous wraps to last") << "previous" << 0 << 2;
        QTest::newRow("last") << "last" << 0 << 2;
    }
    void selectionByIndexAndWrapping()
    {
        QFETCH(QString, operation);
        QFETCH(int, start);
        QFETCH(int, expected);
        makeThree();
        model->selectTabContentsAt(start, false);
        journal.clear();
        if (operation == "next")
            model->selectNextTab();
        else if (operation == "previous")
            model->selectPreviousTab();
        else
            model->selectLastTab();
        QCOMPARE(model->selectedIndex(), expected);
        const QString from = titles().at(start), to = titles().at(expected);
        QCOMPARE(journal,
            QStringList({ QStringLiteral("select %1 %2 %3 gesture").arg(from, to).arg(expected),
                "didBecomeSelected " + to }));
    }

    void selectByURLComparesAbsoluteStrings()
    {
        makeThree();
        const QUrl url = QUrl::fromLocalFile("/tmp/a folder/Ünïcode file.pdf");
        model->getTabContentsAtIndex(2)->setUrlFromURL(url);
        QCOMPARE(model->getTabContentsAtIndex(2)->url(),
            QStringLiteral("file:///tmp/a%20folder/%C3%9Cn%C3%AFcode%20file.pdf"));
        journal.clear();

        QVERIFY(model->selectTabContentsByURL(url));
        QCOMPARE(model->selectedIndex(), 2);
        QVERIFY(!model->selectTabContentsByURL(QUrl::fromLocalFile("/tmp/a folder/other.pdf")));
        QCOMPARE(model->selectedIndex(), 2);
        QCOMPARE(journal, QStringList({ "select B C 2 gesture", "didBecomeSelected C" }));
    }

    void closingTheSelectedTabSelectsItsNeighbour_data()
    {
        QTest::addColumn<int>("selected");
        QTest::addColumn<int>("closed");
        QTest::addColumn<QStringList>("remaining");
        QTest::addColumn<QString>("selectedAfter");
        QTest::newRow("middle selected: right neighbour")
            << 1 << 1 << QStringList { "A", "C" } << "C";
        QTest::newRow("last selected: left neighbour") << 2 << 2 << QStringList { "A", "B" } << "B";
        QTest::newRow("first selected: right neighbour")
            << 0 << 0 << QStringList { "B", "C" } << "B";
        QTest::newRow("other tab before selection") << 2 << 0 << QStringList { "B", "C" } << "C";
        QTest::newRow("other tab after selection") << 0 << 2 << QStringList { "A", "B" } << "A";
    }
    void closingTheSelectedTabSelectsItsNeighbour()
    {
        QFETCH(int, selected);
        QFETCH(int, closed);
        QFETCH(QStringList, remaining);
        QFETCH(QString, selectedAfter);
        makeThree();
        model->selectTabContentsAt(selected, false);
        QPointer<TabContents> closing = model->getTabContentsAtIndex(closed);
        const QString name = closing->title();
        journal.clear();

        QVERIFY(model->closeTabContentsAtIndex(closed, TabStripModel::CloseUserGesture));
        QCOMPARE(titles(), remaining);
        QCOMPARE(nameOf(model->getSelectedTabContents()), selectedAfter);

        QStringList expected { "shouldClose " + name,
            QStringLiteral("closing %1 %2").arg(name).arg(closed),
            QStringLiteral("detach %1 %2").arg(name).arg(closed) };
        if (selected == closed) {
            expected << QStringLiteral("select %1 %2 %3 auto")
                            .arg(name, selectedAfter)
                            .arg(remaining.indexOf(selectedAfter))
                     << "didBecomeSelected " + selectedAfter;
        }
        expected << "destroy " + name + " model";
        QCOMPARE(journal, expected);

        // The closed tab is deleted once the event loop turns.
        QVERIFY(closing);
        QTRY_VERIFY(!closing);
    }

    void refusedCloseKeepsEverythingButCloseAllAsksNobody()
    {
        add("A", true);
        add("Dirty", true, false);
        add("C", false);
        journal.clear();
        QVERIFY(!model->closeTabContentsAtIndex(1, TabStripModel::CloseUserGesture));
        QVERIFY(!model->closeSelectedTab());
        QCOMPARE(titles(), QStringList({ "A", "Dirty", "C" }));
        QCOMPARE(model->selectedIndex(), 1);
        QCOMPARE(journal, QStringList({ "shouldClose Dirty", "shouldClose Dirty" }));
        QVERIFY(!model->closeTabContentsAtIndex(5, TabStripModel::CloseNone));
        // Closing all asks nobody and selects no neighbour on the way.
        journal.clear();
        model->closeAllTabs();
        QVERIFY(model->isEmpty());
        QCOMPARE(model->selectedIndex(), -1);
        const QStringList expected { "closing C 2", "detach C 2", "destroy C model",
            "closing Dirty 1", "detach Dirty 1", "destroy Dirty model", "closing A 0", "detach A 0",
            "empty", "destroy A model" };
        QCOMPARE(journal, expected);
    }

    void delegateDecidesInsteadOfTheTab()
    {
        CountingDelegate delegate(model.get());
        model->setDelegate(&delegate);
        add("A", true);
        add("Dirty", false, false);
        QVERIFY(!model->closeTabContentsAtIndex(1, TabStripModel::CloseNone));
        QVERIFY(model->closeTabContentsAtIndex(0, TabStripModel::CloseNone));
        QCOMPARE(delegate.asked, QList<int>({ 1, 0 }));
        QCOMPARE(titles(), QStringList { "Dirty" });
        model->setDelegate(nullptr);
    }

    void replaceTakesThePlaceAndTheSelection_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("selected") << 1
                                  << QStringList { "replace B N 1", "select B N 1 auto",
                                         "didBecomeSelected N", "destroy B model" };
        QTest::newRow("background") << 2 << QStringList { "replace C N 2", "destroy C model" };
    }
    void replaceTakesThePlaceAndTheSelection()
    {
        QFETCH(int, index);
        QFETCH(QStringList, expected);
        makeThree();
        QPointer<TabContents> old = model->getTabContentsAtIndex(index);
        model->replaceTabContentsAt(index, std::make_unique<RecordingContents>("N", &journal));
        QCOMPARE(journal, expected);
        QCOMPARE(titles().at(index), "N");
        QCOMPARE(model->selectedIndex(), 1);
        QCOMPARE(old->tabStripModel(), nullptr);
        QTRY_VERIFY(!old);
    }

    void moveKeepsTheSelectedContentsSelected_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<QStringList>("order");
        QTest::addColumn<int>("selectedIndex");
        QTest::addColumn<bool>("selectMoved");
        QTest::newRow("selected to front") << 1 << 0 << QStringList { "B", "A", "C" } << 0 << false;
        QTest::newRow("first past selected")
            << 0 << 2 << QStringList { "B", "C", "A" } << 0 << false;
        QTest::newRow("last before selected")
            << 2 << 0 << QStringList { "C", "A", "B" } << 2 << false;
        QTest::newRow("after selected, stays after")
            << 2 << 2 << QStringList { "A", "B", "C" } << 1 << false;
        QTest::newRow("moved and selected") << 2 << 0 << QStringList { "C", "A", "B" } << 0 << true;
    }
    void moveKeepsTheSelectedContentsSelected()
    {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(QStringList, order);
        QFETCH(int, selectedIndex);
        QFETCH(bool, selectMoved);
        makeThree();
        const QString moved = titles().at(from);
        model->moveTabContentsAt(from, to, selectMoved);
        QCOMPARE(titles(), order);
        QCOMPARE(model->selectedIndex(), selectedIndex);
        QCOMPARE(nameOf(model->getSelectedTabContents()), selectMoved ? moved : "B");
        QStringList expected;
        if (from != to)
            expected << QStringLiteral("move %1 %2 %3").arg(moved).arg(from).arg(to);
        if (selectMoved)
            expected << "select B " + moved + " 0 gesture"
                     << "didBecomeSelected " + moved;
        QCOMPARE(journal, expected);
    }

    void retitlingATabIsReportedInPlace()
    {
        makeThree();
        model->getTabContentsAtIndex(2)->setTitle("C2");
        model->getTabContentsAtIndex(2)->setTitle("C2");
        model->getTabContentsAtIndex(0)->setUrl("file:///x.pdf");
        QCOMPARE(journal, QStringList({ "change C2 2 title", "change A 0 url" }));
    }

    void changingTheModelWhileItNotifiesStopsTheProcess()
    {
        if (qEnvironmentVariableIsSet("TABSTRIP_MEDDLE")) {
            MeddlingObserver meddler(model.get());
            model->addObserver(&meddler);
            add("A", true);
            QFAIL("the model let an observer close a tab while it was notifying");
        }
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TABSTRIP_MEDDLE", "1");
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::MergedChannels);
        // The expected abort leaves no core file behind.
        child.setChildProcessModifier([] {
            const rlimit none { 0, 0 };
            setrlimit(RLIMIT_CORE, &none);
        });
        child.start(QCoreApplication::applicationFilePath(),
            { "changingTheModelWhileItNotifiesStopsTheProcess" });
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QVERIFY2(
            child.readAll().contains("closeTabContentsAtIndex called while the model notifies"),
            "the fatal message names the operation");
    }

    void destroyingTheModelDestroysItsTabs()
    {
        makeThree();
        QPointer<TabContents> a = model->getTabContentsAtIndex(0);
        model->removeObserver(observer.get());
        model.reset();
        QCOMPARE(journal.filter("destroy").size(), 3);
        QVERIFY(!a);
        model = std::make_unique<TabStripModel>();
    }
};

QTEST_GUILESS_MAIN(TabStripModelTest)
#include "TabStripModelTest.moc"
