#pragma once

// Engine-internal state of a PDFDocument. Main thread only, apart from serialising a document
// that no other thread touches.

#include "FindJob.h"
#include "PDFDocumentDelegate.h"
#include "PageLabels.h"
#include "PageLoadAhead.h"
#include "PageTreeWalk.h"
#include "mupdf/DocumentHandle.h"
#include "mupdf/MuOwned.h"

#include <QHash>
#include <QString>
#include <QUrl>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

class PDFDestination;
class PDFDocument;
class PDFDocumentDelegate;
class PDFOutline;
namespace OutlineIO {
struct UnreadDestination;
}
class PDFPage;

struct PDFDocumentPrivate
{
    explicit PDFDocumentPrivate(PDFDocument &owner)
        : q(owner)
    { }
    ~PDFDocumentPrivate();

    // Opens what open() gives under a fresh handle, then builds pages and outline unless locked.
    bool adopt(pdf_document *doc);
    // Pages (through the delegate), outline and labels of an unlocked document. Page objects are
    // found later, as pages are asked for (resolveThrough).
    bool loadContent();
    // Finds the page objects of every page up to index, walking the page tree on from where the
    // last walk stopped: opening a long document reads only the pages it shows first. A tree
    // that does not add up is read whole, repaired and rebuilt (PageTree): the pages it holds
    // come first in the list, so that index i is MuPDF's page i, and the list only grows.
    // Main thread; takes the lock.
    void resolveThrough(int index);
    // The same, with the lock held. Held only, the walk stops before a node not parsed yet, which
    // the read ahead is to parse off this thread.
    void resolveThroughLocked(
        int index, PageTreeWalk::Reading reading = PageTreeWalk::Reading::File);
    static PDFDocumentPrivate &of(const PDFDocument &document);
    // The first page's contents as read ahead, for the page object numbered so, once: the
    // render source that takes them keeps them.
    mu::DisplayList takeFirstPageContents(int pageObject);
    // Makes the first page's loaded page the one read ahead with the document (taking it).
    void adoptFirstPage(pdf_page *loaded, pdf_document *doc);
    // The page of this document whose object has the number (link and outline targets); the
    // lock is held. Before the page tree is walked whole, MuPDF finds the page's place from its
    // parents; after, a table built once per page order answers.
    std::shared_ptr<PDFPage> pageForObjectNumberLocked(int number);
    void resolveAll() { resolveThrough(static_cast<int>(pages.size()) - 1); }
    // The outline, read on first use, its destinations when asked for.
    void loadOutline();
    // An outline item's destination, read in the document it was read from (null once that is
    // gone or holds other objects). Main thread; takes the lock.
    static std::shared_ptr<PDFDestination> readOutlineDestination(
        const OutlineIO::UnreadDestination &unread);
    // Every outline destination read while the pages are where the file put them: before
    // pages move or go, and before the outline is written.
    void readOutlineDestinations();
    // The delegate's page class, asked for once per batch of pages made.
    PDFPageFactory pageFactory() const;
    std::shared_ptr<PDFPage> makePage(const PDFPageFactory &factory) const;
    // The file's bytes opened as a file whose cross-reference is lost, so MuPDF repairs it.
    static pdf_document *openForcingRepair(QByteArray bytes);
    // Keeps MuPDF's numbering of loaded pages equal to the page list; the lock is held.
    void renumberLocked();
    // Takes a page out of the page tree and the list; the removed page keeps its content.
    std::shared_ptr<PDFPage> takePage(int index);
    QString labelForIndex(int index) const;
    void stopFind();
    // Hands the find the waiting pages whose objects are known, in order; true once all are,
    // or once the walk has ended (walkEnded: it can go no further).
    bool feedFind(bool walkEnded = false);
    // Walks the page tree on for a few milliseconds a turn, feeding the find, until it is fed;
    // the first turn comes after the delay.
    void feedFindLater(quint64 generation, int milliseconds = 0);
    // Makes MuPDF meet a misplaced object now (PageTree::repairIfDamaged) on the bytes opened,
    // setting repaired when it repaired the file. False, with error set, when the repair took
    // more memory than a file of this size warrants. The lock is held.
    bool repairIfDamagedLocked();
    // The page list becomes the page objects found (new references); the lock is held.
    void adoptPagesLocked(const std::vector<pdf_obj *> &found);

    // Full rewrite of a document into memory; the caller holds the lock.
    // sizeHint: the expected size (the file read), to allocate once.
    static QByteArray writeLocked(
        const mu::DocumentHandle &handle, QString *error, qsizetype sizeHint = 0);
    static QByteArray write(const mu::DocumentHandle &handle, QString *error);

    PDFDocument &q;
    std::shared_ptr<mu::DocumentHandle> handle;
    std::vector<std::shared_ptr<PDFPage>> pages;
    // Pages before this index have their page objects; the walk goes on from there.
    int resolved = 0;
    PageTreeWalk walk;
    int objectCount = 0; // entries of the cross-reference: no tree holds more pages
    bool outlineLoaded = true;
    // Shared by each outline destination of this document still unread.
    const std::shared_ptr<const void> unreadOutlineDestinations = std::make_shared<char>();
    bool readingTreeAhead = false;
    // Set while a read ahead of the tree runs.
    std::shared_ptr<std::atomic<bool>> treeReadAheadRunning
        = std::make_shared<std::atomic<bool>>(false);
    // Set once every page has its object, which ends a read ahead of the tree.
    std::shared_ptr<std::atomic<bool>> treeWalked = std::make_shared<std::atomic<bool>>(false);
    QHash<int, std::weak_ptr<PDFPage>> pagesByNumber;
    quint64 pagesByNumberOrder = 0; // the page order the table was built for
    quint64 pageOrder = 0; // grows at every change of the order of pages
    std::shared_ptr<PDFOutline> outlineRoot;
    std::weak_ptr<PDFDocumentDelegate> delegate;
    QUrl url;
    mutable QString error;
    bool repaired = false;
    bool encrypted = false;
    bool locked = false;
    bool contentLoaded = false;
    // The file was read ahead and every object found in place: the first load skips the check.
    bool objectsChecked = false;
    // The first page's contents as read ahead (in page space), for its first render source,
    // and the number of the page object they belong to.
    mu::DisplayList firstPageContents;
    int firstPageObject = 0;
    // Pages loaded ahead of the reader, for the document the handle holds now.
    std::shared_ptr<PageLoadAhead> loadAhead;
    qsizetype sourceSize = 0;
    // The bytes opened, for one more try with MuPDF's repair when no page tree can be found.
    std::function<QByteArray()> sourceBytes;
    // Where the bytes MuPDF reads can be looked at without reading the file.
    QString sourcePath;
    QByteArray sourceData;
    bool pageTreeBroken = false;
    PageLabels labels;

    std::shared_ptr<FindJob> findJob;
    std::thread findThread;
    std::vector<std::weak_ptr<PDFPage>> findPages; // by slot of the find
    std::vector<quint64> findRevisions; // of each page's content when handed to the find
    // The pages of the find's start not yet handed to it: a long tree's walk reaches them in
    // steps, so that the first pages are searched at once.
    std::vector<std::shared_ptr<PDFPage>> findWaiting;
    size_t findHandedOver = 0; // of findWaiting
    quint64 findPageOrder = 0; // the page order when the find began
    quint64 findGeneration = 0;
    bool finding = false;
};
