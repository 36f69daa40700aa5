#pragma once

// A scrolling reader of a PDFDocument: page layout in four display modes, zoom, navigation with
// history, tiles rendered on worker threads, per-page overlay views, text selection, links and
// printing. Subclasses run their own gestures in the virtual event handlers and fall back to
// these. "View" coordinates are the viewport's logical pixels, y down; page space is the
// engine's (PDF user space, y up). Main thread only.

#include "PDFDocumentView.h"
#include "PDFHistory.h"
#include "PDFLayout.h"
#include "PDFTileCache.h"

#include <kit/engine/PDFDisplayBox.h>
#include <kit/engine/PageGeometry.h>

#include <QAbstractScrollArea>
#include <QColor>
#include <QDeadlineTimer>
#include <QPointer>
#include <QTimer>

#include <climits>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

class PDFAction;
class PDFDestination;
class PDFDocument;
class PDFPage;
class PDFPageRenderSource;
class PDFPageView;
class PDFPasswordPanel;
class PDFRenderScheduler;
class PDFSelection;
class PDFViewDelegate;
class QPrinter;
class QVariantAnimation;
struct PDFTileKey;

class PDFView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    // Posted on NotificationCenter::defaultCenter() with the view as sender.
    static const QString DocumentChangedNotification; // "PDFViewDocumentChangedNotification"
    static const QString PageChangedNotification; // "PDFViewPageChangedNotification"
    static const QString ScaleChangedNotification; // "PDFViewScaleChangedNotification"
    static const QString DisplayModeChangedNotification; // "PDFViewDisplayModeChangedNotification"
    static const QString DisplayBoxChangedNotification; // "PDFViewDisplayBoxChangedNotification"
    static const QString ChangedHistoryNotification; // "PDFViewChangedHistoryNotification"
    static const QString SelectionChangedNotification; // "PDFViewSelectionChangedNotification"

    enum DisplayMode {
        SinglePage = PDFLayout::SinglePage,
        SinglePageContinuous = PDFLayout::SinglePageContinuous,
        TwoUp = PDFLayout::TwoUp,
        TwoUpContinuous = PDFLayout::TwoUpContinuous,
    };
    // Bits of areaOfInterestForMouse.
    enum AreaOfInterest {
        NoArea = 0,
        PageArea = 1,
        TextArea = 2,
        LinkArea = 8,
    };

    explicit PDFView(QWidget *parent = nullptr);
    ~PDFView() override;

    std::shared_ptr<PDFDocument> document() const { return m_document; }
    // Shows the document from its first page, or nothing for null; posts the document-changed
    // notification.
    virtual void setDocument(const std::shared_ptr<PDFDocument> &document);
    // Not owned; the owner clears it before it goes away.
    void setDelegate(PDFViewDelegate *delegate) { m_delegate = delegate; }
    PDFViewDelegate *delegate() const { return m_delegate; }

    // Layout.
    int displayMode() const { return m_layout.displayMode(); }
    virtual void setDisplayMode(int mode);
    bool displaysPageBreaks() const { return m_layout.displaysPageBreaks(); }
    virtual void setDisplaysPageBreaks(bool breaks);
    bool displaysAsBook() const { return m_layout.displaysAsBook(); }
    virtual void setDisplaysAsBook(bool asBook);
    PDFDisplayBox displayBox() const { return m_displayBox; }
    virtual void setDisplayBox(PDFDisplayBox box);
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor &color);
    // Lays the pages out again after pages were added, removed or rotated.
    void layoutDocumentView();
    // A locked document shows a password field in place of its pages. Unlocking lays the pages
    // out, posts the document-changed notification again and calls documentDidUnlock, where
    // subclasses finish loading (PDFView+Password.cpp).
    bool unlockDocumentWithPassword(const QString &password);
    PDFPasswordPanel *passwordPanel() const;
    PDFDocumentView &documentView() { return m_documentView; }
    const PDFDocumentView &documentView() const { return m_documentView; }

    // Scale: view pixels per point.
    double scaleFactor() const { return m_scale; }
    virtual void setScaleFactor(double scale);
    // Zooms keeping the page point under viewPoint in place.
    void setScaleFactor(double scale, const QPointF &viewPoint);
    double minScaleFactor() const { return m_minScale; }
    double maxScaleFactor() const { return m_maxScale; }
    void setMinScaleFactor(double scale);
    void setMaxScaleFactor(double scale);
    // Fits the width of the pages to the view, also after every resize; a scale set by other
    // means ends it.
    bool autoScales() const { return m_autoScales; }
    void setAutoScales(bool autoScales);
    bool canZoomIn() const;
    bool canZoomOut() const;
    virtual void zoomIn();
    virtual void zoomOut();
    // The fixed zoom steps, ascending.
    static const std::vector<double> &zoomSteps();

    // Navigation.
    std::shared_ptr<PDFPage> currentPage() const;
    // The page and page point at the top left of the visible area, with the scale as zoom.
    std::shared_ptr<PDFDestination> currentDestination() const;
    virtual void goToPage(const std::shared_ptr<PDFPage> &page);
    virtual void goToRect(const QRectF &rect, const std::shared_ptr<PDFPage> &onPage);
    virtual void goToDestination(const std::shared_ptr<PDFDestination> &destination);
    virtual void goToSelection(const std::shared_ptr<PDFSelection> &selection);
    bool canGoToPreviousPage() const;
    bool canGoToNextPage() const;
    virtual void goToPreviousPage();
    virtual void goToNextPage();
    virtual void goToFirstPage();
    virtual void goToLastPage();
    bool canGoBack() const { return m_history.canGoBack(); }
    bool canGoForward() const { return m_history.canGoForward(); }
    virtual void goBack();
    virtual void goForward();
    // Laid-out pages that show in the view, in page order.
    std::vector<std::shared_ptr<PDFPage>> visiblePages() const;
    // The page under a view point; with nearest, the closest page even between or beside pages.
    std::shared_ptr<PDFPage> pageForPoint(const QPointF &point, bool nearest) const;
    int areaOfInterestForMouse(const QMouseEvent *event) const;
    int areaOfInterestForPoint(const QPointF &viewPoint) const;

    // View point or rect to and from a page's space.
    QPointF convertPointToPage(const QPointF &point, const std::shared_ptr<PDFPage> &page) const;
    QPointF convertPointFromPage(const QPointF &point, const std::shared_ptr<PDFPage> &page) const;
    QRectF convertRectToPage(const QRectF &rect, const std::shared_ptr<PDFPage> &page) const;
    QRectF convertRectFromPage(const QRectF &rect, const std::shared_ptr<PDFPage> &page) const;

    // Text selection.
    std::shared_ptr<PDFSelection> currentSelection() const { return m_selection; }
    void setCurrentSelection(const std::shared_ptr<PDFSelection> &selection, bool animate = false);
    void clearSelection();
    // Selects every page's text, which also becomes the primary selection.
    void selectAll();
    // Puts the selected text on the clipboard.
    void copy();

    // The page's annotations changed (added, removed, edited or hidden). Once per turn of the
    // event loop, a page whose engine drawing changed (its revision rose) is rendered again;
    // other pages, and changes the engine does not draw, cost no render.
    virtual void annotationsChangedOnPage(const std::shared_ptr<PDFPage> &page);
    // Runs a link's or outline's action: destinations jump with history, URLs open.
    virtual void performAction(const std::shared_ptr<PDFAction> &action);

    // The print dialog, then the pages the printer is asked for, written as a PDF that keeps
    // their text, vector graphics and fonts, with the annotations shown for printing; queued
    // through CUPS or saved for "Print to File". printInfo null: a new default printer.
    // autoRotate turns a page to fit paper of the other orientation, when a paper was chosen.
    void printWithInfo(QPrinter *printInfo, bool autoRotate);
    // What the dialog starts from: page range bounds, a suggested file name from the document's
    // and the first page's paper. A paper left as it is keeps every page at its own size.
    void preparePrintInfo(QPrinter &printer) const;
    // The printing without a dialog. False when nothing was printed: printErrorString() says why
    // (empty when the document does not allow printing).
    bool printToPrinter(QPrinter &printer, bool autoRotate);
    QString printErrorString() const;

    // The visible part of the laid-out pages is drawn from exact tiles only.
    bool isVisibleAreaRendered() const;
    // The page view over a laid-out page, null when it has none (far from view).
    QWidget *pageViewForPage(const std::shared_ptr<PDFPage> &page) const;
    // Work of the renderer, for tests and benchmarks.
    PDFRenderScheduler *renderScheduler() const { return m_scheduler; }
    PDFTileCache &tileCache() { return m_tiles; }

signals:
    // Every exact tile of the visible area is drawn (after a change of position, scale or
    // content).
    void visibleAreaRendered();

protected:
    // Asks for the visible area's tiles now rather than on the next turn of the event loop: a
    // window that has yet to paint for the first time has them rendering meanwhile.
    void requestTilesNow();
    // Draws one page into painter, whose coordinates are the view's, clipped to the page's rect
    // there. The default draws the rendered tiles; overrides may paint around a call to it.
    virtual void drawPage(const std::shared_ptr<PDFPage> &page, QPainter &painter);
    // Concatenates page space to the view's coordinates of the page onto the painter.
    void transformContextForPage(const std::shared_ptr<PDFPage> &page, QPainter &painter) const;
    // The action of the topmost link annotation under a page point, null without one.
    virtual std::shared_ptr<PDFAction> linkActionAtPoint(
        const std::shared_ptr<PDFPage> &page, const QPointF &pagePoint) const;
    // A page view was made over a laid-out page, or is about to go (far out of view, or a new
    // layout). Subclasses put their own widgets into it; the defaults tell the delegate.
    virtual void didAddPageView(QWidget *pageView, const std::shared_ptr<PDFPage> &page, int index);
    virtual void willRemovePageView(
        QWidget *pageView, const std::shared_ptr<PDFPage> &page, int index);
    // While true, changes of the horizontal scroll position are refused.
    virtual bool vetoesHorizontalScroll() const { return false; }

    // Event handlers, all overridable; the defaults scroll, zoom, select text and follow links.
    bool viewportEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

    virtual void documentDidUnlock() { }

private:
    friend class PDFDocumentView;
    struct RenderState
    {
        std::shared_ptr<PDFPageRenderSource> source;
        quint64 pageRevision = 0;
        bool failed = false;
        quint64 failedRevision = 0;
    };

    // Layout and geometry (PDFView.cpp).
    int indexOfPage(const PDFPage *page) const;
    // Only among the pages fetched, without touching the page: for keys that may outlive it.
    int fetchedIndexOfPage(const void *page) const;
    std::shared_ptr<PDFPage> pageAt(int index) const;
    void reloadPageSizes();
    void updatePasswordPanel();
    // Page sizes are read lazily: the first pages at once, the rest a few milliseconds per turn
    // of the event loop, and any page at once when it is needed. Reads up to count, but past
    // atLeast only until the deadline.
    void loadPageSizes(int count, int atLeast = INT_MAX,
        QDeadlineTimer deadline = QDeadlineTimer(QDeadlineTimer::Forever));
    // How many pages, from the first, fill the view and a screen below it at the current scale:
    // the sizes a first screen needs. At least one page, at most InitialPageSizes.
    int firstScreenPageCount() const;
    void loadMorePageSizes();
    void ensurePageSizes(int index);
    // Reads sizes up to count (see loadPageSizes) and lays out again, the page under the reader
    // held in place.
    void refinePageSizes(int count, int atLeast = INT_MAX,
        QDeadlineTimer deadline = QDeadlineTimer(QDeadlineTimer::Forever));
    // Size of a page as seen (points) in the display box.
    QSizeF printPageSize(int index) const;
    void ensureVisiblePageSizes();
    void relayout();
    // The document announced a change of its pages: one layout on the next turn, however many.
    void documentPagesDidChange();
    void updateScrollBars();
    QPoint documentOrigin() const; // canvas origin in view coordinates
    QRect pageRectInView(int index) const;
    QRectF pageRectInDocument(int index) const;
    QPointF pagePointForView(int index, const QPointF &viewPoint) const;
    QPointF viewPointForPage(int index, const QPointF &pagePoint) const;
    void scrollDocumentTo(const QPointF &documentPoint);
    void showPageRow(int index);
    void goToPageIndex(int index);
    void goToDocumentPoint(int index, const QPointF &pagePoint, bool keepX, bool keepY);
    void applyAutoScale();
    void setScaleInternal(double scale, const QPointF &viewPoint, bool fromAutoScale);
    void noteViewChanged();
    void recordJump();
    void goToHistoryEntry(const PDFHistory::Entry &entry);
    PDFHistory::Entry currentHistoryEntry() const;

    // Drawing and rendering (PDFView+Drawing.cpp).
    double devicePixelsPerPoint() const;
    quint64 tileRevision(const PDFPage *page) const;
    RenderState &renderState(const std::shared_ptr<PDFPage> &page);
    QSize pagePixels(int index, double devicePixelsPerPoint) const;
    void drawPageFrame(QPainter &painter, const QRect &rect) const;
    void drawTiles(int index, QPainter &painter);
    void drawSelection(int index, QPainter &painter) const;
    void drawErrorMark(QPainter &painter, const QRect &pageRect) const;
    void scheduleRendering();
    void updateRenderRequests();
    // Has the pages a few screens on loaded in the background, before they come near enough
    // to be drawn.
    void loadPagesAhead(const QRectF &visible);
    void flushChangedPages();
    void tileFinished(const PDFTileKey &key, const QImage &image);
    void tileTopDrawn(const PDFTileKey &key, const QImage &image);
    void pageFailed(const void *page, quint64 revision);
    bool visibleTilesComplete(std::vector<const PDFPage *> *completePages = nullptr) const;
    void noteRenderProgress();
    void releaseIfGrown();
    void releaseCachedContent();
    void updatePageViews();
    void removeAllPageViews();

    // Input (PDFView+Event.cpp).
    bool scrollByKey(int dy, bool pageStep);
    void beginSelection(int index, const QPointF &pagePoint, bool extend);
    void extendSelectionTo(const QPointF &viewPoint);
    // The selection a gesture of the person made becomes the primary selection, for a middle
    // click elsewhere; a selection made by the program (a search hit) does not.
    void offerSelectionForMiddleClick() const;
    void activateLink(const std::shared_ptr<PDFAction> &action);
    void continueAutoscroll();
    void updateCursor(const QPointF &viewPoint, Qt::KeyboardModifiers modifiers);

    std::shared_ptr<PDFDocument> m_document;
    PDFViewDelegate *m_delegate = nullptr;
    // As laid out; null until first asked for, so that opening reads only the pages it shows.
    mutable std::vector<std::shared_ptr<PDFPage>> m_pages;
    std::vector<PageGeometry> m_geometries; // of m_pages, in the display box
    int m_sizesKnown = 0; // m_geometries before this index are read; the rest are estimates
    QTimer m_sizeTimer;
    bool m_sizesWaitForPaint = false; // reading sizes goes on once the visible area is sharp
    static constexpr int InitialPageSizes = 24; // the most read before the first screen

    static constexpr int PageSizesPerTurn = 200;
    // A page whose tree node lies in an object stream not read yet costs a parse of the stream:
    // a turn of the event loop reads sizes for this long at most.
    static constexpr int PageSizeMillisecondsPerTurn = 4;
    static constexpr int PageSizeRetryMilliseconds = 4; // when no page was ready
    mutable std::unordered_map<const PDFPage *, int> m_pageIndexes; // of the pages fetched
    PDFLayout m_layout;
    PDFDocumentView m_documentView { *this };
    PDFDisplayBox m_displayBox = PDFDisplayBox::CropBox;
    QString m_printError;
    QColor m_backgroundColor { 128, 128, 128 };
    double m_scale = 1.0;
    double m_minScale = 0.1;
    double m_maxScale = 10.0;
    bool m_autoScales = false;
    int m_postedPage = -1;
    int m_currentHint = -1; // wins a tie for the current page: the page last current or gone to
    PDFHistory m_history;

    PDFRenderScheduler *m_scheduler = nullptr;
    PDFTileCache m_tiles;
    std::unordered_map<const PDFPage *, RenderState> m_renderStates;
    quint64 m_epoch = 0; // rises with every new document or display box
    QTimer m_renderTimer;
    // The pages last asked to be loaded ahead of the reader.
    std::vector<const PDFPage *> m_pagesLoadingAhead;
    // Pages whose sources were let go since the engine last gave back their memory.
    int m_pagesLeftBehind = 0;
    static constexpr int ReleaseAfterPages = 16;
    // What the engine may hold beyond its last release: pages that embed fonts of their own add
    // a megabyte or two each, which MuPDF's store, counting a font by its descriptor, never sees.
    static constexpr qint64 ReleaseAfterBytes = 4 << 20;
    // Rendered tiles kept, in screens of pixels, and at least twice what the pages around the
    // view need: more would only grow memory with the pages passed.
    static constexpr qint64 TileBudgetScreens = 8;
    static constexpr qint64 MinimumTileBudget = 4LL * 1024 * 1024;
    qint64 m_screenTileBudget = MinimumTileBudget;
    QTimer m_releaseTimer; // asks again while the last release still runs
    std::vector<std::shared_ptr<PDFPage>> m_changedPages; // reported this turn
    QTimer m_changedPagesTimer;
    bool m_visibleComplete = false;
    // A new document's first screen is not drawn yet: pages out of view wait to be loaded, and
    // some did.
    bool m_firstScreenPending = false;
    bool m_pagesAheadWaiting = false;
    mutable bool m_relayoutQueued = false; // the document's page count changed under the view
    // Pages were inserted, removed, moved or turned since the last layout: until the layout that
    // is queued for the next turn, pages and indexes are asked of the document itself.
    bool m_pagesStale = false;
    QObject *m_documentObserver = nullptr;
    std::map<int, QPointer<PDFPageView>> m_pageViews;

    std::shared_ptr<PDFSelection> m_selection;
    std::weak_ptr<PDFPage> m_selectionAnchorPage;
    QPointF m_selectionAnchorPoint;
    bool m_selecting = false;
    quint64 m_lastDoubleClickTime = 0;
    QPointF m_lastDoubleClickPoint;
    std::shared_ptr<PDFAction> m_pressedLink;
    QPointF m_pressPoint;
    QPointF m_dragPoint;
    QTimer m_autoscrollTimer;
    QPointer<QVariantAnimation> m_selectionAnimation;
    QPointer<PDFPasswordPanel> m_passwordPanel;
    double m_selectionEmphasis = 0;
    bool m_revertingScroll = false;
};
