#pragma once

// Draws page thumbnails on worker threads: a request carries what the main thread fixed to draw
// (a PageThumbnail) under its cache key; the picture goes into the shared thumbnail cache and
// is announced on the main thread. Requests no longer wanted are cancelled in flight.
// Main thread only, apart from the drawing itself.

#include <document/PageThumbnail.h>

#include <QHash>
#include <QObject>
#include <QSet>

#include <memory>

class PDFCancellation;

class PDFThumbnailRenderer : public QObject
{
    Q_OBJECT

public:
    explicit PDFThumbnailRenderer(QObject *parent = nullptr);
    ~PDFThumbnailRenderer() override;

    // Draws the thumbnail unless that key is being drawn already.
    void request(const QString &key, int row, const PageThumbnail &thumbnail);
    bool isPending(const QString &key) const { return m_jobs.contains(key); }
    int pendingCount() const { return int(m_jobs.size()); }
    // Cancels every request whose key is not among these.
    void retainOnly(const QSet<QString> &keys);
    void cancelAll();

signals:
    // The picture of the key is in the cache now; row is the row it was asked for.
    void thumbnailDidArrive(const QString &key, int row);
    // A worker let go of the document: a request ended, drawn, failed or cancelled.
    void requestDidEnd();

private:
    struct Job
    {
        std::shared_ptr<PDFCancellation> cancel;
        int row = -1;
    };

    void finish(
        const QString &key, const std::shared_ptr<PDFCancellation> &cancel, const QImage &image);

    QHash<QString, Job> m_jobs;
};
