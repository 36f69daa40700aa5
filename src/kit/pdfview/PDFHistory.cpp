#include "PDFHistory.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr size_t MaxEntries = 100;

} // namespace

void PDFHistory::recordJump(const Entry &from)
{
    if (from.page.expired())
        return;
    dropDead(m_back);
    if (m_back.empty() || !samePlace(m_back.back(), from))
        m_back.push_back(from);
    if (m_back.size() > MaxEntries)
        m_back.erase(m_back.begin());
    m_forward.clear();
}

bool PDFHistory::canGoBack() const
{
    return std::any_of(
        m_back.begin(), m_back.end(), [](const Entry &e) { return !e.page.expired(); });
}

bool PDFHistory::canGoForward() const
{
    return std::any_of(
        m_forward.begin(), m_forward.end(), [](const Entry &e) { return !e.page.expired(); });
}

PDFHistory::Entry PDFHistory::goBack(const Entry &current)
{
    dropDead(m_back);
    if (m_back.empty())
        return {};
    const Entry target = m_back.back();
    m_back.pop_back();
    if (!current.page.expired())
        m_forward.push_back(current);
    return target;
}

PDFHistory::Entry PDFHistory::goForward(const Entry &current)
{
    dropDead(m_forward);
    if (m_forward.empty())
        return {};
    const Entry target = m_forward.back();
    m_forward.pop_back();
    if (!current.page.expired())
        m_back.push_back(current);
    return target;
}

void PDFHistory::clear()
{
    m_back.clear();
    m_forward.clear();
}

void PDFHistory::dropDead(std::vector<Entry> &list)
{
    std::erase_if(list, [](const Entry &e) { return e.page.expired(); });
}

bool PDFHistory::samePlace(const Entry &a, const Entry &b)
{
    return a.page.lock() == b.page.lock() && std::abs(a.point.x() - b.point.x()) < 1
        && std::abs(a.point.y() - b.point.y()) < 1;
}
