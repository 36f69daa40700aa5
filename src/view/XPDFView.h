#pragma once

// The annotation-editing layer over the kit's reading view: the tool mode (read from the owner),
// the selected annotation, the area selection, and the clean-up of every annotation of a document
// before it is shown, so that annotations always look as this program draws them.
// Main thread only.

#include "PDFToolMode.h"

#include <kit/engine/PDFPage.h>
#include <kit/pdfview/PDFView.h>

#include <QRectF>
#include <QString>

#include <limits>
#include <memory>

class PDFAnnotation;
class PDFDocument;
class PDFViewDelegate2;

class XPDFView : public PDFView
{
    Q_OBJECT

public:
    // Posted on the default centre with the view as sender.
    static const QString ToolModeDidChangeNotification; // "kPDFViewToolModeDidChangeNotification"
    // User info "OldPage" and "Page": the pages of the old and the new annotation, or null pages.
    static const QString SelectedAnnotationDidChangeNotification;
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
    std::shared_ptr<PDFAnnotation> selectedAnn() const { return m_selectedAnn.lock(); }
    virtual void setSelectedAnn(const std::shared_ptr<PDFAnnotation> &annotation);

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

    // Cleans the document's annotations, forgets the area selection, then shows the document.
    void setDocument(const std::shared_ptr<PDFDocument> &document) override;
    // A change of layout never moves the reader; single-page modes show page breaks, two-up
    // modes don't.
    void setDisplayMode(int mode) override;
    void setDisplayBox(PDFDisplayBox box) override;
    void setDisplaysAsBook(bool asBook) override;

    // Every annotation loses its appearance streams, and one without a colour gets the fully
    // transparent one. Null or empty documents are left alone.
    static void sanitizeAnnotationsInDocument(const std::shared_ptr<PDFDocument> &document);

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

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    bool vetoesHorizontalScroll() const override { return m_isClipViewFrozen; }

    QRectF m_selectionRect; // the area selection in page space; empty for none
    qint64 m_selectionPageIndex = NotFound;

private:
    PDFViewDelegate2 *m_delegate2 = nullptr;
    quint64 m_instanceId = 0;
    qint64 m_viewMode = 0;
    bool m_isClipViewFrozen = false;
    std::weak_ptr<PDFAnnotation> m_selectedAnn;
    // Never shown: the view the print copy is printed from.
    PDFView *m_printView = nullptr;
};
