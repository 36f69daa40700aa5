#include "PDFDocumentPrefetch.h"

#include "PDFCancellation.h"
#include "PDFRenderPrivate.h"
#include "PageTree.h"
#include "mupdf/MuOpen.h"
#include "mupdf/MuOwned.h"
#include "mupdf/Prefetched.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QMetaObject>
#include <QPointer>

#include <algorithm>
#include <atomic>
#include <future>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The check of the objects' places over the file mapped for it, on a thread of its own. The
// answer is given as soon as it is known: unmapping a long file's touched pages takes the system
// milliseconds, which the first page need not wait for.
struct PlacesCheck
{
    enum Answer { Placed, Misplaced, Unreadable };

    PageTree::ObjectPlaces places;
    QByteArray path;
    std::promise<Answer> answer;

    static constexpr size_t UnmapPiece = 4 << 20; // a multiple of the page size

    void run()
    {
        const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
        struct stat info = {};
        void *mapped = MAP_FAILED;
        if (fd >= 0 && ::fstat(fd, &info) == 0 && info.st_size > 0)
            mapped = ::mmap(nullptr, size_t(info.st_size), PROT_READ, MAP_SHARED, fd, 0);
        if (fd >= 0)
            ::close(fd);
        if (mapped == MAP_FAILED) {
            answer.set_value(Unreadable);
            return;
        }
        const size_t length = size_t(info.st_size);
        const QByteArrayView bytes(static_cast<const char *>(mapped), qsizetype(length));
        answer.set_value(places.inFile(bytes) ? Placed : Misplaced);
        // A piece at a time: the process's other mappings (the tiles' among them) wait for the
        // unmapping of one piece at most, not the whole file's.
        auto *const base = static_cast<char *>(mapped);
        for (size_t at = 0; at < length; at += UnmapPiece)
            ::munmap(base + at, std::min(UnmapPiece, length - at));
    }
};

} // namespace

struct PDFDocumentPrefetchState
{
    QString path;
    qint64 size = -1;
    QDateTime modified;
    PDFCancellation cancel; // ends the first page's reading when the document is wanted
    std::thread thread;
    std::thread checker; // ends on its own: joined when the prefetch goes
    std::mutex joinMutex;
    pdf_document *doc = nullptr;
    bool objectsInPlace = false;
    mu::DisplayList firstPageContents; // recorded in page space
    int firstPageObject = 0;
    pdf_page *firstPage = nullptr; // kept with its contents

    std::atomic<bool> taken { false };
    bool finished = false; // guarded by prefetchMutex, as waiting is
    std::vector<std::pair<QPointer<QObject>, std::function<void()>>> waiting;

    void read();
    // Checks on a thread of its own, over the file mapped for it, that every object is where the
    // cross-reference places it; no answer when the file cannot be mapped.
    std::future<PlacesCheck::Answer> checkPlaces(PageTree::ObjectPlaces places);
    // Loads the page's fonts and images into MuPDF's store, unless cancelled first; the first
    // page's contents are kept as a display list for its first render.
    void readPage(fz_context *ctx, int index);
    // The pages after the first that a first screen may show, read until the document is taken.
    void readNextPages();
    void dropFirstPage(fz_context *ctx);
    // Stops the first page's reading and waits for the thread. The reading thread locks
    // prefetchMutex as it ends, so this is never called with it held.
    void finish();
    void drop();
};

namespace {

// The most pages a first screen shows: a window of small pages at its default zoom.
constexpr int FirstScreenPages = 3;

std::mutex prefetchMutex;
std::weak_ptr<PDFDocumentPrefetchState> current;

} // namespace

void PDFDocumentPrefetchState::read()
{
    fz_context *ctx = mu::context();
    mu::Error failure;
    doc = mu::openDocumentFromFile(QFile::encodeName(path), size, failure);
    if (!doc)
        return;
    bool locked = true;
    mu::runQuietly(ctx, [&] { locked = fz_needs_password(ctx, &doc->super); });
    // A locked document's objects can be read only once the password is known.
    if (locked)
        return;
    // Reading the first page may be what meets a misplaced object and makes MuPDF repair.
    const mu::OpeningScope opening(size);
    bool repaired = true;
    mu::runQuietly(ctx, [&] { repaired = pdf_was_repaired(ctx, doc); });
    // The check of the objects' places, a pass over the whole file, runs beside the first page's
    // reading, which only reads: a file that fails it is repaired after, as if checked first.
    bool placed = true;
    if (!repaired) {
        std::future<PlacesCheck::Answer> answer = checkPlaces(PageTree::ObjectPlaces(ctx, doc));
        readPage(ctx, 0);
        const PlacesCheck::Answer found = answer.get();
        // A file that cannot be mapped is checked when it is opened.
        if (found == PlacesCheck::Unreadable) {
            dropFirstPage(ctx);
            return;
        }
        placed = found == PlacesCheck::Placed;
    }
    if (!placed) {
        // Page 1 as read from the objects before the repair is not kept open through it.
        dropFirstPage(ctx);
        PageTree::repairIfDamaged(ctx, doc, QByteArrayView());
    }
    // The document opens again when it is wanted, and says then why it cannot be read.
    if (opening.refused(failure)) {
        drop();
        return;
    }
    mu::runQuietly(ctx, [&] { repaired = pdf_was_repaired(ctx, doc); });
    objectsInPlace = !repaired;
    // A repaired file's first page is read again from the objects as repaired.
    if (!objectsInPlace)
        dropFirstPage(ctx);
}

std::future<PlacesCheck::Answer> PDFDocumentPrefetchState::checkPlaces(
    PageTree::ObjectPlaces places)
{
    auto job = std::make_shared<PlacesCheck>(
        PlacesCheck { std::move(places), QFile::encodeName(path), {} });
    std::future<PlacesCheck::Answer> answer = job->answer.get_future();
    try {
        checker = std::thread([job] { job->run(); });
    } catch (const std::system_error &) {
        job->run();
    }
    return answer;
}

void PDFDocumentPrefetchState::dropFirstPage(fz_context *ctx)
{
    firstPageContents.reset();
    if (pdf_page *const page = std::exchange(firstPage, nullptr))
        mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &page->super); });
}

void PDFDocumentPrefetchState::readPage(fz_context *ctx, int index)
{
    if (cancel.isCancelled())
        return;
    // Running the page's contents loads its fonts and images into MuPDF's store, where the
    // first render finds them; the bounds computed are stored with each font. The first page's
    // are recorded as its first render would record them, which then only adds the page's
    // annotations.
    mu::CookieScope scope(&cancel);
    pdf_page *page = nullptr;
    mu::Device device;
    mu::DisplayList list;
    int object = 0;
    mu::Error failure;
    mu::run(ctx, failure, [&] {
        page = pdf_load_page(ctx, doc, index);
        object = pdf_to_num(ctx, page->obj);
        const fz_matrix toPage = mu::fzToPageSpace(ctx, page);
        if (index == 0) {
            list.p = fz_new_display_list(ctx, fz_transform_rect(pdf_bound_page(ctx, page), toPage));
            device.p = fz_new_list_device(ctx, list.p);
        } else {
            fz_rect bounds = fz_empty_rect;
            device.p = fz_new_bbox_device(ctx, &bounds);
        }
        mu::checkContentLength(ctx, page, scope.cookie(), scope.contentLimit());
        pdf_run_page_contents(ctx, page, device.p, toPage, scope.cookie());
        fz_close_device(ctx, device.p);
    });
    device.reset();
    // Contents cut short by a cancellation or a limit are recorded again when drawn.
    if (list && !failure.failed && !scope.aborted() && !cancel.isCancelled()) {
        firstPageContents = std::move(list);
        firstPageObject = object;
        firstPage = std::exchange(page, nullptr);
    }
    if (page)
        mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &page->super); });
}

void PDFDocumentPrefetchState::readNextPages()
{
    if (!doc || !objectsInPlace)
        return;
    fz_context *ctx = mu::context();
    int count = 0;
    mu::runQuietly(ctx, [&] { count = pdf_count_pages(ctx, doc); });
    for (int index = 1; index < std::min(count, FirstScreenPages); ++index)
        readPage(ctx, index);
}

void PDFDocumentPrefetchState::finish()
{
    cancel.cancel();
    const std::lock_guard lock(joinMutex);
    if (thread.joinable())
        thread.join();
}

void PDFDocumentPrefetchState::drop()
{
    if (!doc)
        return;
    fz_context *ctx = mu::context();
    dropFirstPage(ctx);
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
    m_state->thread = std::thread([state = m_state.get()] {
        state->read();
        // The first page is what a waiting opener needs; the next ones are read on while
        // nobody has taken the document, unless an opener waits: it takes the document at once,
        // and would wait for the page being read.
        decltype(state->waiting) waiting;
        {
            const std::lock_guard finishing(prefetchMutex);
            state->finished = true;
            waiting.swap(state->waiting);
        }
        // Told on the main thread, where a receiver gone meanwhile is seen to be gone.
        QCoreApplication *const application = QCoreApplication::instance();
        for (const auto &waiter : waiting) {
            if (application) {
                QMetaObject::invokeMethod(
                    application,
                    [receiver = waiter.first, done = waiter.second] {
                        if (receiver)
                            done();
                    },
                    Qt::QueuedConnection);
            }
        }
        if (waiting.empty())
            state->readNextPages();
    });
    current = m_state;
}

PDFDocumentPrefetch::~PDFDocumentPrefetch()
{
    if (!m_state)
        return;
    m_state->finish();
    m_state->drop();
    if (m_state->checker.joinable())
        m_state->checker.join();
    const std::lock_guard lock(prefetchMutex);
    current.reset();
}

bool PDFDocumentPrefetch::notifyWhenRead(
    const QString &path, QObject *receiver, const std::function<void()> &done)
{
    const std::lock_guard lock(prefetchMutex);
    const auto state = current.lock();
    if (!state || state->finished || state->taken
        || state->path != QFileInfo(path).canonicalFilePath())
        return false;
    state->waiting.emplace_back(receiver, done);
    return true;
}

bool PDFDocumentPrefetch::isReadToTake(const QString &path)
{
    const std::lock_guard lock(prefetchMutex);
    const auto state = current.lock();
    return state && state->finished && !state->taken && state->doc && state->objectsInPlace
        && state->path == QFileInfo(path).canonicalFilePath();
}

bool PDFDocumentPrefetch::taken() const
{
    return m_state && m_state->taken;
}

mu::Prefetched mu::takePrefetched(const QString &path)
{
    std::shared_ptr<PDFDocumentPrefetchState> state;
    {
        const std::lock_guard lock(prefetchMutex);
        state = current.lock();
    }
    if (!state || state->path != QFileInfo(path).canonicalFilePath())
        return {};
    state->finish();
    // A file changed since it was read is read again: the document is the file as it is now.
    const QFileInfo info(path);
    if (info.size() != state->size || info.lastModified() != state->modified) {
        state->drop();
        return {};
    }
    Prefetched taken { std::exchange(state->doc, nullptr), state->objectsInPlace,
        state->firstPageContents.release(), state->firstPageObject,
        std::exchange(state->firstPage, nullptr) };
    state->taken = taken.doc != nullptr;
    return taken;
}
