#include "PDFDocument.h"

#include "PDFDocumentPrivate.h"
#include "PDFPage.h"
#include "PDFPagePrivate.h"

#include <kit/base/NotificationCenter.h>

// Inserting, removing and exchanging pages.

void PDFDocument::insertPage(const std::shared_ptr<PDFPage> &page, int index)
{
    if (!page || !d->handle || d->locked || index < 0)
        return;
    // Changing the tree ends the lazy walk; the outline keeps its pages through it.
    d->loadOutline();
    d->resolveAll();
    d->readOutlineDestinations();
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
    d->readOutlineDestinations();
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
