#include "FindJob.h"

#include "TextLayout.h"

#include <QRegularExpression>

FindJob::FindJob(std::shared_ptr<mu::DocumentHandle> handle, std::vector<pdf_obj *> pages,
    const QString &needle, bool caseInsensitive)
    : m_handle(std::move(handle))
    , m_pages(std::move(pages))
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

void FindJob::run(const PageHits &onPage, const std::function<void()> &onEnd)
{
    fz_context *ctx = mu::context();
    pdf_document *const doc = m_handle->doc();
    for (size_t slot = 0; slot < m_pages.size(); ++slot) {
        if (m_cancelled)
            return;
        std::shared_ptr<TextLayout> layout;
        {
            const mu::Lock lock(m_handle->mutex());
            pdf_obj *const obj = m_pages[slot];
            pdf_page *page = nullptr;
            mu::Error error;
            mu::run(ctx, error, [&] {
                const int index = pdf_lookup_page_number(ctx, doc, obj);
                if (index >= 0) {
                    page = pdf_load_page(ctx, doc, index);
                    if (pdf_to_num(ctx, page->obj) != pdf_to_num(ctx, obj))
                        fz_throw(ctx, FZ_ERROR_GENERIC, "page moved");
                }
            });
            if (page && !error.failed)
                layout = TextLayout::build(ctx, page, nullptr, error);
            if (page)
                mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &page->super); });
        }
        if (!layout)
            continue;
        auto hits = matches(layout->text, m_needle, m_caseInsensitive);
        if (!hits.empty())
            onPage(static_cast<int>(slot), std::move(hits));
    }
    if (!m_cancelled)
        onEnd();
}
