#include "FDPageThumbnailCache.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <document/FDPage.h>

namespace {

int kilobytesOf(const QImage &image)
{
    return int(std::max<qint64>(1, image.sizeInBytes() / 1024));
}

} // namespace

FDPageThumbnailCache &FDPageThumbnailCache::shared()
{
    static FDPageThumbnailCache cache;
    return cache;
}

FDPageThumbnailCache::FDPageThumbnailCache()
{
    setBudget(64LL * 1024 * 1024);
}

QString FDPageThumbnailCache::keyFor(
    const FDPage &page, PDFDisplayBox box, int pixelLength, quint64 annotationGeneration)
{
    return QStringLiteral("%1|%2|%3|%4|%5|%6|%7")
        .arg(page.uuid())
        .arg(page.revision())
        .arg(int(box))
        .arg(pixelLength)
        .arg(annotationGeneration)
        .arg(FDThemeProvider::current()->id())
        .arg(page.isBookmarked() ? 1 : 0);
}

QImage FDPageThumbnailCache::image(const QString &key)
{
    const QImage *const found = m_images.object(key);
    return found ? *found : QImage();
}

void FDPageThumbnailCache::insert(const QString &key, const QImage &image)
{
    if (image.isNull())
        return;
    m_images.insert(key, new QImage(image), kilobytesOf(image));
}

void FDPageThumbnailCache::clear()
{
    m_images.clear();
}

qint64 FDPageThumbnailCache::budget() const
{
    return qint64(m_images.maxCost()) * 1024;
}

void FDPageThumbnailCache::setBudget(qint64 bytes)
{
    m_images.setMaxCost(int(std::clamp<qint64>(bytes / 1024, 1, INT_MAX)));
}

qint64 FDPageThumbnailCache::usedBytes() const
{
    return qint64(m_images.totalCost()) * 1024;
}
