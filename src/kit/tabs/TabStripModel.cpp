#include "TabStripModel.h"

#include "TabContents.h"
#include "TabStripModelDelegate.h"

#include <QUrl>
#include <QtGlobal>

#include <algorithm>

// Counts nested notifications so that a structural change made from inside one can be caught.
class TabStripModel::NotifyScope
{
public:
    explicit NotifyScope(TabStripModel &model)
        : m_model(model)
    {
        ++m_model.m_notifyDepth;
    }
    ~NotifyScope() { --m_model.m_notifyDepth; }
    NotifyScope(const NotifyScope &) = delete;
    NotifyScope &operator=(const NotifyScope &) = delete;

private:
    TabStripModel &m_model;
};

TabStripModel::TabStripModel(TabStripModelDelegate *delegate)
    : m_delegate(delegate)
{ }

TabStripModel::~TabStripModel()
{
    // Tabs are deleted at once here: the window that owns the model is already going away, and
    // no event loop may run again to collect them.
    while (!m_contents.empty()) {
        TabContents *contents = m_contents.back().release();
        m_contents.pop_back();
        contents->m_model = nullptr;
        contents->destroy(this);
        delete contents;
    }
    const auto observers = m_observers;
    for (TabStripModelObserver *observer : observers)
        observer->tabStripModelDeleted(this);
}

void TabStripModel::addObserver(TabStripModelObserver *observer)
{
    if (observer
        && std::find(m_observers.begin(), m_observers.end(), observer) == m_observers.end())
        m_observers.push_back(observer);
}

void TabStripModel::removeObserver(TabStripModelObserver *observer)
{
    std::erase(m_observers, observer);
}

TabContents *TabStripModel::getSelectedTabContents() const
{
    return getTabContentsAtIndex(m_selectedIndex);
}

TabContents *TabStripModel::getTabContentsAtIndex(int index) const
{
    return containsIndex(index) ? m_contents[size_t(index)].get() : nullptr;
}

int TabStripModel::getIndexOfTabContents(const TabContents *contents) const
{
    for (size_t i = 0; i < m_contents.size(); ++i) {
        if (m_contents[i].get() == contents)
            return int(i);
    }
    return -1;
}

void TabStripModel::checkNotNotifying(const char *operation) const
{
    if (m_notifyDepth > 0)
        qFatal("TabStripModel::%s called while the model notifies its observers", operation);
}

template <class Fn> void TabStripModel::notify(Fn &&fn)
{
    const NotifyScope scope(*this);
    // A copy, so that an observer may remove itself (or another) while being told.
    const auto observers = m_observers;
    for (TabStripModelObserver *observer : observers) {
        if (std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end())
            fn(observer);
    }
}

void TabStripModel::appendTabContents(std::unique_ptr<TabContents> contents, bool foreground)
{
    insertTabContentsAt(count(), std::move(contents), foreground);
}

void TabStripModel::insertTabContentsAt(
    int index, std::unique_ptr<TabContents> contents, bool foreground)
{
    checkNotNotifying("insertTabContentsAt");
    if (!contents)
        return;
    if (contents->m_model)
        qFatal("TabStripModel: a tab can be in one model only");
    index = std::clamp(index, 0, count());
    TabContents *const inserted = contents.get();
    TabContents *const oldSelected = getSelectedTabContents();
    inserted->m_model = this;
    m_contents.insert(m_contents.begin() + index, OwnedContents(contents.release()));
    if (m_selectedIndex >= index)
        ++m_selectedIndex;
    notify([&](TabStripModelObserver *o) { o->tabInsertedAt(inserted, index, foreground); });
    if (foreground)
        changeSelectedContentsFrom(oldSelected, index, false);
}

void TabStripModel::replaceTabContentsAt(int index, std::unique_ptr<TabContents> newContents)
{
    checkNotNotifying("replaceTabContentsAt");
    if (!newContents || !containsIndex(index))
        return;
    if (newContents->m_model)
        qFatal("TabStripModel: a tab can be in one model only");
    TabContents *const added = newContents.get();
    added->m_model = this;
    OwnedContents old(newContents.release());
    m_contents[size_t(index)].swap(old);
    old->m_model = nullptr;
    notify([&](TabStripModelObserver *o) { o->tabReplacedAt(old.get(), added, index); });
    // Nearly every observer treats the replacement of the selected tab as a change of selection.
    if (index == m_selectedIndex) {
        notify([&](TabStripModelObserver *o) { o->tabSelectedAt(old.get(), added, index, false); });
        added->tabDidBecomeSelected();
    }
    old->destroy(this);
}

void TabStripModel::selectTabContentsAt(int index, bool userGesture)
{
    checkNotNotifying("selectTabContentsAt");
    if (containsIndex(index))
        changeSelectedContentsFrom(getSelectedTabContents(), index, userGesture);
}

void TabStripModel::changeSelectedContentsFrom(
    TabContents *oldContents, int toIndex, bool userGesture)
{
    TabContents *const newContents = getTabContentsAtIndex(toIndex);
    if (!newContents || (oldContents == newContents && m_selectedIndex == toIndex))
        return;
    m_selectedIndex = toIndex;
    notify([&](TabStripModelObserver *o) {
        o->tabSelectedAt(oldContents, newContents, toIndex, userGesture);
    });
    newContents->tabDidBecomeSelected();
}

bool TabStripModel::selectTabContentsByURL(const QUrl &url)
{
    const QString wanted = TabContents::absoluteString(url);
    for (int i = 0; i < count(); ++i) {
        if (m_contents[size_t(i)]->url() == wanted) {
            selectTabContentsAt(i, true);
            return true;
        }
    }
    return false;
}

void TabStripModel::selectNextTab()
{
    if (isEmpty())
        return;
    const int from = m_selectedIndex < 0 ? count() - 1 : m_selectedIndex;
    selectTabContentsAt((from + 1) % count(), true);
}

void TabStripModel::selectPreviousTab()
{
    if (isEmpty())
        return;
    const int from = m_selectedIndex < 0 ? 0 : m_selectedIndex;
    selectTabContentsAt((from + count() - 1) % count(), true);
}

void TabStripModel::selectLastTab()
{
    selectTabContentsAt(count() - 1, true);
}

bool TabStripModel::closeTabContentsAtIndex(int index, unsigned closeTypes)
{
    Q_UNUSED(closeTypes);
    checkNotNotifying("closeTabContentsAtIndex");
    TabContents *const contents = getTabContentsAtIndex(index);
    if (!contents)
        return false;
    const bool allowed
        = m_delegate ? m_delegate->canCloseContentsAt(index) : contents->shouldClose();
    if (!allowed)
        return false;
    // Asking may have run a modal prompt, during which other tabs can have come or gone.
    const int now = getIndexOfTabContents(contents);
    if (now >= 0)
        closeAt(now, true);
    return true;
}

bool TabStripModel::closeSelectedTab()
{
    return closeTabContentsAtIndex(m_selectedIndex, CloseUserGesture);
}

void TabStripModel::closeAllTabs()
{
    checkNotNotifying("closeAllTabs");
    // No neighbour is selected on the way: nobody is going to look at it.
    while (!isEmpty())
        closeAt(count() - 1, false);
}

int TabStripModel::indexToSelectAfterRemoving(int index) const
{
    // The tab that slides into the closed one's place, or the one before it at the end.
    return std::min(index, count() - 2);
}

void TabStripModel::closeAt(int index, bool selectNeighbour)
{
    TabContents *const contents = m_contents[size_t(index)].get();
    notify([&](TabStripModelObserver *o) { o->tabClosingAt(contents, index); });

    const bool wasSelected = index == m_selectedIndex;
    const int nextSelected = indexToSelectAfterRemoving(index);
    OwnedContents removed = std::move(m_contents[size_t(index)]);
    m_contents.erase(m_contents.begin() + index);
    removed->m_model = nullptr;
    if (wasSelected)
        m_selectedIndex = -1;
    else if (index < m_selectedIndex)
        --m_selectedIndex;

    notify([&](TabStripModelObserver *o) { o->tabDetachedAt(contents, index); });
    if (isEmpty())
        notify([](TabStripModelObserver *o) { o->tabStripEmpty(); });
    else if (wasSelected && selectNeighbour)
        changeSelectedContentsFrom(contents, nextSelected, false);
    removed->destroy(this);
}

std::unique_ptr<TabContents> TabStripModel::detachTabContentsAt(int index)
{
    checkNotNotifying("detachTabContentsAt");
    if (!containsIndex(index))
        return nullptr;
    const bool wasSelected = index == m_selectedIndex;
    const int nextSelected = indexToSelectAfterRemoving(index);
    OwnedContents removed = std::move(m_contents[size_t(index)]);
    m_contents.erase(m_contents.begin() + index);
    TabContents *const contents = removed.get();
    contents->m_model = nullptr;
    if (wasSelected)
        m_selectedIndex = -1;
    else if (index < m_selectedIndex)
        --m_selectedIndex;
    notify([&](TabStripModelObserver *o) { o->tabDetachedAt(contents, index); });
    if (isEmpty())
        notify([](TabStripModelObserver *o) { o->tabStripEmpty(); });
    else if (wasSelected)
        changeSelectedContentsFrom(contents, nextSelected, false);
    return std::unique_ptr<TabContents>(removed.release());
}

void TabStripModel::moveTabContentsAt(int fromIndex, int toIndex, bool selectAfterMove)
{
    checkNotNotifying("moveTabContentsAt");
    if (!containsIndex(fromIndex) || !containsIndex(toIndex))
        return;
    if (fromIndex != toIndex) {
        TabContents *const selected = getSelectedTabContents();
        OwnedContents moved = std::move(m_contents[size_t(fromIndex)]);
        m_contents.erase(m_contents.begin() + fromIndex);
        TabContents *const contents = moved.get();
        m_contents.insert(m_contents.begin() + toIndex, std::move(moved));
        m_selectedIndex = getIndexOfTabContents(selected);
        notify([&](TabStripModelObserver *o) { o->tabMoved(contents, fromIndex, toIndex); });
    }
    if (selectAfterMove)
        selectTabContentsAt(toIndex, true);
}

void TabStripModel::updateTabContentsStateAt(int index, TabStripModelObserver::TabChangeType change)
{
    // Not structural, so allowed while notifying: a tab may retitle itself when it is selected.
    TabContents *const contents = getTabContentsAtIndex(index);
    if (contents)
        notify([&](TabStripModelObserver *o) { o->tabChangedAt(contents, index, change); });
}
