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
    // Rows are as wide as the list shows them: the option's rect is the viewport's in one of
    // the list's layout passes and the whole content's in another, or none in a tree view.
    const auto *const view = qobject_cast<const QAbstractItemView *>(option.widget);
    const int width = view ? view->viewport()->width() : option.rect.width();
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
