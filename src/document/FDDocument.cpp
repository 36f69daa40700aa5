#include "FDDocument.h"

#include "AtomicFileWriter.h"
#include "FDBookmark.h"
#include "FDDocumentDelegate.h"
#include "FDPage.h"
#include "PDFSavingService.h"

#include <app/Alert.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>

#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>

#include <algorithm>
#include <cerrno>

#include <unistd.h>

const QString FDDocument::DocumentAnnDidChangeNotification
    = QStringLiteral("PDFView_DocumentAnnDidChange");
const QString FDDocument::DocumentPageDidChangeNotification
    = QStringLiteral("PDFView_DocumentPageDidChange");
const QString FDDocument::URLDidChangeNotification = QStringLiteral("PDFView_URLDidChange");

namespace {
// How long the permission alert waits, so that it doesn't break into the gesture that edited.
constexpr double WritePermissionAlertDelay = 0.6;
constexpr int BigFilePageCount = 1000;
} // namespace

// Makes every page an FDPage and asks the application's delegate for everything else.
class FDDocument::PageClassDelegate : public PDFDocumentDelegate
{
public:
    PDFPageFactory classForPage() const override
    {
        return [] { return std::make_shared<FDPage>(); };
    }
    PDFAnnotationFactory classForAnnotationClass(const QString &type) const override
    {
        const std::shared_ptr<PDFDocumentDelegate> outer = applicationDelegate.lock();
        return outer ? outer->classForAnnotationClass(type) : PDFAnnotationFactory();
    }

    std::weak_ptr<PDFDocumentDelegate> applicationDelegate;
};

FDDocument::FDDocument()
    : m_pageClassDelegate(std::make_shared<PageClassDelegate>())
{
    PDFDocument::setDelegate(m_pageClassDelegate);
}

FDDocument::~FDDocument() = default;

bool FDDocument::init()
{
    return PDFDocument::init();
}

bool FDDocument::initWithURL(const QUrl &url)
{
    qFatal("FDDocument::initWithURL(%s) is not implemented: use initWithURL(url, delegate)",
        qPrintable(url.toString()));
}

bool FDDocument::initWithData(const QByteArray &data)
{
    qFatal("FDDocument::initWithData (%lld bytes) is not implemented: use initWithURL(url, "
           "delegate)",
        qlonglong(data.size()));
}

bool FDDocument::initWithURL(const QUrl &url, const std::shared_ptr<PDFDocumentDelegate> &delegate)
{
    // The application's delegate decides annotation classes while the file is read.
    m_pageClassDelegate->applicationDelegate = delegate;
    // Taken before reading: a change while the file is read shows at the next save.
    const QString path = url.isEmpty() ? QString() : url.toLocalFile();
    const std::optional<FileIdentity> identity = FileIdentity::of(path);
    const bool ok = url.isEmpty() ? PDFDocument::init() : PDFDocument::initWithURL(url);
    if (!ok)
        return false;
    setFileURL(url);
    if (!path.isEmpty()) {
        setFileIdentity(path, identity);
        AtomicFileWriter::removeLeftovers(path);
    }
    resetWith(delegate);
    return true;
}

void FDDocument::resetWith(const std::shared_ptr<PDFDocumentDelegate> &delegate)
{
    setDelegate(delegate);
    if (const auto *viewDelegate = dynamic_cast<const FDDocumentDelegate *>(delegate.get()))
        setPdfView(viewDelegate->pdfView());
    loadBookmarks();
}

void FDDocument::setDelegate(const std::shared_ptr<PDFDocumentDelegate> &delegate)
{
    m_pageClassDelegate->applicationDelegate = delegate;
}

std::shared_ptr<PDFDocumentDelegate> FDDocument::delegate() const
{
    return m_pageClassDelegate->applicationDelegate.lock();
}

void FDDocument::save()
{
    PDFSavingService::shared().addTask(std::static_pointer_cast<FDDocument>(shared_from_this()));
}

void FDDocument::saveAs(const QUrl &url)
{
    setFileURL(url);
    save();
    postChange(URLDidChangeNotification);
}

QUrl FDDocument::fileURL() const
{
    const QMutexLocker locker(&m_sharedFieldsMutex);
    return m_fileURL;
}

void FDDocument::setFileURL(const QUrl &url)
{
    const QMutexLocker locker(&m_sharedFieldsMutex);
    m_fileURL = url;
}

std::optional<QList<FDXAttrItem>> FDDocument::xattrItemsToSave() const
{
    const QMutexLocker locker(&m_sharedFieldsMutex);
    return m_xattrItemsToSave;
}

void FDDocument::setXattrItemsToSave(const std::optional<QList<FDXAttrItem>> &items)
{
    const QMutexLocker locker(&m_sharedFieldsMutex);
    m_xattrItemsToSave = items;
}

std::optional<FileIdentity> FDDocument::fileIdentity(const QString &path) const
{
    const QMutexLocker locker(&m_sharedFieldsMutex);
    return path == m_identityPath ? m_fileIdentity : std::nullopt;
}

void FDDocument::setFileIdentity(const QString &path, const std::optional<FileIdentity> &identity)
{
    const QMutexLocker locker(&m_sharedFieldsMutex);
    m_identityPath = path;
    m_fileIdentity = identity;
}

void FDDocument::restoreChanges(int count)
{
    m_numberOfOtherChanges += count;
    postChange(DocumentAnnDidChangeNotification);
}

void FDDocument::setNumberOfAnnotationChanges(int count)
{
    m_numberOfAnnotationChanges = count;
    checkWritePermission();
    postChange(DocumentAnnDidChangeNotification);
}

void FDDocument::setNumberOfPageChanges(int count)
{
    m_numberOfPageChanges = count;
    checkWritePermission();
    postChange(DocumentPageDidChangeNotification);
}

int FDDocument::numberOfChanges() const
{
    int sum = 0;
    if (__builtin_add_overflow(m_numberOfAnnotationChanges, m_numberOfPageChanges, &sum)
        || __builtin_add_overflow(sum, m_numberOfOtherChanges, &sum))
        qFatal("FDDocument: the number of changes overflows (%d + %d + %d)",
            m_numberOfAnnotationChanges, m_numberOfPageChanges, m_numberOfOtherChanges);
    return sum;
}

void FDDocument::setNumberOfChanges(int count)
{
    if (count != 0) {
        m_numberOfOtherChanges = numberOfChanges();
        return;
    }
    // The total must already read 0 when the notifications go out.
    m_numberOfOtherChanges = 0;
    setNumberOfAnnotationChanges(0);
    setNumberOfPageChanges(0);
}

QString FDDocument::title() const
{
    const QUrl url = fileURL();
    return url.isEmpty() ? QStringLiteral("Untitled") : digestTitleFrom(url);
}

QString FDDocument::digestTitleFrom(const QUrl &url)
{
    if (url.isEmpty())
        return QStringLiteral("(empty)");
    // The last path component without its last extension.
    const QString name = QFileInfo(url.path()).fileName();
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name.left(dot) : name;
}

bool FDDocument::isBigFile() const
{
    return pageCount() > BigFilePageCount;
}

void FDDocument::insertPage(const std::shared_ptr<PDFPage> &page, int index)
{
    PDFDocument::insertPage(page, index);
    setNumberOfPageChanges(m_numberOfPageChanges + 1);
}

void FDDocument::removePageAtIndex(int index)
{
    const auto page = pageAtIndex(index);
    PDFDocument::removePageAtIndex(index);
    setNumberOfPageChanges(m_numberOfPageChanges + 1);
    // A page moved inside the document is back by the next turn; one that is still out by then
    // was deleted (or went to another document), and its bookmark goes with it.
    const bool bookmarked = page
        && std::any_of(m_bookmarks.cbegin(), m_bookmarks.cend(),
            [&page](
                const std::shared_ptr<FDBookmark> &bookmark) { return bookmark->page() == page; });
    if (bookmarked && !m_isBookmarkPurgeQueued) {
        m_isBookmarkPurgeQueued = true;
        MainQueue::async([weak = std::weak_ptr<PDFDocument>(weak_from_this())] {
            if (const auto self = std::static_pointer_cast<FDDocument>(weak.lock())) {
                self->m_isBookmarkPurgeQueued = false;
                self->removeBookmarksOfRemovedPages();
            }
        });
    }
}

void FDDocument::exchangePageAtIndex(int index, int otherIndex)
{
    PDFDocument::exchangePageAtIndex(index, otherIndex);
    setNumberOfPageChanges(m_numberOfPageChanges + 1);
}

void FDDocument::checkWritePermission()
{
    const QUrl url = fileURL();
    if (url.isEmpty() || m_hasCheckedWritePermission)
        return;
    m_hasCheckedWritePermission = true;
    const QString path = url.toLocalFile();
    if (::access(QFile::encodeName(path).constData(), W_OK) == 0)
        return;
    // A file chosen to save into is written in the background: until then only its folder tells.
    if (errno == ENOENT
        && ::access(QFile::encodeName(QFileInfo(path).absolutePath()).constData(), W_OK) == 0)
        return;
    MainQueue::asyncAfter(WritePermissionAlertDelay, [path] {
        AlertRequest request;
        request.style = AlertRequest::Critical;
        request.messageText
            = QStringLiteral("You don’t have permission to save the file \"%1\".").arg(path);
        request.informativeText = QStringLiteral(
            "To view or change permissions, open the file's properties in your file manager.");
        Alert::runModal(request);
    });
}

void FDDocument::postChange(const QString &name) const
{
    NotificationCenter::defaultCenter().post(name, m_pdfView.data());
}
