// The common tokens of PDF syntax read straight from a stream's buffered bytes.
//
// MuPDF's lexer reads a token byte by byte through a function call each, and a page's content is
// mostly numbers and operators: on a page of drawings the lexer was more than half of reading the
// page, before anything could be drawn, and it is again in every page's text read. The engine is
// linked with --wrap=pdf_lex (see src/CMakeLists.txt): the function below skips white space and
// reads a plain number, operator or name whole when it ends inside the bytes already buffered,
// with the same result MuPDF's lexer gives; anything else (strings, comments, escapes, odd
// numbers, a token running past the buffer) goes on to MuPDF's lexer, from the token's start.

#include <mupdf/pdf.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>

extern "C" pdf_token __real_pdf_lex(fz_context *ctx, fz_stream *f, pdf_lexbuf *buf);

namespace {

enum ByteKind : unsigned char { Other, White, Delimiter, Plain };

// Each byte's kind: white space and delimiters end a token; a plain byte (printable, no escape)
// stands for itself.
constexpr std::array<unsigned char, 256> byteKinds()
{
    std::array<unsigned char, 256> kinds {};
    for (int c = '!'; c <= '~'; ++c)
        kinds[size_t(c)] = Plain;
    kinds['#'] = Other;
    for (const unsigned char c : { 0, 9, 10, 12, 13, 32 })
        kinds[c] = White;
    for (const unsigned char c : { '(', ')', '<', '>', '[', ']', '{', '}', '/', '%' })
        kinds[c] = Delimiter;
    return kinds;
}
constexpr std::array<unsigned char, 256> Kinds = byteKinds();

bool isDigit(unsigned char c)
{
    return c >= '0' && c <= '9';
}

// Where the token starting at start ends: the first white or delimiter byte; null when the
// buffered bytes end first.
const unsigned char *tokenEnd(const unsigned char *start, const unsigned char *end)
{
    for (const unsigned char *p = start; p < end; ++p) {
        if (Kinds[*p] == White || Kinds[*p] == Delimiter)
            return p;
    }
    return nullptr;
}

void copyToken(pdf_lexbuf *buf, const unsigned char *start, size_t length)
{
    std::memcpy(buf->scratch, start, length);
    buf->scratch[length] = '\0';
}

// An integer as MuPDF reads one: signs first, then digits, overflow wrapping.
int integerValue(const char *s)
{
    bool negative = false;
    while (*s == '-') {
        negative = true;
        ++s;
    }
    while (*s == '+')
        ++s;
    unsigned value = 0;
    for (; isDigit(static_cast<unsigned char>(*s)); ++s)
        value = value * 10 + unsigned(*s - '0');
    return int(negative ? 0u - value : value);
}

// A decimal of at most seven significant digits and ten places: both the digits and the power
// of ten are exact floats, so one division rounds it correctly, as MuPDF's own conversion does
// for so few digits. Anything else goes to that conversion.
float realValue(const char *s)
{
    static constexpr float Powers[]
        = { 1e0f, 1e1f, 1e2f, 1e3f, 1e4f, 1e5f, 1e6f, 1e7f, 1e8f, 1e9f, 1e10f };
    const char *p = s;
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+')
        ++p;
    std::uint32_t digits = 0;
    int significant = 0;
    int places = -1;
    bool any = false;
    for (; *p; ++p) {
        if (*p == '.') {
            places = 0;
            continue;
        }
        any = true;
        if (places >= 0)
            ++places;
        if (significant > 0 || *p != '0')
            ++significant;
        digits = digits * 10 + std::uint32_t(*p - '0');
        if (significant > 7 || places > 10)
            return fz_atof(s);
    }
    if (!any)
        return fz_atof(s);
    const float value = float(digits) / Powers[std::max(places, 0)];
    return negative ? -value : value;
}

// A number of an optional sign, digits and at most one point, whose point stands among its
// first ten characters; nothing for anything MuPDF's lexer reads another way.
std::optional<pdf_token> number(
    const unsigned char *start, const unsigned char *end, pdf_lexbuf *buf)
{
    const size_t length = size_t(end - start);
    if (length + 1 >= buf->size)
        return std::nullopt;
    const unsigned char *point = *start == '.' ? start : nullptr;
    for (const unsigned char *p = start + 1; p < end; ++p) {
        if (*p == '.' && !point)
            point = p;
        else if (!isDigit(*p))
            return std::nullopt;
    }
    copyToken(buf, start, length);
    if (!point) {
        buf->i = integerValue(buf->scratch);
        return PDF_TOK_INT;
    }
    if (point - start >= 10)
        return std::nullopt;
    buf->f = realValue(buf->scratch);
    return PDF_TOK_REAL;
}

// The tokens that a keyword's spelling turns into.
pdf_token keyword(const char *word)
{
    const auto is = [word](const char *other) { return std::strcmp(word, other) == 0; };
    switch (word[0]) {
    case 'R':
        return is("R") ? PDF_TOK_R : PDF_TOK_KEYWORD;
    case 't':
        return is("true") ? PDF_TOK_TRUE : is("trailer") ? PDF_TOK_TRAILER : PDF_TOK_KEYWORD;
    case 'f':
        return is("false") ? PDF_TOK_FALSE : PDF_TOK_KEYWORD;
    case 'n':
        return is("null") ? PDF_TOK_NULL : is("newobj") ? PDF_TOK_NEWOBJ : PDF_TOK_KEYWORD;
    case 'o':
        return is("obj") ? PDF_TOK_OBJ : PDF_TOK_KEYWORD;
    case 'e':
        return is("endobj")   ? PDF_TOK_ENDOBJ
            : is("endstream") ? PDF_TOK_ENDSTREAM
                              : PDF_TOK_KEYWORD;
    case 's':
        return is("stream")   ? PDF_TOK_STREAM
            : is("startxref") ? PDF_TOK_STARTXREF
                              : PDF_TOK_KEYWORD;
    case 'x':
        return is("xref") ? PDF_TOK_XREF : PDF_TOK_KEYWORD;
    default:
        return PDF_TOK_KEYWORD;
    }
}

// A name or keyword of plain bytes, shorter than the longest name MuPDF keeps, copied to buf;
// false for anything else.
bool plainWord(const unsigned char *start, const unsigned char *end, pdf_lexbuf *buf)
{
    const size_t length = size_t(end - start);
    if (length >= 127 || length >= buf->size)
        return false;
    for (const unsigned char *p = start; p < end; ++p) {
        if (Kinds[*p] != Plain)
            return false;
    }
    copyToken(buf, start, length);
    buf->len = length;
    return true;
}

} // namespace

extern "C" pdf_token __wrap_pdf_lex(fz_context *ctx, fz_stream *f, pdf_lexbuf *buf)
{
    const unsigned char *p = f->rp;
    const unsigned char *const end = f->wp;
    while (p < end && Kinds[*p] == White)
        ++p;
    f->rp = const_cast<unsigned char *>(p);
    if (p < end) {
        const unsigned char c = *p;
        if (isDigit(c) || c == '-' || c == '+' || c == '.') {
            // A sign doubled is read by MuPDF's own rules.
            const unsigned char *stop = tokenEnd(p + 1, end);
            if (stop && !(c == '-' && p + 1 < stop && p[1] == '-')) {
                if (const std::optional<pdf_token> token = number(p, stop, buf)) {
                    f->rp = const_cast<unsigned char *>(stop);
                    return *token;
                }
            }
        } else if (c == '/') {
            const unsigned char *stop = tokenEnd(p + 1, end);
            if (stop && plainWord(p + 1, stop, buf)) {
                f->rp = const_cast<unsigned char *>(stop);
                return PDF_TOK_NAME;
            }
        } else if (Kinds[c] == Plain) {
            const unsigned char *stop = tokenEnd(p + 1, end);
            if (stop && plainWord(p, stop, buf)) {
                f->rp = const_cast<unsigned char *>(stop);
                return keyword(buf->scratch);
            }
        } else if (c == '[' || c == ']') {
            f->rp = const_cast<unsigned char *>(p + 1);
            return c == '[' ? PDF_TOK_OPEN_ARRAY : PDF_TOK_CLOSE_ARRAY;
        }
    }
    return __real_pdf_lex(ctx, f, buf);
}
