#include "PDFSearchResultModel.h"

#include "PDFViewSearcher.h"

#include <kit/engine/PDFSelection.h>

#include <QRegularExpression>

namespace {
constexpr int contextCharacters = 50;
}

PDFSearchResultModel::Snippet PDFSearchResultModel::snippetFor(
    const std::shared_ptr<PDFSelection> &selection)
{
    Snippet made;
    if (!selection)
        return made;
    const QString keyword = selection->string();
    if (keyword.isEmpty())
        return made;
    const auto wide = selection->copy();
    wide->extendSelectionAtStart(contextCharacters);
    wide->extendSelectionAtEnd(contextCharacters);
    QString text = wide->string();
    if (text.isEmpty())
        return made;
    static const QRegularExpression trailingSpace(QStringLiteral("[\\r\\n\\s]+$"));
    text.remove(trailingSpace);
    made.text = text;
    made.keywordStart = int(text.indexOf(keyword, 0, Qt::CaseInsensitive));
    made.keywordLength = made.keywordStart >= 0 ? int(keyword.size()) : 0;
    return made;
}

PDFSearchResultModel::PDFSearchResultModel(QObject *parent)
    : QAbstractListModel(parent)
{ }

PDFViewSearcher *PDFSearchResultModel::searcher() const
{
    return m_searcher;
}

void PDFSearchResultModel::setSearcher(PDFViewSearcher *searcher)
{
    m_searcher = searcher;
    reload();
}

void PDFSearchResultModel::reload()
{
    beginResetModel();
    m_snippets.clear();
    m_rows = m_searcher ? m_searcher->itemCount() : 0;
    endResetModel();
}

void PDFSearchResultModel::insertRows(int first, int last)
{
    // A batch that does not continue what is shown means the list was rebuilt meanwhile.
    if (!m_searcher || first != m_rows || last < first || last >= m_searcher->itemCount()) {
        reload();
        return;
    }
    beginInsertRows(QModelIndex(), first, last);
    m_rows = last + 1;
    endInsertRows();
}

bool PDFSearchResultModel::isGroupRow(int row) const
{
    return m_searcher && row >= 0 && row < m_rows && m_searcher->item(row).page != nullptr;
}

int PDFSearchResultModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

const PDFSearchResultModel::Snippet &PDFSearchResultModel::snippet(int row) const
{
    auto found = m_snippets.find(row);
    if (found == m_snippets.end())
        found = m_snippets.insert(row, snippetFor(m_searcher->item(row).selection));
    return *found;
}

QVariant PDFSearchResultModel::data(const QModelIndex &index, int role) const
{
    if (!m_searcher || !index.isValid() || index.row() >= m_rows)
        return {};
    const int row = index.row();
    const PDFViewSearcher::Item &item = m_searcher->item(row);
    const bool group = item.page != nullptr;
    switch (role) {
    case IsGroupRole:
        return group;
    case PageNumberRole:
        return item.pageIndex + 1;
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return group ? tr("Page %1").arg(item.pageIndex + 1) : snippet(row).text;
    case KeywordStartRole:
        return group ? -1 : snippet(row).keywordStart;
    case KeywordLengthRole:
        return group ? 0 : snippet(row).keywordLength;
    default:
        return {};
    }
}

Qt::ItemFlags PDFSearchResultModel::flags(const QModelIndex &index) const
{
    // Headers cannot be selected.
    if (isGroupRow(index.row()))
        return Qt::ItemIsEnabled;
    return QAbstractListModel::flags(index);
}
