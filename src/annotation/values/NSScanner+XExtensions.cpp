#include "NSScanner+XExtensions.h"

#include <algorithm>

Scanner::Scanner(QString string)
    : m_string(std::move(string))
    , m_skip(whitespaceAndNewlineCharacterSet())
{ }

void Scanner::setScanLocation(qsizetype location)
{
    m_location = std::clamp(location, qsizetype(0), m_string.size());
}

bool Scanner::isAtEnd() const
{
    return nextUnskipped() >= m_string.size();
}

bool Scanner::scanCharacter(QChar *character)
{
    const qsizetype next = nextUnskipped();
    if (next >= m_string.size())
        return false;
    if (character)
        *character = m_string.at(next);
    m_location = next + 1;
    return true;
}

bool Scanner::peekCharacter(QChar *character) const
{
    const qsizetype next = nextUnskipped();
    if (next >= m_string.size())
        return false;
    if (character)
        *character = m_string.at(next);
    return true;
}

qsizetype Scanner::nextUnskipped() const
{
    qsizetype index = m_location;
    while (m_skip && index < m_string.size() && m_skip(m_string.at(index)))
        ++index;
    return index;
}
