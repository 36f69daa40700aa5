#pragma once

// The rows of one searcher as a list model: page headers and matches, with the context snippet
// of a match made only when a row is shown and then kept. Main thread only.

#include <QAbstractListModel>
#include <QHash>
#include <QPointer>

#include <memory>

class PDFSelection;
class PDFViewSearcher;

class PDFSearchResultModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        IsGroupRole = Qt::UserRole + 1,
        PageNumberRole, // counted from 1, on header rows
        KeywordStartRole, // where the hit starts in the snippet; -1 when it was cut away
        KeywordLengthRole,
    };

    // A hit with up to 50 characters of context on each side, trailing white space cut.
    struct Snippet
    {
        QString text;
        int keywordStart = -1;
        int keywordLength = 0;
    };
    static Snippet snippetFor(const std::shared_ptr<PDFSelection> &selection);

    explicit PDFSearchResultModel(QObject *parent = nullptr);

    PDFViewSearcher *searcher() const;
    // Shows another searcher's rows as they are now.
    void setSearcher(PDFViewSearcher *searcher);
    // The searcher's list changed as a whole (begin, cancel).
    void reload();
    // Rows the searcher has just appended, a contiguous range.
    void insertRows(int first, int last);

    bool isGroupRow(int row) const;
    // How many snippets were made: only rows that were shown have one.
    int snippetCount() const { return int(m_snippets.size()); }
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    const Snippet &snippet(int row) const;

    QPointer<PDFViewSearcher> m_searcher;
    int m_rows = 0;
    mutable QHash<int, Snippet> m_snippets;
};
