#pragma once

// How pages and page files travel on the clipboard and in drags: the marker that says "pages of
// this application" and the reading of files that other programs offer, shared by drops and
// paste.

#include <QList>
#include <QString>
#include <QUrl>

class QMimeData;

class PDFPagePasteboard
{
public:
    // The marker's type; its data names the process that wrote it.
    static const QString PageMarkerType; // "Folidoc.Pasteboard.PDFPage"

    static QByteArray markerData();
    static bool hasPageMarker(const QMimeData *data);
    // The local files among data's URLs that are PDF files or images, in their order. Data that
    // bears the marker gives none: the file it offers is our own pages, which never go through a
    // file inside the application.
    static QList<QUrl> pageFileURLs(const QMimeData *data);
    // A PDF file or an image, judged by its content.
    static bool isPageFile(const QString &path);
};
