#include "PDFSidebarListDelegate.h"

#include "PDFSidebarTabContents.h"

PDFSidebarListDelegate::PDFSidebarListDelegate(int groupRole, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_groupRole(groupRole)
{ }

QSize PDFSidebarListDelegate::sizeHint(
    const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const int width = option.rect.width();
    if (index.data(m_groupRole).toBool())
        return { width, int(PDFSidebarTabContents::sectionRowHeight) };
    if (width != m_measuredWidth) {
        m_heights.clear();
        m_measuredWidth = width;
    }
    if (const auto found = m_heights.constFind(index.row()); found != m_heights.constEnd())
        return { width, *found };
    const int height = measureRowHeight(option, index, width);
    m_heights.insert(index.row(), height);
    return { width, height };
}
