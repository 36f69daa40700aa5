#include "PDFThumbnailRenderer.h"

#include "FDPageThumbnailCache.h"

#include <kit/base/MainQueue.h>
#include <kit/engine/PDFCancellation.h>

#include <QPointer>
#include <QThreadPool>

namespace {

// Two threads: the machine's cores are shared with the page tiles of the reading view.
QThreadPool &pool()
{
    static QThreadPool *const threads = [] {
        auto *const made = new QThreadPool;
        made->setMaxThreadCount(2);
        made->setObjectName(QStringLiteral("FD.ThumbnailQueue"));
        return made;
    }();
    return *threads;
}

} // namespace

PDFThumbnailRenderer::PDFThumbnailRenderer(QObject *parent)
    : QObject(parent)
{ }

PDFThumbnailRenderer::~PDFThumbnailRenderer()
{
    cancelAll();
}

void PDFThumbnailRenderer::request(const QString &key, int row, const PageThumbnail &thumbnail)
{
    if (m_jobs.contains(key))
        return;
    auto cancel = std::make_shared<PDFCancellation>();
    m_jobs.insert(key, { cancel, row });
    QPointer<PDFThumbnailRenderer> self(this);
    pool().start([self, key, cancel, thumbnail] {
        const QImage image = cancel->isCancelled() ? QImage() : thumbnail.render(cancel.get());
        MainQueue::async([self, key, cancel, image] {
            if (self)
                self->finish(key, cancel, image);
        });
    });
}

void PDFThumbnailRenderer::finish(
    const QString &key, const std::shared_ptr<PDFCancellation> &cancel, const QImage &image)
{
    const auto job = m_jobs.constFind(key);
    // A cancelled job may have been asked for again since; only its own ending counts.
    if (job != m_jobs.constEnd() && job->cancel == cancel) {
        const int row = job->row;
        m_jobs.erase(job);
        if (!cancel->isCancelled() && !image.isNull()) {
            FDPageThumbnailCache::shared().insert(key, image);
            emit thumbnailDidArrive(key, row);
        }
    }
    emit requestDidEnd();
}

void PDFThumbnailRenderer::retainOnly(const QSet<QString> &keys)
{
    for (auto job = m_jobs.begin(); job != m_jobs.end();) {
        if (keys.contains(job.key())) {
            ++job;
            continue;
        }
        job->cancel->cancel();
        job = m_jobs.erase(job);
    }
}

void PDFThumbnailRenderer::cancelAll()
{
    retainOnly({});
}
