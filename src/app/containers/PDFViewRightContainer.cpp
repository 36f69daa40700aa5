#include "PDFViewRightContainer.h"

#include <app/PDFContents.h>

PDFViewRightContainer::PDFViewRightContainer(PDFContents *contents, QWidget *parent)
    : PDFViewContainer(contents, parent)
{ }

bool PDFViewRightContainer::isCollapsed() const
{
    return !contents() || contents()->splitMode() != PDFSplitViewMode::horizontal;
}
