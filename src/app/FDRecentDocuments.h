#pragma once

// The recently opened documents: kept in the user defaults, newest first, and also recorded in
// the desktop's recently-used.xbel so that file managers and other programs see them.
// Main thread only.

#include <QList>
#include <QUrl>

class FDRecentDocuments
{
public:
    FDRecentDocuments() = delete;

    // At most this many documents are kept.
    static constexpr int maximumRecentDocumentCount = 20;

    // Newest first; read from the store at each call.
    static QList<QUrl> recentDocumentURLs();
    // Moves url to the front (or adds it there) and records it for the desktop.
    static void noteNewRecentDocumentURL(const QUrl &url);
    // Empties the application's list; the desktop's record is left to the desktop.
    static void clearRecentDocuments();

    // $XDG_DATA_HOME/recently-used.xbel
    static QString desktopRecentFilePath();

private:
    static void recordForDesktop(const QUrl &url);
};
