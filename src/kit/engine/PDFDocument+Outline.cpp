#include "PDFDocument.h"

#include "OutlineIO.h"
#include "PDFDocumentPrivate.h"
#include "PDFOutline.h"
#include "PDFPage.h"
#include "PDFPagePrivate.h"
#include "PageTree.h"

#include <vector>

std::shared_ptr<PDFPage> PDFDocumentPrivate::pageForObjectNumberLocked(int number)
{
    fz_context *ctx = mu::context();
    const int count = static_cast<int>(pages.size());
    if (resolved < count && handle) {
        // Counted up from the page's parents: a few nodes of the tree, where a walk to the
        // page would read every page before it. A tree that does not lead back to the page
        // leaves the answer to the walk.
        const int index = PageTree::indexOf(ctx, handle->doc(), number);
        if (index >= 0 && index < count) {
            const PDFPagePrivate &page = *pages[size_t(index)]->d;
            if (index >= resolved || (page.object && pdf_to_num(ctx, page.object) == number))
                return pages[size_t(index)];
        }
    }
    if (pagesByNumberOrder != pageOrder || pagesByNumber.isEmpty()) {
        resolveThroughLocked(count - 1);
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
    OutlineIO::UnreadDestination stamp;
    stamp.document = q.weak_from_this();
    stamp.handle = handle;
    stamp.pending = unreadOutlineDestinations;
    {
        const mu::Lock lock(handle->mutex());
        outlineRoot = OutlineIO::read(mu::context(), handle->doc(), stamp);
    }
    if (outlineRoot)
        outlineRoot->m_document = q.weak_from_this();
}

std::shared_ptr<PDFDestination> PDFDocumentPrivate::readOutlineDestination(
    const OutlineIO::UnreadDestination &unread)
{
    const auto document = unread.document.lock();
    if (!document)
        return nullptr;
    PDFDocumentPrivate &d = *document->d;
    const auto handle = d.handle;
    if (!handle || handle != unread.handle.lock())
        return nullptr;
    const mu::Lock lock(handle->mutex());
    return OutlineIO::readDestination(mu::context(), handle->doc(), unread,
        [&](int number) { return d.pageForObjectNumberLocked(number); });
}

void PDFDocumentPrivate::readOutlineDestinations()
{
    // Every destination read, or let go with its item: nothing to walk the outline for.
    if (!outlineLoaded || !outlineRoot || unreadOutlineDestinations.use_count() == 1)
        return;
    std::vector<std::shared_ptr<PDFOutline>> pending { outlineRoot };
    while (!pending.empty()) {
        const auto item = std::move(pending.back());
        pending.pop_back();
        if (item->m_unread)
            item->destination();
        for (const auto &child : item->m_children)
            pending.push_back(child);
    }
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
