#include "PDFDocument.h"

#include "PDFDocumentDelegate.h"
#include "PDFDocumentPrivate.h"
#include "PDFPage.h"
#include "PDFPagePrivate.h"
#include "PageTree.h"
#include "PageTreeWalk.h"
#include "mupdf/MuOpen.h"
#include "mupdf/Prefetched.h"
#include "mupdf/WorkBudget.h"

#include <kit/base/NotificationCenter.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

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

QString openingError(bool fromFile, const mu::Error &failure)
{
    return (fromFile ? QCoreApplication::translate(
                "PDFDocument", "The file is not a readable PDF document: %1")
                     : QCoreApplication::translate(
                         "PDFDocument", "The data is not a readable PDF document: %1"))
        .arg(failure.text());
}

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
    findWaiting.clear();
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

PDFPageFactory PDFDocumentPrivate::pageFactory() const
{
    const auto owner = delegate.lock();
    return owner ? owner->classForPage() : PDFPageFactory();
}

std::shared_ptr<PDFPage> PDFDocumentPrivate::makePage(const PDFPageFactory &factory) const
{
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
        if (std::exchange(objectsChecked, false))
            mu::runQuietly(ctx, [&] { objectCount = pdf_xref_len(ctx, doc); });
        else if (!repaired && !repairIfDamagedLocked())
            return false;
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
    const PDFPageFactory factory = pageFactory();
    const std::weak_ptr<PDFDocument> owner = q.weak_from_this();
    for (size_t i = 0; i < count; ++i) {
        auto page = makePage(factory);
        page->d->handle = handle;
        page->d->document = owner;
        if (!walk.active())
            page->d->object = tree.pages[i];
        page->d->indexHint = int(i);
        pages.push_back(page);
    }
    resolved = walk.active() ? 0 : int(count);
    treeWalked->store(!walk.active());
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
    const mu::OpeningScope opening(sourceSize);
    repaired = PageTree::repairIfDamaged(ctx, doc, bytes, PageTree::CheckSharing::Shared);
    mu::Error refusal;
    if (opening.refused(refusal)) {
        error = openingError(!sourcePath.isEmpty(), refusal);
        return false;
    }
    objectCount = 0;
    mu::runQuietly(ctx, [&] { objectCount = pdf_xref_len(ctx, doc); });
    return true;
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

void PDFDocumentPrivate::adoptFirstPage(pdf_page *loaded, pdf_document *doc)
{
    if (!loaded)
        return;
    fz_context *ctx = mu::context();
    std::optional<mu::Lock> lock;
    if (handle && handle->doc() == doc)
        lock.emplace(handle->mutex());
    // The page read ahead becomes the first page's loaded page, as if it had loaded it itself.
    if (lock && !locked) {
        resolveThroughLocked(0);
        PDFPagePrivate *const first = pages.empty() ? nullptr : pages.front()->d.get();
        int number = 0;
        mu::runQuietly(ctx, [&] { number = pdf_to_num(ctx, loaded->obj); });
        if (first && !first->page && first->handle == handle && first->object && number > 0
            && pdf_to_num(ctx, first->object) == number) {
            first->page = loaded;
            return;
        }
    }
    // Else it is let go: it holds a reference to its document, even one a failed opening left.
    mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &loaded->super); });
}

mu::DisplayList PDFDocumentPrivate::takeFirstPageContents(int pageObject)
{
    if (!firstPageContents || pageObject <= 0 || pageObject != firstPageObject)
        return {};
    return std::move(firstPageContents);
}

void PDFDocumentPrivate::resolveThroughLocked(int index, PageTreeWalk::Reading reading)
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
        step = walk.next(ctx, object, reading);
        if (step != PageTreeWalk::Step::Page)
            break;
        if (resolved >= count) {
            mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, object); });
            step = PageTreeWalk::Step::Broken;
            break;
        }
        pages[static_cast<size_t>(resolved++)]->d->object = object;
    }
    if (resolved >= count)
        treeWalked->store(true);
    if (step == PageTreeWalk::Step::Page || step == PageTreeWalk::Step::Unread
        || (step == PageTreeWalk::Step::End && resolved == count))
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
    const PDFPageFactory factory = pageFactory();
    for (size_t i = kept; i < found.size(); ++i) {
        auto page = makePage(factory);
        page->d->handle = handle;
        page->d->document = q.weak_from_this();
        page->d->object = found[i];
        pages.push_back(page);
    }
    resolved = static_cast<int>(pages.size());
    treeWalked->store(true);
    renumberLocked();
}

void PDFDocumentPrivate::renumberLocked()
{
    ++pageOrder;
    std::unordered_map<const fz_page *, int> held;
    for (size_t i = 0; i < pages.size(); ++i) {
        PDFPagePrivate &page = *pages[i]->d;
        page.indexHint = int(i);
        if (page.page && page.handle == handle)
            held.emplace(&page.page->super, int(i));
    }
    // MuPDF hands out an open page with the number asked for before it loads one, so every
    // open page answers for its place now, and one this list does not hold (taken out, or
    // kept by a worker after a release) for none. The list changes under the allocation lock.
    // Pages loaded ahead were loaded for places that may have changed.
    if (loadAhead && loadAhead->handle() == handle)
        loadAhead->dropLocked();
    fz_context *ctx = mu::context();
    const mu::AllocationLock lock(ctx);
    for (fz_page *open = handle->doc()->super.open; open; open = open->next) {
        const auto place = held.find(open);
        open->number = place == held.end() ? -1 : place->second;
    }
}

std::shared_ptr<PDFPage> PDFDocumentPrivate::takePage(int index)
{
    if (index < 0 || index >= static_cast<int>(pages.size()))
        return nullptr;
    loadOutline();
    resolveAll();
    readOutlineDestinations();
    auto page = pages[static_cast<size_t>(index)];
    {
        const mu::Lock lock(handle->mutex());
        fz_context *ctx = mu::context();
        mu::Error failure;
        // Loaded now if another holds it, because once out of the page tree it can no longer be
        // found by number. One held by the list alone (and here) goes with its removal, and
        // loading each page of a long selection would cost more than the whole removal.
        if (page.use_count() > 2)
            page->d->pageLocked(ctx, index, failure);
        pdf_document *const doc = handle->doc();
        pdf_obj *const obj = page->d->object;
        mu::run(ctx, failure, [&] {
            pdf_flatten_inheritable_page_items(ctx, obj);
            pdf_delete_page(ctx, doc, index);
        });
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
    d->sourcePath = path;
    d->sourceBytes = [path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    // A file read ahead at start-up is taken as it was read.
    const mu::Prefetched prefetched = mu::takePrefetched(path);
    if (prefetched.doc) {
        d->objectsChecked = prefetched.objectsInPlace;
        d->firstPageContents = mu::DisplayList(prefetched.firstPageContents);
        d->firstPageObject = prefetched.firstPageObject;
        const bool adopted = d->adopt(prefetched.doc);
        d->adoptFirstPage(adopted ? prefetched.firstPage : nullptr, prefetched.doc);
        return adopted;
    }
    mu::Error failure;
    pdf_document *const doc = mu::openDocumentFromFile(name, d->sourceSize, failure);
    if (failure.failed) {
        d->error = openingError(true, failure);
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
        d->error = openingError(false, failure);
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
