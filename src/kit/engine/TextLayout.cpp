#include "TextLayout.h"

#include "PDFRenderPrivate.h"
#include "mupdf/MuOwned.h"
#include "mupdf/WorkBudget.h"

#include <algorithm>
#include <limits>

fz_stext_page *TextLayout::readContents(fz_context *ctx, pdf_document *doc, pdf_obj *pageObject,
    fz_cookie *cookie, mu::Error &error, qint64 contentLimit)
{
    mu::StextPage stext;
    mu::Device device;
    mu::Processor processor;
    mu::run(ctx, error, [&] {
        // Page space with y flipped (structured text wants y down); the rects are flipped back
        // when the text is flattened.
        fz_rect mediabox;
        fz_matrix pageToFz;
        pdf_page_obj_transform(ctx, pageObject, &mediabox, &pageToFz);
        const fz_matrix toPage = fz_concat(fz_invert_matrix(pageToFz), fz_scale(1, -1));
        pdf_obj *const contents = pdf_dict_get(ctx, pageObject, PDF_NAME(Contents));
        pdf_obj *const resources = pdf_dict_get_inheritable(ctx, pageObject, PDF_NAME(Resources));
        mu::checkContentLength(ctx, doc, contents, cookie, contentLimit);
        stext.p = fz_new_stext_page(ctx, fz_transform_rect(mediabox, toPage));
        fz_stext_options options {};
        device.p = fz_new_stext_device(ctx, stext.p, &options);
        processor.p = pdf_new_run_processor(
            ctx, device.p, fz_concat(pageToFz, toPage), "View", nullptr, nullptr, cookie);
        pdf_process_contents(ctx, processor.p, doc, resources, contents, cookie);
        pdf_close_processor(ctx, processor.p);
        fz_close_device(ctx, device.p);
    });
    if (error.failed)
        return nullptr;
    return stext.release();
}

std::shared_ptr<TextLayout> TextLayout::build(
    fz_context *ctx, pdf_page *page, PDFCancellation *cancel, mu::Error &error)
{
    mu::CookieScope cookieScope(cancel);
    const mu::StextPage stext(readContents(
        ctx, page->doc, page->obj, cookieScope.cookie(), error, cookieScope.contentLimit()));
    if (!stext || cookieScope.aborted())
        return nullptr;
    return fromStext(stext.p, true);
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
