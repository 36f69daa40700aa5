#pragma once

// The document's outline tree as rows of a tree view, with no copy of it: each index points at
// the live PDFOutline, and the edits below change the tree and announce the rows in one step.
// Column 0 is the label, column 1 the page label. Main thread only.

#include <QAbstractItemModel>

#include <memory>

class PDFDocument;
class PDFOutline;

class PDFOutlineModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    // The marker type of a drag of outline items; it carries no data.
    static const QString PasteboardType; // "Folidoc.Pasteboard.PDFOutline"

    explicit PDFOutlineModel(QObject *parent = nullptr);

    // Shows the outline of that document (none: no rows), from the start.
    void setDocument(const std::shared_ptr<PDFDocument> &document);
    std::shared_ptr<PDFDocument> document() const { return m_document.lock(); }
    // The document's outline root, null when it has none.
    std::shared_ptr<PDFOutline> root() const;

    // The item of an index, null for the invisible root.
    std::shared_ptr<PDFOutline> itemForIndex(const QModelIndex &index) const;
    // The index of an item in the tree, invalid for the root or an item not under it.
    QModelIndex indexForItem(const std::shared_ptr<PDFOutline> &item, int column = 0) const;

    // Puts item into parent (the root when null) at position, clamped to the children.
    void insertItem(const std::shared_ptr<PDFOutline> &item,
        const std::shared_ptr<PDFOutline> &parent, int position);
    // Takes the item, with its subtree, out of the tree.
    void removeItem(const std::shared_ptr<PDFOutline> &item);
    // Moves item under parent (the root when null) to position, counted after it left its place.
    void moveItem(const std::shared_ptr<PDFOutline> &item,
        const std::shared_ptr<PDFOutline> &parent, int position);
    // The item's label or page changed.
    void itemChanged(const std::shared_ptr<PDFOutline> &item);

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;

private:
    PDFOutline *itemAt(const QModelIndex &index) const;
    PDFOutline *parentOrRoot(const QModelIndex &index) const;

    std::weak_ptr<PDFDocument> m_document;
};
