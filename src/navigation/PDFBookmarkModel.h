#pragma once

// The bookmarks of a document as rows (title, page label). It keeps its own list of the rows,
// changed only by the document's bookmark notifications, so rows come and go as the document
// announces them. A title edited in a cell goes to the document. Main thread only.

#include <QAbstractTableModel>

#include <memory>

class FDBookmark;
class FDDocument;

class PDFBookmarkModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { TitleColumn = 0, PageColumn = 1 };

    explicit PDFBookmarkModel(QObject *parent = nullptr);

    // Shows the document's bookmarks as they are now; none without a document.
    void setDocument(const std::shared_ptr<FDDocument> &document);
    std::shared_ptr<FDBookmark> bookmarkAt(int row) const;
    int rowOf(const std::shared_ptr<FDBookmark> &bookmark) const;

    // The document's announcements.
    void bookmarkAdded(int index, const std::shared_ptr<FDBookmark> &bookmark);
    void bookmarkRemoved(int index);
    void bookmarkChanged(const std::shared_ptr<FDBookmark> &bookmark);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    std::weak_ptr<FDDocument> m_document;
    QList<std::shared_ptr<FDBookmark>> m_rows;
};
