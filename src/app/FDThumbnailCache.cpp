#include "FDThumbnailCache.h"

#include <kit/base/Log.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

constexpr int largeSide = 256;

QString cacheRoot()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)
        + QStringLiteral("/thumbnails");
}

// The canonical URI the cache is keyed by: an absolute, percent-encoded file URI.
QString canonicalURI(const QString &path)
{
    return QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toString(QUrl::FullyEncoded);
}

QString modificationTime(const QString &path)
{
    return QString::number(QFileInfo(path).lastModified().toSecsSinceEpoch());
}

// The cache names a thumbnail by the MD5 of its file's URI.
QString largeThumbnailPathForURI(const QString &uri)
{
    const QByteArray digest
        = QCryptographicHash::hash(uri.toUtf8(), QCryptographicHash::Md5).toHex();
    return cacheRoot() + QStringLiteral("/large/") + QString::fromLatin1(digest)
        + QStringLiteral(".png");
}

} // namespace

QString FDThumbnailCache::largeThumbnailPath(const QUrl &url)
{
    return largeThumbnailPathForURI(canonicalURI(url.toLocalFile()));
}

QImage FDThumbnailCache::thumbnailForURL(const QUrl &url, const QSize &size)
{
    if (!url.isLocalFile())
        return {};
    const QString path = url.toLocalFile();
    if (!QFileInfo(path).isFile())
        return {};
    const QString uri = canonicalURI(path);
    const QString cached = largeThumbnailPathForURI(uri);
    const QString modified = modificationTime(path);

    // A cached thumbnail counts only for the same file at the same modification time. (The
    // texts are read from the loaded image: a reader's text() splits keys at their colons.)
    QImage image(cached, "png");
    if (image.text(QStringLiteral("Thumb::URI")) != uri
        || image.text(QStringLiteral("Thumb::MTime")) != modified)
        image = QImage();

    if (image.isNull()) {
        image = makeThumbnail(path);
        if (image.isNull())
            return {};
        image.setText(QStringLiteral("Thumb::URI"), uri);
        image.setText(QStringLiteral("Thumb::MTime"), modified);
        image.setText(QStringLiteral("Thumb::Size"), QString::number(QFileInfo(path).size()));
        image.setText(QStringLiteral("Thumb::Mimetype"), QStringLiteral("application/pdf"));
        image.setText(QStringLiteral("Software"), QStringLiteral("Folidoc"));
        QDir().mkpath(QFileInfo(cached).absolutePath());
        QFile::setPermissions(QFileInfo(cached).absolutePath(),
            QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QSaveFile out(cached);
        QImageWriter writer(&out, "png");
        if (!out.open(QIODevice::WriteOnly) || !writer.write(image) || !out.commit())
            Log::warn(QStringLiteral("Can't store the thumbnail %1").arg(cached));
    }
    return image.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

QImage FDThumbnailCache::makeThumbnail(const QString &path)
{
    auto document = std::make_shared<PDFDocument>();
    if (!document->initWithURL(QUrl::fromLocalFile(path)) || document->pageCount() < 1)
        return {};
    const std::shared_ptr<PDFPage> page = document->pageAtIndex(0);
    if (!page)
        return {};
    QSizeF points = page->boundsForBox(PDFDisplayBox::CropBox).size();
    // The picture shows the page as it is read, turned by its rotation.
    if (page->rotation() % 180 != 0)
        points.transpose();
    if (points.isEmpty())
        return {};
    const QSize pixels = points.scaled(largeSide, largeSide, Qt::KeepAspectRatio).toSize();
    return page->imageForBox(PDFDisplayBox::CropBox, pixels.expandedTo(QSize(1, 1)));
}
