#pragma once

// The ordered tabs of one window and which of them is selected: a plain model, separate from
// every view, that tells its observers of each change. It owns its tabs. Changing the model while
// it notifies is a programming fault that stops the process. Main thread only.

#include "TabStripModelObserver.h"

#include <QObject>

#include <memory>
#include <vector>

class QUrl;
class TabContents;
class TabStripModelDelegate;

class TabStripModel
{
public:
    // Flags of closeTabContentsAtIndex.
    enum CloseType : unsigned {
        CloseNone = 0,
        CloseUserGesture = 1u << 0,
        CloseCreateHistoricalTab = 1u << 1,
    };

    explicit TabStripModel(TabStripModelDelegate *delegate = nullptr);
    // Destroys the remaining tabs without asking them.
    ~TabStripModel();
    TabStripModel(const TabStripModel &) = delete;
    TabStripModel &operator=(const TabStripModel &) = delete;

    TabStripModelDelegate *delegate() const { return m_delegate; }
    void setDelegate(TabStripModelDelegate *delegate) { m_delegate = delegate; }

    // Observers are told in the order they were added; they are not owned.
    void addObserver(TabStripModelObserver *observer);
    void removeObserver(TabStripModelObserver *observer);

    int count() const { return int(m_contents.size()); }
    bool isEmpty() const { return m_contents.empty(); }
    bool containsIndex(int index) const { return index >= 0 && index < count(); }
    // -1 while no tab is selected: an empty strip, or tabs that were all added in the background.
    int selectedIndex() const { return m_selectedIndex; }
    TabContents *getSelectedTabContents() const;
    // Null for an index out of range.
    TabContents *getTabContentsAtIndex(int index) const;
    // -1 when the contents is not in this model.
    int getIndexOfTabContents(const TabContents *contents) const;

    // Take ownership of contents. A foreground tab becomes the selected one; a background tab
    // leaves the selection as it is, even when the strip was empty.
    void appendTabContents(std::unique_ptr<TabContents> contents, bool foreground);
    void insertTabContentsAt(int index, std::unique_ptr<TabContents> contents, bool foreground);
    // newContents takes the place of the tab at index (and its selection); the old tab is then
    // destroyed as a closed one is. Nothing happens for an index out of range.
    void replaceTabContentsAt(int index, std::unique_ptr<TabContents> newContents);

    void selectTabContentsAt(int index, bool userGesture);
    // Selects the first tab whose url() is the absolute string of url; answers whether one was
    // found.
    bool selectTabContentsByURL(const QUrl &url);
    // Both wrap around; with nothing selected, next selects the first tab and previous the last.
    void selectNextTab();
    void selectPreviousTab();
    void selectLastTab();

    // Asks the delegate (or, without one, the tab's shouldClose), then closes the tab: observers
    // hear tabClosingAt and tabDetachedAt, the neighbour to the right (else to the left) of a
    // selected tab becomes selected, and the tab's destroy() runs. Answers false when the close was
    // refused or the index is out of range; the tabs then stay as they were.
    bool closeTabContentsAtIndex(int index, unsigned closeTypes);
    bool closeSelectedTab();
    // Closes every tab without asking, last first, selecting none of the others on the way: for a
    // window that is going away.
    void closeAllTabs();

    // Takes the tab out without closing it, to be inserted in another model: observers hear
    // tabDetachedAt (and tabStripEmpty for the last tab), the neighbour of a selected tab becomes
    // selected. Null for an index out of range.
    std::unique_ptr<TabContents> detachTabContentsAt(int index);

    // Moves a tab; the selected contents stays selected wherever it goes.
    void moveTabContentsAt(int fromIndex, int toIndex, bool selectAfterMove);

    // Tells observers that the tab at index changed in place (its title, its URL).
    void updateTabContentsStateAt(int index, TabStripModelObserver::TabChangeType change);

    // True while observers are being told of a change.
    bool isNotifying() const { return m_notifyDepth > 0; }

private:
    struct DeleteLater
    {
        void operator()(QObject *object) const { object->deleteLater(); }
    };
    using OwnedContents = std::unique_ptr<TabContents, DeleteLater>;

    class NotifyScope;
    void checkNotNotifying(const char *operation) const;
    template <class Fn> void notify(Fn &&fn);
    void changeSelectedContentsFrom(TabContents *oldContents, int toIndex, bool userGesture);
    void closeAt(int index, bool selectNeighbour);
    int indexToSelectAfterRemoving(int index) const;

    TabStripModelDelegate *m_delegate = nullptr;
    std::vector<OwnedContents> m_contents;
    std::vector<TabStripModelObserver *> m_observers;
    int m_selectedIndex = -1;
    int m_notifyDepth = 0;
};
