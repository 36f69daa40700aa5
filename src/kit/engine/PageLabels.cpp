#include "PageLabels.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

namespace {

constexpr int MaxDepth = 32;
constexpr int MaxRanges = 100000;

// Beyond these a numeral or letter label would be longer than any page number: such values are
// written in digits instead.
constexpr int MaxRoman = 4999;
constexpr int MaxLetters = 26 * 20;

void collect(fz_context *ctx, pdf_obj *node, int depth, std::vector<PageLabels::Range> &ranges,
    std::unordered_set<int> &seen)
{
    if (depth > MaxDepth || static_cast<int>(ranges.size()) > MaxRanges)
        return;
    int number = 0;
    mu::runQuietly(ctx, [&] { number = pdf_to_num(ctx, node); });
    // A node met twice would be read again on every path to it: loops and shared subtrees.
    if (number > 0 && !seen.insert(number).second)
        return;
    pdf_obj *nums = nullptr;
    pdf_obj *kids = nullptr;
    int numCount = 0;
    int kidCount = 0;
    mu::Error error;
    mu::run(ctx, error, [&] {
        nums = pdf_dict_get(ctx, node, PDF_NAME(Nums));
        kids = pdf_dict_get(ctx, node, PDF_NAME(Kids));
        numCount = pdf_array_len(ctx, nums);
        kidCount = pdf_array_len(ctx, kids);
    });
    if (error.failed)
        return;
    for (int i = 0; i + 1 < numCount; i += 2) {
        PageLabels::Range range;
        const char *style = nullptr;
        const char *prefix = nullptr;
        bool valid = false;
        mu::Error itemError;
        mu::run(ctx, itemError, [&] {
            pdf_obj *key = pdf_array_get(ctx, nums, i);
            pdf_obj *value = pdf_array_get(ctx, nums, i + 1);
            if (!pdf_is_int(ctx, key) || !pdf_is_dict(ctx, value))
                fz_throw(ctx, FZ_ERROR_GENERIC, "bad page label entry");
            range.firstPage = pdf_to_int(ctx, key);
            style = pdf_to_name(ctx, pdf_dict_get(ctx, value, PDF_NAME(S)));
            prefix = pdf_dict_get_text_string(ctx, value, PDF_NAME(P));
            pdf_obj *start = pdf_dict_gets(ctx, value, "St");
            range.start = pdf_is_int(ctx, start) ? pdf_to_int(ctx, start) : 1;
            valid = true;
        });
        if (!valid || range.firstPage < 0)
            continue;
        if (style && std::strlen(style) == 1 && std::strchr("DRrAa", style[0]))
            range.style = style[0];
        range.prefix = prefix ? QString::fromUtf8(prefix) : QString();
        range.start = std::max(1, range.start);
        ranges.push_back(range);
    }
    for (int i = 0; i < kidCount; ++i) {
        pdf_obj *kid = nullptr;
        mu::Error kidError;
        mu::run(ctx, kidError, [&] { kid = pdf_array_get(ctx, kids, i); });
        if (kid)
            collect(ctx, kid, depth + 1, ranges, seen);
    }
}

} // namespace

PageLabels PageLabels::read(fz_context *ctx, pdf_document *doc)
{
    PageLabels labels;
    pdf_obj *root = nullptr;
    mu::Error error;
    mu::run(ctx, error, [&] {
        root = pdf_dict_gets(
            ctx, pdf_dict_get(ctx, pdf_trailer(ctx, doc), PDF_NAME(Root)), "PageLabels");
    });
    if (!root)
        return labels;
    std::unordered_set<int> seen;
    collect(ctx, root, 0, labels.m_ranges, seen);
    std::stable_sort(labels.m_ranges.begin(), labels.m_ranges.end(),
        [](const Range &a, const Range &b) { return a.firstPage < b.firstPage; });
    return labels;
}

QString PageLabels::labelForIndex(int index) const
{
    if (index < 0)
        return {};
    const auto after = std::upper_bound(m_ranges.begin(), m_ranges.end(), index,
        [](int i, const Range &range) { return i < range.firstPage; });
    if (after == m_ranges.begin())
        return QString::number(index + 1);
    const Range &range = *(after - 1);
    const qint64 value = qint64(range.start) + index - range.firstPage;
    switch (range.style) {
    case 'D':
        return range.prefix + QString::number(value);
    case 'R':
    case 'r':
        return range.prefix
            + (value > MaxRoman ? QString::number(value) : roman(int(value), range.style == 'R'));
    case 'A':
    case 'a':
        return range.prefix
            + (value > MaxLetters ? QString::number(value)
                                  : letters(int(value), range.style == 'A'));
    default:
        return range.prefix;
    }
}

QString PageLabels::roman(int value, bool upper)
{
    static const struct
    {
        int value;
        const char *text;
    } digits[] = { { 1000, "m" }, { 900, "cm" }, { 500, "d" }, { 400, "cd" }, { 100, "c" },
        { 90, "xc" }, { 50, "l" }, { 40, "xl" }, { 10, "x" }, { 9, "ix" }, { 5, "v" }, { 4, "iv" },
        { 1, "i" } };
    QString text;
    for (const auto &digit : digits) {
        while (value >= digit.value) {
            text += QLatin1String(digit.text);
            value -= digit.value;
        }
    }
    return upper ? text.toUpper() : text;
}

QString PageLabels::letters(int value, bool upper)
{
    // 1 → a, 26 → z, 27 → aa, 28 → bb: the letter repeated once per round of the alphabet.
    if (value < 1)
        return {};
    const QChar letter = QChar(u'a' + (value - 1) % 26);
    const QString text(((value - 1) / 26) + 1, letter);
    return upper ? text.toUpper() : text;
}
