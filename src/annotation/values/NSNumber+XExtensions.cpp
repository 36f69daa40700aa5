#include "NSNumber+XExtensions.h"

#include <array>

RomanNumeralException::RomanNumeralException(quint64 value)
    : m_reason(
        "The number " + std::to_string(value) + " is too big to represent as a roman numeral.")
{ }

QString romanNumeralValue(quint64 value)
{
    if (value >= 5000)
        throw RomanNumeralException(value);
    // "mmm" as the thousands' five makes 4000 come out as "mmmm".
    static const std::array<QString, 8> letters = { "i", "v", "x", "l", "c", "d", "m", "mmm" };
    // Each digit as a pattern over its place's one (1), five (5) and ten (X) letters.
    static const std::array<const char *, 10> patterns
        = { "", "1", "11", "111", "15", "5", "51", "511", "5111", "1X" };
    QString result;
    for (int place = 0; value > 0; ++place, value /= 10) {
        QString digit;
        for (const char *p = patterns[value % 10]; *p; ++p) {
            const int offset = *p == '1' ? 0 : *p == '5' ? 1 : 2;
            digit += letters[size_t(2 * place + offset)];
        }
        result.prepend(digit);
    }
    return result;
}

namespace {

QString repeatedCounter(quint64 value, quint64 cycle, char32_t (*letter)(quint64))
{
    if (value == 0)
        return {};
    const quint64 repeat = (value - 1) / cycle + 1;
    if (repeat > kMaxCounterRepeat)
        return {};
    return QString(QChar(letter((value - 1) % cycle))).repeated(qsizetype(repeat));
}

} // namespace

QString alphaCounterValue(quint64 value)
{
    return repeatedCounter(value, 26, [](quint64 k) { return char32_t('a' + k); });
}

QString greekCounterValue(quint64 value)
{
    // 945 is alpha; 962, the final sigma, is not a counter letter.
    return repeatedCounter(
        value, 24, [](quint64 k) { return char32_t(945 + k + (k >= 17 ? 1 : 0)); });
}
