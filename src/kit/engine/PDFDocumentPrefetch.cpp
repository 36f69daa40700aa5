#include "PDFDocumentPrefetch.h"

#include "PDFCancellation.h"
#include "PDFRenderPrivate.h"
#include "PageTree.h"
#include "mupdf/MuOwned.h"
#include "mupdf/Prefetched.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <mutex>
#include <thread>

struct PDFDocumentPrefetchState
{
    QString path;
    qint64 size = -1;
    QDateTime modified;
    PDFCancellation cancel; // ends the first page's reading when the document is wanted
    std::thread thread;
    pdf_document *doc = nullptr;
    bool objectsInPlace = false;
    std::atomic<bool> taken { false };

    void read();
    void readFirstPage(fz_context *ctx);
    void drop();
};

namespace {

std::mutex prefetchMutex;
std::weak_ptr<PDFDocumentPrefetchState> current;

} // namespace

void PDFDocumentPrefetchState::read()
{
    fz_context *ctx = mu::context();
    const QByteArray name = QFile::encodeName(path);
    mu::Error failure;
    mu::run(ctx, failure, [&] { doc = pdf_open_document(ctx, name.constData()); });
    if (failure.failed || !doc)
        return;
    bool locked = true;
    mu::runQuietly(ctx, [&] { locked = fz_needs_password(ctx, &doc->super); });
    // A locked document's objects can be read only once the password is known.
    if (locked)
        return;
    QFile file(path);
    const uchar *mapped = file.open(QIODevice::ReadOnly) ? file.map(0, file.size()) : nullptr;
    if (!mapped)
        return;
    PageTree::repairIfDamaged(ctx, doc, QByteArrayView(mapped, file.size()));
    file.unmap(const_cast<uchar *>(mapped));
    bool repaired = true;
    mu::runQuietly(ctx, [&] { repaired = pdf_was_repaired(ctx, doc); });
    objectsInPlace = !repaired;
    if (objectsInPlace)
        readFirstPage(ctx);
}

void PDFDocumentPrefetchState::readFirstPage(fz_context *ctx)
{
    // Running the page's contents loads its fonts and images into MuPDF's store, where the
    // first render finds them; the bounds computed are stored with each font.
    mu::CookieScope scope(&cancel);
    pdf_page *page = nullptr;
    mu::Device device;
    mu::Error failure;
    mu::run(ctx, failure, [&] {
        page = pdf_load_page(ctx, doc, 0);
        fz_rect bounds = fz_empty_rect;
        device.p = fz_new_bbox_device(ctx, &bounds);
        mu::checkContentLength(ctx, page, scope.cookie(), scope.contentLimit());
        pdf_run_page_contents(ctx, page, device.p, fz_identity, scope.cookie());
        fz_close_device(ctx, device.p);
    });
    device.reset();
    if (page)
        mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &page->super); });
}

void PDFDocumentPrefetchState::drop()
{
    if (!doc)
        return;
    fz_context *ctx = mu::context();
    pdf_document *const dropped = std::exchange(doc, nullptr);
    mu::runQuietly(ctx, [&] { pdf_drop_document(ctx, dropped); });
}

PDFDocumentPrefetch::PDFDocumentPrefetch(const QString &path)
{
    const QFileInfo info(path);
    if (path.isEmpty() || !info.isFile())
        return;
    const std::lock_guard lock(prefetchMutex);
    if (current.lock())
        return;
    m_state = std::make_shared<PDFDocumentPrefetchState>();
    m_state->path = info.canonicalFilePath();
    m_state->size = info.size();
    m_state->modified = info.lastModified();
    // The context is made here, on the calling thread, before the reading thread clones it.
    mu::context();
    m_state->thread = std::thread([state = m_state.get()] { state->read(); });
    current = m_state;
}

PDFDocumentPrefetch::~PDFDocumentPrefetch()
{
    if (!m_state)
        return;
    const std::lock_guard lock(prefetchMutex);
    m_state->cancel.cancel();
    if (m_state->thread.joinable())
        m_state->thread.join();
    m_state->drop();
    current.reset();
}

bool PDFDocumentPrefetch::taken() const
{
    return m_state && m_state->taken;
}

mu::Prefetched mu::takePrefetched(const QString &path)
{
    const std::lock_guard lock(prefetchMutex);
    const auto state = current.lock();
    if (!state || state->path != QFileInfo(path).canonicalFilePath())
        return {};
    state->cancel.cancel();
    if (state->thread.joinable())
        state->thread.join();
    // A file changed since it was read is read again: the document is the file as it is now.
    const QFileInfo info(path);
    if (info.size() != state->size || info.lastModified() != state->modified) {
        state->drop();
        return {};
    }
    Prefetched taken { std::exchange(state->doc, nullptr), state->objectsInPlace };
    state->taken = taken.doc != nullptr;
    return taken;
}
