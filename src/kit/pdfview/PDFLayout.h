#pragma once

// Where each page sits in the document canvas of a PDF view, in points at scale 1 (y down),
// for the four display modes, with or without page breaks and as a book. A plain value class
// that knows only page sizes; the view scales its rects. Main thread only.

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <vector>

class PDFLayout
{
public:
    enum DisplayMode {
        SinglePage = 0,
        SinglePageContinuous = 1,
        TwoUp = 2,
        TwoUpContinuous = 3,
    };

    // With page breaks, every page gets this margin on each side: 8 points between two pages,
    // which the shadow of the page edge lives in.
    static constexpr double PageBreakMargin = 4.0;

    // Sizes of the pages as shown (display box, rotated), in points.
    void setPageSizes(std::vector<QSizeF> sizes);
    int pageCount() const { return static_cast<int>(m_sizes.size()); }
    QSizeF pageSize(int index) const;

    void setDisplayMode(int mode);
    int displayMode() const { return m_mode; }
    void setDisplaysPageBreaks(bool breaks);
    bool displaysPageBreaks() const { return m_pageBreaks; }
    void setDisplaysAsBook(bool asBook);
    bool displaysAsBook() const { return m_asBook; }
    // The page whose row the non-continuous modes show; ignored by the continuous modes.
    void setAnchorPage(int index);

    bool isContinuous() const
    {
        return m_mode == SinglePageContinuous || m_mode == TwoUpContinuous;
    }
    int pagesAcross() const { return m_mode == TwoUp || m_mode == TwoUpContinuous ? 2 : 1; }
    double margin() const { return m_pageBreaks ? PageBreakMargin : 0.0; }

    // Recomputes the rects; call after changing any input above.
    void update();

    QSizeF documentSize() const { return m_documentSize; }
    // The page's rect on the canvas; empty when the page is not laid out (another row in the
    // non-continuous modes, or out of range).
    QRectF pageRect(int index) const;
    bool isLaidOut(int index) const { return !pageRect(index).isEmpty(); }
    // The first and last page of the row holding index.
    int firstPageOfRow(int index) const;
    int lastPageOfRow(int index) const;
    // The first page of the row before and after the row of index; -1 when there is none.
    int previousRowPage(int index) const;
    int nextRowPage(int index) const;

    // Laid-out pages meeting the rect, in page order.
    std::vector<int> pagesInRect(const QRectF &rect) const;
    // The page under the point, or -1 between and outside pages.
    int pageAtPoint(const QPointF &point) const;
    // The laid-out page closest to the point; -1 only without pages.
    int nearestPage(const QPointF &point) const;

private:
    struct Row
    {
        int first = 0;
        int count = 0;
        double top = 0;
        double bottom = 0;
    };
    int rowIndexOfPage(int index) const;
    int rowAtY(double y) const; // the row whose band holds y, clamped to the rows

    std::vector<QSizeF> m_sizes;
    std::vector<QRectF> m_rects;
    std::vector<Row> m_rows; // laid-out rows only, top to bottom
    QSizeF m_documentSize;
    int m_mode = SinglePageContinuous;
    bool m_pageBreaks = true;
    bool m_asBook = false;
    int m_anchor = 0;
};
