// A page's text and the selections made on it, all read from its text layout.

#include "PDFPage.h"

#include "PDFPagePrivate.h"
#include "TextLayout.h"

QString PDFPage::string() const
{
    const auto layout = PDFPageInternals::textLayout(*this);
    return layout->text.isEmpty() ? QString() : layout->text;
}

int PDFPage::numberOfCharacters() const
{
    return PDFPageInternals::textLayout(*this)->size();
}

QRectF PDFPage::characterBoundsAtIndex(int index) const
{
    const auto layout = PDFPageInternals::textLayout(*this);
    return index >= 0 && index < layout->size() ? layout->rects[index] : QRectF();
}

int PDFPage::characterIndexAtPoint(const QPointF &point) const
{
    return PDFPageInternals::textLayout(*this)->indexAtPoint(point);
}

std::shared_ptr<PDFSelection> PDFPage::selectionForRect(const QRectF &rect) const
{
    const auto layout = PDFPageInternals::textLayout(*this);
    const QRectF area = rect.normalized();
    auto selection = std::make_shared<PDFSelection>(document());
    const auto self = std::const_pointer_cast<PDFPage>(shared_from_this());
    for (int i = 0; i < layout->size(); ++i) {
        const QRectF &r = layout->rects[i];
        if (!r.isNull() && area.contains(r.center()))
            selection->addRange(self, { i, 1 });
    }
    return selection->isEmpty() ? nullptr : selection;
}

std::shared_ptr<PDFSelection> PDFPage::selectionForRange(const PDFTextRange &range) const
{
    const auto layout = PDFPageInternals::textLayout(*this);
    const PDFTextRange clamped = layout->clamp(range);
    if (clamped.length == 0)
        return nullptr;
    auto selection = std::make_shared<PDFSelection>(document());
    selection->addRange(std::const_pointer_cast<PDFPage>(shared_from_this()), clamped);
    return selection;
}

std::shared_ptr<PDFSelection> PDFPage::selectionForWordAtPoint(const QPointF &point) const
{
    const auto layout = PDFPageInternals::textLayout(*this);
    return selectionForRange(layout->wordRange(layout->indexAtPoint(point)));
}

std::shared_ptr<PDFSelection> PDFPage::selectionForLineAtPoint(const QPointF &point) const
{
    const auto layout = PDFPageInternals::textLayout(*this);
    return selectionForRange(layout->lineRange(layout->nearestIndex(point)));
}

std::shared_ptr<PDFSelection> PDFPage::selectionFromPointToPoint(
    const QPointF &startPoint, const QPointF &endPoint, PDFSelectionGranularity granularity) const
{
    const auto layout = PDFPageInternals::textLayout(*this);
    const int from = layout->nearestIndex(startPoint);
    const int to = layout->nearestIndex(endPoint);
    if (from < 0 || to < 0)
        return nullptr;
    return selectionForRange(layout->span(from, to, granularity));
}
