#include "PDFThumbnailModel.h"

#include "FDPageThumbnailCache.h"
#include "PDFThumbnailRenderer.h"

#include <document/FDDocument.h>
#include <document/FDPage.h>

PDFThumbnailModel::PDFThumbnailModel(QObject *parent)
    : QAbstractListModel(parent)
    , m_renderer(new PDFThumbnailRenderer(this))
    , m_feedTimer(new QTimer(this))
{
    m_feedTimer->setSingleShot(true);
    m_feedTimer->setInterval(0);
    connect(m_feedTimer, &QTimer::timeout, this, &PDFThumbnailModel::feedRenderer);
    connect(m_renderer, &PDFThumbnailRenderer::requestDidEnd, this, [this] {
        releaseIfGrown();
        if (!m_waiting.isEmpty())
            m_feedTimer->start();
    });
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
        retainOnly({});
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
    if (image.isNull() && !m_renderer->isPending(key) && !m_waitingKeys.contains(key)) {
        m_waiting.append({ key, row });
        m_waitingKeys.insert(key);
        m_feedTimer->start();
    }
    return image;
}

void PDFThumbnailModel::feedRenderer()
{
    // Fixing what to draw takes the document's lock, which a worker holds while it draws: one
    // page at a time, asked for only while no worker draws, keeps the main thread from waiting.
    if (m_renderer->pendingCount() > 0)
        return;
    while (!m_waiting.isEmpty()) {
        const auto [key, row] = m_waiting.takeFirst();
        m_waitingKeys.remove(key);
        const auto page = pageAt(row);
        // The row may show another page by now; it asks again when it is drawn.
        if (!page || keyForRow(row) != key)
            continue;
        m_renderer->request(
            key, row, page->thumbnailSourceWith(QSizeF(m_pixelLength, m_pixelLength), m_box));
        return;
    }
}

void PDFThumbnailModel::releaseIfGrown()
{
    const auto current = m_document.lock();
    if (!current)
        return;
    // A release still running refuses; the next picture to arrive asks again.
    if ((++m_drawnSinceRelease >= ReleaseAfterPages
            || PDFDocument::cachedContentGrowth() > ReleaseAfterBytes)
        && current->releaseCachedContent())
        m_drawnSinceRelease = 0;
}

void PDFThumbnailModel::retainOnly(const QSet<QString> &keys)
{
    m_waiting.removeIf(
        [&keys](const QPair<QString, int> &entry) { return !keys.contains(entry.first); });
    m_waitingKeys.intersect(keys);
    m_renderer->retainOnly(keys);
}

int PDFThumbnailModel::pendingCount() const
{
    return int(m_waiting.size()) + m_renderer->pendingCount();
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

Qt::ItemFlags PDFThumbnailModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags base = QAbstractListModel::flags(index);
    return index.isValid() ? base | Qt::ItemIsDragEnabled : base;
}

QVariant PDFThumbnailModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
        return QString::number(index.row() + 1);
    return {};
}
