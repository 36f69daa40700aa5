#pragma once

// One asynchronous find: page objects handed over by the main thread, at once or, for a long
// page tree still being walked, in steps, searched page by page on worker threads under the
// document's lock. The workers report ranges and the page text per page slot; they never touch
// PDFPage or PDFDocument.

#include "PDFCancellation.h"
#include "PDFSelection.h"
#include "mupdf/DocumentHandle.h"

#include <QString>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

class FindJob
{
public:
    FindJob(
        std::shared_ptr<mu::DocumentHandle> handle, const QString &needle, bool caseInsensitive);
    ~FindJob();
    FindJob(const FindJob &) = delete;
    FindJob &operator=(const FindJob &) = delete;

    // The hits of one page and the page's whole text, which the ranges index.
    using PageHits = std::function<void(int slot, std::vector<PDFTextRange> hits, QString text)>;
    // Pages for the next slots, in order; takes over the references to the page objects.
    // indexes are where the pages were when handed over (pages may move while the find runs).
    // The workers wait for more pages until one call says they are the last.
    void addPages(std::vector<pdf_obj *> pages, std::vector<int> indexes, bool last);
    // Pages handed over and not yet taken up by a worker.
    size_t pagesWaiting();
    // Runs on the worker: onPage for each page with hits, in order; onEnd unless cancelled.
    void run(const PageHits &onPage, const std::function<void()> &onEnd);
    void cancel();

    // Ranges of needle in text, case-folded when asked. White space of either side matches any
    // white space, a line break included; a word hyphenated at a line's end is found whole (and
    // with its hyphen when the needle has one); soft hyphens are ignored.
    static std::vector<PDFTextRange> matches(
        const QString &text, const QString &needle, bool caseInsensitive);

private:
    // The page's structured text, read under the lock straight from its content streams (no
    // page is loaded, no annotation run); null when the page is gone or unreadable.
    // The main thread waiting for the lock stops a read, which starts over once it is through.
    fz_stext_page *extractPage(pdf_obj *wanted, int hint);
    fz_stext_page *extractPageOnce(pdf_obj *wanted, int hint, bool mayGiveWay, bool *gaveWay);
    // The next slot to search and its page, once handed over; false when there is none.
    bool takeSlot(size_t *slot, pdf_obj **page, int *hint);

    std::shared_ptr<mu::DocumentHandle> m_handle;
    std::mutex m_pagesMutex; // guards the pages, the next slot and whether more come
    std::condition_variable m_pagesAdded;
    std::vector<pdf_obj *> m_pages;
    std::vector<int> m_indexes;
    size_t m_next = 0;
    bool m_allAdded = false;
    QString m_needle;
    bool m_caseInsensitive;
    std::atomic<bool> m_cancelled { false };
    PDFCancellation m_cancellation; // aborts the page being read at once
};
