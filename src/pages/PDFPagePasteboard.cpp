#include "PDFPagePasteboard.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QMimeData>
#include <QMimeDatabase>

const QString PDFPagePasteboard::PageMarkerType = QStringLiteral("Folidoc.Pasteboard.PDFPage");

QByteArray PDFPagePasteboard::markerData()
{
    return QByteArray::number(QCoreApplication::applicationPid());
}

bool PDFPagePasteboard::hasPageMarker(const QMimeData *data)
{
    return data && data->hasFormat(PageMarkerType);
}

QList<QUrl> PDFPagePasteboard::pageFileURLs(const QMimeData *data)
{
    QList<QUrl> kept;
    if (!data || hasPageMarker(data) || !data->hasUrls())
        return kept;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile() && isPageFile(url.toLocalFile()))
            kept.append(url);
    }
    return kept;
}

bool PDFPagePasteboard::isPageFile(const QString &path)
{
    if (!QFileInfo(path).isFile())
        return false;
    // By the bytes, not the name: a text file called ".pdf" is no page.
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchContent);
    return type.inherits(QStringLiteral("application/pdf"))
        || type.name().startsWith(QLatin1String("image/"));
}
