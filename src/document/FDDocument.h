#pragma once

// The application's document: a PDFDocument that knows its file, counts unsaved changes by kind,
// warns once when its file can't be written, and hands itself to the saving service. Every page
// it builds is an FDPage. Main thread only, except fileURL() and xattrItemsToSave(), which the
// saving queues read.

#include <kit/engine/PDFDocument.h>

#include <QList>
#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <memory>
#include <optional>

class PDFDocumentDelegate;

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

    FDDocument();
    ~FDDocument() override;

    // An empty untitled document.
    bool init() override;
    // Not for use: a document is made with initWithURL(url, delegate). Stop the process.
    bool initWithURL(const QUrl &url) override;
    bool initWithData(const QByteArray &data) override;
    // Reads the file (false when it can't be read, see errorString()), or makes an empty document
    // for an empty URL; then remembers the URL, the delegate and the view the delegate names.
    bool initWithURL(const QUrl &url, const std::shared_ptr<PDFDocumentDelegate> &delegate);
    // What a view does on taking over the document from a saving task.
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

    QString title() const; // "Untitled" without a URL
    static QString digestTitleFrom(const QUrl &url); // "(empty)" for an empty URL
    bool isBigFile() const; // more than 1000 pages

    // Each counts one page change after the engine's operation.
    void insertPage(const std::shared_ptr<PDFPage> &page, int index) override;
    void removePageAtIndex(int index) override;
    void exchangePageAtIndex(int index, int otherIndex) override;

    // The saving service calls these around taking the bytes, so that the bookmarks are written
    // into the outline but the user never sees them there. No bookmarks are kept yet.
    void attachBookmarksToOutlineTree();
    void detachBookmarksFromOutlineTree();

private:
    class PageClassDelegate;

    void checkWritePermission();
    void postChange(const QString &name) const;

    std::shared_ptr<PageClassDelegate> m_pageClassDelegate;
    mutable QMutex m_sharedFieldsMutex; // fileURL and xattrItemsToSave cross to the saving queues
    QUrl m_fileURL;
    QPointer<QObject> m_pdfView;
    bool m_hasCheckedWritePermission = false;
    std::optional<QList<FDXAttrItem>> m_xattrItemsToSave;
    int m_numberOfAnnotationChanges = 0;
    int m_numberOfPageChanges = 0;
    int m_numberOfOtherChanges = 0;
};
