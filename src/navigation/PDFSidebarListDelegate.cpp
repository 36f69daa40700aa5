#include "PDFSidebarListDelegate.h"

#include "PDFSidebarTabContents.h"

#include <QAbstractItemView>

PDFSidebarListDelegate::PDFSidebarListDelegate(int groupRole, int keyRole, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_groupRole(groupRole)
    , m_keyRole(keyRole)
{ }

quint64 PDFSidebarListDelegate::keyOf(const QModelIndex &index) const
{
    return m_keyRole ? index.data(m_keyRole).toULongLong() : quint64(index.row());
}

QSize PDFSidebarListDelegate::sizeHint(
    const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    // A tree view measures rows without a width: the list's own is the one that counts.
    int width = option.rect.width();
    if (width <= 0) {
        const auto *const view = qobject_cast<const QAbstractItemView *>(option.widget);
        width = view ? view->viewport()->width() : 0;
    }
    if (index.data(m_groupRole).toBool())
        return { width, int(PDFSidebarTabContents::sectionRowHeight) };
    if (width != m_measuredWidth) {
        m_heights.clear();
        m_measuredWidth = width;
    }
    const quint64 key = keyOf(index);
    if (const auto found = m_heights.constFind(key); found != m_heights.constEnd())
        return { width, *found };
    const int height = measureRowHeight(option, index, width);
    m_heights.insert(key, height);
    return { width, height };
}
