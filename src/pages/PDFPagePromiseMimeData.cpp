#include "PDFPagePromiseMimeData.h"

#include "PDFPagePasteboard.h"

#include <document/Logger.h>

#include <QDir>
#include <QStandardPaths>
#include <QUrl>

namespace {

const QString uriListType = QStringLiteral("text/uri-list");

} // namespace

PDFPagePromiseMimeData::PDFPagePromiseMimeData(Writer writer)
    : m_writer(std::move(writer))
{ }

QString PDFPagePromiseMimeData::promisesFolder()
{
    QString caches = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (caches.isEmpty())
        caches = QDir::tempPath();
    const QString folder = caches + QStringLiteral("/Promises");
    // A folder that can't be made is reported and the write is tried all the same.
    if (!QDir().mkpath(folder))
        Logger::warn(QStringLiteral("Can't make the folder %1").arg(folder));
    return folder;
}

QStringList PDFPagePromiseMimeData::formats() const
{
    return { PDFPagePasteboard::PageMarkerType, uriListType };
}

bool PDFPagePromiseMimeData::hasFormat(const QString &mimeType) const
{
    return mimeType == PDFPagePasteboard::PageMarkerType || mimeType == uriListType;
}

QVariant PDFPagePromiseMimeData::retrieveData(const QString &mimeType, QMetaType type) const
{
    if (mimeType == PDFPagePasteboard::PageMarkerType)
        return PDFPagePasteboard::markerData();
    if (mimeType != uriListType)
        return {};
    // Written once, the first time a receiver asks; later asks get the same file.
    if (!m_asked) {
        m_asked = true;
        if (m_writer)
            m_path = m_writer(promisesFolder());
    }
    if (m_path.isEmpty())
        return {};
    const QUrl url = QUrl::fromLocalFile(m_path);
    if (type.id() == QMetaType::QByteArray)
        return url.toEncoded() + QByteArrayLiteral("\r\n");
    return QVariantList { url };
}
