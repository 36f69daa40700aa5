#include "PDFViewSearcher.h"

#include <app/PDFContents.h>
#include <document/FDDocument.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>
#include <view/FDPDFView.h>

const QString PDFViewSearcher::SearchDidBeginNotification
    = QStringLiteral("PDFView_SearchDidBegin");
const QString PDFViewSearcher::SearchDidFindMatchesNotification
    = QStringLiteral("PDFView_SearchDidFindMatches");
const QString PDFViewSearcher::SearchDidEndNotification = QStringLiteral("PDFView_SearchDidEnd");
const QString PDFViewSearcher::SearchDidCancelNotification
    = QStringLiteral("PDFView_SearchDidCancel");
const QString PDFViewSearcher::IndexSetKey = QStringLiteral("IndexSet");

PDFViewSearcher::PDFViewSearcher(PDFContents *contents, FDPDFView *pdfView, QObject *parent)
    : QObject(parent)
    , m_contents(contents)
    , m_pdfView(pdfView)
{
    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.addObserver(this, PDFContents::QueryStringDidChangeNotification, contents,
        [this](const Notification &) { onQueryStringChanged(); });
    if (pdfView) {
        center.addObserver(this, PDFView::DocumentChangedNotification, pdfView,
            [this](const Notification &) { onDocumentChanged(); });
    }
    onDocumentChanged();
}

PDFViewSearcher::~PDFViewSearcher()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    if (m_observedDocument)
        m_observedDocument->cancelFindString();
}

FDPDFView *PDFViewSearcher::pdfView() const
{
    return m_pdfView;
}

bool PDFViewSearcher::isSearching() const
{
    const auto document = m_pdfView ? m_pdfView->document() : nullptr;
    return document && document->isFinding();
}

void PDFViewSearcher::post(const QString &name, const QVariantMap &userInfo)
{
    NotificationCenter::qkCenter().post(name, m_pdfView.data(), userInfo);
}

void PDFViewSearcher::reset()
{
    const bool hadList = m_items.has_value();
    m_items.reset();
    m_groupRows.clear();
    m_lastPage.reset();
    m_realMatchedCount = 0;
    m_pendingMatchCount = 0;
    m_lastSelectedRow = -1;
    if (const auto document = m_pdfView ? m_pdfView->document() : nullptr)
        document->cancelFindString();
    if (hadList)
        post(SearchDidCancelNotification);
}

void PDFViewSearcher::onQueryStringChanged()
{
    const std::optional<QString> query = m_contents ? m_contents->queryString() : std::nullopt;
    // Every query restarts from the beginning, the same one included.
    reset();
    if (!query || query->isEmpty() || !m_pdfView || !m_pdfView->fdDocument())
        return;
    post(SearchDidBeginNotification);
    m_pdfView->document()->beginFindString(*query, PDFDocument::CaseInsensitiveSearch);
}

void PDFViewSearcher::onDocumentChanged()
{
    reset();
    NotificationCenter &center = NotificationCenter::defaultCenter();
    if (m_observedDocument) {
        center.removeObserver(
            this, PDFDocument::DidFindMatchNotification, m_observedDocument.get());
        center.removeObserver(this, PDFDocument::DidEndFindNotification, m_observedDocument.get());
    }
    m_observedDocument = m_pdfView ? m_pdfView->document() : nullptr;
    if (!m_observedDocument)
        return;
    center.addObserver(this, PDFDocument::DidFindMatchNotification, m_observedDocument.get(),
        [this](const Notification &notification) { didFindMatch(notification); });
    center.addObserver(this, PDFDocument::DidEndFindNotification, m_observedDocument.get(),
        [this](const Notification &notification) { didEndFind(notification); });
}

void PDFViewSearcher::didFindMatch(const Notification &notification)
{
    if (!m_items)
        m_items.emplace();
    const auto document = m_pdfView ? m_pdfView->document() : nullptr;
    if (!document || notification.sender != document.get())
        return;
    const auto selection = notification.userInfo.value(PDFDocument::FoundSelectionKey)
                               .value<std::shared_ptr<PDFSelection>>();
    if (!selection)
        return;
    ++m_realMatchedCount;
    const auto pages = selection->pages();
    if (!pages.empty()) {
        const auto &page = pages.front();
        // Hits come page by page: the page's place is looked up once for all of its hits.
        if (page != m_lastPage.lock()) {
            m_lastPage = page;
            m_lastPageIndex = document->indexForPage(page);
        }
        const int pageIndex = m_lastPageIndex;
        if (!m_groupRows.contains(pageIndex)) {
            m_groupRows.insert(pageIndex, int(m_items->size()));
            m_items->push_back({ page, nullptr, pageIndex });
            ++m_pendingMatchCount;
        }
        m_items->push_back({ nullptr, selection, pageIndex });
        ++m_pendingMatchCount;
    }
    if (m_pendingMatchCount > flushThreshold)
        flush();
}

void PDFViewSearcher::didEndFind(const Notification &notification)
{
    const auto document = m_pdfView ? m_pdfView->document() : nullptr;
    if (!document || notification.sender != document.get())
        return;
    flush();
    post(SearchDidEndNotification);
}

void PDFViewSearcher::flush()
{
    if (!m_items || m_pendingMatchCount <= 0)
        return;
    QList<int> rows;
    rows.reserve(m_pendingMatchCount);
    for (int row = int(m_items->size()) - m_pendingMatchCount; row < int(m_items->size()); ++row)
        rows.append(row);
    m_pendingMatchCount = 0;
    post(SearchDidFindMatchesNotification, { { IndexSetKey, QVariant::fromValue(rows) } });
}
