#pragma once

// The base of the sidebar lists' delegates: group rows take the section height, other rows are
// measured once per row for the width of the list and kept until the width or the rows change.

#include <QHash>
#include <QStyledItemDelegate>

class PDFSidebarListDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    // groupRole: the model's role that is true for a group (page header) row.
    explicit PDFSidebarListDelegate(int groupRole, QObject *parent = nullptr);

    // Forgets the measured heights; the list calls this when its rows are replaced.
    void clearHeights() { m_heights.clear(); }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const final;

protected:
    // The height of a row that is not a group row, at the given width.
    virtual int measureRowHeight(
        const QStyleOptionViewItem &option, const QModelIndex &index, int width) const = 0;

private:
    const int m_groupRole;
    mutable QHash<int, int> m_heights;
    mutable int m_measuredWidth = -1;
};
