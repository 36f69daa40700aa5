#include "FindJob.h"

#include "PDFRenderPrivate.h"
#include "TextLayout.h"

#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

FindJob::FindJob(std::shared_ptr<mu::DocumentHandle> handle, std::vector<pdf_obj *> pages,
    std::vector<int> indexes, const QString &needle, bool caseInsensitive)
    : m_handle(std::move(handle))
    , m_pages(std::move(pages))
    , m_indexes(std::move(indexes))
    , m_needle(needle)
    , m_caseInsensitive(caseInsensitive)
{ }

FindJob::~FindJob()
{
    const mu::Lock lock(m_handle->mutex());
    fz_context *ctx = mu::context();
    for (pdf_obj *obj : m_pages)
        mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, obj); });
}

std::vector<PDFTextRange> FindJob::matches(
    const QString &text, const QString &needle, bool caseInsensitive)
{
    std::vector<PDFTextRange> found;
    QString pattern = needle.simplified();
    if (pattern.isEmpty())
        return found;
    // Same length as the text, so indexes stay those of the page text.
    QString haystack = text;
    for (QChar &c : haystack)
        if (c.isSpace())
            c = u' ';
    const Qt::CaseSensitivity sensitivity
        = caseInsensitive ? Qt::CaseInsensitive : Qt::CaseSensitive;
    qsizetype from = 0;
    while ((from = haystack.indexOf(pattern, from, sensitivity)) >= 0) {
        found.push_back({ static_cast<int>(from), static_cast<int>(pattern.size()) });
        from += pattern.size();
    }
    return found;
}

fz_display_list *FindJob::recordPage(size_t slot)
{
    fz_context *ctx = mu::context();
    pdf_document *const doc = m_handle->doc();
    const mu::Lock lock(m_handle->mutex());
    pdf_obj *const obj = m_pages[slot];
    const int hint = m_indexes[slot];
    pdf_page *page = nullptr;
    mu::Error error;
    mu::run(ctx, error, [&] {
        const int wanted = pdf_to_num(ctx, obj);
        const int count = pdf_count_pages(ctx, doc);
        // Usually the page is still where it was; otherwise look it up.
        if (hint < count) {
            page = pdf_load_page(ctx, doc, hint);
            if (pdf_to_num(ctx, page->obj) != wanted) {
                fz_drop_page(ctx, &page->super);
                page = nullptr;
            }
        }
        if (!page) {
            const int index = pdf_lookup_page_number(ctx, doc, obj);
            if (index >= 0)
                page = pdf_load_page(ctx, doc, index);
            if (page && pdf_to_num(ctx, page->obj) != wanted)
                fz_throw(ctx, FZ_ERROR_GENERIC, "page moved");
        }
    });
    fz_display_list *list = nullptr;
    if (page && !error.failed) {
        mu::CookieScope scope(&m_cancellation);
        list = TextLayout::recordContents(ctx, page, scope.cookie(), error, scope.contentLimit());
        if (list && scope.aborted()) {
            mu::runQuietly(ctx, [&] { fz_drop_display_list(ctx, list); });
            list = nullptr;
        }
    }
    if (page)
        mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &page->super); });
    return list;
}

void FindJob::run(const PageHits &onPage, const std::function<void()> &onEnd)
{
    // Two threads: while one records a page under the document's lock, the other reads the
    // text of the page before, outside it. Hits still go out in page order.
    const size_t count = m_pages.size();
    std::atomic<size_t> next { 0 };
    std::mutex resultsMutex;
    std::vector<std::optional<std::vector<PDFTextRange>>> results(count);
    size_t delivered = 0;
    const auto work = [&] {
        fz_context *ctx = mu::context();
        for (;;) {
            const size_t slot = next++;
            if (slot >= count || m_cancelled)
                return;
            std::vector<PDFTextRange> hits;
            const mu::DisplayList list(recordPage(slot));
            mu::Error error;
            const auto layout
                = list ? TextLayout::fromList(ctx, list.p, &m_cancellation, error, false) : nullptr;
            if (layout)
                hits = matches(layout->text, m_needle, m_caseInsensitive);
            const std::lock_guard lock(resultsMutex);
            results[slot] = std::move(hits);
            while (delivered < count && results[delivered]) {
                if (!results[delivered]->empty() && !m_cancelled)
                    onPage(static_cast<int>(delivered), std::move(*results[delivered]));
                ++delivered;
            }
        }
    };
    std::thread helper;
    try {
        helper = std::thread(work);
    } catch (const std::system_error &) {
        // No second thread: this one does all the pages.
    }
    work();
    if (helper.joinable())
        helper.join();
    if (!m_cancelled)
        onEnd();
}
