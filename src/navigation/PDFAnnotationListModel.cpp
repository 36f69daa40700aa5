#include "PDFAnnotationListModel.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <document/PDFPage+XExtensions.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

QString PDFAnnotationListModel::formatDate(const QDateTime &date, const QLocale &locale)
{
    if (!date.isValid())
        return {};
    const QDate day = date.toLocalTime().date();
    const bool designPattern = locale.language() == QLocale::C
        || (locale.language() == QLocale::English && locale.territory() == QLocale::UnitedStates);
    if (!designPattern)
        return locale.toString(day, QLocale::ShortFormat);
    // The ISO week-year: the year of the Thursday of the date's week.
    const QDate thursday = day.addDays(4 - day.dayOfWeek());
    return QStringLiteral("%1/%2/%3")
        .arg(day.month(), 2, 10, QLatin1Char('0'))
        .arg(day.day(), 2, 10, QLatin1Char('0'))
        .arg(thursday.year() % 100, 2, 10, QLatin1Char('0'));
}

PDFAnnotationListModel::PDFAnnotationListModel(QObject *parent)
    : QAbstractListModel(parent)
{ }

void PDFAnnotationListModel::rebuild(
    const std::shared_ptr<PDFDocument> &document, const std::shared_ptr<PDFAnnotation> &leaveOut)
{
    beginResetModel();
    m_document = document;
    m_items.clear();
    m_annCount = 0;
    const int pageCount = document ? document->pageCount() : 0;
    for (int index = 0; index < pageCount; ++index) {
        const auto page = document->pageAtIndex(index);
        if (!page)
            continue;
        auto annotations = validAnnotations(*page);
        std::erase(annotations, leaveOut);
        if (annotations.empty())
            continue;
        m_items.push_back({ page, nullptr, index });
        for (const auto &annotation : annotations) {
            m_items.push_back({ nullptr, annotation, index });
            ++m_annCount;
        }
    }
    endResetModel();
}

int PDFAnnotationListModel::add(const std::shared_ptr<PDFAnnotation> &annotation)
{
    const auto document = m_document.lock();
    const auto page = annotation ? annotation->page() : nullptr;
    if (!document || !page || rowOf(annotation) >= 0)
        return -1;
    const int pageIndex = document->indexForPage(page);
    if (pageIndex < 0)
        return -1;
    int header = -1;
    int insertAt = int(m_items.size());
    for (int row = 0; row < int(m_items.size()); ++row) {
        const Item &item = m_items[size_t(row)];
        if (!item.page)
            continue;
        if (item.pageIndex == pageIndex) {
            header = row;
            break;
        }
        if (item.pageIndex > pageIndex) {
            insertAt = row;
            break;
        }
    }
    int annotationRow = 0;
    if (header >= 0) {
        annotationRow = header + 1;
        beginInsertRows(QModelIndex(), annotationRow, annotationRow);
        m_items.insert(m_items.begin() + annotationRow, { nullptr, annotation, pageIndex });
    } else {
        annotationRow = insertAt + 1;
        beginInsertRows(QModelIndex(), insertAt, insertAt + 1);
        m_items.insert(m_items.begin() + insertAt,
            { Item { page, nullptr, pageIndex }, Item { nullptr, annotation, pageIndex } });
    }
    ++m_annCount;
    endInsertRows();
    return annotationRow;
}

void PDFAnnotationListModel::remove(const std::shared_ptr<PDFAnnotation> &annotation)
{
    const int row = rowOf(annotation);
    if (row < 0)
        return;
    const bool headerAbove = row > 0 && m_items[size_t(row - 1)].page;
    const bool groupEnds = row + 1 == int(m_items.size()) || m_items[size_t(row + 1)].page;
    const int first = headerAbove && groupEnds ? row - 1 : row;
    beginRemoveRows(QModelIndex(), first, row);
    m_items.erase(m_items.begin() + first, m_items.begin() + row + 1);
    --m_annCount;
    endRemoveRows();
}

void PDFAnnotationListModel::change(const std::shared_ptr<PDFAnnotation> &annotation)
{
    const int row = rowOf(annotation);
    if (row >= 0)
        emit dataChanged(index(row), index(row));
}

int PDFAnnotationListModel::rowOf(const std::shared_ptr<PDFAnnotation> &annotation) const
{
    if (!annotation)
        return -1;
    for (size_t row = 0; row < m_items.size(); ++row) {
        if (m_items[row].annotation == annotation)
            return int(row);
    }
    return -1;
}

std::shared_ptr<PDFAnnotation> PDFAnnotationListModel::annotationAt(int row) const
{
    return row >= 0 && row < int(m_items.size()) ? m_items[size_t(row)].annotation : nullptr;
}

bool PDFAnnotationListModel::isGroupRow(int row) const
{
    return row >= 0 && row < int(m_items.size()) && m_items[size_t(row)].page;
}

int PDFAnnotationListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_items.size());
}

QVariant PDFAnnotationListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_items.size()))
        return {};
    const Item &item = m_items[size_t(index.row())];
    if (role == IsGroupRole)
        return item.page != nullptr;
    if (role == PageNumberRole)
        return item.pageIndex + 1;
    if (role == RowKeyRole)
        return item.page ? quint64(quintptr(item.page.get()))
                         : quint64(quintptr(item.annotation.get()));
    if (item.page) {
        if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
            return tr("Page %1").arg(item.pageIndex + 1);
        return {};
    }
    const PDFAnnotation &annotation = *item.annotation;
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole: {
        const QString contents = annotation.contents();
        if (!contents.isEmpty())
            return contents;
        if (isMarkup(annotation) || isFreeText(annotation) || isText(annotation))
            return tr("(empty)");
        return QString();
    }
    case AuthorRole:
        return annotation.userName().isEmpty() ? tr("Anonymous") : annotation.userName();
    case DateRole:
        return formatDate(annotation.modificationDate());
    case Qt::DecorationRole:
        return typeIcon(annotation);
    case ColorRole:
        if (const auto *const freeText = dynamic_cast<const PDFAnnotationFreeText *>(&annotation))
            return freeText->fontColor();
        return annotation.color();
    default:
        return {};
    }
}

Qt::ItemFlags PDFAnnotationListModel::flags(const QModelIndex &index) const
{
    if (isGroupRow(index.row()))
        return Qt::ItemIsEnabled;
    return QAbstractListModel::flags(index);
}
