#pragma once

// Text selected on one or more pages: character ranges per page over each page's text. Rects are
// in page space. Main thread only.

#include <QMetaType>
#include <QRectF>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

class PDFDocument;
class PDFPage;

struct PDFTextRange
{
    int location = 0;
    int length = 0;
    int end() const { return location + length; }
    bool operator==(const PDFTextRange &) const = default;
};

// What a selection between two points snaps to.
enum class PDFSelectionGranularity {
    Character,
    Word,
    Line,
};

class PDFSelection : public std::enable_shared_from_this<PDFSelection>
{
public:
    // An empty selection (initWithDocument).
    explicit PDFSelection(const std::shared_ptr<PDFDocument> &document = {});

    std::shared_ptr<PDFDocument> document() const;
    bool isEmpty() const;
    // Pages in document order; may be empty.
    std::vector<std::shared_ptr<PDFPage>> pages() const;
    // The text, lines and pages separated by line breaks; null when empty.
    QString string() const;
    QRectF boundsForPage(const std::shared_ptr<PDFPage> &page) const;
    // Rects of the selected characters per line on the page.
    std::vector<QRectF> lineRectsForPage(const std::shared_ptr<PDFPage> &page) const;
    // One selection per line, in reading order.
    std::vector<std::shared_ptr<PDFSelection>> selectionsByLine() const;

    void addSelection(const std::shared_ptr<PDFSelection> &other);
    void addRange(const std::shared_ptr<PDFPage> &page, const PDFTextRange &range);
    std::shared_ptr<PDFSelection> copy() const;
    // Grow by characters within the first and the last page.
    void extendSelectionAtStart(int characters);
    void extendSelectionAtEnd(int characters);

    int numberOfTextRangesOnPage(const std::shared_ptr<PDFPage> &page) const;
    PDFTextRange rangeAtIndex(int index, const std::shared_ptr<PDFPage> &page) const;

private:
    struct PageRanges
    {
        std::shared_ptr<PDFPage> page;
        std::vector<PDFTextRange> ranges; // sorted, disjoint, not touching
    };
    const PageRanges *rangesFor(const std::shared_ptr<PDFPage> &page) const;
    void sortPages();

    std::weak_ptr<PDFDocument> m_document;
    std::vector<PageRanges> m_pages;
    // The document's page order m_pages was last sorted in; none before the first sort.
    std::optional<quint64> m_sortedOrder;
};

Q_DECLARE_METATYPE(std::shared_ptr<PDFSelection>)
