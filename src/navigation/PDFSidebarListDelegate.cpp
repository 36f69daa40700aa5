#include "PDFSidebarListDelegate.h"

#include "PDFSidebarTabContents.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>

#include <QAbstractItemView>
#include <QPainter>

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

void PDFSidebarListDelegate::paintPageBubble(
    QPainter *painter, const QStyleOptionViewItem &option, int left, const QString &number)
{
    const FDTheme *const theme = FDThemeProvider::current();
    QFont font = option.font;
    font.setBold(true);
    painter->setFont(font);
    const int bubbleWidth = qMax(QFontMetrics(font).horizontalAdvance(number) + 16, 28);
    const QRect bubble(left, option.rect.center().y() - 11, bubbleWidth, 22);
    painter->setPen(Qt::NoPen);
    painter->setBrush(theme->color(FDTheme::secondaryLabelColor));
    painter->drawRoundedRect(bubble, 11, 11);
    painter->setPen(theme->color(FDTheme::tableViewBackgroundColor));
    painter->drawText(bubble, Qt::AlignCenter, number);
}
