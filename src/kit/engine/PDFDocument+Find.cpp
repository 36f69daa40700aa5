#include "PDFDocument.h"

#include "PDFDocumentPrivate.h"
#include "PDFPage.h"
#include "PDFPagePrivate.h"
#include "PDFSelection.h"

#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>

#include <QDeadlineTimer>

#include <algorithm>
#include <unordered_set>

// Asynchronous find and selections across pages.

void PDFDocument::beginFindString(const QString &string, int options)
{
    cancelFindString();
    d->stopFind();
    if (!d->handle || string.trimmed().isEmpty())
        return;
    d->findPages.clear();
    d->findRevisions.clear();
    d->findWaiting = d->pages;
    d->findHandedOver = 0;
    d->findPageOrder = d->pageOrder;
    d->findJob
        = std::make_shared<FindJob>(d->handle, string, (options & CaseInsensitiveSearch) != 0);
    d->finding = true;
    const quint64 generation = ++d->findGeneration;
    if (!d->feedFind())
        d->feedFindLater(generation);
    const std::weak_ptr<PDFDocument> weakSelf = weak_from_this();
    // Delivery happens on the main thread, and only while this find is the current one.
    const auto current = [weakSelf, generation]() -> std::shared_ptr<PDFDocument> {
        auto self = weakSelf.lock();
        return self && self->d->finding && self->d->findGeneration == generation ? self : nullptr;
    };
    const auto onPage = [current](int slot, std::vector<PDFTextRange> hits, QString text) {
        MainQueue::async([current, slot, hits = std::move(hits), text = std::move(text)] {
            auto self = current();
            const auto page = self ? self->d->findPages[static_cast<size_t>(slot)].lock() : nullptr;
            // The text read is the page's while its content has not changed since it was handed
            // to the find.
            if (page)
                PDFPageInternals::setFoundText(
                    *page, self->d->findRevisions[static_cast<size_t>(slot)], text);
            for (const PDFTextRange &hit : hits) {
                if (!self)
                    return;
                auto selection = std::make_shared<PDFSelection>(self);
                if (page)
                    selection->addRange(page, hit);
                NotificationCenter::defaultCenter().post(DidFindMatchNotification, self.get(),
                    { { FoundSelectionKey, QVariant::fromValue(selection) } });
                // An observer may have cancelled the find.
                self = current();
            }
        });
    };
    const auto onEnd = [current] {
        MainQueue::async([current] {
            if (const auto self = current()) {
                self->d->finding = false;
                NotificationCenter::defaultCenter().post(DidEndFindNotification, self.get());
            }
        });
    };
    d->findThread = std::thread([job = d->findJob, onPage, onEnd] { job->run(onPage, onEnd); });
}

bool PDFDocumentPrivate::feedFind(bool walkEnded)
{
    std::vector<pdf_obj *> objects;
    std::vector<int> indexes;
    const bool walked = walkEnded || resolved >= static_cast<int>(pages.size());
    bool all = true;
    {
        const mu::Lock lock(handle->mutex());
        fz_context *ctx = mu::context();
        const auto handOver = [&](const std::shared_ptr<PDFPage> &page) {
            mu::runQuietly(ctx, [&] { pdf_keep_obj(ctx, page->d->object); });
            objects.push_back(page->d->object);
            indexes.push_back(static_cast<int>(findPages.size()));
            findRevisions.push_back(page->d->contentRevision);
            findPages.push_back(page);
        };
        for (; findHandedOver < findWaiting.size(); ++findHandedOver) {
            const auto &page = findWaiting[findHandedOver];
            // A page not reached yet waits; one still without its object once the walk is
            // through is gone from a rebuilt tree.
            if (page->d->handle == handle && page->d->object)
                handOver(page);
            else if (!walked && page->d->handle == handle) {
                all = false;
                break;
            }
        }
        // A tree rebuilt on the way may hold pages it did not claim; they are searched last.
        if (all && findPageOrder != pageOrder) {
            std::unordered_set<const PDFPage *> handed;
            for (const auto &page : findWaiting)
                handed.insert(page.get());
            for (const auto &page : pages) {
                if (!handed.count(page.get()) && page->d->handle == handle && page->d->object)
                    handOver(page);
            }
        }
    }
    if (all)
        findWaiting.clear();
    findJob->addPages(std::move(objects), std::move(indexes), all);
    return all;
}

void PDFDocumentPrivate::feedFindLater(quint64 generation, int milliseconds)
{
    auto turn = [weakSelf = q.weak_from_this(), generation] {
        const auto self = weakSelf.lock();
        if (!self || !self->d->finding || self->d->findGeneration != generation)
            return;
        PDFDocumentPrivate &d = *self->d;
        constexpr int MillisecondsPerTurn = 8;
        constexpr int PagesPerStep = 16;
        // Pages enough to keep the workers reading for a few hundred milliseconds.
        constexpr size_t PagesAhead = 48;
        const QDeadlineTimer deadline(MillisecondsPerTurn);
        const int last = static_cast<int>(d.pages.size()) - 1;
        if (d.findJob->pagesWaiting() >= PagesAhead) {
            // While the workers are busy the walk takes the document only when it is free:
            // waiting for it would stop the page a worker reads, to be read again.
            self->readyPages(d.resolved, last, deadline);
            if (!d.feedFind())
                d.feedFindLater(generation, MillisecondsPerTurn);
            return;
        }
        // The workers run short: the walk goes on now, in one hold of the document.
        const int before = d.resolved;
        if (d.handle) {
            // A step at least, however long the lock took: a turn that walks nothing means the
            // walk can go no further.
            const mu::Lock lock(d.handle->mutex());
            do
                d.resolveThroughLocked(std::min(d.resolved + PagesPerStep, last));
            while (d.resolved <= last && !deadline.hasExpired());
        }
        // A walk that cannot go on ends the find's wait with the pages it has.
        if (!d.feedFind(d.resolved == before))
            d.feedFindLater(generation);
    };
    if (milliseconds > 0)
        MainQueue::asyncAfter(milliseconds / 1000.0, std::move(turn));
    else
        MainQueue::async(std::move(turn));
}

void PDFDocument::cancelFindString()
{
    ++d->findGeneration;
    d->finding = false;
    if (d->findJob)
        d->findJob->cancel();
}

bool PDFDocument::isFinding() const
{
    return d->finding;
}

std::shared_ptr<PDFSelection> PDFDocument::selectionFromPage(
    const std::shared_ptr<PDFPage> &startPage, const QPointF &startPoint,
    const std::shared_ptr<PDFPage> &endPage, const QPointF &endPoint,
    PDFSelectionGranularity granularity) const
{
    if (!startPage || !endPage)
        return nullptr;
    int first = indexForPage(startPage);
    int last = indexForPage(endPage);
    if (startPage == endPage)
        return startPage->selectionFromPointToPoint(startPoint, endPoint, granularity);
    if (first < 0 || last < 0)
        return nullptr;
    auto fromPage = startPage;
    auto toPage = endPage;
    QPointF fromPoint = startPoint;
    QPointF toPoint = endPoint;
    if (first > last) {
        std::swap(first, last);
        std::swap(fromPage, toPage);
        std::swap(fromPoint, toPoint);
    }
    auto selection
        = std::make_shared<PDFSelection>(std::const_pointer_cast<PDFDocument>(shared_from_this()));
    // The first page from the start point to its end, whole pages between, the last page up
    // to the end point; the two ends snap outwards.
    const auto startLayout = PDFPageInternals::textLayout(*fromPage);
    const int start = startLayout->nearestIndex(fromPoint);
    if (start >= 0) {
        const int from = startLayout->span(start, start, granularity).location;
        selection->addRange(fromPage, { from, startLayout->size() - from });
    }
    for (int i = first + 1; i < last; ++i) {
        const auto page = pageAtIndex(i);
        const int size = PDFPageInternals::textLayout(*page)->size();
        if (size > 0)
            selection->addRange(page, { 0, size });
    }
    const auto endLayout = PDFPageInternals::textLayout(*toPage);
    const int end = endLayout->nearestIndex(toPoint);
    if (end >= 0)
        selection->addRange(toPage, { 0, endLayout->span(end, end, granularity).end() });
    return selection->isEmpty() ? nullptr : selection;
}
