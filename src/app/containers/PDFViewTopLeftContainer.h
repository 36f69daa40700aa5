#pragma once

// The place of a document view: the first place, which always shows; its bar shows only in a split.
// Main thread only.

#include "PDFViewContainer.h"

class PDFViewTopLeftContainer : public PDFViewContainer
{
    Q_OBJECT

public:
    explicit PDFViewTopLeftContainer(PDFContents *contents, QWidget *parent = nullptr);

    bool isCollapsed() const override;
    bool isVertical() const override { return false; }
    bool isPrimary() const override { return true; }
};
