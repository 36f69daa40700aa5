#pragma once

// The place of a document view: the place below the first in a split one above the other. Main
// thread only.

#include "PDFViewContainer.h"

class PDFViewBottomContainer : public PDFViewContainer
{
    Q_OBJECT

public:
    explicit PDFViewBottomContainer(PDFContents *contents, QWidget *parent = nullptr);

    bool isCollapsed() const override;
    bool isVertical() const override { return true; }
    bool isPrimary() const override { return false; }
};
