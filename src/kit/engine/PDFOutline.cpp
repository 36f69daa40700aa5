#include "PDFOutline.h"

#include "OutlineIO.h"
#include "PDFActionGoTo.h"
#include "PDFDocumentPrivate.h"

#include <algorithm>

std::shared_ptr<PDFDocument> PDFOutline::document() const
{
    const PDFOutline *item = this;
    std::shared_ptr<PDFOutline> holder;
    while (auto up = item->parent()) {
        holder = up;
        item = holder.get();
    }
    return item->m_document.lock();
}

std::shared_ptr<PDFOutline> PDFOutline::parent() const
{
    return m_parent.lock();
}

int PDFOutline::index() const
{
    const auto up = parent();
    if (!up)
        return 0;
    const auto found = std::find_if(up->m_children.begin(), up->m_children.end(),
        [this](const auto &child) { return child.get() == this; });
    return static_cast<int>(found - up->m_children.begin());
}

int PDFOutline::numberOfChildren() const
{
    return static_cast<int>(m_children.size());
}

std::shared_ptr<PDFOutline> PDFOutline::childAtIndex(int index) const
{
    if (index < 0 || index >= numberOfChildren())
        return nullptr;
    return m_children[static_cast<size_t>(index)];
}

void PDFOutline::insertChild(const std::shared_ptr<PDFOutline> &child, int index)
{
    if (!child || child.get() == this)
        return;
    // A child may not take in one of its own ancestors.
    for (auto up = parent(); up; up = up->parent())
        if (up == child)
            return;
    const auto keep = child;
    child->removeFromParent();
    if (index < 0 || index > numberOfChildren())
        index = numberOfChildren();
    m_children.insert(m_children.begin() + index, child);
    child->m_parent = weak_from_this();
}

void PDFOutline::removeFromParent()
{
    const auto up = parent();
    if (!up)
        return;
    auto &siblings = up->m_children;
    siblings.erase(std::remove_if(siblings.begin(), siblings.end(),
                       [this](const auto &child) { return child.get() == this; }),
        siblings.end());
    m_parent.reset();
}

std::shared_ptr<PDFDestination> PDFOutline::destination() const
{
    if (const auto unread = std::exchange(m_unread, nullptr))
        m_destination = PDFDocumentPrivate::readOutlineDestination(*unread);
    return m_destination;
}

void PDFOutline::setDestination(const std::shared_ptr<PDFDestination> &destination)
{
    m_unread.reset();
    m_destination = destination;
}

std::shared_ptr<PDFAction> PDFOutline::action() const
{
    if (m_action)
        return m_action;
    if (const auto target = destination())
        return std::make_shared<PDFActionGoTo>(target);
    return nullptr;
}
