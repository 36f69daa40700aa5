#pragma once

// A weak reference to an object of shared lifetime: it never keeps the object alive and reads
// null once the last owner has let go.

#include <memory>

template <class T> class WeakRef
{
public:
    WeakRef() = default;
    WeakRef(const std::shared_ptr<T> &object)
        : m_object(object)
    { }

    // A strong reference for the time of use, or null when the object is gone.
    std::shared_ptr<T> lock() const { return m_object.lock(); }
    bool isAlive() const { return !m_object.expired(); }

    // Identity, still answerable after the object is gone.
    bool refersTo(const std::shared_ptr<T> &object) const
    {
        return !m_object.owner_before(object) && !object.owner_before(m_object) && object;
    }

private:
    std::weak_ptr<T> m_object;
};
