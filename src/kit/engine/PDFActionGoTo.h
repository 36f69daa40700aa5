#pragma once

// Go to a destination in the same document.

#include "PDFAction.h"
#include "PDFDestination.h"

#include <memory>

class PDFActionGoTo : public PDFAction
{
public:
    explicit PDFActionGoTo(const std::shared_ptr<PDFDestination> &destination)
        : m_destination(destination)
    { }
    QString type() const override { return QStringLiteral("GoTo"); }
    std::shared_ptr<PDFDestination> destination() const { return m_destination; }

private:
    std::shared_ptr<PDFDestination> m_destination;
};
