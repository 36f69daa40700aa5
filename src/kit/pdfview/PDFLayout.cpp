#include "PDFLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

void PDFLayout::setPageSizes(std::vector<QSizeF> sizes)
{
    m_sizes = std::move(sizes);
    m_anchor = std::clamp(m_anchor, 0, std::max(0, pageCount() - 1));
}

QSizeF PDFLayout::pageSize(int index) const
{
    if (index < 0 || index >= pageCount())
        return {};
    return m_sizes[static_cast<size_t>(index)];
}

void PDFLayout::setDisplayMode(int mode)
{
    m_mode = std::clamp(mode, int(SinglePage), int(TwoUpContinuous));
}

void PDFLayout::setDisplaysPageBreaks(bool breaks)
{
    m_pageBreaks = breaks;
}

void PDFLayout::setDisplaysAsBook(bool asBook)
{
    m_asBook = asBook;
}

void PDFLayout::setAnchorPage(int index)
{
    m_anchor = std::clamp(index, 0, std::max(0, pageCount() - 1));
}

int PDFLayout::firstPageOfRow(int index) const
{
    if (pagesAcross() == 1 || index <= 0)
        return std::max(index, 0);
    if (m_asBook)
        return index - ((index - 1) % 2);
    return index - index % 2;
}

int PDFLayout::lastPageOfRow(int index) const
{
    const int first = firstPageOfRow(index);
    if (pagesAcross() == 1 || (m_asBook && first == 0))
        return first;
    return std::min(first + 1, pageCount() - 1);
}

int PDFLayout::previousRowPage(int index) const
{
    const int first = firstPageOfRow(index);
    return first <= 0 ? -1 : firstPageOfRow(first - 1);
}

int PDFLayout::nextRowPage(int index) const
{
    const int next = lastPageOfRow(index) + 1;
    return next >= pageCount() ? -1 : next;
}

void PDFLayout::update()
{
    m_rects.assign(m_sizes.size(), QRectF());
    m_rows.clear();
    m_documentSize = QSizeF();
    if (m_sizes.empty())
        return;

    int first = 0;
    int last = pageCount() - 1;
    if (!isContinuous()) {
        first = firstPageOfRow(m_anchor);
        last = lastPageOfRow(m_anchor);
    }
    for (int page = first; page <= last; page = lastPageOfRow(page) + 1)
        m_rows.push_back(Row { page, lastPageOfRow(page) - page + 1, 0, 0 });

    // Two-up pages meet at a spine: left pages align right, right pages align left.
    const double m = margin();
    double leftColumn = 0;
    double rightColumn = 0;
    for (const Row &row : m_rows) {
        for (int i = 0; i < row.count; ++i) {
            const int page = row.first + i;
            const bool right = pagesAcross() == 2 && (i == 1 || (m_asBook && page == 0));
            (right ? rightColumn : leftColumn) = std::max(
                right ? rightColumn : leftColumn, m_sizes[static_cast<size_t>(page)].width());
        }
    }
    const double width = pagesAcross() == 1 ? leftColumn + 2 * m : leftColumn + rightColumn + 4 * m;
    double y = 0;
    for (Row &row : m_rows) {
        double height = 0;
        for (int i = 0; i < row.count; ++i)
            height = std::max(height, m_sizes[static_cast<size_t>(row.first + i)].height());
        row.top = y;
        row.bottom = y + height + 2 * m;
        for (int i = 0; i < row.count; ++i) {
            const int page = row.first + i;
            const QSizeF size = m_sizes[static_cast<size_t>(page)];
            const double top = y + m + (height - size.height()) / 2;
            double x;
            if (pagesAcross() == 1)
                x = (width - size.width()) / 2;
            else if (i == 1 || (m_asBook && page == 0))
                x = leftColumn + 3 * m;
            else
                x = m + leftColumn - size.width();
            m_rects[static_cast<size_t>(page)] = QRectF(x, top, size.width(), size.height());
        }
        y = row.bottom;
    }
    m_documentSize = QSizeF(width, y);
}

QRectF PDFLayout::pageRect(int index) const
{
    if (index < 0 || index >= static_cast<int>(m_rects.size()))
        return {};
    return m_rects[static_cast<size_t>(index)];
}

int PDFLayout::rowIndexOfPage(int index) const
{
    const auto found = std::upper_bound(m_rows.begin(), m_rows.end(), index,
        [](int page, const Row &row) { return page < row.first; });
    if (found == m_rows.begin())
        return -1;
    const int row = static_cast<int>(found - m_rows.begin()) - 1;
    return index < m_rows[static_cast<size_t>(row)].first + m_rows[static_cast<size_t>(row)].count
        ? row
        : -1;
}

int PDFLayout::rowAtY(double y) const
{
    const auto found = std::upper_bound(m_rows.begin(), m_rows.end(), y,
        [](double value, const Row &row) { return value < row.top; });
    if (found == m_rows.begin())
        return 0;
    return static_cast<int>(found - m_rows.begin()) - 1;
}

std::vector<int> PDFLayout::pagesInRect(const QRectF &rect) const
{
    std::vector<int> pages;
    if (m_rows.empty() || rect.isEmpty())
        return pages;
    for (size_t row = static_cast<size_t>(rowAtY(rect.top())); row < m_rows.size(); ++row) {
        if (m_rows[row].top >= rect.bottom())
            break;
        for (int i = 0; i < m_rows[row].count; ++i) {
            const int page = m_rows[row].first + i;
            if (m_rects[static_cast<size_t>(page)].intersects(rect))
                pages.push_back(page);
        }
    }
    return pages;
}

int PDFLayout::pageAtPoint(const QPointF &point) const
{
    if (m_rows.empty())
        return -1;
    const Row &row = m_rows[static_cast<size_t>(rowAtY(point.y()))];
    for (int i = 0; i < row.count; ++i) {
        const QRectF &rect = m_rects[static_cast<size_t>(row.first + i)];
        // Lower edges belong to a page, upper edges to whatever follows.
        if (point.x() >= rect.left() && point.x() < rect.right() && point.y() >= rect.top()
            && point.y() < rect.bottom())
            return row.first + i;
    }
    return -1;
}

int PDFLayout::nearestPage(const QPointF &point) const
{
    if (m_rows.empty())
        return -1;
    const int center = rowAtY(point.y());
    int best = -1;
    double bestDistance = std::numeric_limits<double>::max();
    // The closest page lies in the row of the point or in one of its neighbours.
    for (int r = std::max(0, center - 1); r <= std::min(int(m_rows.size()) - 1, center + 1); ++r) {
        const Row &row = m_rows[static_cast<size_t>(r)];
        for (int i = 0; i < row.count; ++i) {
            const QRectF &rect = m_rects[static_cast<size_t>(row.first + i)];
            const double dx = std::max({ rect.left() - point.x(), 0.0, point.x() - rect.right() });
            const double dy = std::max({ rect.top() - point.y(), 0.0, point.y() - rect.bottom() });
            const double distance = std::hypot(dx, dy);
            if (distance < bestDistance) {
                bestDistance = distance;
                best = row.first + i;
            }
        }
    }
    return best;
}
