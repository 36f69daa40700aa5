#pragma once

// The page-label ranges of a document's /PageLabels number tree, and the label they give a page
// index: decimal, roman (upper or lower), letters (upper or lower), a prefix and a start value.

#include "mupdf/MuTry.h"

#include <QString>

#include <vector>

class PageLabels
{
public:
    struct Range
    {
        int firstPage = 0;
        char style = 0; // 'D', 'R', 'r', 'A', 'a', or 0 for a prefix only
        QString prefix;
        int start = 1;
    };

    // The caller holds the document's lock. A document without labels gives no ranges.
    static PageLabels read(fz_context *ctx, pdf_document *doc);

    bool isEmpty() const { return m_ranges.empty(); }
    // The label of a 0-based page index; the 1-based number when no range covers it.
    QString labelForIndex(int index) const;

    static QString roman(int value, bool upper);
    static QString letters(int value, bool upper);

private:
    std::vector<Range> m_ranges; // sorted by firstPage
};
