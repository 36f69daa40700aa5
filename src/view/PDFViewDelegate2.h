#pragma once

// What an editing view asks or tells its owner, the document tab: the tool in force and the
// key and focus events that change the tab's bars and selected view. Main thread only.

#include "PDFToolMode.h"

class XPDFView;

class PDFViewDelegate2
{
public:
    virtual ~PDFViewDelegate2() = default;

    virtual PDFToolMode toolMode() const = 0;
    virtual void PDFViewESCKeyDown(XPDFView *sender) = 0;
    virtual void PDFViewDidBecomeFirstResponder(XPDFView *sender) = 0;
    virtual void PDFViewPerformAddOutline(XPDFView *sender) = 0;
};
