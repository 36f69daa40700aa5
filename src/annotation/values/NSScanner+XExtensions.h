#pragma once

// A position in a text that hands out one UTF-16 unit at a time, passing over the units of a
// skip set first. A copyable value; any thread, one at a time.

#include "NSCharacterSet+XExtensions.h"

#include <QString>

class Scanner
{
public:
    // Skips white space and newlines until told otherwise.
    explicit Scanner(QString string);

    const QString &string() const { return m_string; }
    qsizetype scanLocation() const { return m_location; }
    // Clamped to the text.
    void setScanLocation(qsizetype location);
    const CharacterSet &charactersToBeSkipped() const { return m_skip; }
    // An empty set skips nothing.
    void setCharactersToBeSkipped(CharacterSet set) { m_skip = std::move(set); }
    // Whether only skipped units remain.
    bool isAtEnd() const;

    // Passes over skipped units, hands out the next unit (when character is not null) and moves
    // past it: true. At the end: false, and the location stays where it was.
    bool scanCharacter(QChar *character = nullptr);
    // The same, but the location stays in every case.
    bool peekCharacter(QChar *character = nullptr) const;

private:
    // The index of the next unit that is not skipped; the text's length when there is none.
    qsizetype nextUnskipped() const;

    QString m_string;
    qsizetype m_location = 0;
    CharacterSet m_skip;
};
