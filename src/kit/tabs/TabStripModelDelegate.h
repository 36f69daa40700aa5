#pragma once

// The owner of a TabStripModel, asked whether a tab may close. Main thread only.

class TabStripModelDelegate
{
public:
    virtual ~TabStripModelDelegate() = default;

    // Asked before every close that is not forced; false keeps the tab.
    virtual bool canCloseContentsAt(int index) = 0;
};
