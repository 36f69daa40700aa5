#include "FindJob.h"

#include "PDFRenderPrivate.h"
#include "TextLayout.h"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

namespace {

bool isLineEndHyphen(char16_t c)
{
    return c == u'-' || c == 0x2010 || c == 0x2011;
}

// Ligatures and the presentation forms of Arabic and Hebrew read as the letters a user types.
bool isPresentationForm(char32_t c)
{
    return c >= 0xFB00 && c <= 0xFEFF && c != 0xFEFF;
}

// A flat copy of a text for matching: folded, white space runs as one space, soft hyphens
// and words broken at a line's end joined; each unit knows the text it came from.
class Haystack
{
public:
    Haystack(const QString &text, bool caseInsensitive, bool keepHyphens)
        : m_caseInsensitive(caseInsensitive)
    {
        m_units.reserve(size_t(text.size()));
        m_from.reserve(size_t(text.size()));
        m_to.reserve(size_t(text.size()));
        const qsizetype n = text.size();
        for (qsizetype i = 0; i < n; ++i) {
            const char16_t c = text.at(i).unicode();
            if (c == 0x00AD)
                continue;
            if (isLineEndHyphen(c) && i > 0 && i + 1 < n && text.at(i + 1) == u'\n'
                && text.at(i - 1).isLetter()) {
                // The word goes on at the start of the next line.
                if (keepHyphens)
                    push(c, int(i), int(i + 1));
                ++i;
                continue;
            }
            if (QChar::isSpace(c)) {
                if (!m_units.empty() && m_units.back() == u' ')
                    m_to.back() = int(i + 1);
                else
                    push(u' ', int(i), int(i + 1));
                continue;
            }
            char32_t code = c;
            int end = int(i + 1);
            if (QChar::isHighSurrogate(c) && i + 1 < n && text.at(i + 1).isLowSurrogate()) {
                code = QChar::surrogateToUcs4(c, text.at(i + 1).unicode());
                end = int(i + 2);
            }
            append(code, int(i), end);
            i = end - 1;
        }
    }

    // The needle as the haystack reads it (without the line-end rules).
    static std::u16string needle(const QString &needle, bool caseInsensitive)
    {
        return Haystack(needle.simplified(), caseInsensitive, true).m_units;
    }

    std::vector<PDFTextRange> find(const std::u16string &pattern) const
    {
        std::vector<PDFTextRange> found;
        if (pattern.empty())
            return found;
        const std::u16string_view units(m_units);
        size_t from = 0;
        while ((from = units.find(pattern, from)) != std::u16string_view::npos) {
            const size_t last = from + pattern.size() - 1;
            found.push_back({ m_from[from], m_to[last] - m_from[from] });
            from += pattern.size();
        }
        return found;
    }

private:
    void push(char16_t unit, int from, int to)
    {
        m_units.push_back(unit);
        m_from.push_back(from);
        m_to.push_back(to);
    }
    void append(char32_t code, int from, int to)
    {
        if (isPresentationForm(code)) {
            const QString parts = QChar::decomposition(code);
            if (!parts.isEmpty()) {
                for (const QChar part : parts)
                    push(fold(part.unicode()), from, to);
                return;
            }
        }
        code = fold(code);
        if (QChar::requiresSurrogates(code)) {
            push(QChar::highSurrogate(code), from, to);
            push(QChar::lowSurrogate(code), from, to);
        } else {
            push(char16_t(code), from, to);
        }
    }
    char32_t fold(char32_t code) const
    {
        if (!m_caseInsensitive)
            return code;
        if (code < 0x80)
            return code >= u'A' && code <= u'Z' ? code + 32 : code;
        return QChar::toCaseFolded(code);
    }

    bool m_caseInsensitive;
    std::u16string m_units;
    std::vector<int> m_from; // where each unit's text starts
    std::vector<int> m_to; // and ends
};

} // namespace

FindJob::FindJob(
    std::shared_ptr<mu::DocumentHandle> handle, const QString &needle, bool caseInsensitive)
    : m_handle(std::move(handle))
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

void FindJob::addPages(std::vector<pdf_obj *> pages, std::vector<int> indexes, bool last)
{
    {
        const std::lock_guard lock(m_pagesMutex);
        m_pages.insert(m_pages.end(), pages.begin(), pages.end());
        m_indexes.insert(m_indexes.end(), indexes.begin(), indexes.end());
        m_allAdded = m_allAdded || last;
    }
    m_pagesAdded.notify_all();
}

size_t FindJob::pagesWaiting()
{
    const std::lock_guard lock(m_pagesMutex);
    return m_pages.size() - m_next;
}

void FindJob::cancel()
{
    {
        const std::lock_guard lock(m_pagesMutex);
        m_cancelled = true;
    }
    m_cancellation.cancel();
    m_pagesAdded.notify_all();
}

bool FindJob::takeSlot(size_t *slot, pdf_obj **page, int *hint)
{
    std::unique_lock lock(m_pagesMutex);
    m_pagesAdded.wait(
        lock, [this] { return m_cancelled || m_allAdded || m_next < m_pages.size(); });
    if (m_cancelled || m_next >= m_pages.size())
        return false;
    *slot = m_next++;
    *page = m_pages[*slot];
    *hint = m_indexes[*slot];
    return true;
}

std::vector<PDFTextRange> FindJob::matches(
    const QString &text, const QString &needle, bool caseInsensitive)
{
    const std::u16string pattern = Haystack::needle(needle, caseInsensitive);
    if (pattern.empty() || pattern == u" ")
        return {};
    const bool keepHyphens = pattern.find_first_of(u"-\u2010\u2011") != std::u16string::npos;
    return Haystack(text, caseInsensitive, keepHyphens).find(pattern);
}

fz_stext_page *FindJob::extractPage(pdf_obj *wanted, int hint)
{
    // A page gives way to the main thread sixteen times at most; then it is read through.
    constexpr int MaxGiveWays = 16;
    for (int attempt = 0;; ++attempt) {
        m_handle->mutex().waitForMainThread();
        bool gaveWay = false;
        fz_stext_page *const stext = extractPageOnce(wanted, hint, attempt < MaxGiveWays, &gaveWay);
        if (!gaveWay)
            return stext;
    }
}

fz_stext_page *FindJob::extractPageOnce(pdf_obj *wanted, int hint, bool mayGiveWay, bool *gaveWay)
{
    fz_context *ctx = mu::context();
    pdf_document *const doc = m_handle->doc();
    mu::DocumentMutex &mutex = m_handle->mutex();
    const mu::Lock lock(mutex);
    mu::CookieScope scope(&m_cancellation);
    mu::Error error;
    mu::run(ctx, error, [&] {
        // Usually the page is still where it was; otherwise it must still be in the tree.
        pdf_obj *obj
            = hint < pdf_count_pages(ctx, doc) ? pdf_lookup_page_obj(ctx, doc, hint) : nullptr;
        if (pdf_to_num(ctx, obj) != pdf_to_num(ctx, wanted)
            && pdf_lookup_page_number(ctx, doc, wanted) < 0)
            fz_throw(ctx, FZ_ERROR_GENERIC, "page removed");
    });
    if (error.failed)
        return nullptr;
    if (mayGiveWay)
        mutex.offerToGiveWay(&scope.cookie()->abort);
    fz_stext_page *const stext
        = TextLayout::readContents(ctx, doc, wanted, scope.cookie(), error, scope.contentLimit());
    const bool asked = mayGiveWay && mutex.offerToGiveWay(nullptr);
    if (scope.aborted()) {
        if (stext)
            mu::runQuietly(ctx, [&] { fz_drop_stext_page(ctx, stext); });
        // Stopped for the main thread, not by a cancel or a limit: read the page again.
        *gaveWay = asked && !m_cancelled;
        return nullptr;
    }
    return stext;
}

void FindJob::run(const PageHits &onPage, const std::function<void()> &onEnd)
{
    // Two threads: while one reads a page under the document's lock, the other flattens and
    // searches the text of the page before, outside it. Hits still go out in page order.
    const std::u16string pattern = Haystack::needle(m_needle, m_caseInsensitive);
    const bool keepHyphens = pattern.find_first_of(u"-\u2010\u2011") != std::u16string::npos;
    struct PageResult
    {
        std::vector<PDFTextRange> hits;
        QString text;
    };
    std::mutex resultsMutex;
    std::vector<std::optional<PageResult>> results;
    size_t delivered = 0;
    const auto work = [&] {
        size_t slot = 0;
        pdf_obj *page = nullptr;
        int hint = 0;
        while (takeSlot(&slot, &page, &hint)) {
            PageResult result;
            const mu::StextPage stext(extractPage(page, hint));
            if (stext && !m_cancelled && !pattern.empty() && pattern != u" ") {
                const auto layout = TextLayout::fromStext(stext.p, false);
                result.hits = Haystack(layout->text, m_caseInsensitive, keepHyphens).find(pattern);
                if (!result.hits.empty())
                    result.text = layout->text;
            }
            const std::lock_guard lock(resultsMutex);
            if (results.size() <= slot)
                results.resize(slot + 1);
            results[slot] = std::move(result);
            while (delivered < results.size() && results[delivered]) {
                PageResult &ready = *results[delivered];
                if (!ready.hits.empty() && !m_cancelled)
                    onPage(
                        static_cast<int>(delivered), std::move(ready.hits), std::move(ready.text));
                results[delivered]->text.clear();
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
