#pragma once

// Page thumbnails already drawn, by page, revision, box, pixel size, theme, bookmark ribbon and
// the list's own count of annotation changes of the page, under one memory budget that every
// list of page pictures shares. The least recently used go first. Main thread only.

#include <kit/engine/PDFDisplayBox.h>

#include <QCache>
#include <QImage>
#include <QString>

class FDPage;

class FDPageThumbnailCache
{
public:
    static FDPageThumbnailCache &shared();

    FDPageThumbnailCache(const FDPageThumbnailCache &) = delete;
    FDPageThumbnailCache &operator=(const FDPageThumbnailCache &) = delete;

    // The key of a page's picture as it is now, pixelLength being its longer side in pixels.
    static QString keyFor(
        const FDPage &page, PDFDisplayBox box, int pixelLength, quint64 annotationGeneration);

    // A null image when the picture is not kept.
    QImage image(const QString &key);
    void insert(const QString &key, const QImage &image);
    void clear();

    // The budget in bytes; 64 MB unless set.
    qint64 budget() const;
    void setBudget(qint64 bytes);
    qint64 usedBytes() const;

private:
    FDPageThumbnailCache();

    // Costs in kilobytes, so that budgets of gigabytes stay in an int.
    QCache<QString, QImage> m_images;
};
