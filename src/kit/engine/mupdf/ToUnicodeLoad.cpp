// A font's text map built from the codes its ToUnicode map names, not from every code its
// encoding can name.
//
// MuPDF builds the map that turns a font's glyphs into text by looking up, in the file's ToUnicode
// map, each code of the font's encoding: 65,536 lookups for an Identity-H font whose ToUnicode
// names a few hundred codes. On a page of four such fonts that was a third of reading the page,
// before anything could be drawn. The engine is linked with --wrap=pdf_load_to_unicode (see
// src/CMakeLists.txt): the function below makes the same calls in the same order for the codes
// the ToUnicode map (or a map it uses) names, and skips the codes for which the lookup finds
// nothing, so the map it builds is the same. Everything else goes on to MuPDF's function.
//
// MuPDF errors unwind through here by longjmp: nothing below holds an object with a destructor.

#include <mupdf/pdf.h>

#include <algorithm>
#include <cstdint>

extern "C" void __real_pdf_load_to_unicode(fz_context *ctx, pdf_document *doc, pdf_font_desc *font,
    const char **strings, char *collection, pdf_obj *cmapstm);

namespace {

// Codes low to high, both included.
struct CodeSpan
{
    std::uint32_t low;
    std::uint32_t high;
};

struct CodeSpans
{
    CodeSpan *items;
    int count;
};

// A chain of maps longer than this is looked through whole rather than trusted.
constexpr int MaxUsedMaps = 32;

// The codes for which a lookup in map, or in the maps it uses, can find text: sorted and merged.
CodeSpans namedCodes(fz_context *ctx, const pdf_cmap *map)
{
    std::int64_t total = 0;
    int depth = 0;
    for (const pdf_cmap *used = map; used && depth <= MaxUsedMaps; used = used->usecmap, ++depth)
        total += std::int64_t(used->rlen) + used->xlen + used->mlen;
    if (depth > MaxUsedMaps) {
        CodeSpans all { static_cast<CodeSpan *>(fz_malloc(ctx, sizeof(CodeSpan))), 1 };
        all.items[0] = { 0, UINT32_MAX };
        return all;
    }
    if (total == 0)
        return { nullptr, 0 };
    if (total > INT32_MAX / std::int64_t(sizeof(CodeSpan)))
        fz_throw(ctx, FZ_ERROR_GENERIC, "ToUnicode map too large");

    CodeSpans spans { static_cast<CodeSpan *>(fz_malloc(ctx, size_t(total) * sizeof(CodeSpan))),
        0 };
    for (const pdf_cmap *used = map; used; used = used->usecmap) {
        for (int i = 0; i < used->rlen; ++i)
            spans.items[spans.count++] = { used->ranges[i].low, used->ranges[i].high };
        for (int i = 0; i < used->xlen; ++i)
            spans.items[spans.count++] = { used->xranges[i].low, used->xranges[i].high };
        for (int i = 0; i < used->mlen; ++i)
            spans.items[spans.count++] = { used->mranges[i].low, used->mranges[i].low };
    }
    std::sort(spans.items, spans.items + spans.count,
        [](const CodeSpan &a, const CodeSpan &b) { return a.low < b.low; });
    int merged = 0;
    for (int i = 0; i < spans.count; ++i) {
        const CodeSpan span = spans.items[i];
        if (span.high < span.low)
            continue;
        if (merged > 0
            && std::uint64_t(span.low) <= std::uint64_t(spans.items[merged - 1].high) + 1)
            spans.items[merged - 1].high = std::max(spans.items[merged - 1].high, span.high);
        else
            spans.items[merged++] = span;
    }
    spans.count = merged;
    return spans;
}

// Codes first to first + count of the encoding, whose glyphs start at glyph: each named code's
// text goes to its glyph, as MuPDF's own remap does it.
void remapCodes(fz_context *ctx, pdf_cmap *textFromGlyph, std::uint32_t first, std::uint32_t glyph,
    std::uint32_t count, pdf_cmap *textFromCode, const CodeSpans &spans)
{
    const std::uint64_t last = std::uint64_t(first) + count;
    const CodeSpan *begin = spans.items;
    const CodeSpan *end = begin + spans.count;
    const CodeSpan *span = std::lower_bound(
        begin, end, first, [](const CodeSpan &s, std::uint32_t code) { return s.high < code; });
    for (; span != end && span->low <= last; ++span) {
        const std::uint64_t to = std::min<std::uint64_t>(span->high, last);
        for (std::uint64_t code = std::max(span->low, first); code <= to; ++code) {
            int text[8];
            const int length = pdf_lookup_cmap_full(textFromCode, unsigned(code), text);
            const unsigned at = glyph + unsigned(code - first);
            if (length == 1)
                pdf_map_range_to_range(ctx, textFromGlyph, at, at, text[0]);
            else if (length > 1)
                pdf_map_one_to_many(ctx, textFromGlyph, at, text, size_t(length));
        }
    }
}

pdf_cmap *remap(
    fz_context *ctx, pdf_cmap *glyphFromCode, pdf_cmap *textFromCode, const CodeSpans &spans)
{
    pdf_cmap *textFromGlyph = pdf_new_cmap(ctx);
    fz_try(ctx)
    {
        if (glyphFromCode->usecmap)
            textFromGlyph->usecmap = remap(ctx, glyphFromCode->usecmap, textFromCode, spans);
        for (int i = 0; i < glyphFromCode->codespace_len; ++i)
            pdf_add_codespace(ctx, textFromGlyph, glyphFromCode->codespace[i].low,
                glyphFromCode->codespace[i].high, size_t(glyphFromCode->codespace[i].n));
        for (int i = 0; i < glyphFromCode->rlen; ++i) {
            const pdf_range &range = glyphFromCode->ranges[i];
            remapCodes(ctx, textFromGlyph, range.low, range.out, unsigned(range.high - range.low),
                textFromCode, spans);
        }
        for (int i = 0; i < glyphFromCode->xlen; ++i) {
            const pdf_xrange &range = glyphFromCode->xranges[i];
            remapCodes(ctx, textFromGlyph, range.low, range.out, range.high - range.low,
                textFromCode, spans);
        }
        // Encodings have no one-to-many entries.
        pdf_sort_cmap(ctx, textFromGlyph);
    }
    fz_catch(ctx)
    {
        pdf_drop_cmap(ctx, textFromGlyph);
        fz_rethrow(ctx);
    }
    return textFromGlyph;
}

} // namespace

extern "C" void __wrap_pdf_load_to_unicode(fz_context *ctx, pdf_document *doc, pdf_font_desc *font,
    const char **strings, char *collection, pdf_obj *cmapstm)
{
    const bool stream = pdf_is_stream(ctx, cmapstm);
    if (!font->encoding || (!stream && !pdf_is_name(ctx, cmapstm))) {
        __real_pdf_load_to_unicode(ctx, doc, font, strings, collection, cmapstm);
        return;
    }
    pdf_cmap *textFromCode = stream ? pdf_load_embedded_cmap(ctx, doc, cmapstm)
                                    : pdf_load_system_cmap(ctx, pdf_to_name(ctx, cmapstm));
    CodeSpans spans { nullptr, 0 };
    fz_var(spans);
    fz_try(ctx)
    {
        spans = namedCodes(ctx, textFromCode);
        font->to_unicode = remap(ctx, font->encoding, textFromCode, spans);
    }
    fz_always(ctx)
    {
        fz_free(ctx, spans.items);
        pdf_drop_cmap(ctx, textFromCode);
    }
    fz_catch(ctx)
    {
        fz_rethrow(ctx);
    }
    font->size += pdf_cmap_size(ctx, font->to_unicode);
    // The glyph names' text, which MuPDF keeps beside the map.
    __real_pdf_load_to_unicode(ctx, doc, font, strings, nullptr, nullptr);
}
