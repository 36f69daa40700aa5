#pragma once

// One asynchronous find: a snapshot of the page objects taken on the main thread, searched page
// by page on a worker thread under the document's lock. The worker reports ranges per page slot;
// it never touches PDFPage or PDFDocument.

#include "PDFCancellation.h"
#include "PDFSelection.h"
#include "mupdf/DocumentHandle.h"

#include <QString>

#include <atomic>
#include <functional>
#include <vector>

class FindJob
{
public:
    // Takes over the references to the page objects; indexes are where they were at the start
    // (pages may move while the find runs).
    FindJob(std::shared_ptr<mu::DocumentHandle> handle, std::vector<pdf_obj *> pages,
        std::vector<int> indexes, const QString &needle, bool caseInsensitive);
    ~FindJob();
    FindJob(const FindJob &) = delete;
    FindJob &operator=(const FindJob &) = delete;

    using PageHits = std::function<void(int slot, std::vector<PDFTextRange> hits)>;
    // Runs on the worker: onPage for each page with hits, in order; onEnd unless cancelled.
    void run(const PageHits &onPage, const std::function<void()> &onEnd);
    void cancel()
    {
        m_cancelled = true;
        m_cancellation.cancel();
    }

    // Ranges of needle in text; whitespace of either side matches any whitespace.
    static std::vector<PDFTextRange> matches(
        const QString &text, const QString &needle, bool caseInsensitive);

private:
    // The page's content recorded under the lock; null when it is gone or unreadable.
    fz_display_list *recordPage(size_t slot);

    std::shared_ptr<mu::DocumentHandle> m_handle;
    std::vector<pdf_obj *> m_pages;
    std::vector<int> m_indexes;
    QString m_needle;
    bool m_caseInsensitive;
    std::atomic<bool> m_cancelled { false };
    PDFCancellation m_cancellation; // aborts the page being read at once
};
