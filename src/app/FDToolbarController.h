#pragma once

// The toolbar area of a Folidoc window: shows the toolbar of the selected tab, if it has one.
// Main thread only.

#include <kit/tabs/ContentsToolbarController.h>

class FDToolbarController : public ContentsToolbarController
{
public:
    explicit FDToolbarController(QObject *parent = nullptr);

    void updateToolbarWithContents(TabContents *contents, bool shouldRestoreState) override;
    void removeCurrentToolbar() override;
};
