#pragma once

// Desktop services: open a URL, reveal files in the file manager, and file type tests.
// Main thread only (the reveal answers asynchronously on the main event loop).

#include <QList>
#include <QString>
#include <QUrl>

namespace Workspace {

// Hands the URL to the desktop's handler for its scheme; false when none took it.
bool openURL(const QUrl &url);

// Asks the file manager over D-Bus (org.freedesktop.FileManager1.ShowItems) to show the files
// selected. When there is no session bus, or the call fails, the folders holding the files are
// opened instead (each once, in the order given).
void activateFileViewerSelectingURLs(const QList<QUrl> &urls);

// The file's MIME type, judged by its content first; the name decides only when the content is
// unrecognised (empty, or unknown binary), or when plain text is named as a kind of text.
QString mimeTypeOf(const QString &path);
bool isPDF(const QString &path);
// Any image/* type.
bool conformsToImage(const QString &path);

} // namespace Workspace
