#pragma once

// The application's document: a PDFDocument that knows its file, counts unsaved changes by kind,
// keeps the bookmark list, warns once when its file can't be written, and hands itself to the
// saving service. Every page it builds is an FDPage. Main thread only, except fileURL(),
// xattrItemsToSave() and the file's identity, which the saving queues use.

#include "FileIdentity.h"

#include <kit/engine/PDFDocument.h>

#include <QList>
#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <memory>
#include <optional>

class FDBookmark;
class FDPage;
class PDFDocumentDelegate;
class PDFOutline;

// An extended attribute to write to the file after the next successful save.
struct FDXAttrItem
{
    QString name;
    QByteArray data;
};

class FDDocument : public PDFDocument
{
public:
    // Posted on the default centre with the document's view as sender (none when detached).
    static const QString DocumentAnnDidChangeNotification; // "PDFView_DocumentAnnDidChange"
    static const QString DocumentPageDidChangeNotification; // "PDFView_DocumentPageDidChange"
    static const QString URLDidChangeNotification; // "PDFView_URLDidChange"
    // Bookmark changes, with the document's view as sender and the user info "Index" (the place
    // in bookmarks()) and "Bookmark" (a std::shared_ptr<FDBookmark>).
    static const QString BookmarkDidAddNotification; // "PDFDocument_BookmarkDidAdd"
    static const QString BookmarkDidRemoveNotification; // "PDFDocument_BookmarkDidRemove"
    static const QString BookmarkDidChangeNotification; // "PDFDocument_BookmarkDidChange"
    // The label that marks the outline item holding the bookmarks, at index 0 of the root.
    static const QString BookmarksRootLabel; // "My Bookmarks"
    // Where older versions kept the bookmarks, and where the old bytes go once migrated.
    static const QString LegacyBookmarksAttribute; // "com.brimbook.bookmarks"
    static const QString MigratedBookmarksAttribute; // "com.brimbook.bookmarks.migrated"

    FDDocument();
    ~FDDocument() override;

    // An empty untitled document.
    bool init() override;
    // Not for use: a document is made with initWithURL(url, delegate). Stop the process.
    bool initWithURL(const QUrl &url) override;
    bool initWithData(const QByteArray &data) override;
    // Reads the file (false when it can't be read, see errorString()), or makes an empty document
    // for an empty URL; then remembers the URL, the delegate and the view the delegate names,
    // and loads the bookmarks.
    bool initWithURL(const QUrl &url, const std::shared_ptr<PDFDocumentDelegate> &delegate);
    // What a view does on taking over the document from a saving task: the delegate, the view,
    // and the bookmarks read again (the save had put them into the outline).
    void resetWith(const std::shared_ptr<PDFDocumentDelegate> &delegate);

    // The delegate the application gave, held weakly; asked for annotation classes. Pages are
    // always FDPage.
    void setDelegate(const std::shared_ptr<PDFDocumentDelegate> &delegate);
    std::shared_ptr<PDFDocumentDelegate> delegate() const;

    // Hand the document to the saving service; saveAs() first moves it to url (no reload).
    void save();
    void saveAs(const QUrl &url);

    QUrl fileURL() const; // any thread
    void setFileURL(const QUrl &url);
    // The view that shows the document now (an FDPDFView); null once detached.
    QObject *pdfView() const { return m_pdfView.data(); }
    void setPdfView(QObject *pdfView) { m_pdfView = pdfView; }

    std::optional<QList<FDXAttrItem>> xattrItemsToSave() const; // any thread
    void setXattrItemsToSave(const std::optional<QList<FDXAttrItem>> &items);

    // The state of the file at path when the document last read or wrote it; nothing when the
    // document has not seen that file. A save compares it with the file to find changes made
    // by other programs. Any thread.
    std::optional<FileIdentity> fileIdentity(const QString &path) const;
    void setFileIdentity(const QString &path, const std::optional<FileIdentity> &identity);

    // Writing either of the first two runs the write check, then posts its notification.
    int numberOfAnnotationChanges() const { return m_numberOfAnnotationChanges; }
    void setNumberOfAnnotationChanges(int count);
    int numberOfPageChanges() const { return m_numberOfPageChanges; }
    void setNumberOfPageChanges(int count);
    int numberOfOtherChanges() const { return m_numberOfOtherChanges; }
    void setNumberOfOtherChanges(int count) { m_numberOfOtherChanges = count; }
    int numberOfChanges() const;
    // 0 resets all three counters (annotation, then page, notifying). Any other value is only a
    // flag: the other counter becomes the current total, and the value itself is not stored.
    void setNumberOfChanges(int count);
    // Counts again, and shows, the changes of a save that did not write them.
    void restoreChanges(int count);

    QString title() const; // "Untitled" without a URL
    static QString digestTitleFrom(const QUrl &url); // "(empty)" for an empty URL
    bool isBigFile() const; // more than 1000 pages

    // Each counts one page change after the engine's operation.
    void insertPage(const std::shared_ptr<PDFPage> &page, int index) override;
    void removePageAtIndex(int index) override;
    void exchangePageAtIndex(int index, int otherIndex) override;

    // Bookmarks, ascending by page index as added; a load keeps the order of the file.
    const QList<std::shared_ptr<FDBookmark>> &bookmarks() const { return m_bookmarks; }
    void setBookmarks(const QList<std::shared_ptr<FDBookmark>> &bookmarks);
    // The first child of the outline root labelled exactly "My Bookmarks".
    bool isBookmarksRootExisting() const;
    // That item, made at index 0 (and the outline root with it) when there is none.
    std::shared_ptr<PDFOutline> bookmarksRoot();
    // Empties the list, migrates the legacy attribute, reads the bookmarks root of the outline
    // and takes the root out of the tree again.
    void loadBookmarks();
    // Appends the bookmarks kept in the legacy attribute, keeps its bytes under the migrated
    // name, and has the document save itself on the next main-queue turn when any were found.
    // Bytes that are not such a list stay in place for the next load.
    void loadLegacyBookmarks();
    // The saving service calls these around taking the bytes, so that the bookmarks are written
    // into the outline but the user never sees them there. Attaching makes the root even with
    // no bookmark, and first drops a root that an earlier attach left in the tree.
    void attachBookmarksToOutlineTree();
    void detachBookmarksFromOutlineTree();
    // Set by the saving service while a worker makes the bytes of this (closed) document from
    // its outline: a load in that time leaves the tree alone and detaches when the write ends.
    void setIsOutlineInUseBySave(bool inUse);

    // The first bookmark on a page with the same index, or null.
    std::shared_ptr<FDBookmark> bookmarkFor(const std::shared_ptr<PDFPage> &page) const;
    // Adds in page order; false, with nothing posted, when the page has a bookmark already.
    bool addBookmarkWith(const std::shared_ptr<FDPage> &page, const QString &title);
    // Each does nothing for a bookmark not in the list (by identity); each change counts one
    // page change.
    void removeBookmark(const std::shared_ptr<FDBookmark> &bookmark);
    void updateBookmark(const std::shared_ptr<FDBookmark> &bookmark, const QString &title);
    // Removes, as removeBookmark() does, each bookmark whose page is no longer in the document.
    // A page removal has this run on the next turn, so that a page moved within the document
    // keeps its bookmark and a deleted one loses it.
    void removeBookmarksOfRemovedPages();

private:
    class PageClassDelegate;

    void checkWritePermission();
    void postChange(const QString &name) const;
    void postBookmarkChange(
        const QString &name, qsizetype index, const std::shared_ptr<FDBookmark> &bookmark) const;

    std::shared_ptr<PageClassDelegate> m_pageClassDelegate;
    mutable QMutex m_sharedFieldsMutex; // fileURL and xattrItemsToSave cross to the saving queues
    QUrl m_fileURL;
    QPointer<QObject> m_pdfView;
    bool m_hasCheckedWritePermission = false;
    std::optional<QList<FDXAttrItem>> m_xattrItemsToSave;
    QString m_identityPath;
    std::optional<FileIdentity> m_fileIdentity;
    int m_numberOfAnnotationChanges = 0;
    int m_numberOfPageChanges = 0;
    int m_numberOfOtherChanges = 0;
    QList<std::shared_ptr<FDBookmark>> m_bookmarks;
    std::weak_ptr<PDFOutline> m_attachedRoot;
    bool m_isOutlineInUseBySave = false;
    bool m_isDetachPutOff = false;
    bool m_isBookmarkPurgeQueued = false;
};
