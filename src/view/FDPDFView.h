#pragma once

// The application's document view: loads its document once it is in a shown window (taking a
// document that is still being saved back from the saving service), remembers where the reader
// was in an extended attribute of the file, keeps a fit-to-width or fit-to-page zoom alive across
// resizes, tints pages under the sunset and night themes, and hands a changed document to the
// saving service when it lets go of it. Main thread only.

#include "PDFViewScaleMode.h"
#include "XPDFView.h"
#include "editors/FDAnnotationEditor.h"

#include <kit/engine/PDFDocumentDelegate.h>

#include <QColor>
#include <QPointer>
#include <QUrl>

#include <functional>
#include <map>
#include <memory>
#include <optional>

class BezierPath;
class FDDocument;
class FDDocumentDelegate;
class PDFOutline;
class QAction;
class QMenu;

class FDPDFView : public XPDFView, public FDAnnotationEditorDelegate
{
    Q_OBJECT

public:
    // Posted with the view as sender after a load was asked for.
    static const QString URLDidChangeNotification; // "PDFView_URLDidChange"
    static const QString PageNavigatorVisibilityDidChangeNotification;
    // A file asked for could not be read as a document; user info "URL", the file's URL.
    static const QString DocumentDidFailToOpenNotification;
    // The pointer entered or left the corner of a page where a click toggles its bookmark; user
    // info "Page" (the page now under the pointer there, or a null page) and "OldPage".
    static const QString BookmarkHotAreaDidChangeNotification;
    // The name of the file attribute that holds the reading position.
    static const QString LastPositionAttributeName; // "com.Scrollwick.PDFView.LastPosition"
    // How long screen updates pause around a jump under the tinted themes, in seconds.
    static constexpr double navigationPause = 0.0835;
    // Room left below a page in fit-page mode while page breaks show, in points.
    static constexpr double pageBreakAllowance = 8.0;
    // Longest wait for a file being read ahead before it is opened anyway, in seconds.
    static constexpr double readAheadLongestWait = 1.0;

    explicit FDPDFView(QWidget *parent = nullptr);
    ~FDPDFView() override;

    // Asks for the document at url (empty: a new untitled document); it is read once the view
    // shows in a window.
    void loadDocument(const QUrl &url);
    bool isLoading() const { return m_isLoading; }
    QUrl pendingURL() const { return m_pendingURL; }
    bool pendingNewDocument() const { return m_pendingNewDocument; }
    std::shared_ptr<FDDocument> fdDocument() const;

    // The file's name without extension, "Untitled" for a new document, "(empty)" for nothing.
    QString title() const;
    // The document's URL, else the one waiting to be read.
    QUrl fileURL() const;

    // Letting go of a document commits editing, stores the reading position with it, detaches
    // it, and hands it to the saving service when it has changes.
    void setDocument(const std::shared_ptr<PDFDocument> &document) override;

    // The reading position as the pending file attribute of the document.
    void saveStatus();
    bool hasSavedStatus() const;
    // Display mode, zoom rule or factor, and position from the file attribute; anything
    // ill-formed is ignored.
    void restoreStatus();

    PDFViewScaleMode scaleMode() const { return m_scaleMode; }
    // Sets the rule and applies it at once.
    void setScaleMode(PDFViewScaleMode mode);
    double scaleFactorByMode() const { return m_scaleFactorByMode; }
    void zoomIn() override;
    void zoomOut() override;
    void zoomActualSize();

    bool isPageNavigatorHidden() const { return m_isPageNavigatorHidden; }
    void setIsPageNavigatorHidden(bool hidden);

    // Jumps; under the sunset and night themes the screen pauses briefly around them.
    void goToPage(const std::shared_ptr<PDFPage> &page) override;
    void goToRect(const QRectF &rect, const std::shared_ptr<PDFPage> &onPage) override;
    void goToDestination(const std::shared_ptr<PDFDestination> &destination) override;
    void goToSelection(const std::shared_ptr<PDFSelection> &selection) override;

    // A link into another PDF file opens it in a new tab of this window, at the link's page;
    // other files open on the desktop. Every other action is the kit's.
    void performAction(const std::shared_ptr<PDFAction> &action) override;

    // The outline item a page belongs to: the last outlined page before or at it, from a map
    // built on demand. Pages before the first and from the last outlined page on have none.
    std::shared_ptr<PDFOutline> closestOutlineItemFor(const std::shared_ptr<PDFPage> &page);
    // The outline changed: the map is built again at the next lookup.
    void noteOutlineChanged() { m_mapPagesToOutlines.reset(); }

    // One more annotation change of the document for every call, after the kit's repaint.
    void annotationsChangedOnPage(const std::shared_ptr<PDFPage> &page) override;
    // An open text editor is finished before the selection moves.
    void setSelectedAnn(const std::shared_ptr<PDFAnnotation> &annotation) override;

    // Editing commands (FDPDFView+AnnEditing.cpp). "Highlight", "Underline" or "StrikeOut" over
    // the text selection; null for another type or without a selection.
    std::shared_ptr<PDFAnnotation> createAnnMarkupWithType(const QString &type) override;
    // Each marks up the selected text as one undo step; false when nothing was made.
    bool onAddHighlight() override;
    bool onAddUnderline() override;
    bool onAddStrikeout() override;
    // The "delete:" command: removes the selected annotation; nothing without one.
    void delete_();
    // The "selectAll:" command: all text, in the text tool only.
    void selectAllCommand();

    // Commands at a place (FDPDFView+Pasteboard.cpp, FDPDFView+ContextMenu.cpp). The place is the
    // page under the pointer, or under the point of the click that opened the context menu, and
    // the point on it; off the pages, the middle of the current page. Asking for it, as every
    // validation of such a command does, starts a new paste staircase if the pointer moved.
    struct CommandPlace
    {
        std::shared_ptr<PDFPage> page;
        QPointF point; // page space
    };
    CommandPlace placeOfCommand(const std::optional<QPointF> &clickPoint = std::nullopt) const;
    // The pointer in view space, wherever it is.
    QPointF mouseLocation() const;
    // The annotation pasteboard types a paste reads, in the order it tries them.
    static QStringList pasteboardAnnTypes();
    // A markup goes as its text only; another kind as its pasteboard form (a note or a free
    // text with its text beside it, for other programs).
    void copyToPasteboard(const std::shared_ptr<PDFAnnotation> &annotation);
    // The selected annotation, else the selected text, else the area selection.
    void copyCommand();
    void cutCommand();
    // The first annotation the pasteboard holds, with its top-left corner at the place, 10 points
    // further right and down for each paste since the pointer last moved; else its text as a
    // free text box.
    void pasteCommand(const std::optional<QPointF> &clickPoint = std::nullopt);
    bool canPaste() const;
    // The area selection as PDF (only when the document allows printing) and as TIFF and PNG
    // images, in the area tool; false when nothing was written.
    bool writeSelectionToPasteboard(const QStringList &types);
    void onAddFreeText(const std::optional<QPointF> &clickPoint = std::nullopt);
    void onAddText(const std::optional<QPointF> &clickPoint = std::nullopt);
    void onAddBookmark(const std::optional<QPointF> &clickPoint = std::nullopt);
    // The context menu for a click at a view point; the caller owns it. Right-clicking an
    // annotation selects it. Each item is named by its command ("paste:") and carries its point
    // or URL as data.
    QMenu *menuForEvent(const QPointF &viewPoint);
    bool validateMenuAction(const QAction &action) const;
    void performMenuAction(const QAction &action);
    // The Edit menu's Cut, Copy, Paste and Delete, and Select All.
    bool respondsToEditCommand(const QString &command) const override;
    bool validateEditCommand(const QString &command) const override;
    void performEditCommand(const QString &command) override;

    // Text editors (FDPDFView+Editors.cpp): the one open editor of a free text or a note.
    FDAnnotationEditor *annEditor() const { return m_annEditor; }
    void editSelectedAnnotation() override;
    void commitEditing() override;
    void discardEditing() override;
    void annEditorWillCloseWithEditor(FDAnnotationEditor *editor) override;
    // Tool cursors: an arrow outside the annotation tools; a crosshair for the shapes and ink, an
    // I-beam for the markup tools, an arrow for the others. Made once per tool.
    QCursor cursorForToolMode(int mode) const override;

    // Bookmarks by the ribbon (FDPDFView+Bookmarks.cpp). The ribbon and the corner that reacts
    // to the pointer, in page space, at the top right of the page's display box.
    BezierPath bookmarkIndicatorPathWithPage(const std::shared_ptr<PDFPage> &page) const;
    QRectF bookmarkIndicatorHotAreaWithPage(const std::shared_ptr<PDFPage> &page) const;
    // Whether the pointer is in that corner of the page now (the ribbon's preview shows).
    bool isMouseInBookmarkHotArea(const std::shared_ptr<PDFPage> &page) const;
    // Adds a bookmark for a page that has text, titled by the selected text, else by the start
    // of the page's text, else "Untitled". False when nothing was added.
    bool bookmarkPage(const std::shared_ptr<PDFPage> &page);
    // A press on the ribbon toggles the page's bookmark; true when it was on the ribbon.
    bool hitBookmarkIndicatorWithPoint(
        QPointF point, const std::shared_ptr<PDFPage> &page) override;

    // The colour a page takes under the current theme; invalid when pages keep their own.
    static QColor pageTintColor();

    // The class of the application for an annotation subtype: the three markup types make an
    // FDAnnotationMarkup, "Ink" an FDAnnotationInk, and so on for line, circle, square, free text
    // and note. Every other subtype, "Stamp" among them, keeps the engine's class. Documents read
    // through this view's delegate get their annotations this way. Never empty.
    static PDFAnnotationFactory classForAnnotationClass(const QString &type);
    // The class a paste of an annotation pasteboard type makes ("Folidoc.Pasteboard.Annotation.
    // Ink" the same as "Ink"); empty for a type that is not one of those.
    static PDFAnnotationFactory classForPasteboardType(const QString &pasteboardType);

protected:
    // Every page view gets its overlay, in front (QKOverlayView), before the delegate hears.
    void didAddPageView(
        QWidget *pageView, const std::shared_ptr<PDFPage> &page, int index) override;
    void drawPage(const std::shared_ptr<PDFPage> &page, QPainter &painter) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void documentDidUnlock() override;
    void mouseMoveEvent(QMouseEvent *event) override;
    bool viewportEvent(QEvent *event) override;

private:
    class DocumentDelegate;

    void runLoadStep();
    // The load's steps after the document is readable: the page asked for by the URL's
    // fragment (-1 for none), the scale rule and the saved reading position.
    void finishLoading(int askedPage);
    // Adds the file to the recent documents once the view shows it sharp, or after a second,
    // another load or the view's end at the latest: writing those lists reads the type
    // database and syncs two files, which the first paint need not wait for.
    void noteRecentAfterFirstPaint(const QUrl &url);
    void notePendingRecent();
    void applyScaleMode();
    void fitWidth();
    void fitPage();
    QSizeF currentPageSize() const;
    int pagesAcross() const;
    void onScaleChanged();
    void onThemeChanged();
    void navigate(const std::function<void()> &jump);
    void updateBookmarkHotArea(const std::shared_ptr<PDFPage> &page);

    std::shared_ptr<DocumentDelegate> m_documentDelegate;
    bool m_isLoading = false;
    // The first showing of the window put the read on the next turn of the event loop.
    bool m_loadQueued = false;
    bool m_waitedForReadAhead = false; // a file read ahead is waited for once
    QUrl m_unnotedRecent; // opened, not yet in the recent documents
    QUrl m_pendingURL;
    bool m_pendingNewDocument = false;
    int m_pageAskedWhileLocked = -1;
    bool m_isPageNavigatorHidden = true;
    PDFViewScaleMode m_scaleMode = PDFViewScaleMode::none;
    double m_scaleFactorByMode = 0;
    int m_updatePauses = 0;
    mutable QPointF m_lastPasteMouseLocation;
    QPointer<FDAnnotationEditor> m_annEditor;
    // The page whose ribbon corner the pointer is in.
    std::weak_ptr<PDFPage> m_bookmarkHotAreaPage;
    // Page index to its first outline item in reading order; the keys are kept ascending.
    std::optional<std::map<int, std::shared_ptr<PDFOutline>>> m_mapPagesToOutlines;
};
