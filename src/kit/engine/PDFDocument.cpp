#include "PDFDocument.h"

#include "OutlineIO.h"
#include "PDFDocumentDelegate.h"
#include "PDFDocumentPrivate.h"
#include "PDFOutline.h"
#include "PDFPage.h"
#include "PDFPagePrivate.h"
#include "PageTree.h"
#include "PageTreeWalk.h"
#include "SaslPrep.h"
#include "mupdf/MuOpen.h"

#include <kit/base/NotificationCenter.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>

#include <QThreadPool>

#include <algorithm>
#include <atomic>
#include <mutex>

#include <malloc.h>

const QString PDFDocument::PagesDidChangeNotification
    = QStringLiteral("PDFDocumentPagesDidChangeNotification");
const QString PDFDocument::DidFindMatchNotification
    = QStringLiteral("PDFDocumentDidFindMatchNotification");
const QString PDFDocument::DidEndFindNotification
    = QStringLiteral("PDFDocumentDidEndFindNotification");
const QString PDFDocument::FoundSelectionKey = QStringLiteral("PDFDocumentFoundSelection");

namespace {

// Page trees of at most this many pages are walked whole at opening: it costs about a
// millisecond, and the page count is then exact from the start.
constexpr int LazyWalkFrom = 512;

// Full rewrite; garbage collection drops objects nothing refers to any more (removed pages, old
// outline items) but never renumbers the live document, so pages and handles stay valid.
// Objects are written spaced out: the compact form runs an empty name into the token after it
// ("/ 1" becomes the name "/1"), which changes the file or makes it unreadable.
constexpr const char *WriteOptions = "garbage=1,pretty=yes";
// A damaged file can name an object number in the millions, and MuPDF's repair then makes its
// table that long: written as it stands, every unused number costs a line of the saved file
// (an 800-byte file saved as 56 MB). Such a file is written once more from a scratch copy that
// numbers its objects afresh; the live document keeps its numbers.
constexpr const char *CompactingWriteOptions = "garbage=compact,pretty=yes";
constexpr int SparseTableFrom = 65536;

} // namespace

PDFDocumentPrivate::~PDFDocumentPrivate()
{
    stopFind();
}

void PDFDocumentPrivate::stopFind()
{
    if (findJob)
        findJob->cancel();
    if (findThread.joinable())
        findThread.join();
    findJob.reset();
}

bool PDFDocumentPrivate::adopt(pdf_document *doc)
{
    handle = std::make_shared<mu::DocumentHandle>(doc);
    {
        const mu::Lock lock(handle->mutex());
        fz_context *ctx = mu::context();
        mu::Error failure;
        mu::run(ctx, failure, [&] {
            repaired = pdf_was_repaired(ctx, doc);
            encrypted = pdf_dict_get(ctx, pdf_trailer(ctx, doc), PDF_NAME(Encrypt)) != nullptr;
            locked = fz_needs_password(ctx, &doc->super);
        });
        if (failure.failed) {
            error = failure.text();
            return false;
        }
    }
    if (locked || loadContent()) {
        sourceBytes = nullptr;
        sourceData.clear();
        return true;
    }
    // A page tree MuPDF could not find without repairing: open the file again the way a damaged
    // one is opened, which rebuilds the cross-reference from the objects themselves.
    const auto source = std::exchange(sourceBytes, nullptr);
    sourceData.clear();
    if (!pageTreeBroken || repaired || !source)
        return false;
    pdf_document *again = openForcingRepair(source());
    return again && adopt(again);
}

pdf_document *PDFDocumentPrivate::openForcingRepair(QByteArray bytes)
{
    // Without the keyword MuPDF cannot find the cross-reference and scans the file instead.
    for (qsizetype at = bytes.indexOf("startxref"); at >= 0; at = bytes.indexOf("startxref", at))
        bytes[at] = 'S';
    mu::Error failure;
    return mu::openDocumentFromBytes(bytes, failure);
}

std::shared_ptr<PDFPage> PDFDocumentPrivate::makePage() const
{
    const auto owner = delegate.lock();
    const PDFPageFactory factory = owner ? owner->classForPage() : PDFPageFactory();
    std::shared_ptr<PDFPage> page = factory ? factory() : nullptr;
    if (!page)
        page = std::make_shared<PDFPage>();
    page->d->factory = factory;
    return page;
}

bool PDFDocumentPrivate::loadContent()
{
    fz_context *ctx = mu::context();
    pdf_document *const doc = handle->doc();
    PageTree::Result tree;
    mu::Error failure;
    int claimed = 0;
    bool walkedWhole = false;
    {
        const mu::Lock lock(handle->mutex());
        if (!repaired && repairIfDamagedLocked())
            repaired = true;
        // A long sound file's tree is walked as its pages are asked for. A short one is walked
        // whole now, and so is a repaired file's, or one that claims more pages than the file
        // has objects; scanning every object is for files MuPDF has had to repair. Only a long
        // tree found unsound late can hold other pages than it claimed (resolveThroughLocked).
        walk.clear();
        if (!repaired) {
            claimed = walk.start(ctx, doc);
            if (claimed > objectCount)
                walk.clear();
        }
        if (walk.active() && claimed <= LazyWalkFrom) {
            PageTreeWalk::Step step = PageTreeWalk::Step::Page;
            pdf_obj *page = nullptr;
            while ((step = walk.next(ctx, page)) == PageTreeWalk::Step::Page) {
                tree.pages.push_back(page);
                if (int(tree.pages.size()) > claimed) {
                    step = PageTreeWalk::Step::Broken;
                    break;
                }
            }
            walk.clear();
            walkedWhole = step == PageTreeWalk::Step::End && int(tree.pages.size()) == claimed;
            if (!walkedWhole) {
                for (pdf_obj *obj : tree.pages)
                    mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, obj); });
                tree.pages.clear();
            }
        }
        if (!walk.active() && !walkedWhole) {
            tree = PageTree::load(ctx, doc, repaired, failure);
            if (!failure.failed && tree.pages.empty() && tree.broken)
                failure.fail("The document has no pages that could be read");
            if (failure.failed) {
                for (pdf_obj *obj : tree.pages)
                    mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, obj); });
                error = failure.text();
                pageTreeBroken = tree.broken;
                return false;
            }
            repaired = repaired || tree.rebuilt;
        }
        labels = PageLabels::read(ctx, doc);
    }
    pages.clear();
    ++pageOrder;
    const size_t count = walk.active() ? size_t(claimed) : tree.pages.size();
    pages.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        auto page = makePage();
        page->d->handle = handle;
        page->d->document = q.weak_from_this();
        if (!walk.active())
            page->d->object = tree.pages[i];
        page->d->indexHint = int(i);
        pages.push_back(page);
    }
    resolved = walk.active() ? 0 : int(count);
    outlineRoot.reset();
    outlineLoaded = false;
    contentLoaded = true;
    return true;
}

bool PDFDocumentPrivate::repairIfDamagedLocked()
{
    fz_context *ctx = mu::context();
    pdf_document *const doc = handle->doc();
    // The file is mapped, not read: only the pages holding object headers are touched.
    QFile file;
    QByteArrayView bytes = sourceData;
    if (!sourcePath.isEmpty()) {
        file.setFileName(sourcePath);
        const uchar *mapped = file.open(QIODevice::ReadOnly) ? file.map(0, file.size()) : nullptr;
        bytes = mapped ? QByteArrayView(mapped, file.size()) : QByteArrayView();
    }
    const bool repairedNow = PageTree::repairIfDamaged(ctx, doc, bytes);
    objectCount = 0;
    mu::runQuietly(ctx, [&] { objectCount = pdf_xref_len(ctx, doc); });
    return repairedNow;
}

void PDFDocumentPrivate::resolveThrough(int index)
{
    if (index < resolved || !handle)
        return;
    const mu::Lock lock(handle->mutex());
    resolveThroughLocked(index);
}

PDFDocumentPrivate &PDFDocumentPrivate::of(const PDFDocument &document)
{
    return *document.d;
}

void PDFDocumentPrivate::resolveThroughLocked(int index)
{
    const int count = static_cast<int>(pages.size());
    index = std::min(index, count - 1);
    if (index < resolved || !handle)
        return;
    fz_context *ctx = mu::context();
    // Asked for the last page, the walk also goes through the rest of the tree, to catch pages
    // beyond the count and counts that do not add up.
    const int target = index >= count - 1 ? count : index;
    PageTreeWalk::Step step = PageTreeWalk::Step::Page;
    while (resolved <= target && step == PageTreeWalk::Step::Page) {
        pdf_obj *object = nullptr;
        step = walk.next(ctx, object);
        if (step != PageTreeWalk::Step::Page)
            break;
        if (resolved >= count) {
            mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, object); });
            step = PageTreeWalk::Step::Broken;
            break;
        }
        pages[static_cast<size_t>(resolved++)]->d->object = object;
    }
    if (step == PageTreeWalk::Step::Page || (step == PageTreeWalk::Step::End && resolved == count))
        return;
    // The tree does not add up: it is read whole, repaired and rebuilt flat, and the page list
    // follows it. Pages found so far keep their place where the tree agrees.
    walk.clear();
    mu::Error failure;
    PageTree::Result tree = PageTree::load(ctx, handle->doc(), true, failure);
    repaired = repaired || tree.rebuilt;
    adoptPagesLocked(tree.pages);
}

void PDFDocumentPrivate::adoptPagesLocked(const std::vector<pdf_obj *> &found)
{
    fz_context *ctx = mu::context();
    const size_t kept = std::min(found.size(), pages.size());
    for (size_t i = 0; i < kept; ++i) {
        PDFPagePrivate &page = *pages[i]->d;
        pdf_obj *const obj = found[i];
        if (page.object && pdf_to_num(ctx, obj) == pdf_to_num(ctx, page.object))
            mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, obj); });
        else if (page.object)
            page.bind(handle, obj, true);
        else
            page.object = obj;
    }
    // Pages the tree claimed but does not hold stay in the list, empty, so that a count once
    // given never shrinks under a caller; they are not in MuPDF's tree and are not saved.
    for (size_t i = kept; i < pages.size(); ++i) {
        PDFPagePrivate &page = *pages[i]->d;
        if (page.object)
            page.bind(handle, nullptr, true);
    }
    for (size_t i = kept; i < found.size(); ++i) {
        auto page = makePage();
        page->d->handle = handle;
        page->d->document = q.weak_from_this();
        page->d->object = found[i];
        pages.push_back(page);
    }
    resolved = static_cast<int>(pages.size());
    renumberLocked();
}

std::shared_ptr<PDFPage> PDFDocumentPrivate::pageForObjectNumberLocked(int number)
{
    if (pagesByNumberOrder != pageOrder || pagesByNumber.isEmpty()) {
        resolveThroughLocked(static_cast<int>(pages.size()) - 1);
        fz_context *ctx = mu::context();
        pagesByNumber.clear();
        // Backwards, so that a page listed twice answers its first place.
        for (size_t i = pages.size(); i-- > 0;) {
            const PDFPagePrivate &page = *pages[i]->d;
            if (page.handle == handle && page.object)
                pagesByNumber.insert(pdf_to_num(ctx, page.object), pages[i]);
        }
        pagesByNumberOrder = pageOrder;
    }
    return pagesByNumber.value(number).lock();
}

void PDFDocumentPrivate::loadOutline()
{
    if (outlineLoaded || !handle || locked)
        return;
    outlineLoaded = true;
    fz_context *ctx = mu::context();
    QHash<int, std::shared_ptr<PDFPage>> byNumber;
    bool mapped = false;
    {
        const mu::Lock lock(handle->mutex());
        // The page tree is walked for the first item that points at a page: a long document
        // without an outline opens reading none of its pages but those shown.
        const auto pageForObject = [&](int number) {
            if (!mapped) {
                mapped = true;
                resolveThroughLocked(static_cast<int>(pages.size()) - 1);
                for (const auto &page : pages) {
                    if (page->d->object)
                        byNumber.insert(pdf_to_num(ctx, page->d->object), page);
                }
            }
            return byNumber.value(number);
        };
        outlineRoot = OutlineIO::read(ctx, handle->doc(), pageForObject);
    }
    if (outlineRoot)
        outlineRoot->m_document = q.weak_from_this();
}

void PDFDocumentPrivate::renumberLocked()
{
    ++pageOrder;
    for (size_t i = 0; i < pages.size(); ++i) {
        PDFPagePrivate &page = *pages[i]->d;
        page.indexHint = int(i);
        if (page.page && page.handle == handle)
            page.page->super.number = static_cast<int>(i);
    }
}

std::shared_ptr<PDFPage> PDFDocumentPrivate::takePage(int index)
{
    if (index < 0 || index >= static_cast<int>(pages.size()))
        return nullptr;
    loadOutline();
    resolveAll();
    auto page = pages[static_cast<size_t>(index)];
    {
        const mu::Lock lock(handle->mutex());
        fz_context *ctx = mu::context();
        mu::Error failure;
        // Loaded now, because once out of the page tree it can no longer be found by number.
        pdf_page *loaded = page->d->pageLocked(ctx, index, failure);
        pdf_document *const doc = handle->doc();
        pdf_obj *const obj = page->d->object;
        mu::run(ctx, failure, [&] {
            pdf_flatten_inheritable_page_items(ctx, obj);
            pdf_delete_page(ctx, doc, index);
        });
        if (loaded)
            loaded->super.number = -1;
        pages.erase(pages.begin() + index);
        renumberLocked();
    }
    page->d->document.reset();
    page->noteContentChanged();
    return page;
}

QString PDFDocumentPrivate::labelForIndex(int index) const
{
    if (index < 0)
        return {};
    return labels.labelForIndex(index);
}

namespace {

// The bytes MuPDF writes go straight into a QByteArray, so the file is never copied whole.
struct ByteSink
{
    QByteArray bytes;
    bool failed = false;
};

void appendToSink(fz_context *, void *state, const void *data, size_t size)
{
    auto *sink = static_cast<ByteSink *>(state);
    if (sink->failed)
        return;
    try {
        // Doubling: QByteArray's own growth copies the whole file far too often.
        const qsizetype needed = sink->bytes.size() + static_cast<qsizetype>(size);
        if (needed > sink->bytes.capacity())
            sink->bytes.reserve(std::max(needed, sink->bytes.capacity() * 2));
        sink->bytes.append(static_cast<const char *>(data), static_cast<qsizetype>(size));
    } catch (...) {
        // An exception may not cross MuPDF's frames; the failure is read after writing.
        sink->failed = true;
    }
}

int64_t sinkPosition(fz_context *, void *state)
{
    return static_cast<const ByteSink *>(state)->bytes.size();
}

// Inside a guarded block; output is the caller's, so that it is dropped however this ends.
void writeInto(fz_context *ctx, pdf_document *doc, const char *writeOptions, ByteSink &sink,
    mu::Output &output)
{
    pdf_write_options options;
    pdf_parse_write_options(ctx, &options, writeOptions);
    output.p = fz_new_output(ctx, 64 * 1024, &sink, appendToSink, nullptr, nullptr);
    output.p->tell = sinkPosition;
    pdf_write_document(ctx, doc, output.p, &options);
    fz_close_output(ctx, output.p);
}

// Mostly unused numbers: the table's lines are at least half of what was written.
bool isSparse(fz_context *ctx, pdf_document *doc, qsizetype written)
{
    const qint64 length = pdf_xref_len(ctx, doc);
    return length >= SparseTableFrom && written < 40 * length && !doc->crypt;
}

} // namespace

QByteArray PDFDocumentPrivate::writeLocked(
    const mu::DocumentHandle &handle, QString *errorText, qsizetype sizeHint)
{
    fz_context *ctx = mu::context();
    pdf_document *const doc = handle.doc();
    ByteSink sink;
    sink.bytes.reserve(sizeHint + sizeHint / 8 + 64 * 1024);
    ByteSink compacted;
    mu::Output output;
    mu::Output compactedOutput;
    mu::Buffer buffer;
    mu::Stream stream;
    mu::Document scratch;
    mu::Error failure;
    mu::run(ctx, failure, [&] { writeInto(ctx, doc, WriteOptions, sink, output); });
    if (sink.failed)
        failure.fail("out of memory while writing the document");
    if (failure.failed) {
        if (errorText)
            *errorText = failure.text();
        return {};
    }
    bool sparse = false;
    mu::runQuietly(ctx, [&] { sparse = isSparse(ctx, doc, sink.bytes.size()); });
    if (!sparse)
        return std::move(sink.bytes);
    // The first form stays the answer when the scratch copy cannot be made.
    mu::Error compacting;
    mu::run(ctx, compacting, [&] {
        buffer.p = fz_new_buffer_from_shared_data(ctx,
            reinterpret_cast<const unsigned char *>(sink.bytes.constData()),
            static_cast<size_t>(sink.bytes.size()));
        stream.p = fz_open_buffer(ctx, buffer.p);
        scratch.p = pdf_open_document_with_stream(ctx, stream.p);
        writeInto(ctx, scratch.p, CompactingWriteOptions, compacted, compactedOutput);
    });
    if (compacting.failed || compacted.failed || compacted.bytes.isEmpty())
        return std::move(sink.bytes);
    return std::move(compacted.bytes);
}

QByteArray PDFDocumentPrivate::write(const mu::DocumentHandle &handle, QString *errorText)
{
    const mu::Lock lock(handle.mutex());
    return writeLocked(handle, errorText);
}

PDFDocument::PDFDocument()
    : d(std::make_unique<PDFDocumentPrivate>(*this))
{ }

PDFDocument::~PDFDocument()
{
    d->stopFind();
}

bool PDFDocument::init()
{
    QString failure;
    d->handle = mu::DocumentHandle::createEmpty(&failure);
    if (!d->handle) {
        d->error = failure;
        return false;
    }
    d->contentLoaded = true;
    return true;
}

bool PDFDocument::initWithURL(const QUrl &url)
{
    d->url = url;
    const QString path
        = url.isLocalFile() || url.scheme().isEmpty() ? url.toLocalFile() : QString();
    if (path.isEmpty()) {
        d->error = QCoreApplication::translate("PDFDocument", "Only local files can be opened: %1")
                       .arg(url.toString());
        return false;
    }
    if (!QFile::exists(path)) {
        d->error
            = QCoreApplication::translate("PDFDocument", "The file does not exist: %1").arg(path);
        return false;
    }
    d->sourceSize = QFileInfo(path).size();
    const QByteArray name = QFile::encodeName(path);
    const char *const filename = name.constData();
    d->sourcePath = path;
    d->sourceBytes = [path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    fz_context *ctx = mu::context();
    pdf_document *doc = nullptr;
    mu::Error failure;
    mu::run(ctx, failure, [&] { doc = pdf_open_document(ctx, filename); });
    if (failure.failed) {
        d->error = QCoreApplication::translate(
            "PDFDocument", "The file is not a readable PDF document: %1")
                       .arg(failure.text());
        return false;
    }
    return d->adopt(doc);
}

bool PDFDocument::initWithData(const QByteArray &data)
{
    if (data.isEmpty()) {
        d->error = QCoreApplication::translate("PDFDocument", "The data is empty");
        return false;
    }
    d->sourceSize = data.size();
    d->sourceBytes = [data] { return data; };
    d->sourceData = data;
    mu::Error failure;
    pdf_document *const doc = mu::openDocumentFromBytes(data, failure);
    if (failure.failed) {
        d->error = QCoreApplication::translate(
            "PDFDocument", "The data is not a readable PDF document: %1")
                       .arg(failure.text());
        return false;
    }
    return d->adopt(doc);
}

QString PDFDocument::errorString() const
{
    return d->error;
}

void PDFDocument::setDelegate(const std::weak_ptr<PDFDocumentDelegate> &delegate)
{
    d->delegate = delegate;
}

std::shared_ptr<PDFDocumentDelegate> PDFDocument::delegate() const
{
    return d->delegate.lock();
}

QUrl PDFDocument::documentURL() const
{
    return d->url;
}

bool PDFDocument::wasRepaired() const
{
    return d->repaired;
}

int PDFDocument::pageCount() const
{
    return static_cast<int>(d->pages.size());
}

std::shared_ptr<PDFPage> PDFDocument::pageAtIndex(int index) const
{
    if (index < 0 || index >= pageCount())
        return nullptr;
    d->resolveThrough(index);
    return d->pages[static_cast<size_t>(index)];
}

int PDFDocument::indexForPage(const std::shared_ptr<PDFPage> &page) const
{
    if (!page)
        return -1;
    const int hint = page->d->indexHint;
    if (hint >= 0 && hint < pageCount() && d->pages[size_t(hint)] == page)
        return hint;
    const auto found = std::find(d->pages.begin(), d->pages.end(), page);
    return found == d->pages.end() ? -1 : static_cast<int>(found - d->pages.begin());
}

void PDFDocument::insertPage(const std::shared_ptr<PDFPage> &page, int index)
{
    if (!page || !d->handle || d->locked || index < 0)
        return;
    // Changing the tree ends the lazy walk; the outline keeps its pages through it.
    d->loadOutline();
    d->resolveAll();
    if (const auto owner = page->document()) {
        if (owner.get() == this && index > pageCount() - 1)
            index = pageCount() - 1;
        // Through the owner's own removal, so that a subclass counts and announces it.
        owner->removePageAtIndex(owner->indexForPage(page));
        if (page->document())
            return;
    }
    if (index > pageCount())
        return;
    if (!page->d->handle && !page->init())
        return;
    fz_context *ctx = mu::context();
    pdf_document *const doc = d->handle->doc();
    mu::Error failure;
    if (page->d->handle == d->handle) {
        const mu::Lock lock(d->handle->mutex());
        pdf_obj *const obj = page->d->object;
        mu::run(ctx, failure, [&] { pdf_insert_page(ctx, doc, index, obj); });
        if (failure.failed)
            return;
        d->pages.insert(d->pages.begin() + index, page);
        d->renumberLocked();
    } else {
        const auto source = page->d->handle;
        const std::scoped_lock locks(d->handle->mutex(), source->mutex());
        pdf_obj *grafted
            = PDFPageInternals::graftPage(ctx, doc, source->doc(), page->d->object, failure);
        if (!grafted)
            return;
        mu::run(ctx, failure, [&] { pdf_insert_page(ctx, doc, index, grafted); });
        if (failure.failed) {
            mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, grafted); });
            return;
        }
        page->d->bind(d->handle, grafted, true);
        d->pages.insert(d->pages.begin() + index, page);
        d->renumberLocked();
    }
    page->d->document = weak_from_this();
    page->noteContentChanged();
    NotificationCenter::defaultCenter().post(PagesDidChangeNotification, this);
}

void PDFDocument::removePageAtIndex(int index)
{
    if (d->takePage(index))
        NotificationCenter::defaultCenter().post(PagesDidChangeNotification, this);
}

void PDFDocument::exchangePageAtIndex(int index, int otherIndex)
{
    if (index == otherIndex || index < 0 || otherIndex < 0 || index >= pageCount()
        || otherIndex >= pageCount())
        return;
    d->loadOutline();
    d->resolveAll();
    const int low = std::min(index, otherIndex);
    const int high = std::max(index, otherIndex);
    pdf_obj *const lowObject = d->pages[static_cast<size_t>(low)]->d->object;
    pdf_obj *const highObject = d->pages[static_cast<size_t>(high)]->d->object;
    const mu::Lock lock(d->handle->mutex());
    fz_context *ctx = mu::context();
    pdf_document *const doc = d->handle->doc();
    mu::Error failure;
    mu::run(ctx, failure, [&] {
        pdf_flatten_inheritable_page_items(ctx, lowObject);
        pdf_flatten_inheritable_page_items(ctx, highObject);
        pdf_delete_page(ctx, doc, high);
        pdf_delete_page(ctx, doc, low);
        pdf_insert_page(ctx, doc, low, highObject);
        pdf_insert_page(ctx, doc, high, lowObject);
    });
    if (failure.failed) {
        d->error = failure.text();
        return;
    }
    std::swap(d->pages[static_cast<size_t>(low)], d->pages[static_cast<size_t>(high)]);
    d->renumberLocked();
    NotificationCenter::defaultCenter().post(PagesDidChangeNotification, this);
}

std::shared_ptr<PDFOutline> PDFDocument::outlineRoot() const
{
    d->loadOutline();
    return d->outlineRoot;
}

void PDFDocument::setOutlineRoot(const std::shared_ptr<PDFOutline> &root)
{
    d->outlineLoaded = true;
    d->outlineRoot = root;
    if (root)
        root->m_document = weak_from_this();
}

QByteArray PDFDocument::dataRepresentation() const
{
    if (!d->handle) {
        d->error = QCoreApplication::translate("PDFDocument", "The document has no content");
        return {};
    }
    if (d->contentLoaded) {
        d->loadOutline();
        d->resolveAll();
    }
    const mu::Lock lock(d->handle->mutex());
    if (d->contentLoaded) {
        fz_context *ctx = mu::context();
        // Annotations changed since they were last drawn get fresh pictures first.
        for (size_t i = 0; i < d->pages.size(); ++i) {
            if (d->pages[i]->d->handle == d->handle)
                PDFPageInternals::prepareForOutputLocked(*d->pages[i], ctx, static_cast<int>(i));
        }
        mu::Error failure;
        const auto objectForPage = [this](const PDFPage &page) -> pdf_obj * {
            return page.d->handle == d->handle && page.d->document.lock().get() == this
                ? page.d->object
                : nullptr;
        };
        if (!OutlineIO::write(
                ctx, d->handle->doc(), d->outlineRoot.get(), objectForPage, failure)) {
            d->error = failure.text();
            return {};
        }
    }
    return PDFDocumentPrivate::writeLocked(*d->handle, &d->error, d->sourceSize);
}

bool PDFDocument::writeToURL(const QUrl &url) const
{
    const QByteArray bytes = dataRepresentation();
    if (bytes.isEmpty())
        return false;
    QSaveFile file(url.toLocalFile());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        d->error = file.errorString();
        return false;
    }
    return true;
}

bool PDFDocument::releaseCachedContent()
{
    if (!d->handle || d->locked)
        return true;
    static std::atomic<bool> releasing { false };
    if (releasing)
        return false;
    {
        const std::unique_lock lock(d->handle->mutex(), std::try_to_lock);
        if (!lock.owns_lock())
            return false;
        fz_context *ctx = mu::context();
        for (const auto &page : d->pages) {
            PDFPagePrivate &pd = *page->d;
            if (pd.handle != d->handle)
                continue;
            pd.text.reset();
            // Annotations point into their loaded page; workers hold their own reference.
            if (pd.page && !pd.annotationsLoaded && !pd.annotationsMoved) {
                pdf_page *const dropped = std::exchange(pd.page, nullptr);
                mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &dropped->super); });
            }
        }
    }
    // The rest takes milliseconds: a pool thread does it, so that scrolling never waits.
    releasing = true;
    QThreadPool::globalInstance()->start([handle = d->handle] {
        {
            const mu::Lock lock(handle->mutex());
            fz_context *ctx = mu::context();
            pdf_document *const doc = handle->doc();
            mu::runQuietly(ctx, [&] {
                // An edited object may be held by the cross-reference table alone: it stays.
                if (!pdf_has_unsaved_changes(ctx, doc))
                    pdf_clear_xref(ctx, doc);
                fz_purge_glyph_cache(ctx);
                // The store counts a font by its descriptor, not by its file and FreeType face,
                // so its limit never bites on documents that embed many fonts: emptied here, it
                // keeps what the pages in view hold through their display lists.
                fz_empty_store(ctx);
            });
        }
        // Freed pages of the heap go back to the system.
        malloc_trim(0);
        releasing = false;
    });
    return true;
}

bool PDFDocument::isEncrypted() const
{
    return d->encrypted;
}

bool PDFDocument::isLocked() const
{
    return d->locked;
}

bool PDFDocument::unlockWithPassword(const QString &password)
{
    if (!d->handle)
        return false;
    int result = 0;
    {
        const mu::Lock lock(d->handle->mutex());
        fz_context *ctx = mu::context();
        pdf_document *const doc = d->handle->doc();
        int revision = 0;
        mu::runQuietly(ctx, [&] {
            revision = pdf_to_int(ctx, pdf_dict_getp(ctx, pdf_trailer(ctx, doc), "Encrypt/R"));
        });
        // AES-256 passwords are prepared UTF-8; as typed is tried too, for files made by tools
        // that stored them unprepared.
        QList<QByteArray> candidates;
        if (revision >= 5)
            candidates.append(SaslPrep::prepared(password).toUtf8());
        if (!candidates.contains(password.toUtf8()))
            candidates.append(password.toUtf8());
        for (const QByteArray &candidate : candidates) {
            const char *const text = candidate.constData();
            mu::runQuietly(ctx, [&] { result = fz_authenticate_password(ctx, &doc->super, text); });
            if (result)
                break;
        }
    }
    if (!result)
        return false;
    if (d->locked) {
        d->locked = false;
        if (!d->loadContent())
            return false;
    }
    return true;
}

namespace {

bool hasPermission(const PDFDocumentPrivate &d, fz_permission permission)
{
    if (!d.handle)
        return false;
    const mu::Lock lock(d.handle->mutex());
    fz_context *ctx = mu::context();
    pdf_document *const doc = d.handle->doc();
    int allowed = 0;
    mu::Error failure;
    mu::run(ctx, failure, [&] { allowed = fz_has_permission(ctx, &doc->super, permission); });
    return allowed != 0;
}

} // namespace

bool PDFDocument::allowsPrinting() const
{
    return hasPermission(*d, FZ_PERMISSION_PRINT);
}

bool PDFDocument::allowsCopying() const
{
    return hasPermission(*d, FZ_PERMISSION_COPY);
}
