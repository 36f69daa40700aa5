#include "TextLayout.h"

#include "PDFRenderPrivate.h"
#include "mupdf/MuOwned.h"

#include <algorithm>
#include <limits>

fz_display_list *TextLayout::recordContents(
    fz_context *ctx, pdf_page *page, fz_cookie *cookie, mu::Error &error, qint64 contentLimit)
{
    fz_display_list *list = nullptr;
    mu::Device device;
    mu::run(ctx, error, [&] {
        const fz_matrix toPage = mu::fzToPageSpace(ctx, page);
        list = fz_new_display_list(ctx, fz_transform_rect(pdf_bound_page(ctx, page), toPage));
        device.p = fz_new_list_device(ctx, list);
        mu::checkContentLength(ctx, page, cookie, contentLimit);
        pdf_run_page_contents(ctx, page, device.p, toPage, cookie);
        fz_close_device(ctx, device.p);
    });
    if (error.failed && list) {
        mu::runQuietly(ctx, [&] { fz_drop_display_list(ctx, list); });
        return nullptr;
    }
    return list;
}

std::shared_ptr<TextLayout> TextLayout::build(
    fz_context *ctx, pdf_page *page, PDFCancellation *cancel, mu::Error &error)
{
    mu::CookieScope cookieScope(cancel);
    const mu::DisplayList list(
        recordContents(ctx, page, cookieScope.cookie(), error, cookieScope.contentLimit()));
    if (!list || cookieScope.aborted())
        return nullptr;
    return fromList(ctx, list.p, cancel, error);
}

std::shared_ptr<TextLayout> TextLayout::fromList(fz_context *ctx, fz_display_list *list,
    PDFCancellation *cancel, mu::Error &error, bool withGeometry)
{
    mu::CookieScope cookieScope(cancel);
    fz_cookie *const cookie = cookieScope.cookie();
    mu::StextPage stext;
    mu::Device device;
    // Structured text wants y down: read page space with y flipped, and flip back below.
    const fz_matrix flip = fz_scale(1, -1);
    const bool ok = mu::run(ctx, error, [&] {
        stext.p = fz_new_stext_page(ctx, fz_transform_rect(fz_bound_display_list(ctx, list), flip));
        fz_stext_options options {};
        device.p = fz_new_stext_device(ctx, stext.p, &options);
        fz_run_display_list(ctx, list, device.p, flip, fz_infinite_rect, cookie);
        fz_close_device(ctx, device.p);
    });
    if (!ok || cookieScope.aborted())
        return nullptr;
    return fromStext(stext.p, withGeometry);
}

std::shared_ptr<TextLayout> TextLayout::fromStext(fz_stext_page *stext, bool withGeometry)
{
    auto layout = std::make_shared<TextLayout>();
    layout->text.reserve(4096);
    if (withGeometry) {
        layout->rects.reserve(4096);
        layout->lineOf.reserve(4096);
    }
    // One entry of geometry per UTF-16 unit of the text.
    const auto place = [&](const QRectF &rect, int line) {
        if (!withGeometry)
            return;
        layout->rects.push_back(rect);
        layout->lineOf.push_back(line);
    };
    int lineNumber = -1;
    for (fz_stext_block *block = stext->first_block; block; block = block->next) {
        if (block->type != FZ_STEXT_BLOCK_TEXT)
            continue;
        for (fz_stext_line *line = block->u.t.first_line; line; line = line->next) {
            if (!line->first_char)
                continue;
            if (lineNumber >= 0) {
                layout->text.append(QLatin1Char('\n'));
                place(QRectF(), lineNumber);
            }
            ++lineNumber;
            const int lineStart = layout->size();
            for (fz_stext_char *ch = line->first_char; ch; ch = ch->next) {
                QRectF rect;
                if (withGeometry) {
                    const fz_rect r = fz_rect_from_quad(ch->quad);
                    rect = QRectF(r.x0, -r.y1, r.x1 - r.x0, r.y1 - r.y0);
                }
                const char32_t code = static_cast<char32_t>(ch->c);
                if (QChar::requiresSurrogates(code)) {
                    layout->text.append(QChar(QChar::highSurrogate(code)));
                    layout->text.append(QChar(QChar::lowSurrogate(code)));
                    place(rect, lineNumber);
                } else {
                    layout->text.append(QChar(static_cast<char16_t>(code)));
                }
                place(rect, lineNumber);
            }
            layout->lines.push_back({ lineStart, layout->size() - lineStart });
        }
    }
    return layout;
}

int TextLayout::indexAtPoint(const QPointF &point) const
{
    for (int i = 0; i < size(); ++i) {
        const QRectF &r = rects[i];
        if (!r.isEmpty() && point.x() >= r.left() && point.x() < r.right() && point.y() >= r.top()
            && point.y() < r.bottom())
            return i;
    }
    return -1;
}

int TextLayout::nearestIndex(const QPointF &point) const
{
    if (lines.empty())
        return -1;
    // The nearest line first (by vertical distance), then the nearest character in it, so a
    // point beside a line selects from that line's end.
    const auto verticalDistance = [&](const PDFTextRange &line) {
        const QRectF box = bounds(line);
        if (point.y() < box.top())
            return box.top() - point.y();
        if (point.y() > box.bottom())
            return point.y() - box.bottom();
        return 0.0;
    };
    const PDFTextRange *best = &lines.front();
    double bestDistance = std::numeric_limits<double>::max();
    for (const PDFTextRange &line : lines) {
        const double distance = verticalDistance(line);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = &line;
        }
    }
    int bestIndex = best->location;
    double bestX = std::numeric_limits<double>::max();
    for (int i = best->location; i < best->end(); ++i) {
        const QRectF &r = rects[i];
        const double dx = point.x() < r.left() ? r.left() - point.x()
            : point.x() > r.right()            ? point.x() - r.right()
                                               : 0.0;
        if (dx < bestX) {
            bestX = dx;
            bestIndex = i;
        }
    }
    return bestIndex;
}

PDFTextRange TextLayout::wordRange(int index) const
{
    if (index < 0 || index >= size())
        return {};
    const auto isWord = [&](int i) { return text.at(i).isLetterOrNumber() || text.at(i) == u'\''; };
    if (!isWord(index))
        return { index, 1 };
    int start = index;
    int end = index + 1;
    while (start > 0 && isWord(start - 1) && lineOf[start - 1] == lineOf[index])
        --start;
    while (end < size() && isWord(end) && lineOf[end] == lineOf[index])
        ++end;
    return { start, end - start };
}

PDFTextRange TextLayout::lineRange(int index) const
{
    if (index < 0 || index >= size())
        return {};
    return lines[lineOf[index]];
}

PDFTextRange TextLayout::span(int first, int last, PDFSelectionGranularity granularity) const
{
    if (first > last)
        std::swap(first, last);
    int start = first;
    int end = last + 1;
    if (granularity == PDFSelectionGranularity::Word) {
        start = wordRange(first).location;
        end = wordRange(last).end();
    } else if (granularity == PDFSelectionGranularity::Line) {
        start = lineRange(first).location;
        end = lineRange(last).end();
    }
    return clamp({ start, end - start });
}

PDFTextRange TextLayout::clamp(const PDFTextRange &range) const
{
    const int start = std::clamp(range.location, 0, size());
    const int end = std::clamp(range.end(), start, size());
    return { start, end - start };
}

QRectF TextLayout::bounds(const PDFTextRange &range) const
{
    const PDFTextRange r = clamp(range);
    QRectF result;
    for (int i = r.location; i < r.end(); ++i) {
        if (rects[i].isEmpty())
            continue;
        result = result.isNull() ? rects[i] : result.united(rects[i]);
    }
    return result;
}
