#include "FDContents.h"

#include "GlobalService.h"

FDContents::FDContents(QObject *parent)
    : TabContents(parent)
{
    GlobalService::noteOpenedWindowsChanged();
}

FDContents::~FDContents()
{
    delete m_toolbar.data();
}

void FDContents::setToolbar(std::unique_ptr<QWidget> toolbar)
{
    delete m_toolbar.data();
    m_toolbar = toolbar.release();
}

void FDContents::tabDidBecomeSelected()
{
    TabContents::tabDidBecomeSelected();
    GlobalService::noteOpenedWindowsChanged();
}

void FDContents::destroy(TabStripModel *model)
{
    TabContents::destroy(model);
    GlobalService::noteOpenedWindowsChanged();
}
