#include "PDFDocument.h"

#include "PDFDocumentPrivate.h"
#include "PDFPage.h"
#include "PDFPagePrivate.h"
#include "PageTreeReadAhead.h"
#include "mupdf/WorkBudget.h"

#include <kit/base/BackgroundQueue.h>

#include <QDeadlineTimer>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

#include <malloc.h>

// What the engine keeps of the pages a reader has passed, and giving it back.

namespace {

// What MuPDF held as the last release ended.
std::atomic<qint64> g_heldAfterRelease { 0 };

// Cross-reference entries looked at under one hold of the document's lock: a few hundred
// microseconds, so that a main thread wanting the document meanwhile waits that long at most.
constexpr int ClearSlice = 4096;

// A page or a node of the page tree, told by its /Type without resolving anything.
bool isPageTreeNode(fz_context *ctx, pdf_obj *obj)
{
    if (!pdf_is_dict(ctx, obj))
        return false;
    pdf_obj *const type = pdf_dict_get(ctx, obj, PDF_NAME(Type));
    return type == PDF_NAME(Page) || type == PDF_NAME(Pages);
}

// Drops the objects that only the cross-reference table holds among its entries [from, from +
// count), counted through every section in order, as a full clear of the table would. False
// once past the last entry. Plain MuPDF calls: runs inside a guarded block.
bool clearCachedObjects(fz_context *ctx, pdf_document *doc, int from, int count)
{
    int index = 0;
    for (int x = 0; x < doc->num_xref_sections; ++x) {
        for (pdf_xref_subsec *sub = doc->xref_sections[x].subsec; sub; sub = sub->next) {
            const int first = std::max(0, from - index);
            const int end = std::min(sub->len, from + count - index);
            for (int e = first; e < end; ++e) {
                pdf_xref_entry &entry = sub->table[e];
                // An object whose stream was replaced in memory is the only copy of it. Page
                // and page tree dictionaries stay: they are few and small, and every page loaded
                // or turned walks through them, which would parse their object streams whole
                // again after each release.
                if (entry.obj && !entry.stm_buf && pdf_obj_refs(ctx, entry.obj) == 1
                    && !isPageTreeNode(ctx, entry.obj)) {
                    pdf_drop_obj(ctx, entry.obj);
                    entry.obj = nullptr;
                }
            }
            index += sub->len;
            if (index >= from + count)
                return true;
        }
    }
    return false;
}

// A font's reference count, read under MuPDF's allocation lock, where counts change.
int referenceCount(fz_context *ctx, const fz_font *font)
{
    const mu::AllocationLock lock(ctx);
    return font->refs;
}

// Drops the Type 3 fonts that only the document still holds. MuPDF keeps each Type 3 font it
// loads until the document closes, while its store forgets the font: once the store lets it go,
// the next page set in that font loads a copy of its own, glyph pictures and all, and every
// release would add one more copy for the rest of the document's life. A font that nothing else
// holds (no display list, no glyph cache entry, no description in the store) cannot be held
// again but through a new load, which makes a new font, so it goes. Under the document's lock.
void dropUnusedType3Fonts(fz_context *ctx, pdf_document *doc)
{
    int kept = 0;
    for (int i = 0; i < doc->num_type3_fonts; ++i) {
        fz_font *const font = doc->type3_fonts[i];
        if (referenceCount(ctx, font) == 1)
            mu::runQuietly(ctx, [&] { fz_drop_font(ctx, font); });
        else
            doc->type3_fonts[kept++] = font;
    }
    doc->num_type3_fonts = kept;
}

} // namespace

qint64 PDFDocument::cachedContentGrowth()
{
    return mu::liveBytes() - g_heldAfterRelease.load();
}

void PDFDocument::readPageTreeAhead()
{
    if (!d->handle || d->locked || d->resolved >= pageCount() || d->readingTreeAhead)
        return;
    d->readingTreeAhead = true;
    PageTreeReadAhead::start(d->handle, d->treeWalked, d->treeReadAheadRunning);
}

int PDFDocument::readyPages(int first, int last, QDeadlineTimer deadline)
{
    last = std::min(last, pageCount() - 1);
    if (!d->handle || d->locked || first > last)
        return first;
    const std::unique_lock lock(d->handle->mutex(), std::try_to_lock);
    if (!lock.owns_lock())
        return first;
    const auto reading = d->treeReadAheadRunning->load() ? PageTreeWalk::Reading::HeldOnly
                                                         : PageTreeWalk::Reading::File;
    constexpr int PagesPerStep = 16;
    int at = first;
    while (at <= last && !deadline.hasExpired()) {
        if (at >= d->resolved)
            d->resolveThroughLocked(std::min(at + PagesPerStep - 1, last), reading);
        if (at >= d->resolved || at >= int(d->pages.size()))
            break;
        PDFPageInternals::loadBoxesLocked(*d->pages[size_t(at)]);
        ++at;
    }
    return at;
}

void PDFDocument::loadPagesAhead(const std::vector<std::shared_ptr<PDFPage>> &pages)
{
    if (!d->handle || d->locked)
        return;
    if (!d->loadAhead || d->loadAhead->handle() != d->handle) {
        // The pages loaded for a document no longer shown go under its lock, off this thread.
        BackgroundQueue::dispose(std::exchange(d->loadAhead, nullptr));
        d->loadAhead = std::make_shared<PageLoadAhead>(d->handle);
    }
    std::vector<PageLoadAhead::Wanted> wanted;
    wanted.reserve(pages.size());
    fz_context *ctx = mu::context();
    for (const auto &page : pages) {
        const PDFPagePrivate &pd = *page->d;
        const int index = indexForPage(page);
        if (pd.page || pd.handle != d->handle || !pd.object || index < 0 || index >= d->resolved)
            continue;
        int object = 0;
        mu::runQuietly(ctx, [&] { object = pdf_to_num(ctx, pd.object); });
        wanted.push_back({ index, object });
    }
    d->loadAhead->want(std::move(wanted));
}

bool PDFDocument::releaseCachedContent()
{
    if (!d->handle || d->locked)
        return true;
    static std::atomic<bool> releasing { false };
    if (releasing)
        return false;
    // The pages are let go here, where the model lives, and dropped under the lock on the pool
    // thread: a worker inside the document delays the release there, never the reader here.
    // The first page's contents read ahead are of no use once the reader has moved on.
    d->firstPageContents.reset();
    std::vector<pdf_page *> dropped;
    for (const auto &page : d->pages) {
        PDFPagePrivate &pd = *page->d;
        if (pd.handle != d->handle)
            continue;
        pd.text.reset();
        // Annotations are found again in a reloaded page by their dictionaries, so a page goes
        // once their pictures are fresh and nothing waits to be written into it: a page drawn
        // once (a thumbnail) has its annotations loaded too. Workers hold their own reference.
        const bool settled = !pd.annotationsMoved
            && (!pd.annotationsLoaded || (!pd.appearancesStale && !pd.writesPending));
        if (pd.page && settled)
            dropped.push_back(std::exchange(pd.page, nullptr));
    }
    // The rest takes milliseconds: a pool thread does it, so that scrolling never waits. It goes
    // in pieces, each under the lock no longer than it needs, so that the main thread asking for
    // the document waits for one piece at most.
    releasing = true;
    // Growth counts from here while the release runs, so that it is not asked for again.
    g_heldAfterRelease = mu::liveBytes();
    BackgroundQueue::async([handle = d->handle, dropped = std::move(dropped)] {
        fz_context *ctx = mu::context();
        pdf_document *const doc = handle->doc();
        mu::DocumentMutex &mutex = handle->mutex();
        // Before each piece, a main thread waiting for the document goes first.
        mutex.waitForMainThread();
        {
            const mu::Lock lock(mutex);
            for (pdf_page *page : dropped)
                mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &page->super); });
        }
        mutex.waitForMainThread();
        {
            const mu::Lock lock(mutex);
            // Appearances MuPDF makes up for fields and annotations that have none pile up in
            // a section of their own with every page loaded, and it never drops them while the
            // document is read: dropped here, then made again at once for the pages still open
            // (updating one page updates them all), so that they keep drawing.
            mu::runQuietly(ctx, [&] {
                if (doc->local_xref) {
                    pdf_drop_local_xref_and_resources(ctx, doc);
                    if (doc->super.open)
                        pdf_update_page(ctx, reinterpret_cast<pdf_page *>(doc->super.open));
                }
            });
        }
        // Objects parsed for the pages passed, a slice of the table at a time. An edited
        // object may be held by the cross-reference table alone: then all stay.
        for (int from = 0;; from += ClearSlice) {
            mutex.waitForMainThread();
            const mu::Lock lock(mutex);
            bool more = false;
            mu::runQuietly(ctx, [&] {
                more = !pdf_has_unsaved_changes(ctx, doc)
                    && clearCachedObjects(ctx, doc, from, ClearSlice);
            });
            if (!more)
                break;
        }
        // The glyph cache and the store have locks of their own: MuPDF empties them from
        // whatever thread runs short of memory, inside no document.
        mu::runQuietly(ctx, [&] {
            fz_purge_glyph_cache(ctx);
            // The store counts a font by its descriptor, not by its file and FreeType face,
            // so its limit never bites on documents that embed many fonts: it lets go here of
            // everything that only it holds, and the pages in view keep theirs through their
            // display lists. Never fz_empty_store: MuPDF's lookup reads the store's entry after
            // giving back the lock, so taking out an entry that another thread has just found
            // (a worker reading a page finds its fonts there) hands that thread freed memory.
            // What it has found it holds, which keeps the entry from this release.
            fz_shrink_store(ctx, 0);
        });
        // With the store's own entries gone, the Type 3 fonts of the pages passed are held by
        // the document alone.
        mutex.waitForMainThread();
        {
            const mu::Lock lock(mutex);
            dropUnusedType3Fonts(ctx, doc);
        }
        g_heldAfterRelease = mu::liveBytes();
        // Freed pages of the heap go back to the system.
        malloc_trim(0);
        releasing = false;
    });
    return true;
}
