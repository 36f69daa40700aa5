#include "PDFBookmarkModel.h"

#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>

PDFBookmarkModel::PDFBookmarkModel(QObject *parent)
    : QAbstractTableModel(parent)
{ }

void PDFBookmarkModel::setDocument(const std::shared_ptr<FDDocument> &document)
{
    beginResetModel();
    m_document = document;
    m_rows = document ? document->bookmarks() : QList<std::shared_ptr<FDBookmark>>();
    endResetModel();
}

std::shared_ptr<FDBookmark> PDFBookmarkModel::bookmarkAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? m_rows.at(row) : nullptr;
}

int PDFBookmarkModel::rowOf(const std::shared_ptr<FDBookmark> &bookmark) const
{
    return int(m_rows.indexOf(bookmark));
}

void PDFBookmarkModel::bookmarkAdded(int index, const std::shared_ptr<FDBookmark> &bookmark)
{
    if (!bookmark || index < 0 || index > m_rows.size())
        return;
    beginInsertRows({}, index, index);
    m_rows.insert(index, bookmark);
    endInsertRows();
}

void PDFBookmarkModel::bookmarkRemoved(int index)
{
    if (index < 0 || index >= m_rows.size())
        return;
    beginRemoveRows({}, index, index);
    m_rows.removeAt(index);
    endRemoveRows();
}

void PDFBookmarkModel::bookmarkChanged(const std::shared_ptr<FDBookmark> &bookmark)
{
    const int row = rowOf(bookmark);
    if (row >= 0)
        emit dataChanged(index(row, TitleColumn), index(row, PageColumn));
}

int PDFBookmarkModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int PDFBookmarkModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 2;
}

QVariant PDFBookmarkModel::data(const QModelIndex &index, int role) const
{
    const auto bookmark = bookmarkAt(index.row());
    if (!bookmark)
        return {};
    if (index.column() == TitleColumn) {
        if (role == Qt::DisplayRole || role == Qt::EditRole || role == Qt::ToolTipRole)
            return bookmark->title();
    } else if (index.column() == PageColumn) {
        if (role == Qt::DisplayRole)
            return bookmark->page() ? bookmark->page()->label() : QString();
        if (role == Qt::TextAlignmentRole)
            return int(Qt::AlignRight | Qt::AlignVCenter);
    }
    return {};
}

bool PDFBookmarkModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const auto bookmark = bookmarkAt(index.row());
    const auto document = m_document.lock();
    if (role != Qt::EditRole || index.column() != TitleColumn || !bookmark || !document)
        return false;
    // The row shows the new title when the document announces it.
    document->updateBookmark(bookmark, value.toString());
    return true;
}

Qt::ItemFlags PDFBookmarkModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == TitleColumn)
        flags |= Qt::ItemIsEditable;
    return flags;
}
