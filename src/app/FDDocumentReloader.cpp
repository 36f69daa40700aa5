#include "FDDocumentReloader.h"

#include "Alert.h"

#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFPage.h>
#include <view/FDPDFView.h>

#include <QFileInfo>

FDDocumentReloader::FDDocumentReloader(FDPDFView *view, QObject *parent)
    : QObject(parent)
    , m_view(view)
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(settleMs);
    connect(&m_settle, &QTimer::timeout, this, &FDDocumentReloader::checkFile);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FDDocumentReloader::onFileEvent);
    connect(
        &m_watcher, &QFileSystemWatcher::directoryChanged, this, &FDDocumentReloader::onFileEvent);
    NotificationCenter::defaultCenter().addObserver(this, PDFView::DocumentChangedNotification,
        view, [this](const Notification &) { watchDocumentOfView(); });
    watchDocumentOfView();
}

FDDocumentReloader::~FDDocumentReloader()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

void FDDocumentReloader::watchDocumentOfView()
{
    const auto document = m_view ? m_view->fdDocument() : nullptr;
    const QString path = document && document->fileURL().isLocalFile()
        ? document->fileURL().toLocalFile()
        : QString();
    if (path == m_path)
        return;
    if (!m_watcher.files().isEmpty())
        m_watcher.removePaths(m_watcher.files());
    if (!m_watcher.directories().isEmpty())
        m_watcher.removePaths(m_watcher.directories());
    m_path = path;
    m_declined.reset();
    if (m_path.isEmpty())
        return;
    m_watcher.addPath(m_path);
    // Programs that replace a file atomically give it a new inode, which the file's own watch
    // does not follow: the folder's watch sees the new file arrive.
    m_watcher.addPath(QFileInfo(m_path).absolutePath());
}

void FDDocumentReloader::onFileEvent()
{
    if (m_path.isEmpty())
        return;
    // A watch follows the inode, and a file replaced while the engine still holds the old one
    // open does not even report the old one gone: the watch is set again on what the path
    // names now.
    if (m_watcher.files().contains(m_path))
        m_watcher.removePath(m_path);
    if (QFileInfo::exists(m_path))
        m_watcher.addPath(m_path);
    m_settle.start();
}

void FDDocumentReloader::checkFile()
{
    const auto document = m_view ? m_view->fdDocument() : nullptr;
    if (!document || m_path.isEmpty())
        return;
    const std::optional<FileIdentity> now = FileIdentity::of(m_path);
    // Gone (perhaps for a moment, during a replacement): nothing to read yet.
    if (!now)
        return;
    const std::optional<FileIdentity> known = document->fileIdentity(m_path);
    if (known && *known == *now)
        return;
    if (m_declined && *m_declined == *now)
        return;
    // Our own save in progress writes the file: its end records the new identity.
    if (PDFSavingService::shared().getDocumentByURL(document->fileURL()))
        return;
    if (document->numberOfChanges() > 0 && !askToDropChanges()) {
        m_declined = now;
        return;
    }
    reload();
}

void FDDocumentReloader::reloadByHand()
{
    const auto document = m_view ? m_view->fdDocument() : nullptr;
    if (!document || m_path.isEmpty() || !QFileInfo::exists(m_path))
        return;
    if (document->numberOfChanges() > 0 && !askToDropChanges())
        return;
    reload();
}

bool FDDocumentReloader::askToDropChanges() const
{
    const auto document = m_view->fdDocument();
    AlertRequest request;
    request.messageText
        = tr("The file of \"%1\" was changed by another program.").arg(document->title());
    request.informativeText = tr("Reloading shows the file as it is now and loses your unsaved "
                                 "changes. Keeping your version asks before it replaces the "
                                 "file when you save.");
    request.buttons = { tr("Keep My Version"), tr("Reload") };
    return Alert::runModal(request) == Alert::SecondButtonReturn;
}

void FDDocumentReloader::reload()
{
    FDPDFView *const view = m_view;
    const auto document = view->fdDocument();
    // The position is taken by page number: the pages of the new reading are other objects.
    const auto destination = view->currentDestination();
    const int pageIndex = destination ? document->indexForPage(destination->page()) : -1;
    const QPointF point = destination ? destination->point() : QPointF();
    const PDFViewScaleMode scaleMode = view->scaleMode();
    const double scale = view->scaleFactor();
    const int displayMode = view->displayMode();
    const QUrl url = document->fileURL();
    // Nothing of the old reading is kept for saving.
    document->setNumberOfChanges(0);
    view->setDocument(nullptr);
    view->loadDocument(url);
    // After the load's own restoring, which is queued too.
    MainQueue::async(view, [view, pageIndex, point, scaleMode, scale, displayMode] {
        const auto reloaded = view->fdDocument();
        if (!reloaded)
            return;
        view->setDisplayMode(displayMode);
        if (scaleMode == PDFViewScaleMode::none)
            view->setScaleFactor(scale);
        view->setScaleMode(scaleMode);
        const int count = reloaded->pageCount();
        if (count <= 0 || pageIndex < 0)
            return;
        const auto page = reloaded->pageAtIndex(std::min(pageIndex, count - 1));
        view->goToDestination(std::make_shared<PDFDestination>(page, point));
    });
}
