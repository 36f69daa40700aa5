#pragma once

// What activating an outline item or link does. The kinds are PDFActionGoTo, PDFActionURL and
// PDFActionRemoteGoTo; type() names the kind.

#include <QString>

class PDFAction
{
public:
    virtual ~PDFAction() = default;
    virtual QString type() const = 0; // "GoTo", "URI", "GoToR"
};
