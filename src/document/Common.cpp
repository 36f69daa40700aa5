#include "Common.h"

#include "Logger.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStringDecoder>
#include <QUuid>

#include <sys/xattr.h>

namespace {

// The limit that the stored attribute names were designed against.
constexpr qsizetype XATTR_MAXNAMELEN = 127;

QByteArray systemName(const QString &name)
{
    const QByteArray utf8 = name.toUtf8();
    if (!(utf8.size() < XATTR_MAXNAMELEN))
        qFatal("FDXAttr: assertion \"strlen([name UTF8String]) < XATTR_MAXNAMELEN\" failed for "
               "a name of %lld bytes",
            qlonglong(utf8.size()));
    return "user." + utf8;
}

QByteArray filePath(const QUrl &url)
{
    return QFile::encodeName(url.toLocalFile());
}

} // namespace

void FDSetXAttr(const QUrl &url, const QString &name, const QByteArray &data)
{
    const QByteArray attribute = systemName(name);
    ::setxattr(
        filePath(url).constData(), attribute.constData(), data.constData(), size_t(data.size()), 0);
}

std::optional<QByteArray> FDGetXAttr(const QUrl &url, const QString &name)
{
    const QByteArray attribute = systemName(name);
    const QByteArray path = filePath(url);
    const ssize_t length = ::getxattr(path.constData(), attribute.constData(), nullptr, 0);
    if (length <= 0)
        return std::nullopt;
    QByteArray data(qsizetype(length), Qt::Uninitialized);
    const ssize_t bytesRetrieved
        = ::getxattr(path.constData(), attribute.constData(), data.data(), size_t(length));
    if (bytesRetrieved != length)
        qFatal("FDGetXAttr: assertion \"bytesRetrieved == length\" failed (%lld of %lld bytes)",
            qlonglong(bytesRetrieved), qlonglong(length));
    return data;
}

bool FDRemoveXAttr(const QUrl &url, const QString &name)
{
    ::removexattr(filePath(url).constData(), ("user." + name.toUtf8()).constData());
    return true;
}

QVariantList FDEncodeURLs(const QVariantList &urls)
{
    QVariantList datas;
    for (const QVariant &element : urls) {
        if (element.metaType() != QMetaType::fromType<QUrl>())
            continue;
        const QUrl url = element.toUrl();
        const QString string = absoluteStringWithoutQueryString(url);
        if (string.isEmpty()) {
            Logger::warn(QStringLiteral("Encoding URL failed: %1").arg(url.toString()));
            continue;
        }
        datas.append(string.toUtf8());
    }
    return datas;
}

QVariantList FDEncodeURLs(const QList<QUrl> &urls)
{
    QVariantList list;
    for (const QUrl &url : urls)
        list.append(url);
    return FDEncodeURLs(list);
}

QList<QUrl> FDDecodeURLs(const QVariant &datas)
{
    QList<QUrl> urls;
    if (datas.metaType() != QMetaType::fromType<QVariantList>())
        return urls;
    const QVariantList list = datas.toList();
    for (const QVariant &element : list) {
        if (element.metaType() != QMetaType::fromType<QByteArray>())
            continue;
        const QByteArray bytes = element.toByteArray();
        QStringDecoder decoder(QStringDecoder::Utf8);
        const QString string = decoder.decode(bytes);
        const QUrl url(string, QUrl::StrictMode);
        if (decoder.hasError() || !url.isValid()) {
            Logger::info(
                QStringLiteral("[Decode URL] not a URL: %1").arg(QString::fromUtf8(bytes)));
            continue;
        }
        if (url.isLocalFile() && QFileInfo::exists(url.toLocalFile()))
            urls.append(url);
    }
    return urls;
}

QString absoluteStringWithoutQueryString(const QUrl &url)
{
    if (url.query().isEmpty())
        return url.toString(QUrl::FullyEncoded);
    QUrl bare;
    bare.setScheme(url.scheme());
    bare.setHost(url.host());
    bare.setPath(url.path().isEmpty() ? QStringLiteral("/") : url.path());
    return bare.toString(QUrl::FullyEncoded);
}

QList<QUrl> applicationSupportDirectoryURLs()
{
    // AppDataLocation already ends in the application's name.
    static const QList<QUrl> urls = [] {
        QList<QUrl> found;
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
        if (!folder.isEmpty())
            found.append(QUrl::fromLocalFile(folder));
        return found;
    }();
    return urls;
}

QUrl uniqueChewableItemsDirectoryURL()
{
    static const QString base = [] {
        // Qt answers nothing when $TMPDIR names a folder that does not exist.
        QString temporary = QStandardPaths::writableLocation(QStandardPaths::TempLocation);
        if (temporary.isEmpty())
            temporary = QStringLiteral("/tmp");
        const QString folder = temporary + QStringLiteral("/Folidoc");
        QDir().mkpath(folder);
        return folder;
    }();
    QString folder;
    do {
        folder = base + QLatin1Char('/')
            + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    } while (QFileInfo::exists(folder));
    QDir().mkpath(folder);
    return QUrl::fromLocalFile(folder);
}
