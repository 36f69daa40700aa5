#include "FDToolbarController.h"

#include "FDContents.h"

FDToolbarController::FDToolbarController(QObject *parent)
    : ContentsToolbarController(parent)
{ }

void FDToolbarController::updateToolbarWithContents(TabContents *contents, bool)
{
    const auto *const fdContents = qobject_cast<FDContents *>(contents);
    setCurrentToolbar(fdContents ? fdContents->toolbar() : nullptr);
}

void FDToolbarController::removeCurrentToolbar()
{
    setCurrentToolbar(nullptr);
}
