#pragma once

// Whole numbers as page-label counters (roman, letters, Greek letters) and stepped by one.
// Pure functions, any thread.

#include <QString>

#include <exception>
#include <string>

// Raised by romanNumeralValue for a value it cannot write.
class RomanNumeralException : public std::exception
{
public:
    explicit RomanNumeralException(quint64 value);
    const char *name() const noexcept { return "Roman Numeral Exception"; }
    const char *what() const noexcept override { return m_reason.c_str(); }

private:
    std::string m_reason;
};

inline qint64 numberByAddingOne(qint64 value)
{
    return value + 1;
}
inline qint64 numberBySubstractingOne(qint64 value)
{
    return value - 1;
}

// Lower-case roman numerals; 0 is the empty text, 4000 to 4999 use four m's. Throws
// RomanNumeralException from 5000 on.
QString romanNumeralValue(quint64 value);

// a..z, then aa..zz, aaa..: the letter of (n - 1) mod 26, written (n - 1) / 26 + 1 times. 0 is
// the empty text.
QString alphaCounterValue(quint64 value);

// The same over the 24 Greek small letters alpha..omega (final sigma passed over).
QString greekCounterValue(quint64 value);

// Counters come from page labels, whose start value a file may set to anything: a value whose
// letters would be repeated more than this gives the empty text instead of a huge string.
inline constexpr quint64 kMaxCounterRepeat = 1000;
