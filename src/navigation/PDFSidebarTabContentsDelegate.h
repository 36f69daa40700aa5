#pragma once

// What a sidebar tab asks of the frame that shows it: to show its new title when it is the tab
// in front.

class PDFSidebarTabContents;

class PDFSidebarTabContentsDelegate
{
public:
    virtual ~PDFSidebarTabContentsDelegate() = default;
    virtual void updateSidebarTitleWithController(PDFSidebarTabContents *controller) = 0;
};
