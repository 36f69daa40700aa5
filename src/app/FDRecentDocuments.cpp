#include "FDRecentDocuments.h"

#include "FDDefaults.h"

#include <kit/base/Log.h>
#include <kit/base/UserDefaults.h>

#include <QDateTime>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QStandardPaths>

QList<QUrl> FDRecentDocuments::recentDocumentURLs()
{
    QList<QUrl> urls;
    const QVariantList stored = UserDefaults::standard().arrayForKey(FDDefaults::RecentDocuments);
    for (const QVariant &entry : stored) {
        const QUrl url(entry.toString());
        if (url.isValid() && !url.isEmpty() && !urls.contains(url))
            urls.append(url);
    }
    return urls;
}

void FDRecentDocuments::noteNewRecentDocumentURL(const QUrl &url)
{
    if (!url.isValid() || url.isEmpty())
        return;
    QList<QUrl> urls = recentDocumentURLs();
    urls.removeAll(url);
    urls.prepend(url);
    QVariantList stored;
    for (const QUrl &each :
        std::as_const(urls).first(qMin(urls.size(), maximumRecentDocumentCount)))
        stored.append(each.toString(QUrl::FullyEncoded));
    UserDefaults::standard().setObject(stored, FDDefaults::RecentDocuments);
    if (url.isLocalFile())
        recordForDesktop(url);
}

void FDRecentDocuments::clearRecentDocuments()
{
    UserDefaults::standard().removeObjectForKey(FDDefaults::RecentDocuments);
}

QString FDRecentDocuments::desktopRecentFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QStringLiteral("/recently-used.xbel");
}

void FDRecentDocuments::recordForDesktop(const QUrl &url)
{
    // The shared desktop bookmark file (XBEL with the freedesktop extensions); other programs
    // write it too, so it is read, changed in place and replaced atomically.
    const QString path = desktopRecentFilePath();
    QDomDocument document;
    QFile existing(path);
    if (existing.open(QIODevice::ReadOnly) && !document.setContent(&existing)) {
        Log::warn(QStringLiteral("Not recording a recent file: %1 can't be read").arg(path));
        return;
    }
    existing.close();
    QDomElement root = document.documentElement();
    if (root.isNull()) {
        document.appendChild(document.createProcessingInstruction(
            QStringLiteral("xml"), QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")));
        root = document.createElement(QStringLiteral("xbel"));
        root.setAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
        root.setAttribute(QStringLiteral("xmlns:bookmark"),
            QStringLiteral("http://www.freedesktop.org/standards/desktop-bookmarks"));
        root.setAttribute(QStringLiteral("xmlns:mime"),
            QStringLiteral("http://www.freedesktop.org/standards/shared-mime-info"));
        document.appendChild(root);
    }

    const QString href = url.toString(QUrl::FullyEncoded);
    const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    QDomElement bookmark;
    for (QDomElement each = root.firstChildElement(QStringLiteral("bookmark")); !each.isNull();
         each = each.nextSiblingElement(QStringLiteral("bookmark"))) {
        if (each.attribute(QStringLiteral("href")) == href) {
            bookmark = each;
            break;
        }
    }
    if (bookmark.isNull()) {
        bookmark = document.createElement(QStringLiteral("bookmark"));
        bookmark.setAttribute(QStringLiteral("href"), href);
        bookmark.setAttribute(QStringLiteral("added"), now);
        root.appendChild(bookmark);
    }
    bookmark.setAttribute(QStringLiteral("modified"), now);
    bookmark.setAttribute(QStringLiteral("visited"), now);

    QDomElement info = bookmark.firstChildElement(QStringLiteral("info"));
    if (info.isNull())
        info = bookmark.appendChild(document.createElement(QStringLiteral("info"))).toElement();
    QDomElement metadata = info.firstChildElement(QStringLiteral("metadata"));
    if (metadata.isNull()) {
        metadata = info.appendChild(document.createElement(QStringLiteral("metadata"))).toElement();
        metadata.setAttribute(QStringLiteral("owner"), QStringLiteral("http://freedesktop.org"));
    }
    if (metadata.firstChildElement(QStringLiteral("mime:mime-type")).isNull()) {
        QDomElement mime = document.createElement(QStringLiteral("mime:mime-type"));
        mime.setAttribute(
            QStringLiteral("type"), QMimeDatabase().mimeTypeForFile(url.toLocalFile()).name());
        metadata.appendChild(mime);
    }
    QDomElement applications = metadata.firstChildElement(QStringLiteral("bookmark:applications"));
    if (applications.isNull())
        applications
            = metadata.appendChild(document.createElement(QStringLiteral("bookmark:applications")))
                  .toElement();
    QDomElement application;
    for (QDomElement each = applications.firstChildElement(); !each.isNull();
         each = each.nextSiblingElement()) {
        if (each.attribute(QStringLiteral("name")) == QLatin1String("Folidoc"))
            application = each;
    }
    if (application.isNull()) {
        application = document.createElement(QStringLiteral("bookmark:application"));
        application.setAttribute(QStringLiteral("name"), QStringLiteral("Folidoc"));
        application.setAttribute(QStringLiteral("exec"), QStringLiteral("'folidoc %u'"));
        application.setAttribute(QStringLiteral("count"), 0);
        applications.appendChild(application);
    }
    application.setAttribute(QStringLiteral("modified"), now);
    application.setAttribute(
        QStringLiteral("count"), application.attribute(QStringLiteral("count")).toInt() + 1);

    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(document.toByteArray(2)) < 0 || !out.commit())
        Log::warn(QStringLiteral("Not recording a recent file: %1 can't be written").arg(path));
}
