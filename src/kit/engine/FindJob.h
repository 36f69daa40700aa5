#pragma once

// One asynchronous find: a snapshot of the page objects taken on the main thread, searched page
// by page on worker threads under the document's lock. The workers report ranges and the page
// text per page slot; they never touch PDFPage or PDFDocument.

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

    // The hits of one page and the page's whole text, which the ranges index.
    using PageHits = std::function<void(int slot, std::vector<PDFTextRange> hits, QString text)>;
    // Runs on the worker: onPage for each page with hits, in order; onEnd unless cancelled.
    void run(const PageHits &onPage, const std::function<void()> &onEnd);
    void cancel()
    {
        m_cancelled = true;
        m_cancellation.cancel();
    }

    // Ranges of needle in text, case-folded when asked. White space of either side matches any
    // white space, a line break included; a word hyphenated at a line's end is found whole (and
    // with its hyphen when the needle has one); soft hyphens are ignored.
    static std::vector<PDFTextRange> matches(
        const QString &text, const QString &needle, bool caseInsensitive);

private:
    // The page's structured text, read under the lock straight from its content streams (no
    // page is loaded, no annotation run); null when the page is gone or unreadable.
    // The main thread waiting for the lock stops a read, which starts over once it is through.
    fz_stext_page *extractPage(size_t slot);
    fz_stext_page *extractPageOnce(size_t slot, bool mayGiveWay, bool *gaveWay);

    std::shared_ptr<mu::DocumentHandle> m_handle;
    std::vector<pdf_obj *> m_pages;
    std::vector<int> m_indexes;
    QString m_needle;
    bool m_caseInsensitive;
    std::atomic<bool> m_cancelled { false };
    PDFCancellation m_cancellation; // aborts the page being read at once
};
