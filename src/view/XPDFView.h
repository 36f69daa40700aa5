#pragma once

// The annotation-editing layer over the kit's reading view: tool, selected annotation, area
// selection and ink stroke; every change of a page's annotations, undoable, repainted, counted
// and announced alike (+Annotation); the pointer and key gestures (+Event and neighbours).

#include "PDFToolMode.h"

#include <kit/base/UndoManager.h>
#include <kit/engine/PDFPage.h>
#include <kit/pdfview/PDFView.h>
#include <kit/tabs/EditCommandResponder.h>

#include <QCursor>
#include <QPointer>
#include <QRectF>
#include <QString>
#include <QVariantMap>

#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class BezierPath;
class PDFAnnotation;
class PDFDocument;
class PDFViewDelegate2;
struct XPDFViewGesture;

class XPDFView : public PDFView, public EditCommandResponder
{
    Q_OBJECT

public:
    // Posted on the default centre with the view as sender.
    static const QString ToolModeDidChangeNotification; // "kPDFViewToolModeDidChangeNotification"
    // User info "OldPage" and "Page": the pages of the old and the new annotation, or null pages.
    static const QString SelectedAnnotationDidChangeNotification;
    // User info "Annotation" and "Page": an annotation joined or left a page, or one of its
    // observed properties changed.
    static const QString AnnotationDidAddNotification; // "kPDFViewAnnotationDidAddNotification"
    static const QString AnnotationDidRemoveNotification;
    static const QString AnnotationDidChangeNotification;
    static const QString ContentSelectionDidChangeNotification; // the area selection, no user info
    static const QString PendingAnnInkDidChangeNotification; // user info "Page"
    // The undo action names, shown in the Edit menu.
    static const QString AddNoteActionName; // "Add Note"
    static const QString DeleteAnnotationActionName; // "Delete Annotation"
    static const QString EditNoteActionName; // "Edit Note"
    static const QString RotatePageActionName; // "Rotate Page"

    // The first old value of each observed key path of each annotation edited since the first
    // property edit in the view's life, by annotation identity; an invalid value is "no value".
    struct OldProperties
    {
        std::shared_ptr<PDFAnnotation> annotation;
        QVariantMap values;
    };
    using AnnotationPropertyMap = std::map<const PDFAnnotation *, OldProperties>;
    // The index of no page (the area selection has none).
    static constexpr qint64 NotFound = std::numeric_limits<qint64>::max();

    explicit XPDFView(QWidget *parent = nullptr);
    ~XPDFView() override;

    // Views alive now; each view's running number, from 1.
    static qint64 numberOfInstances();
    quint64 instanceId() const { return m_instanceId; }

    // The ten tools with an annotation type ("Highlight", "Ink"...), both ways.
    static PDFToolMode toolModeForType(const QString &type); // PDFToolModeNone when unknown
    static QString annTypeForToolMode(int mode); // null when the mode has none
    static bool isAnnToolMode(int mode) { return mode > 99; }
    static bool isAnnMarkupToolMode(int mode) { return mode >= 101 && mode <= 103; }

    // The owner's tool; text selection without an owner.
    PDFToolMode toolMode() const;
    bool isAnnToolMode() const { return isAnnToolMode(toolMode()); }
    bool isAnnMarkupToolMode() const { return isAnnMarkupToolMode(toolMode()); }
    // Not owned; the owner clears it before it goes away.
    PDFViewDelegate2 *delegate2() const { return m_delegate2; }
    void setDelegate2(PDFViewDelegate2 *delegate) { m_delegate2 = delegate; }

    qint64 viewMode() const { return m_viewMode; }
    void setViewMode(qint64 mode) { m_viewMode = mode; }

    // The one selected annotation, held weakly: one removed by other means drops out by itself.
    // A repeat or an invalid annotation (a link, a popup) changes nothing; otherwise the text
    // selection goes, the new annotation is observed for undo and the change is posted.
    std::shared_ptr<PDFAnnotation> selectedAnn() const { return m_selectedAnn.lock(); }
    virtual void setSelectedAnn(const std::shared_ptr<PDFAnnotation> &annotation);

    // The window's undo manager, not owned. The view's entries leave it when the view shows
    // another document or dies, so an undo never reaches a document the view let go.
    UndoManager *undoManager() const { return m_undoManager.data(); }
    void setUndoManager(UndoManager *undoManager);

    // Each change is one undo step of the current event, repaints, counts one annotation change
    // per page touched (annotationsChangedOnPage) and posts its notification. Adding stamps the
    // author and date and selects the annotation, except a markup, which uses up the text
    // selection instead. Null arguments do nothing.
    void addAnnotation(
        const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page);
    void removeAnnotation(const std::shared_ptr<PDFAnnotation> &annotation);
    // To another page, keeping the selection: a remove, then an add.
    void moveAnnotation(
        const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page);
    // Makes and adds an annotation of the application's class for the type: the markup types
    // from the text selection (page and bounds ignored, null without selected characters), "Ink"
    // from the pending stroke, the shapes at bounds, a free text or note at bounds unless an
    // editor is open. Null, with nothing posted, for anything else.
    std::shared_ptr<PDFAnnotation> addAnnotationWithType(
        const QString &type, std::shared_ptr<PDFPage> page, QRectF bounds);
    // A free text of the text at origin (its top-left corner), a third of the page's width wide
    // and as high as the text wraps there, moved one step further down the paste staircase.
    // Null without text or page, or while a text is being edited.
    std::shared_ptr<PDFAnnotation> addFreeTextWithContents(
        const QString &text, const std::shared_ptr<PDFPage> &page, const QPointF &origin);
    // Pastes in a row at one place; the owner resets it when the pointer moves.
    qint64 pasteCounter() const { return m_pasteCounter; }
    void setPasteCounter(qint64 counter) const { m_pasteCounter = counter; }

    // The undo of property edits: every annotation of the map goes back to its recorded values.
    void setAnnotationProperties(const std::shared_ptr<AnnotationPropertyMap> &map);
    // Rotates a page by a multiple of 90 degrees, undoably.
    void rotatePageAtIndex(int index, int degrees);

    // Property edits of observed annotations (the selected one) become undoable changes.
    // Observing an empty list is a programming error.
    void startObservingAnnotations(const std::vector<std::shared_ptr<PDFAnnotation>> &annotations);
    void stopObservingAnnotations(const std::vector<std::shared_ptr<PDFAnnotation>> &annotations);

    // The markup of the type over the text selection; this layer makes none.
    virtual std::shared_ptr<PDFAnnotation> createAnnMarkupWithType(const QString &type)
    {
        Q_UNUSED(type);
        return nullptr;
    }
    // Opens the text editor of the selected note or free text; this layer has none.
    virtual void editSelectedAnnotation() { }

    // Repaints a page-space rect with room around it, or an annotation's display rect (with its
    // handles when selected). Nothing is rendered again.
    void setNeedsDisplayInRect(const QRectF &rect, const std::shared_ptr<PDFPage> &page);
    void setNeedsDisplayForAnnotation(
        const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page);
    void setNeedsDisplayForAnnotation(const std::shared_ptr<PDFAnnotation> &annotation);
    // Origin of the page's box minus the origin of its media box; notes are stored against the
    // media box.
    static QPointF offsetBasedOnMediaBoxInPage(
        const std::shared_ptr<PDFPage> &page, PDFDisplayBox box);

    // Enabled state of the edit commands this view performs ("delete:", "selectAll:",
    // "deselectAll:"); false for others.
    virtual bool validateMenuItem(const QString &action) const;

    // The window's edit commands that reach the view: "copy:" copies the selected text,
    // "selectAll:" selects the text of the document, "delete:" removes the selected annotation.
    bool respondsToEditCommand(const QString &command) const override;
    bool validateEditCommand(const QString &command) const override;
    void performEditCommand(const QString &command) override;

    // The ink stroke being drawn, in page space, and the page it began on; null while none is.
    // The path continues in the numbers of the page under the pointer once it leaves its own
    // page. Whoever grows the stroke posts PendingAnnInkDidChangeNotification with "Page".
    std::shared_ptr<BezierPath> pendingInkPath() const { return m_pendingInkPath; }
    std::shared_ptr<PDFPage> pendingInkPage() const { return m_pendingInkPage.lock(); }

    // The area selection, answered only in the area-selection tool: in any other tool the rect
    // reads empty and the setters do nothing, while what is stored stays until the next document.
    QRectF currentSelectionRect() const;
    void setCurrentSelectionRect(const QRectF &rect);
    std::shared_ptr<PDFPage> currentSelectionPage() const;
    void setCurrentSelectionPage(const std::shared_ptr<PDFPage> &page);

    // While frozen, the horizontal scroll position stays where it is (a bar above the view is
    // shown or hidden meanwhile).
    bool isClipViewFrozen() const { return m_isClipViewFrozen; }
    void setIsClipViewFrozen(bool frozen) { m_isClipViewFrozen = frozen; }

    // Fills in missing annotation colours, forgets the selections and this view's undo entries,
    // then shows the document.
    void setDocument(const std::shared_ptr<PDFDocument> &document) override;
    // A change of layout never moves the reader; single-page modes show page breaks, two-up
    // modes don't.
    void setDisplayMode(int mode) override;
    void setDisplayBox(PDFDisplayBox box) override;
    void setDisplaysAsBook(bool asBook) override;

    // Places of the annotation editing: the text editors finish or drop their edit, and the
    // markup commands make an annotation from the text selection. This layer has no editor and
    // makes no markup; each markup command answers whether it made one.
    virtual void commitEditing() { }
    virtual void discardEditing() { }
    virtual bool onAddHighlight() { return false; }
    virtual bool onAddUnderline() { return false; }
    virtual bool onAddStrikeout() { return false; }

    // A copy of the document read from its bytes, whose annotations all show and print, or
    // none do. The live document and its view are never touched. Null without bytes.
    std::shared_ptr<PDFDocument> printCopy(bool withAnnotations) const;
    // Prints printCopy through the print dialog, as a PDF that keeps the pages' content; the
    // suggested file name is the document's.
    void printWithAnnotations(bool withAnnotations);

    // The cursors of the design, by name. One place maps them to what the desktop shows.
    enum class DesignCursor {
        Arrow,
        IBeam,
        PointingHand,
        OpenHand,
        ClosedHand,
        Crosshair,
        ResizeLeftRight,
        ResizeUpDown,
        ResizeDiagonal45, // bottom-left to top-right
        ResizeDiagonal135, // top-left to bottom-right
        ZoomIn,
        ZoomOut,
    };
    static QCursor cursorNamed(DesignCursor name);
    // The cursor of a resize handle (1 to 12) on a page turned by rotation degrees; none for
    // other handles.
    static std::optional<QCursor> cursorForResizeHandle(int handle, int rotation);
    // The handle of a rect (the area selection) under a page point, within margin of it, corners
    // before sides; 0 for none.
    static int handleForRectAtPoint(const QRectF &rect, QPointF point, double margin);
    // The cursor of an annotation tool; the subclass supplies it.
    virtual QCursor cursorForToolMode(int mode) const;
    // The cursor for the pointer at a view point with the modifiers held; none where the kit's
    // own cursor (I-beam over text, arrow, hand over links) is the right one.
    std::optional<QCursor> getCursorForEvent(QPointF viewPoint, Qt::KeyboardModifiers modifiers);
    // Shows the cursor for where the pointer is now.
    void doUpdateCursor();
    // A gesture's cursor, over whatever the pointer would show; pops return to the one beneath.
    // The stack is the view's own: nothing process-wide is overridden.
    void pushCursor(const QCursor &cursor);
    void popCursor();
    int cursorStackDepth() const { return int(m_cursorStack.size()); }

    // A press, drag or stroke is in progress (between a press and its release).
    bool isTrackingGesture() const;
    // Ends the gesture in progress as a release where the pointer was last seen would: used when
    // no release will come (focus or window lost, a popup or dialog opened, the grab lost).
    void endGesture();

    // Moves the selected annotation by amount for an arrow key (Qt::Key_Up...), up meaning up on
    // the screen whatever the page's rotation, within the page's display box.
    void moveSelectedAnnotationForKey(int key, double amount);
    // setBounds on the selected annotation.
    void setSelectedAnnBounds(const QRectF &bounds);
    // Toggles the bookmark of the page when the page point is on its ribbon; true when it was.
    // This layer knows no bookmarks.
    virtual bool hitBookmarkIndicatorWithPoint(QPointF point, const std::shared_ptr<PDFPage> &page)
    {
        Q_UNUSED(point);
        Q_UNUSED(page);
        return false;
    }

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    bool vetoesHorizontalScroll() const override { return m_isClipViewFrozen; }

    QRectF m_selectionRect; // the area selection in page space; empty for none
    qint64 m_selectionPageIndex = NotFound;
    // The ink stroke being drawn in page space, and its page; null while none is drawn.
    std::shared_ptr<BezierPath> m_pendingInkPath;
    std::weak_ptr<PDFPage> m_pendingInkPage;

private:
    // Gestures (XPDFView+Event.cpp and neighbours).
    void beginPress(QMouseEvent *event, int clickCount);
    void resolvePendingPress(bool nextIsDrag);
    void continueAfterHit(bool hit);
    bool hitAnnotationBegin();
    bool hitAnnotationEnd(bool nextIsDrag);
    void handToPlatform();
    void startSwallowing(bool editAtEnd);
    void gestureMove(QMouseEvent *event);
    void gestureRelease(QMouseEvent *event);
    void finishGesture(bool released);
    void startDragToScroll();
    void dragToScrollTo(QPointF globalPoint);
    void startSelectArea();
    void selectAreaTo(QPointF viewPoint, Qt::KeyboardModifiers modifiers);
    void endSelectArea();
    void eraseAt(QPointF viewPoint);
    void newPendingInkPath();
    void extendPendingInkPath(QPointF viewPoint);
    void endPendingInkPath(QPointF viewPoint);
    void startDragAnnotation();
    void dragAnnotationStep(bool fromPointer);
    bool dragAnnotationStillValid() const;
    void doMoveAnnotation(QPointF viewPoint, QPointF offset);
    void doResizeAnnotation(QPointF viewPoint, QPointF pressPoint, QRectF oldBounds, int handle);
    void doResizeLineAnnotation(
        QPointF viewPoint, QPointF pressPoint, QPointF oldStart, QPointF oldEnd, int handle);
    void invalidateSelectionRect(const QRectF &rect, const std::shared_ptr<PDFPage> &page);
    void showCursor(const std::optional<QCursor> &cursor, QMouseEvent *event);
    void addAnnotationNow(
        const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page);
    void removeAnnotationNow(const std::shared_ptr<PDFAnnotation> &annotation);
    void moveAnnotationNow(
        const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page);
    void annotationDidChange(PDFAnnotation &annotation, const QString &keyPath,
        const QVariant &oldValue, const QVariant &newValue);
    void postAnnotationNotification(const QString &name,
        const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page);
    // Drops the view's undo entries and what the property map holds of the document let go.
    void forgetUndoEntries();

    PDFViewDelegate2 *m_delegate2 = nullptr;
    quint64 m_instanceId = 0;
    qint64 m_viewMode = 0;
    bool m_isClipViewFrozen = false;
    // Moved by every request for a command's place, validation included.
    mutable qint64 m_pasteCounter = 0;
    std::weak_ptr<PDFAnnotation> m_selectedAnn;
    QPointer<UndoManager> m_undoManager;
    std::vector<std::shared_ptr<PDFAnnotation>> m_observedAnns;
    // Made at the first property edit and kept for the view's life (see annotationDidChange).
    std::shared_ptr<AnnotationPropertyMap> m_undoGroupOldPropertiesPerAnn;
    // Never shown: the view the print copy is printed from.
    PDFView *m_printView = nullptr;
    std::unique_ptr<XPDFViewGesture> m_gesture;
    std::vector<QCursor> m_cursorStack;
    // Periodic steps of an annotation drag while the pointer rests, so that autoscrolling goes on.
    QTimer m_gestureTicks;
};
