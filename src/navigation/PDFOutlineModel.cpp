#include "PDFOutlineModel.h"

#include "PDFOutline+XExtensions.h"

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFOutline.h>

#include <QMimeData>

const QString PDFOutlineModel::PasteboardType = QStringLiteral("Folidoc.Pasteboard.PDFOutline");

PDFOutlineModel::PDFOutlineModel(QObject *parent)
    : QAbstractItemModel(parent)
{ }

void PDFOutlineModel::setDocument(const std::shared_ptr<PDFDocument> &document)
{
    beginResetModel();
    m_document = document;
    endResetModel();
}

std::shared_ptr<PDFOutline> PDFOutlineModel::root() const
{
    const auto current = m_document.lock();
    return current ? current->outlineRoot() : nullptr;
}

PDFOutline *PDFOutlineModel::itemAt(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<PDFOutline *>(index.internalPointer()) : nullptr;
}

PDFOutline *PDFOutlineModel::parentOrRoot(const QModelIndex &index) const
{
    if (index.isValid())
        return itemAt(index);
    const auto current = m_document.lock();
    const auto top = current ? current->outlineRoot() : nullptr;
    return top.get();
}

std::shared_ptr<PDFOutline> PDFOutlineModel::itemForIndex(const QModelIndex &index) const
{
    PDFOutline *const item = itemAt(index);
    return item ? item->shared_from_this() : nullptr;
}

QModelIndex PDFOutlineModel::indexForItem(const std::shared_ptr<PDFOutline> &item, int column) const
{
    const auto top = root();
    if (!item || !top || item == top)
        return {};
    // Only an item that is in the shown tree has an index.
    auto up = item->parent();
    while (up && up != top)
        up = up->parent();
    if (!up)
        return {};
    return createIndex(item->index(), column, item.get());
}

void PDFOutlineModel::insertItem(const std::shared_ptr<PDFOutline> &item,
    const std::shared_ptr<PDFOutline> &parent, int position)
{
    const auto target = parent ? parent : root();
    if (!item || !target)
        return;
    position = std::clamp(position, 0, target->numberOfChildren());
    beginInsertRows(indexForItem(target), position, position);
    target->insertChild(item, position);
    endInsertRows();
}

void PDFOutlineModel::removeItem(const std::shared_ptr<PDFOutline> &item)
{
    const auto from = item ? item->parent() : nullptr;
    if (!from)
        return;
    const int row = item->index();
    beginRemoveRows(indexForItem(from), row, row);
    item->removeFromParent();
    endRemoveRows();
}

void PDFOutlineModel::moveItem(const std::shared_ptr<PDFOutline> &item,
    const std::shared_ptr<PDFOutline> &parent, int position)
{
    const auto target = parent ? parent : root();
    const auto from = item ? item->parent() : nullptr;
    if (!from || !target)
        return;
    // The tree refuses to put an item under itself; so does this.
    for (auto up = target; up; up = up->parent()) {
        if (up == item)
            return;
    }
    const int row = item->index();
    const bool sameParent = from == target;
    const int room = target->numberOfChildren() - (sameParent ? 1 : 0);
    position = std::clamp(position, 0, room);
    if (sameParent && position == row)
        return;
    // The view counts the place before the item leaves; the tree after.
    const int viewPosition = sameParent && position > row ? position + 1 : position;
    if (!beginMoveRows(indexForItem(from), row, row, indexForItem(target), viewPosition))
        return;
    target->insertChild(item, position);
    endMoveRows();
}

void PDFOutlineModel::itemChanged(const std::shared_ptr<PDFOutline> &item)
{
    const QModelIndex first = indexForItem(item, 0);
    if (first.isValid())
        emit dataChanged(first, indexForItem(item, 1));
}

QModelIndex PDFOutlineModel::index(int row, int column, const QModelIndex &parent) const
{
    PDFOutline *const container = parentOrRoot(parent);
    if (!container || row < 0 || column < 0 || column > 1 || row >= container->numberOfChildren())
        return {};
    return createIndex(row, column, container->childAtIndex(row).get());
}

QModelIndex PDFOutlineModel::parent(const QModelIndex &child) const
{
    PDFOutline *const item = itemAt(child);
    const auto up = item ? item->parent() : nullptr;
    if (!up || up == root())
        return {};
    return createIndex(up->index(), 0, up.get());
}

int PDFOutlineModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    PDFOutline *const container = parentOrRoot(parent);
    return container ? container->numberOfChildren() : 0;
}

int PDFOutlineModel::columnCount(const QModelIndex &) const
{
    return 2;
}

bool PDFOutlineModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0;
}

QVariant PDFOutlineModel::data(const QModelIndex &index, int role) const
{
    PDFOutline *const item = itemAt(index);
    if (!item)
        return {};
    if (index.column() == 0) {
        if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
            return item->label();
        if (role == Qt::TextAlignmentRole)
            return int(Qt::AlignLeft | Qt::AlignVCenter);
    } else if (index.column() == 1) {
        if (role == Qt::DisplayRole)
            return pageLabel(*item);
        if (role == Qt::TextAlignmentRole)
            return int(Qt::AlignRight | Qt::AlignVCenter);
    }
    return {};
}

Qt::ItemFlags PDFOutlineModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
}

QStringList PDFOutlineModel::mimeTypes() const
{
    return { PasteboardType };
}

QMimeData *PDFOutlineModel::mimeData(const QModelIndexList &) const
{
    // A marker only: the items travel beside the drag, so they never leave this window.
    auto *const data = new QMimeData;
    data->setData(PasteboardType, QByteArray());
    return data;
}

Qt::DropActions PDFOutlineModel::supportedDropActions() const
{
    return Qt::MoveAction;
}

Qt::DropActions PDFOutlineModel::supportedDragActions() const
{
    return Qt::MoveAction;
}
