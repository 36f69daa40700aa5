#pragma once

// Runs the document's find for one view of a tab and gathers the hits into a flat list of page
// headers and matches, handed out in batches of about thirty rows. Main thread only.

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <optional>
#include <vector>

class FDPDFView;
class PDFContents;
class PDFDocument;
class PDFPage;
class PDFSelection;
struct Notification;

class PDFViewSearcher : public QObject
{
    Q_OBJECT

public:
    // Posted on the kit's centre with the view as sender.
    static const QString SearchDidBeginNotification;
    static const QString SearchDidFindMatchesNotification; // "IndexSet": QList<int> of new rows
    static const QString SearchDidEndNotification;
    static const QString SearchDidCancelNotification;
    static const QString IndexSetKey;
    // More pending rows than this go out as a batch.
    static constexpr int flushThreshold = 29;

    // A header row has a page and no selection, a match row the other way round.
    struct Item
    {
        std::shared_ptr<PDFPage> page;
        std::shared_ptr<PDFSelection> selection;
        int pageIndex = -1;
    };

    PDFViewSearcher(PDFContents *contents, FDPDFView *pdfView, QObject *parent = nullptr);
    ~PDFViewSearcher() override;

    FDPDFView *pdfView() const;
    // Absent until the first hit of a search, and after every reset.
    bool hasList() const { return m_items.has_value(); }
    int itemCount() const { return m_items ? int(m_items->size()) : 0; }
    const Item &item(int row) const { return m_items->at(size_t(row)); }
    int realMatchedCount() const { return m_realMatchedCount; }
    int lastSelectedRow() const { return m_lastSelectedRow; }
    void setLastSelectedRow(int row) { m_lastSelectedRow = row; }
    bool isSearching() const;

private:
    void onQueryStringChanged();
    void onDocumentChanged();
    void reset();
    void didFindMatch(const Notification &notification);
    void didEndFind(const Notification &notification);
    void flush();
    void post(const QString &name, const QVariantMap &userInfo = {});

    QPointer<PDFContents> m_contents;
    QPointer<FDPDFView> m_pdfView;
    std::shared_ptr<PDFDocument> m_observedDocument;
    std::optional<std::vector<Item>> m_items;
    // Page index to its header's row, so a hit finds its group without a scan.
    QHash<int, int> m_groupRows;
    std::weak_ptr<PDFPage> m_lastPage;
    int m_lastPageIndex = -1;
    int m_realMatchedCount = 0;
    int m_pendingMatchCount = 0;
    int m_lastSelectedRow = -1;
};
