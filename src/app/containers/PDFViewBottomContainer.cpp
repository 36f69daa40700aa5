#include "PDFViewBottomContainer.h"

#include <app/PDFContents.h>

PDFViewBottomContainer::PDFViewBottomContainer(PDFContents *contents, QWidget *parent)
    : PDFViewContainer(contents, parent)
{ }

bool PDFViewBottomContainer::isCollapsed() const
{
    return !contents() || contents()->splitMode() != PDFSplitViewMode::vertical;
}
