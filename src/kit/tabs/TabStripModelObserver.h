#pragma once

// Receives every change of a TabStripModel, synchronously and in the order the changes happen.
// All methods have empty defaults. An observer must not change the model while it is being told
// of a change (the model stops the process if it does). Main thread only.

class TabContents;
class TabStripModel;

class TabStripModelObserver
{
public:
    // What changed in a tab that stayed in place.
    enum class TabChangeType { Title, Url };

    virtual ~TabStripModelObserver() = default;

    // A tab was inserted at index; foreground tells whether it is about to be selected.
    virtual void tabInsertedAt(TabContents *, int /*index*/, bool /*foreground*/) { }
    // The tab at index is about to close; it is still in the model.
    virtual void tabClosingAt(TabContents *, int /*index*/) { }
    // The tab that was at index has left the model.
    virtual void tabDetachedAt(TabContents *, int /*index*/) { }
    // Selection moved from oldContents (null when nothing was selected, or already detached) to
    // newContents at index.
    virtual void tabSelectedAt(TabContents * /*oldContents*/, TabContents * /*newContents*/,
        int /*index*/, bool /*userGesture*/)
    { }
    virtual void tabMoved(TabContents *, int /*fromIndex*/, int /*toIndex*/) { }
    virtual void tabChangedAt(TabContents *, int /*index*/, TabChangeType) { }
    // oldContents left index for newContents; when index is selected a selection change follows.
    virtual void tabReplacedAt(
        TabContents * /*oldContents*/, TabContents * /*newContents*/, int /*index*/)
    { }
    // The last tab has gone.
    virtual void tabStripEmpty() { }
    // The model is being destroyed; forget it.
    virtual void tabStripModelDeleted(TabStripModel *) { }
};
