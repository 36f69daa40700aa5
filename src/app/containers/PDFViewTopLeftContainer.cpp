#include "PDFViewTopLeftContainer.h"

#include <app/PDFContents.h>

PDFViewTopLeftContainer::PDFViewTopLeftContainer(PDFContents *contents, QWidget *parent)
    : PDFViewContainer(contents, parent)
{ }

bool PDFViewTopLeftContainer::isCollapsed() const
{
    return !contents() || contents()->splitMode() == PDFSplitViewMode::none;
}
