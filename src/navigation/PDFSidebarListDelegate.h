#pragma once

// The base of the sidebar lists' delegates: group rows take the section height, other rows are
// measured once for the width of the list and kept, per row or per the model's key of a row,
// until the width changes or the row is said to have changed.

#include <QHash>
#include <QStyledItemDelegate>

class PDFSidebarListDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    // groupRole: the model's role that is true for a group (page header) row. keyRole: a role
    // giving a number that stays with a row's item while rows move; 0 keys heights by row.
    explicit PDFSidebarListDelegate(int groupRole, int keyRole = 0, QObject *parent = nullptr);

    // Forgets the measured heights; the list calls this when its rows are replaced.
    void clearHeights() { m_heights.clear(); }
    // Forgets the height of one row, whose text changed.
    void forgetHeight(const QModelIndex &index) { m_heights.remove(keyOf(index)); }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const final;

protected:
    // The height of a row that is not a group row, at the given width.
    virtual int measureRowHeight(
        const QStyleOptionViewItem &option, const QModelIndex &index, int width) const = 0;
    // A group row: the page number in a bubble at left, vertically centred in rect.
    static void paintPageBubble(
        QPainter *painter, const QStyleOptionViewItem &option, int left, const QString &number);

private:
    quint64 keyOf(const QModelIndex &index) const;

    const int m_groupRole;
    const int m_keyRole;
    mutable QHash<quint64, int> m_heights;
    mutable int m_measuredWidth = -1;
};
