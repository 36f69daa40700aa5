#include "Workspace.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QtDebug>

namespace Workspace {

namespace {

const QString fileManagerService = QStringLiteral("org.freedesktop.FileManager1");
const QString fileManagerPath = QStringLiteral("/org/freedesktop/FileManager1");
constexpr int fileManagerTimeoutMs = 5000;

void openContainingFolders(const QList<QUrl> &urls)
{
    QList<QUrl> folders;
    for (const QUrl &url : urls) {
        if (!url.isLocalFile())
            continue;
        const QUrl folder = QUrl::fromLocalFile(QFileInfo(url.toLocalFile()).absolutePath());
        if (!folders.contains(folder))
            folders.append(folder);
    }
    for (const QUrl &folder : std::as_const(folders)) {
        if (!QDesktopServices::openUrl(folder))
            qWarning("Workspace: could not open the folder %s", qPrintable(folder.toString()));
    }
}

QMimeType mimeTypeFor(const QString &path)
{
    const QMimeDatabase database;
    const QMimeType byContent = database.mimeTypeForFile(path, QMimeDatabase::MatchContent);
    const QString content = byContent.name();
    const bool plainText = content == QLatin1String("text/plain");
    if (byContent.isValid() && !byContent.isDefault() && !plainText
        && content != QLatin1String("application/x-zerosize"))
        return byContent;
    const QMimeType byName = database.mimeTypeForFile(path, QMimeDatabase::MatchExtension);
    if (!byName.isValid() || byName.isDefault())
        return byContent;
    // Text named ".pdf" stays text; text named ".csv" is the more precise kind of text.
    if (plainText && !byName.inherits(QStringLiteral("text/plain")))
        return byContent;
    return byName;
}

} // namespace

bool openURL(const QUrl &url)
{
    if (!url.isValid())
        return false;
    return QDesktopServices::openUrl(url);
}

void activateFileViewerSelectingURLs(const QList<QUrl> &urls)
{
    if (urls.isEmpty())
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openContainingFolders(urls);
        return;
    }
    QStringList uris;
    for (const QUrl &url : urls)
        uris.append(QString::fromUtf8(url.toEncoded()));
    QDBusMessage message = QDBusMessage::createMethodCall(
        fileManagerService, fileManagerPath, fileManagerService, QStringLiteral("ShowItems"));
    message << uris << qEnvironmentVariable("DESKTOP_STARTUP_ID");
    // The application owns the watcher until the answer comes, so that a slow file manager
    // never blocks the interface.
    auto *watcher = new QDBusPendingCallWatcher(
        bus.asyncCall(message, fileManagerTimeoutMs), QCoreApplication::instance());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
        [urls](QDBusPendingCallWatcher *answered) {
            if (answered->isError()) {
                qInfo("Workspace: no file manager answered (%s); opening the folder instead",
                    qPrintable(answered->error().name()));
                openContainingFolders(urls);
            }
            answered->deleteLater();
        });
}

QString mimeTypeOf(const QString &path)
{
    return mimeTypeFor(path).name();
}

bool isPDF(const QString &path)
{
    return mimeTypeFor(path).inherits(QStringLiteral("application/pdf"));
}

bool conformsToImage(const QString &path)
{
    return mimeTypeFor(path).name().startsWith(QLatin1String("image/"));
}

} // namespace Workspace
