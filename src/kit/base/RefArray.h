#pragma once

// An ordered list of strong references; elements compare by identity. Not to be changed while
// it is being iterated.

#include <QtGlobal>

#include <algorithm>
#include <memory>
#include <vector>

template <class T> class RefArray
{
public:
    using Ref = std::shared_ptr<T>;
    using const_iterator = typename std::vector<Ref>::const_iterator;

    qsizetype count() const { return qsizetype(m_items.size()); }
    bool isEmpty() const { return m_items.empty(); }

    // Null when the list is empty.
    Ref first() const { return m_items.empty() ? Ref() : m_items.front(); }
    Ref last() const { return m_items.empty() ? Ref() : m_items.back(); }
    const Ref &at(qsizetype index) const { return m_items.at(size_t(index)); }

    void append(Ref object) { m_items.push_back(std::move(object)); }
    void prepend(Ref object) { m_items.insert(m_items.begin(), std::move(object)); }

    // Removes every occurrence of this very object; returns how many went.
    qsizetype remove(const Ref &object)
    {
        return qsizetype(std::erase_if(m_items, [&](const Ref &item) { return item == object; }));
    }

    // The head, removed from the list; null when the list is empty.
    Ref takeFirst()
    {
        if (m_items.empty())
            return {};
        Ref head = std::move(m_items.front());
        m_items.erase(m_items.begin());
        return head;
    }

    // Removes every element for which predicate(const Ref &) is true; returns how many went.
    template <class Predicate> qsizetype removeIf(Predicate predicate)
    {
        return qsizetype(std::erase_if(m_items, predicate));
    }

    bool contains(const Ref &object) const
    {
        return std::find(m_items.cbegin(), m_items.cend(), object) != m_items.cend();
    }

    void clear() { m_items.clear(); }

    const_iterator begin() const { return m_items.cbegin(); }
    const_iterator end() const { return m_items.cend(); }

private:
    std::vector<Ref> m_items;
};
