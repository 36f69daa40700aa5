#pragma once

// The place of a document view: the place beside the first in a side-by-side split. Main thread
// only.

#include "PDFViewContainer.h"

class PDFViewRightContainer : public PDFViewContainer
{
    Q_OBJECT

public:
    explicit PDFViewRightContainer(PDFContents *contents, QWidget *parent = nullptr);

    bool isCollapsed() const override;
    bool isVertical() const override { return false; }
    bool isPrimary() const override { return false; }
};
