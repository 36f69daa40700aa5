#pragma once

// A PDF document: its pages in order, its outline tree, saving, permissions and an asynchronous
// find. Main thread only, except dataRepresentation() of a document no other thread touches.
// Subclasses override the initialisers and the three page mutators.

#include "PDFDisplayBox.h"
#include "PDFSelection.h"

#include <QByteArray>
#include <QPointF>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <vector>

class PDFDocumentDelegate;
class QDeadlineTimer;
class PDFOutline;
class PDFPage;
struct PDFDocumentPrivate;

class PDFDocument : public std::enable_shared_from_this<PDFDocument>
{
public:
    // Posted on NotificationCenter::defaultCenter() on the main thread with the document as sender.
    // A page was inserted, removed, moved or turned; posted once per page.
    static const QString PagesDidChangeNotification; // "PDFDocumentPagesDidChangeNotification"
    static const QString DidFindMatchNotification; // "PDFDocumentDidFindMatchNotification"
    static const QString DidEndFindNotification; // "PDFDocumentDidEndFindNotification"
    static const QString FoundSelectionKey; // "PDFDocumentFoundSelection"

    // Find options, as the platform numbers them.
    static constexpr int CaseInsensitiveSearch = 1;

    PDFDocument();
    virtual ~PDFDocument();
    PDFDocument(const PDFDocument &) = delete;
    PDFDocument &operator=(const PDFDocument &) = delete;

    // Two-phase construction: make_shared, setDelegate if wanted, then one initialiser. Each
    // answers false with errorString() on failure; pages are built through the delegate.
    virtual bool init(); // an empty document with no pages
    virtual bool initWithURL(const QUrl &url);
    virtual bool initWithData(const QByteArray &data);
    QString errorString() const;

    // Not owned: a delegate that goes away means the engine's own classes again.
    void setDelegate(const std::weak_ptr<PDFDocumentDelegate> &delegate);
    std::shared_ptr<PDFDocumentDelegate> delegate() const;

    QUrl documentURL() const;
    bool wasRepaired() const;

    int pageCount() const;
    std::shared_ptr<PDFPage> pageAtIndex(int index) const; // null out of range
    // -1 when not in this document; constant time.
    int indexForPage(const std::shared_ptr<PDFPage> &page) const;

    // A page in another document is taken out of it first, by that document's
    // removePageAtIndex(); a page from elsewhere is copied into
    // this document's file and stays the same object. Out-of-range indexes do nothing.
    virtual void insertPage(const std::shared_ptr<PDFPage> &page, int index);
    // The removed page lives on without a document, with its content.
    virtual void removePageAtIndex(int index);
    virtual void exchangePageAtIndex(int index, int otherIndex);

    std::shared_ptr<PDFOutline> outlineRoot() const; // null when the document has none
    void setOutlineRoot(const std::shared_ptr<PDFOutline> &root);

    // The bytes of the current state: pages, rotations, outline. Empty on failure (see
    // errorString()). Main thread, or a worker when no other thread uses the document.
    QByteArray dataRepresentation() const;

    // What a write made ahead by prepareDataRepresentation() gives.
    struct WrittenData
    {
        QByteArray bytes; // empty when the write failed or came too late
        QString error;
        bool isStale = false; // the objects were prepared again since: prepare once more
    };
    using DataWriter = std::function<WrittenData()>;
    // The two halves of dataRepresentation(), so that the long one leaves the main thread: this
    // readies the objects (annotation pictures, the outline) on the main thread and returns the
    // write, which may run on any thread. It holds the document lock while it runs, so an edit
    // made meanwhile waits for it or comes after it. Null on failure (see errorString()).
    DataWriter prepareDataRepresentation() const;
    // Writes atomically (a temporary file in the same folder, then a rename).
    bool writeToURL(const QUrl &url) const;

    bool isEncrypted() const;
    bool isLocked() const;
    bool unlockWithPassword(const QString &password);
    bool allowsPrinting() const;
    bool allowsCopying() const;

    // Find runs page by page on a worker; hits and the end arrive as notifications.
    void beginFindString(const QString &string, int options);
    void cancelFindString();
    bool isFinding() const;

    // Gives back what reading pages left behind: loaded pages whose annotations were never asked
    // for and their text at once; then, on a pool thread, parsed objects nothing refers to any
    // more (only while nothing is unsaved), the appearances made up for fields and annotations
    // that have none (made again for the pages still open), rendered glyphs and MuPDF's store of
    // fonts and images (shared by every document). Pages reload on their next use. False, doing
    // nothing, while a release still runs: it never waits, for that or for a worker inside the
    // document. Main thread; the view calls it as the reader moves on through a long document.
    bool releaseCachedContent();
    // What the engine holds for all documents beyond what it held after the last release, in
    // bytes: fonts count little in MuPDF's store, so pages rich in fonts grow it past its limit.
    static qint64 cachedContentGrowth();
    // Reads the rest of a long document's page tree on a background thread, so that its pages
    // are later found without parsing the file on the caller's thread. Once per document; the
    // view asks for it once its first screen is drawn.
    void readPageTreeAhead();
    // Readies the pages from first through last as time allows (their objects and boxes), for
    // work that can wait: it never waits for the document, and leaves nodes of the page tree
    // not parsed yet to the read ahead while it runs. Answers the first page not readied.
    // Main thread.
    int readyPages(int first, int last, QDeadlineTimer deadline);
    // Loads the pages on a background thread, nearest first, so that drawing them later finds
    // them loaded; each call replaces the last. Pages loaded already, of another document or
    // with their place not known yet are passed over. Main thread.
    void loadPagesAhead(const std::vector<std::shared_ptr<PDFPage>> &pages);

    // The text between two page points, in reading order, for a drag across pages.
    std::shared_ptr<PDFSelection> selectionFromPage(const std::shared_ptr<PDFPage> &startPage,
        const QPointF &startPoint, const std::shared_ptr<PDFPage> &endPage, const QPointF &endPoint,
        PDFSelectionGranularity granularity = PDFSelectionGranularity::Character) const;

private:
    friend class PDFPage;
    friend class PDFSelection;
    friend struct PDFDocumentPrivate;
    std::unique_ptr<PDFDocumentPrivate> d;
};
