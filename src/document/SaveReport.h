#pragma once

// Tells the user about a save that did not reach its file, and keeps what it could not write:
// an alert while a window shows, else a warning line and a copy in the cache folder. For a file
// that another program changed, asks where the edits go. Main thread only.

#include <QByteArray>
#include <QString>

#include <memory>

class FDDocument;

class SaveReport
{
public:
    SaveReport() = delete;

    // The answers to the question about a file changed by another program, in button order.
    enum ChangedFileChoice { SaveElsewhere, Overwrite, Reload };

    // Whether a window of the application shows, so that an alert has a place to appear.
    static bool hasWindow();
    // Writes bytes as a new file of the cache folder's "Unsaved" folder, named after the
    // document's file; the copy's path, or empty when it could not be written.
    static QString keepUnsavedCopy(const QString &fileName, const QByteArray &bytes);

    // The last attempt of a save failed. A document no view shows any more, or any document
    // when no window shows, is kept as a copy when its bytes exist.
    static void reportFailure(
        const FDDocument &document, const QString &error, const QByteArray &bytes);
    // A save found its file changed by another program and left it alone. With a window, asks
    // and acts: a save panel for another file, a save over the file, or the file read again into
    // the document's view with the edits dropped. Without one, keeps a copy of the edits.
    static void resolveChangedFile(
        const std::shared_ptr<FDDocument> &document, const QString &path, const QByteArray &bytes);
};
