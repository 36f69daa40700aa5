#pragma once

// Thumbnails of PDF files through the freedesktop thumbnail cache ($XDG_CACHE_HOME/thumbnails,
// named by the MD5 of the file's URI), so they are shared with file managers. A missing or stale
// thumbnail is made from the first page with the engine and stored. Main thread only.

#include <QImage>
#include <QSize>
#include <QUrl>

class FDThumbnailCache
{
public:
    FDThumbnailCache() = delete;

    // The thumbnail scaled to fit size; a null image when none can be read or made.
    static QImage thumbnailForURL(const QUrl &url, const QSize &size);

    // Where the cache keeps the "large" (256 pixel) thumbnail of url.
    static QString largeThumbnailPath(const QUrl &url);

private:
    static QImage makeThumbnail(const QString &path);
};
