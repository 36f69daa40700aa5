#include "PDFRenderScheduler.h"

#include <kit/base/BackgroundQueue.h>
#include <kit/base/ThreadHandoff.h>
#include <kit/engine/PDFCancellation.h>
#include <kit/engine/PDFDisplayList.h>
#include <kit/engine/PDFPageRenderSource.h>

#include <QMetaObject>
#include <QRunnable>
#include <QThread>
#include <QTransform>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <deque>
#include <mutex>
#include <optional>
#include <set>

#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// Lists of the pages around the view; a text page's list is small, an image page's holds a
// reference to its compressed image.
constexpr size_t MaxDisplayLists = 32;
// A shown tile larger than this many pixels is drawn in bands of about this size by several
// workers at once: the tiles of a first screen differ in size (a page's edge cuts them), and the
// largest alone would otherwise keep one core busy while the others wait.
constexpr int BandPixels = 64 * 1024;
constexpr int MaxBands = 8;

// Workers yield to the main thread when the processor is busy, so that scrolling and input stay
// smooth while pages render. Linux keeps a nice value per thread.
void lowerThreadPriority()
{
    thread_local bool lowered = false;
    if (lowered)
        return;
    lowered = true;
    setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), 8);
}

// Tile pixels live in their own anonymous mapping, so that a tile leaving the cache gives its
// memory back to the system at once; from the allocator's heaps it would linger as fragments.
// The mapping's first bytes hold its length, for the unmapping.
constexpr size_t MappingHeader = 64;

void unmapTile(void *info)
{
    auto *base = static_cast<unsigned char *>(info);
    size_t length = 0;
    std::memcpy(&length, base, sizeof length);
    munmap(base, length);
}

QImage mappedTile(const QSize &size)
{
    const qsizetype bytesPerLine = qsizetype(size.width()) * 4;
    const size_t length = MappingHeader + size_t(bytesPerLine) * size_t(size.height());
    void *memory
        = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return {};
    auto *base = static_cast<unsigned char *>(memory);
    std::memcpy(base, &length, sizeof length);
    return QImage(base + MappingHeader, size.width(), size.height(), bytesPerLine,
        QImage::Format_ARGB32_Premultiplied, unmapTile, base);
}

// How long the workers stay idle before the heap's free pages go back to the system. Giving
// them back holds the heap's lock for up to a millisecond, which the main thread, allocating as
// it paints, would wait out in the middle of a scroll; while the reader scrolls, the releases of
// what the engine kept give them back as well.
constexpr int GiveBackAfterMs = 150;

} // namespace

struct PDFRenderScheduler::State
{
    struct Running
    {
        PDFTileKey key;
        std::shared_ptr<PDFCancellation> cancel;
    };
    // A shown tile drawn band by band into one image; the worker finishing its last band
    // delivers it.
    struct Banded
    {
        PDFTileKey key;
        std::shared_ptr<PDFDisplayList> list;
        std::shared_ptr<PDFCancellation> cancel;
        QImage image;
        uchar *pixels = nullptr; // the image's, taken once: bits() on a shared image copies it
        QTransform toTile;
        int left = 0; // bands not finished, guarded by the mutex
        bool failed = false; // guarded by the mutex
        int shownEnd = 0; // the bands holding the rows on screen end here; 0: all are shown
        int shownLeft = 0; // bands of those rows not finished, guarded by the mutex
    };
    struct Band
    {
        std::shared_ptr<Banded> tile;
        int top = 0;
        int height = 0;
    };
    struct List
    {
        const void *page = nullptr;
        quint64 revision = 0;
        std::shared_ptr<PDFDisplayList> list;
    };

    std::mutex mutex;
    std::deque<PDFTileRequest> pending;
    std::deque<Band> bands; // taken before any request: they are shown tiles already started
    // Bands of shown tiles below the screen's edge, taken once no shown tile or band waits.
    std::deque<Band> laterBands;
    std::vector<Running> running;
    // Tiles drawn, or found impossible to draw, that the main thread has yet to take.
    struct Finished
    {
        PDFTileKey key;
        QImage image;
        bool failed = false;
        std::shared_ptr<PDFCancellation> cancel;
        bool top = false; // only the shown top rows: the tile goes on drawing
    };
    std::vector<Finished> finished;
    std::deque<List> lists; // most recently used at the back
    std::vector<const void *> kept; // pages whose lists stay while no tile of theirs is wanted
    std::set<std::pair<const void *, quint64>> building;
    std::set<std::pair<const void *, quint64>> failed;
    int workers = 0;
    int shownWorkers = 0;
    int shownBusy = 0; // workers drawing shown tiles or bands now
    int maxWorkers = 1;
    int maxShownWorkers = 1;
    int built = 0;
    PDFRenderScheduler *owner = nullptr; // outlives every worker: the destructor waits for them

    std::shared_ptr<PDFDisplayList> findList(const void *page, quint64 revision)
    {
        for (auto it = lists.begin(); it != lists.end(); ++it) {
            if (it->page == page && it->revision == revision) {
                List entry = *it;
                lists.erase(it);
                lists.push_back(entry);
                return entry.list;
            }
        }
        return nullptr;
    }

    // Takes out the lists of pages that are neither kept nor wanted by a tile waiting or
    // rendering: a list holds its page's fonts, pictures and shadings (megabytes on a page of
    // charts) and has nothing left to draw. The caller frees them outside the lock.
    std::vector<List> takeUnwantedLists()
    {
        std::vector<List> dropped;
        for (auto it = lists.begin(); it != lists.end();) {
            const void *const page = it->page;
            const bool wanted = std::find(kept.begin(), kept.end(), page) != kept.end()
                || std::any_of(pending.begin(), pending.end(),
                    [page](const PDFTileRequest &r) { return r.key.page == page; })
                || std::any_of(running.begin(), running.end(),
                    [page](const Running &r) { return r.key.page == page; });
            if (wanted) {
                ++it;
            } else {
                dropped.push_back(std::move(*it));
                it = lists.erase(it);
            }
        }
        return dropped;
    }
};

class PDFRenderScheduler::Worker : public QRunnable
{
public:
    Worker(std::shared_ptr<State> state, bool shownOnly)
        : m_state(std::move(state))
        , m_shownOnly(shownOnly)
    { }

    void run() override
    {
        ThreadHandoff::takeOver(this);
        if (!m_shownOnly)
            lowerThreadPriority();
        State &s = *m_state;
        bool idle = false;
        for (;;) {
            PDFTileRequest request;
            auto cancel = std::make_shared<PDFCancellation>();
            std::shared_ptr<PDFDisplayList> list;
            std::optional<State::Band> band;
            {
                const std::lock_guard lock(s.mutex);
                std::deque<State::Band> *queue = &s.bands;
                if (queue->empty()
                    && std::none_of(s.pending.begin(), s.pending.end(),
                        [](const PDFTileRequest &r) { return r.shown; }))
                    queue = &s.laterBands;
                if (!queue->empty()) {
                    band = queue->front();
                    queue->pop_front();
                    ++s.shownBusy;
                }
            }
            if (band) {
                drawBand(*band);
                const std::lock_guard lock(s.mutex);
                --s.shownBusy;
                continue;
            }
            {
                const std::lock_guard lock(s.mutex);
                // The first request this worker may take whose list is not being built by
                // another worker. The other workers take shown tiles too, first since they rank
                // first: at a lower priority they leave the main thread its core, and a screen
                // of two pages, or of a page's tiles, renders side by side. While shown tiles
                // wait or draw, no worker starts on a tile out of view unless a core is left
                // over: it would take a core from them, and once their list is done the shown
                // tiles are shared out band by band.
                const bool shownWaiting = std::any_of(s.pending.begin(), s.pending.end(),
                    [](const PDFTileRequest &r) { return r.shown; });
                const bool coresTaken = s.shownBusy + 1 >= s.maxWorkers;
                auto chosen = std::find_if(s.pending.begin(), s.pending.end(), [&](const auto &r) {
                    return (r.shown || (!m_shownOnly && !shownWaiting && !coresTaken))
                        && !s.building.count({ r.key.page, r.key.revision });
                });
                if (chosen == s.pending.end()) {
                    --(m_shownOnly ? s.shownWorkers : s.workers);
                    idle = s.pending.empty() && s.running.empty();
                    break;
                }
                request = *chosen;
                s.pending.erase(chosen);
                const std::pair<const void *, quint64> id { request.key.page,
                    request.key.revision };
                if (s.failed.count(id))
                    continue;
                s.running.push_back(State::Running { request.key, cancel });
                if (request.shown)
                    ++s.shownBusy;
                list = s.findList(request.key.page, request.key.revision);
                if (!list)
                    s.building.insert(id);
            }
            render(request, list, cancel);
            if (request.shown) {
                const std::lock_guard lock(s.mutex);
                --s.shownBusy;
            }
        }
        if (idle)
            QMetaObject::invokeMethod(m_state->owner, "workersIdle", Qt::QueuedConnection);
    }

private:
    void render(const PDFTileRequest &request, std::shared_ptr<PDFDisplayList> list,
        const std::shared_ptr<PDFCancellation> &cancel)
    {
        State &s = *m_state;
        const std::pair<const void *, quint64> id { request.key.page, request.key.revision };
        bool failed = false;
        const bool building = !list;
        if (building) {
            list = request.source ? request.source->buildDisplayList(cancel.get()) : nullptr;
            failed = !list && !cancel->isCancelled();
            const std::lock_guard lock(s.mutex);
            s.building.erase(id);
            if (list) {
                ++s.built;
                s.lists.push_back(State::List { request.key.page, request.key.revision, list });
                while (s.lists.size() > MaxDisplayLists)
                    s.lists.pop_front();
            }
            if (failed)
                s.failed.insert(id);
        }
        // The page's other tiles can start on other workers while this one draws its own.
        if (building && list)
            pumpLater();
        QImage image;
        if (list) {
            const QRect tile = request.key.pixelRect(request.pagePixels);
            image = mappedTile(tile.size());
            const QTransform toTile
                = list->geometry().pageToView(request.key.devicePixelsPerPoint())
                * QTransform::fromTranslate(-tile.left(), -tile.top());
            const int bands = request.shown && !image.isNull()
                ? std::clamp(int(qint64(tile.width()) * tile.height() / BandPixels), 1, MaxBands)
                : 1;
            if (bands > 1) {
                drawInBands(request, list, cancel, std::move(image), toTile, bands);
                return;
            }
            if (image.isNull() || !list->render(image, toTile, cancel.get()))
                image = QImage();
            failed = image.isNull() && !cancel->isCancelled();
        }
        deliver(request.key, cancel, image, failed);
    }

    // Queues the tile's bands after the first, for any worker to take, and draws the first.
    // Bands of rows on screen go before any other work; those below the screen's edge after
    // the shown tiles.
    void drawInBands(const PDFTileRequest &request, const std::shared_ptr<PDFDisplayList> &list,
        const std::shared_ptr<PDFCancellation> &cancel, QImage image, const QTransform &toTile,
        int bands)
    {
        State &s = *m_state;
        uchar *const pixels = image.bits();
        const int height = image.height();
        const int rows = (height + bands - 1) / bands;
        const int shownRows
            = request.shownRows > 0 && request.shownRows < height ? request.shownRows : 0;
        const int shownBands = shownRows > 0 ? (shownRows + rows - 1) / rows : bands;
        const int shownEnd = shownRows > 0 ? std::min(height, shownBands * rows) : 0;
        auto tile = std::make_shared<State::Banded>(State::Banded { request.key, list, cancel,
            std::move(image), pixels, toTile, bands, false, shownEnd, shownBands });
        {
            const std::lock_guard lock(s.mutex);
            for (int band = bands - 1; band > 0; --band) {
                const int top = band * rows;
                const State::Band queued { tile, top, std::max(0, std::min(rows, height - top)) };
                if (band < shownBands)
                    s.bands.push_front(queued);
                else
                    s.laterBands.push_back(queued);
            }
        }
        pumpLater();
        drawBand(State::Band { tile, 0, std::min(rows, height) });
    }

    void drawBand(const State::Band &band)
    {
        State::Banded &tile = *band.tile;
        bool drawn = true;
        if (band.height > 0 && !tile.cancel->isCancelled()) {
            // The band's rows of the tile's own pixels.
            QImage rows(tile.pixels + qsizetype(band.top) * tile.image.bytesPerLine(),
                tile.image.width(), band.height, tile.image.bytesPerLine(), tile.image.format());
            drawn = tile.list->render(
                rows, tile.toTile * QTransform::fromTranslate(0, -band.top), tile.cancel.get());
        }
        bool last = false;
        bool topDone = false;
        bool failed = false;
        {
            const std::lock_guard lock(m_state->mutex);
            tile.failed = tile.failed || (!drawn && !tile.cancel->isCancelled());
            last = --tile.left == 0;
            if (band.top < tile.shownEnd)
                topDone = --tile.shownLeft == 0 && !last;
            failed = tile.failed;
        }
        if (topDone && !failed && !tile.cancel->isCancelled()) {
            // Rows no worker writes any more, copied out of the image the others still fill.
            const QImage top = QImage(tile.pixels, tile.image.width(), tile.shownEnd,
                tile.image.bytesPerLine(), tile.image.format())
                                   .copy();
            const std::lock_guard lock(m_state->mutex);
            m_state->finished.push_back(
                State::Finished { tile.key, top, false, tile.cancel, true });
        }
        if (topDone)
            QMetaObject::invokeMethod(m_state->owner, "takeFinished", Qt::QueuedConnection);
        if (last)
            deliver(tile.key, tile.cancel, failed ? QImage() : tile.image, failed);
    }

    // Ends the tile's work: its image goes to the main thread, or its page is reported as one
    // that could not be drawn.
    void deliver(const PDFTileKey &key, const std::shared_ptr<PDFCancellation> &cancel,
        const QImage &image, bool failed)
    {
        // The tile stays running until the main thread has it: asked for again meanwhile, it
        // would be drawn twice. What the worker hands over waits under the lock: invoked by name,
        // nothing of it passes through Qt's event queue, whose locking the race checker used in
        // testing cannot see.
        {
            const std::lock_guard lock(m_state->mutex);
            m_state->finished.push_back(State::Finished { key, image, failed, cancel });
        }
        QMetaObject::invokeMethod(m_state->owner, "takeFinished", Qt::QueuedConnection);
    }

    void pumpLater() { QMetaObject::invokeMethod(m_state->owner, "pump", Qt::QueuedConnection); }

    std::shared_ptr<State> m_state;
    bool m_shownOnly;
};

PDFRenderScheduler::PDFRenderScheduler(QObject *parent, int threads)
    : QObject(parent)
    , m_state(std::make_shared<State>())
{
    if (threads <= 0)
        threads = std::clamp(QThread::idealThreadCount(), 1, 4);
    m_state->maxWorkers = threads;
    m_state->owner = this;
    m_pool.setMaxThreadCount(threads);
    m_pool.setObjectName(QStringLiteral("PDFRenderScheduler"));
    // One core stays for the main thread, which the shown tiles would otherwise crowd out.
    m_state->maxShownWorkers = std::max(1, threads - 1);
    m_shownPool.setMaxThreadCount(m_state->maxShownWorkers);
    m_shownPool.setObjectName(QStringLiteral("PDFRenderScheduler shown"));
    // Rendering frees pixmaps, decoded streams and display lists all through the heap, whose
    // pages stay resident until something gives them back, so each screen's work would start
    // from the last one's peak. Once the workers have rested a moment they are given back, on a
    // thread of normal priority: the heap's lock is held meanwhile, and a worker of lowered
    // priority holding it could keep the main thread waiting.
    m_giveBackTimer.setSingleShot(true);
    m_giveBackTimer.setInterval(GiveBackAfterMs);
    connect(&m_giveBackTimer, &QTimer::timeout, this, [this] {
        if (isIdle())
            BackgroundQueue::async([] { malloc_trim(0); });
    });
}

PDFRenderScheduler::~PDFRenderScheduler()
{
    cancelAll();
    m_shownPool.waitForDone();
    m_pool.waitForDone();
}

void PDFRenderScheduler::setRequests(std::vector<PDFTileRequest> requests)
{
    {
        const std::lock_guard lock(m_state->mutex);
        std::vector<PDFTileKey> wanted;
        wanted.reserve(requests.size());
        for (const PDFTileRequest &request : requests)
            wanted.push_back(request.key);
        m_state->pending.clear();
        for (PDFTileRequest &request : requests) {
            const bool running = std::any_of(m_state->running.begin(), m_state->running.end(),
                [&](const State::Running &r) { return r.key == request.key; });
            if (!running)
                m_state->pending.push_back(std::move(request));
        }
        for (const State::Running &r : m_state->running) {
            if (std::find(wanted.begin(), wanted.end(), r.key) == wanted.end())
                r.cancel->cancel();
        }
    }
    pump();
}

void PDFRenderScheduler::invalidatePage(const void *page)
{
    const std::lock_guard lock(m_state->mutex);
    std::erase_if(m_state->lists, [page](const State::List &l) { return l.page == page; });
    std::erase_if(m_state->failed, [page](const auto &id) { return id.first == page; });
    std::erase_if(m_state->pending, [page](const PDFTileRequest &r) { return r.key.page == page; });
    for (const State::Running &r : m_state->running) {
        if (r.key.page == page)
            r.cancel->cancel();
    }
}

void PDFRenderScheduler::keepListsOf(const std::vector<const void *> &pages)
{
    // Dropped off this thread: the last reference frees the fonts and pictures, and may wait
    // for MuPDF's locks that the workers take.
    std::vector<State::List> dropped;
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->kept = pages;
        dropped = m_state->takeUnwantedLists();
    }
    if (!dropped.empty())
        BackgroundQueue::dispose(std::move(dropped));
}

void PDFRenderScheduler::cancelAll()
{
    const std::lock_guard lock(m_state->mutex);
    m_state->pending.clear();
    for (const State::Running &r : m_state->running)
        r.cancel->cancel();
}

bool PDFRenderScheduler::isIdle() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->pending.empty() && m_state->running.empty();
}

void PDFRenderScheduler::takeFinished()
{
    std::vector<State::Finished> finished;
    {
        const std::lock_guard lock(m_state->mutex);
        finished.swap(m_state->finished);
        for (const State::Finished &tile : finished) {
            if (tile.top)
                continue;
            m_state->running.erase(std::find_if(m_state->running.begin(), m_state->running.end(),
                [&](const State::Running &r) { return r.cancel == tile.cancel; }));
        }
    }
    for (const State::Finished &tile : finished) {
        if (tile.failed)
            emit pageFailed(tile.key.page, tile.key.revision);
        else if (tile.top && !tile.cancel->isCancelled())
            emit tileTopDrawn(tile.key, tile.image);
        else if (tile.top)
            continue;
        else if (!tile.image.isNull() && !tile.cancel->isCancelled())
            emit tileFinished(tile.key, tile.image);
    }
    // A finished list may unblock requests that waited for it, and a page whose last tile this
    // was lets its list go there.
    pump();
}

void PDFRenderScheduler::workersIdle()
{
    m_giveBackTimer.start();
}

int PDFRenderScheduler::displayListsBuilt() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->built;
}

void PDFRenderScheduler::pump()
{
    int start = 0;
    int startShown = 0;
    // Lists the view no longer wants are let go off this thread, as in keepListsOf.
    std::vector<State::List> dropped;
    {
        const std::lock_guard lock(m_state->mutex);
        dropped = m_state->takeUnwantedLists();
        const int shown = int(m_state->bands.size() + m_state->laterBands.size())
            + int(std::count_if(m_state->pending.begin(), m_state->pending.end(),
                [](const PDFTileRequest &r) { return r.shown; }));
        startShown = std::max(0, std::min(m_state->maxShownWorkers, shown) - m_state->shownWorkers);
        m_state->shownWorkers += startShown;
        // What the shown workers cannot take at once goes to the others.
        const int wanted = std::min<int>(m_state->maxWorkers,
            int(m_state->pending.size() + m_state->bands.size() + m_state->laterBands.size())
                - std::min(shown, m_state->maxShownWorkers));
        start = std::max(0, wanted - m_state->workers);
        m_state->workers += start;
    }
    if (!dropped.empty())
        BackgroundQueue::dispose(std::move(dropped));
    for (int i = 0; i < startShown; ++i) {
        auto *worker = new Worker(m_state, true);
        worker->setAutoDelete(true);
        ThreadHandoff::handOver(worker);
        m_shownPool.start(worker);
    }
    for (int i = 0; i < start; ++i) {
        auto *worker = new Worker(m_state, false);
        worker->setAutoDelete(true);
        ThreadHandoff::handOver(worker);
        m_pool.start(worker);
    }
}
