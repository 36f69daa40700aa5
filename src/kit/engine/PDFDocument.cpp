#include "PDFDocument.h"

#include "OutlineIO.h"
#include "PDFDocumentDelegate.h"
#include "PDFDocumentPrivate.h"
#include "PDFOutline.h"
#include "PDFPage.h"
#include "PDFPagePrivate.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>

#include <QThreadPool>

#include <algorithm>
#include <atomic>
#include <mutex>

#include <malloc.h>

const QString PDFDocument::DidFindMatchNotification
    = QStringLiteral("PDFDocumentDidFindMatchNotification");
const QString PDFDocument::DidEndFindNotification
    = QStringLiteral("PDFDocumentDidEndFindNotification");
const QString PDFDocument::FoundSelectionKey = QStringLiteral("PDFDocumentFoundSelection");

namespace {

constexpr int MaxTreeDepth = 64;

// Full rewrite; garbage collection drops objects nothing refers to any more (removed pages, old
// outline items) but never renumbers the live document, so pages and handles stay valid.
constexpr const char *WriteOptions = "garbage=1";

} // namespace

PDFDocumentPrivate::~PDFDocumentPrivate()
{
    stopFind();
    dropWalk();
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
    return locked || loadContent();
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
    mu::Error failure;
    int count = 0;
    {
        const mu::Lock lock(handle->mutex());
        mu::run(ctx, failure, [&] { count = pdf_count_pages(ctx, doc); });
        if (failure.failed) {
            error = failure.text();
            return false;
        }
        labels = PageLabels::read(ctx, doc);
    }
    dropWalk();
    pages.clear();
    ++pageOrder;
    pages.reserve(static_cast<size_t>(std::max(count, 0)));
    for (int i = 0; i < count; ++i) {
        auto page = makePage();
        page->d->handle = handle;
        page->d->document = q.weak_from_this();
        pages.push_back(page);
    }
    resolved = 0;
    walkByLookup = false;
    {
        const mu::Lock lock(handle->mutex());
        pdf_obj *kids = nullptr;
        mu::run(ctx, failure, [&] {
            kids = pdf_keep_obj(ctx, pdf_dict_getp(ctx, pdf_trailer(ctx, doc), "Root/Pages/Kids"));
        });
        walk.reserve(MaxTreeDepth + 1);
        if (pdf_is_array(ctx, kids))
            walk.emplace_back(kids, 0);
        else
            mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, kids); });
    }
    outlineRoot.reset();
    outlineLoaded = false;
    contentLoaded = true;
    return true;
}

void PDFDocumentPrivate::dropWalk()
{
    if (walk.empty())
        return;
    fz_context *ctx = mu::context();
    for (const auto &[kids, next] : walk)
        mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, kids); });
    walk.clear();
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
    pdf_document *const doc = handle->doc();
    // Plain MuPDF calls on the walk's own storage, reserved so that nothing allocates inside.
    auto *const path = &walk;
    auto *const list = &pages;
    int *const done = &resolved;
    bool mismatch = false;
    mu::Error failure;
    // Asked for the last page, the walk also goes through the rest of the tree, to catch pages
    // beyond the count.
    const int target = index >= count - 1 ? count : index;
    mu::run(ctx, failure, [&] {
        while (*done <= target && !path->empty() && !mismatch) {
            auto &[kids, next] = path->back();
            if (next >= pdf_array_len(ctx, kids)) {
                pdf_drop_obj(ctx, kids);
                path->pop_back();
                continue;
            }
            pdf_obj *kid = pdf_array_get(ctx, kids, next++);
            pdf_obj *grandKids = pdf_dict_get(ctx, kid, PDF_NAME(Kids));
            if (pdf_is_array(ctx, grandKids)) {
                if (path->size() > MaxTreeDepth)
                    mismatch = true;
                else
                    path->emplace_back(pdf_keep_obj(ctx, grandKids), 0);
                continue;
            }
            if (*done >= count || !pdf_is_indirect(ctx, kid)) {
                mismatch = true;
                continue;
            }
            (*list)[static_cast<size_t>(*done)]->d->object = pdf_keep_obj(ctx, kid);
            ++*done;
        }
    });
    if (failure.failed || mismatch || (resolved <= index && walk.empty()))
        walkByLookup = true;
    if (!walkByLookup)
        return;
    // The slow way for the whole document: pages found by the walk are checked against MuPDF's
    // numbering too, since a tree that does not add up may have misled it anywhere.
    for (const auto &[kids, next] : walk)
        mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, kids); });
    walk.clear();
    for (int i = 0; i < count; ++i) {
        PDFPagePrivate &page = *pages[static_cast<size_t>(i)]->d;
        pdf_obj *found = nullptr;
        mu::runQuietly(ctx, [&] { found = pdf_keep_obj(ctx, pdf_lookup_page_obj(ctx, doc, i)); });
        if (found && page.object && pdf_to_num(ctx, found) == pdf_to_num(ctx, page.object)) {
            mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, found); });
            continue;
        }
        if (page.object)
            page.bind(handle, found, true);
        else
            page.object = found;
    }
    resolved = count;
    ++pageOrder;
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
    resolveAll();
    fz_context *ctx = mu::context();
    QHash<int, std::shared_ptr<PDFPage>> byNumber;
    {
        const mu::Lock lock(handle->mutex());
        for (const auto &page : pages) {
            if (page->d->object)
                byNumber.insert(pdf_to_num(ctx, page->d->object), page);
        }
        outlineRoot = OutlineIO::read(
            ctx, handle->doc(), [&](int number) { return byNumber.value(number); });
    }
    if (outlineRoot)
        outlineRoot->m_document = q.weak_from_this();
}

void PDFDocumentPrivate::renumberLocked()
{
    ++pageOrder;
    for (size_t i = 0; i < pages.size(); ++i) {
        PDFPagePrivate &page = *pages[i]->d;
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

} // namespace

QByteArray PDFDocumentPrivate::writeLocked(
    const mu::DocumentHandle &handle, QString *errorText, qsizetype sizeHint)
{
    fz_context *ctx = mu::context();
    pdf_document *const doc = handle.doc();
    ByteSink sink;
    sink.bytes.reserve(sizeHint + sizeHint / 8 + 64 * 1024);
    ByteSink *const state = &sink;
    mu::Output output;
    mu::Error failure;
    mu::run(ctx, failure, [&] {
        pdf_write_options options;
        pdf_parse_write_options(ctx, &options, WriteOptions);
        output.p = fz_new_output(ctx, 64 * 1024, state, appendToSink, nullptr, nullptr);
        output.p->tell = sinkPosition;
        pdf_write_document(ctx, doc, output.p, &options);
        fz_close_output(ctx, output.p);
    });
    if (sink.failed)
        failure.fail("out of memory while writing the document");
    if (failure.failed) {
        if (errorText)
            *errorText = failure.text();
        return {};
    }
    return std::move(sink.bytes);
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
        d->error = QStringLiteral("Only local files can be opened: %1").arg(url.toString());
        return false;
    }
    if (!QFile::exists(path)) {
        d->error = QStringLiteral("The file does not exist: %1").arg(path);
        return false;
    }
    d->sourceSize = QFileInfo(path).size();
    const QByteArray name = QFile::encodeName(path);
    const char *const filename = name.constData();
    fz_context *ctx = mu::context();
    pdf_document *doc = nullptr;
    mu::Error failure;
    mu::run(ctx, failure, [&] { doc = pdf_open_document(ctx, filename); });
    if (failure.failed) {
        d->error
            = QStringLiteral("The file is not a readable PDF document: %1").arg(failure.text());
        return false;
    }
    return d->adopt(doc);
}

bool PDFDocument::initWithData(const QByteArray &data)
{
    if (data.isEmpty()) {
        d->error = QStringLiteral("The data is empty");
        return false;
    }
    fz_context *ctx = mu::context();
    const auto *bytes = reinterpret_cast<const unsigned char *>(data.constData());
    const size_t size = static_cast<size_t>(data.size());
    d->sourceSize = data.size();
    mu::Buffer buffer;
    mu::Stream stream;
    pdf_document *doc = nullptr;
    mu::Error failure;
    mu::run(ctx, failure, [&] {
        buffer.p = fz_new_buffer_from_copied_data(ctx, bytes, size);
        stream.p = fz_open_buffer(ctx, buffer.p);
        doc = pdf_open_document_with_stream(ctx, stream.p);
    });
    if (failure.failed) {
        d->error
            = QStringLiteral("The data is not a readable PDF document: %1").arg(failure.text());
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
        owner->d->takePage(owner->indexForPage(page));
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
}

void PDFDocument::removePageAtIndex(int index)
{
    d->takePage(index);
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
        d->error = QStringLiteral("The document has no content");
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
    const QByteArray utf8 = password.toUtf8();
    const char *const text = utf8.constData();
    int result = 0;
    {
        const mu::Lock lock(d->handle->mutex());
        fz_context *ctx = mu::context();
        pdf_document *const doc = d->handle->doc();
        mu::Error failure;
        mu::run(ctx, failure, [&] { result = fz_authenticate_password(ctx, &doc->super, text); });
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
