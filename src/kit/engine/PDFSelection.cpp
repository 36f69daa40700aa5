#include "PDFSelection.h"

#include "PDFDocument.h"
#include "PDFDocumentPrivate.h"
#include "PDFPage.h"
#include "PDFPagePrivate.h"

#include <QHash>

#include <algorithm>

namespace {

// Sorted, merged ranges: overlapping or touching ranges become one.
void insertRange(std::vector<PDFTextRange> &ranges, PDFTextRange range)
{
    if (range.length <= 0)
        return;
    std::vector<PDFTextRange> merged;
    bool placed = false;
    for (const PDFTextRange &existing : ranges) {
        if (existing.end() < range.location) {
            merged.push_back(existing);
        } else if (range.end() < existing.location) {
            if (!placed) {
                merged.push_back(range);
                placed = true;
            }
            merged.push_back(existing);
        } else {
            const int start = std::min(existing.location, range.location);
            const int end = std::max(existing.end(), range.end());
            range = { start, end - start };
        }
    }
    if (!placed)
        merged.push_back(range);
    ranges = std::move(merged);
}

// Calls fn with each line's part of range, without its trailing line breaks: a line break alone
// is not a line of the selection.
template <typename Fn> void forEachLinePiece(const TextLayout &layout, PDFTextRange range, Fn fn)
{
    const PDFTextRange r = layout.clamp(range);
    int start = r.location;
    while (start < r.end()) {
        const int line = layout.lineOf[start];
        int end = start;
        while (end < r.end() && layout.lineOf[end] == line)
            ++end;
        PDFTextRange piece { start, end - start };
        while (piece.length > 0 && layout.text.at(piece.end() - 1) == u'\n')
            --piece.length;
        if (piece.length > 0)
            fn(piece);
        start = end;
    }
}

} // namespace

PDFSelection::PDFSelection(const std::shared_ptr<PDFDocument> &document)
    : m_document(document)
{ }

std::shared_ptr<PDFDocument> PDFSelection::document() const
{
    return m_document.lock();
}

bool PDFSelection::isEmpty() const
{
    return m_pages.empty();
}

std::vector<std::shared_ptr<PDFPage>> PDFSelection::pages() const
{
    std::vector<std::shared_ptr<PDFPage>> result;
    result.reserve(m_pages.size());
    for (const PageRanges &entry : m_pages)
        result.push_back(entry.page);
    return result;
}

const PDFSelection::PageRanges *PDFSelection::rangesFor(const std::shared_ptr<PDFPage> &page) const
{
    const auto found = std::find_if(m_pages.begin(), m_pages.end(),
        [&](const PageRanges &entry) { return entry.page == page; });
    return found == m_pages.end() ? nullptr : &*found;
}

QString PDFSelection::string() const
{
    if (m_pages.empty())
        return {};
    QStringList parts;
    for (const PageRanges &entry : m_pages) {
        // The text alone is enough here: a find's hits need no page read again.
        const QString text = PDFPageInternals::pageText(*entry.page);
        for (const PDFTextRange &range : entry.ranges) {
            const int start = std::clamp(range.location, 0, int(text.size()));
            const int end = std::clamp(range.end(), start, int(text.size()));
            parts.append(text.mid(start, end - start));
        }
    }
    return parts.join(QLatin1Char('\n'));
}

QRectF PDFSelection::boundsForPage(const std::shared_ptr<PDFPage> &page) const
{
    const PageRanges *entry = rangesFor(page);
    if (!entry)
        return {};
    const auto layout = PDFPageInternals::textLayout(*page);
    QRectF result;
    for (const PDFTextRange &range : entry->ranges) {
        const QRectF r = layout->bounds(range);
        if (!r.isNull())
            result = result.isNull() ? r : result.united(r);
    }
    return result;
}

std::vector<QRectF> PDFSelection::lineRectsForPage(const std::shared_ptr<PDFPage> &page) const
{
    std::vector<QRectF> rects;
    const PageRanges *entry = rangesFor(page);
    if (!entry)
        return rects;
    // Painting asks for this on every visible page: only this page's lines are measured.
    const auto layout = PDFPageInternals::textLayout(*page);
    for (const PDFTextRange &range : entry->ranges) {
        forEachLinePiece(*layout, range, [&](const PDFTextRange &piece) {
            const QRectF r = layout->bounds(piece);
            rects.push_back(r.isNull() ? QRectF() : r);
        });
    }
    return rects;
}

std::vector<std::shared_ptr<PDFSelection>> PDFSelection::selectionsByLine() const
{
    std::vector<std::shared_ptr<PDFSelection>> lines;
    for (const PageRanges &entry : m_pages) {
        const auto layout = PDFPageInternals::textLayout(*entry.page);
        for (const PDFTextRange &range : entry.ranges) {
            forEachLinePiece(*layout, range, [&](const PDFTextRange &piece) {
                auto selection = std::make_shared<PDFSelection>(m_document.lock());
                selection->addRange(entry.page, piece);
                lines.push_back(selection);
            });
        }
    }
    return lines;
}

void PDFSelection::addSelection(const std::shared_ptr<PDFSelection> &other)
{
    if (!other || other.get() == this)
        return;
    for (const PageRanges &entry : other->m_pages)
        for (const PDFTextRange &range : entry.ranges)
            addRange(entry.page, range);
}

void PDFSelection::addRange(const std::shared_ptr<PDFPage> &page, const PDFTextRange &range)
{
    if (!page || range.length <= 0)
        return;
    const auto found = std::find_if(m_pages.begin(), m_pages.end(),
        [&](const PageRanges &entry) { return entry.page == page; });
    if (found != m_pages.end()) {
        insertRange(found->ranges, range);
        return;
    }
    m_pages.push_back({ page, { range } });
    // Selections mostly grow forward through the document: a page after the last needs no sort.
    const auto doc = m_document.lock();
    if (doc && m_pages.size() > 1 && m_sortedOrder == doc->d->pageOrder
        && doc->indexForPage(page) > doc->indexForPage(m_pages[m_pages.size() - 2].page))
        return;
    sortPages();
}

void PDFSelection::sortPages()
{
    const auto doc = m_document.lock();
    if (!doc)
        return;
    m_sortedOrder = doc->d->pageOrder;
    if (m_pages.size() < 2)
        return;
    // Each page's place is looked up once: a selection of every page grows a page at a time.
    QHash<const PDFPage *, int> indexes;
    indexes.reserve(qsizetype(doc->d->pages.size()));
    for (size_t i = doc->d->pages.size(); i-- > 0;)
        indexes.insert(doc->d->pages[i].get(), int(i));
    const auto indexOf
        = [&](const PageRanges &entry) { return indexes.value(entry.page.get(), -1); };
    std::stable_sort(m_pages.begin(), m_pages.end(),
        [&](const PageRanges &a, const PageRanges &b) { return indexOf(a) < indexOf(b); });
}

std::shared_ptr<PDFSelection> PDFSelection::copy() const
{
    auto selection = std::make_shared<PDFSelection>(m_document.lock());
    selection->m_pages = m_pages;
    selection->m_sortedOrder = m_sortedOrder;
    return selection;
}

void PDFSelection::extendSelectionAtStart(int characters)
{
    if (m_pages.empty() || characters <= 0)
        return;
    PageRanges &first = m_pages.front();
    PDFTextRange &range = first.ranges.front();
    const int start = std::max(0, range.location - characters);
    range = { start, range.end() - start };
}

void PDFSelection::extendSelectionAtEnd(int characters)
{
    if (m_pages.empty() || characters <= 0)
        return;
    PageRanges &last = m_pages.back();
    const int size = int(PDFPageInternals::pageText(*last.page).size());
    PDFTextRange &range = last.ranges.back();
    const int end = std::min(size, range.end() + characters);
    range.length = std::max(range.length, end - range.location);
}

int PDFSelection::numberOfTextRangesOnPage(const std::shared_ptr<PDFPage> &page) const
{
    const PageRanges *entry = rangesFor(page);
    return entry ? static_cast<int>(entry->ranges.size()) : 0;
}

PDFTextRange PDFSelection::rangeAtIndex(int index, const std::shared_ptr<PDFPage> &page) const
{
    const PageRanges *entry = rangesFor(page);
    if (!entry || index < 0 || index >= static_cast<int>(entry->ranges.size()))
        return {};
    return entry->ranges[static_cast<size_t>(index)];
}
