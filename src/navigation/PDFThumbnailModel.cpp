#include "PDFThumbnailModel.h"

#include "FDPageThumbnailCache.h"
#include "PDFThumbnailRenderer.h"

#include <document/FDDocument.h>
#include <document/FDPage.h>

PDFThumbnailModel::PDFThumbnailModel(QObject *parent)
    : QAbstractListModel(parent)
    , m_renderer(new PDFThumbnailRenderer(this))
{
    connect(m_renderer, &PDFThumbnailRenderer::thumbnailDidArrive, this,
        [this](const QString &key, int row) {
            // The row may show another page by now; then it has its own request.
            if (keyForRow(row) == key)
                emit dataChanged(index(row), index(row));
        });
}

void PDFThumbnailModel::setDocument(const std::shared_ptr<FDDocument> &document)
{
    beginResetModel();
    if (document != m_document.lock())
        m_renderer->cancelAll();
    m_document = document;
    endResetModel();
}

std::shared_ptr<FDPage> PDFThumbnailModel::pageAt(int row) const
{
    const auto current = m_document.lock();
    return current ? std::dynamic_pointer_cast<FDPage>(current->pageAtIndex(row)) : nullptr;
}

QString PDFThumbnailModel::keyForRow(int row) const
{
    const auto page = pageAt(row);
    if (!page)
        return {};
    return FDPageThumbnailCache::keyFor(
        *page, m_box, m_pixelLength, m_annotationGenerations.value(page->uuid()));
}

QImage PDFThumbnailModel::thumbnailForRow(int row)
{
    const auto page = pageAt(row);
    if (!page)
        return {};
    const QString key = FDPageThumbnailCache::keyFor(
        *page, m_box, m_pixelLength, m_annotationGenerations.value(page->uuid()));
    QImage image = FDPageThumbnailCache::shared().image(key);
    if (image.isNull() && !m_renderer->isPending(key))
        m_renderer->request(
            key, row, page->thumbnailSourceWith(QSizeF(m_pixelLength, m_pixelLength), m_box));
    return image;
}

QSizeF PDFThumbnailModel::pageSizeForRow(int row) const
{
    const auto page = pageAt(row);
    if (!page)
        return {};
    QSizeF size = page->boundsForBox(m_box).size();
    if (page->rotation() % 180 != 0)
        size.transpose();
    return size;
}

void PDFThumbnailModel::pageDidChange(int row)
{
    const auto page = pageAt(row);
    if (!page)
        return;
    ++m_annotationGenerations[page->uuid()];
    emit dataChanged(index(row), index(row));
}

int PDFThumbnailModel::rowCount(const QModelIndex &parent) const
{
    const auto current = m_document.lock();
    return parent.isValid() || !current ? 0 : current->pageCount();
}

QVariant PDFThumbnailModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
        return QString::number(index.row() + 1);
    return {};
}
