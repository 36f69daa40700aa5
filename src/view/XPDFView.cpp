#include "XPDFView.h"
#include "XPDFViewGesture.h"

#include "PDFViewDelegate2.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/PDFSelection+XExtensions.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QFileInfo>
#include <QKeyEvent>
#include <QPrinter>

#include <array>
#include <utility>

const QString XPDFView::ToolModeDidChangeNotification
    = QStringLiteral("kPDFViewToolModeDidChangeNotification");
const QString XPDFView::SelectedAnnotationDidChangeNotification
    = QStringLiteral("kPDFViewSelectedAnnotationDidChangeNotification");

namespace {

qint64 liveInstances = 0;
quint64 instancesEver = 0;

// The tools that make an annotation of a type, answered both ways from one table.
const std::array<std::pair<PDFToolMode, const char *>, 10> &annotationTypeTable()
{
    static const std::array<std::pair<PDFToolMode, const char *>, 10> table { {
        { PDFToolModeAnnHighlight, "Highlight" },
        { PDFToolModeAnnUnderline, "Underline" },
        { PDFToolModeAnnStrikeOut, "StrikeOut" },
        { PDFToolModeAnnFreeText, "FreeText" },
        { PDFToolModeAnnText, "Text" },
        { PDFToolModeAnnCircle, "Circle" },
        { PDFToolModeAnnSquare, "Square" },
        { PDFToolModeAnnLine, "Line" },
        { PDFToolModeAnnInk, "Ink" },
        { PDFToolModeAnnStamp, "Stamp" },
    } };
    return table;
}

} // namespace

XPDFView::XPDFView(QWidget *parent)
    : PDFView(parent)
{
    ++liveInstances;
    m_instanceId = ++instancesEver;
    NotificationCenter::defaultCenter().post(ToolModeDidChangeNotification, this);
    setFocusPolicy(Qt::StrongFocus);
    // Hover states (cursors, the bookmark ribbon) follow the pointer without a button held.
    viewport()->setMouseTracking(true);
    m_gestureTicks.setInterval(100);
}

XPDFView::~XPDFView()
{
    if (liveInstances < 1)
        qFatal("XPDFView::~XPDFView: _numberOfPDFViewInstances >= 1 (%s)", __FILE__);
    --liveInstances;
    stopObservingAnnotations(m_observedAnns);
    // An undo after the view is gone would call into it.
    if (m_undoManager)
        m_undoManager->removeAllActionsWithTarget(this);
    NotificationCenter::defaultCenter().removeObserver(this);
}

void XPDFView::setUndoManager(UndoManager *undoManager)
{
    if (undoManager == m_undoManager)
        return;
    // What was registered in the old manager speaks for this view only while it uses it.
    if (m_undoManager)
        m_undoManager->removeAllActionsWithTarget(this);
    m_undoManager = undoManager;
}

void XPDFView::forgetUndoEntries()
{
    if (m_undoManager)
        m_undoManager->removeAllActionsWithTarget(this);
    // The map itself stays, so that property edits still register no second step; what it holds
    // of the old document is dropped with the step that could have used it.
    if (m_undoGroupOldPropertiesPerAnn)
        m_undoGroupOldPropertiesPerAnn->clear();
}

qint64 XPDFView::numberOfInstances()
{
    return liveInstances;
}

PDFToolMode XPDFView::toolModeForType(const QString &type)
{
    for (const auto &[mode, name] : annotationTypeTable()) {
        if (type == QLatin1String(name))
            return mode;
    }
    return PDFToolModeNone;
}

QString XPDFView::annTypeForToolMode(int mode)
{
    for (const auto &[tool, name] : annotationTypeTable()) {
        if (tool == mode)
            return QString::fromLatin1(name);
    }
    return {};
}

PDFToolMode XPDFView::toolMode() const
{
    return m_delegate2 ? m_delegate2->toolMode() : PDFToolModeTextSelection;
}

void XPDFView::setSelectedAnn(const std::shared_ptr<PDFAnnotation> &annotation)
{
    const auto old = m_selectedAnn.lock();
    if (old == annotation)
        return;
    if (annotation && !isValid(*annotation))
        return;
    m_selectedAnn = annotation;
    if (old) {
        stopObservingAnnotations({ old });
        setNeedsDisplayForAnnotation(old);
    }
    if (annotation) {
        startObservingAnnotations({ annotation });
        setNeedsDisplayForAnnotation(annotation);
    }
    // A text selection never stays beside a change of the selected annotation.
    clearSelection();
    const auto oldPage = old ? old->page() : nullptr;
    const auto page = annotation ? annotation->page() : nullptr;
    NotificationCenter::defaultCenter().post(SelectedAnnotationDidChangeNotification, this,
        { { QStringLiteral("OldPage"), QVariant::fromValue(oldPage) },
            { QStringLiteral("Page"), QVariant::fromValue(page) } });
}

QRectF XPDFView::currentSelectionRect() const
{
    return toolMode() == PDFToolModeAreaSelection ? m_selectionRect : QRectF();
}

void XPDFView::setCurrentSelectionRect(const QRectF &rect)
{
    if (toolMode() != PDFToolModeAreaSelection || rect == m_selectionRect)
        return;
    viewport()->update();
    if (rect.isEmpty()) {
        m_selectionRect = QRectF();
        m_selectionPageIndex = NotFound;
        return;
    }
    m_selectionRect = rect;
    if (m_selectionPageIndex == NotFound && document() && currentPage())
        m_selectionPageIndex = document()->indexForPage(currentPage());
}

std::shared_ptr<PDFPage> XPDFView::currentSelectionPage() const
{
    if (m_selectionPageIndex == NotFound || !document())
        return nullptr;
    return document()->pageAtIndex(int(m_selectionPageIndex));
}

void XPDFView::setCurrentSelectionPage(const std::shared_ptr<PDFPage> &page)
{
    if (toolMode() != PDFToolModeAreaSelection)
        return;
    const qint64 index = page && document() ? document()->indexForPage(page) : NotFound;
    if (!page) {
        if (m_selectionPageIndex != NotFound)
            viewport()->update();
        m_selectionRect = QRectF();
        m_selectionPageIndex = NotFound;
        return;
    }
    if (index != m_selectionPageIndex)
        viewport()->update();
    m_selectionPageIndex = index < 0 ? NotFound : index;
    if (m_selectionRect.isEmpty())
        m_selectionRect = page->boundsForBox(PDFDisplayBox::CropBox);
}

void XPDFView::setDocument(const std::shared_ptr<PDFDocument> &document)
{
    // A gesture never reaches into the next document.
    endGesture();
    if (document != this->document()) {
        setSelectedAnn(nullptr);
        forgetUndoEntries();
    }
    m_selectionRect = QRectF();
    m_selectionPageIndex = NotFound;
    PDFView::setDocument(document);
}

void XPDFView::setDisplayMode(int mode)
{
    if (mode == displayMode())
        return;
    const auto remembered = currentPage();
    PDFView::setDisplayMode(mode);
    // The mode as the view took it: one out of range is taken as the nearest.
    const int shown = displayMode();
    setDisplaysPageBreaks(shown == SinglePage || shown == SinglePageContinuous);
    if (remembered && currentPage() != remembered)
        goToPage(remembered);
}

void XPDFView::setDisplayBox(PDFDisplayBox box)
{
    if (box == displayBox())
        return;
    const auto remembered = currentPage();
    PDFView::setDisplayBox(box);
    if (remembered && currentPage() != remembered)
        goToPage(remembered);
}

void XPDFView::setDisplaysAsBook(bool asBook)
{
    if (asBook != displaysAsBook())
        PDFView::setDisplaysAsBook(asBook);
}

bool XPDFView::validateMenuItem(const QString &action) const
{
    if (action == QLatin1String("delete:"))
        return selectedAnn() != nullptr;
    if (action == QLatin1String("selectAll:"))
        return toolMode() == PDFToolModeTextSelection;
    if (action == QLatin1String("deselectAll:"))
        return currentSelection() && hasCharacters(*currentSelection());
    return false;
}

bool XPDFView::respondsToEditCommand(const QString &command) const
{
    return command == QLatin1String("copy:") || command == QLatin1String("selectAll:")
        || command == QLatin1String("delete:");
}

bool XPDFView::validateEditCommand(const QString &command) const
{
    if (command == QLatin1String("copy:"))
        return currentSelection() && !currentSelection()->string().isEmpty();
    if (command == QLatin1String("selectAll:"))
        return document() && document()->pageCount() > 0 && validateMenuItem(command);
    return validateMenuItem(command);
}

void XPDFView::performEditCommand(const QString &command)
{
    if (command == QLatin1String("copy:"))
        copy();
    else if (command == QLatin1String("selectAll:"))
        selectAll();
    else if (command == QLatin1String("delete:"))
        removeAnnotation(selectedAnn());
}

void XPDFView::focusInEvent(QFocusEvent *event)
{
    PDFView::focusInEvent(event);
    if (m_delegate2)
        m_delegate2->PDFViewDidBecomeFirstResponder(this);
}

std::shared_ptr<PDFDocument> XPDFView::printCopy(bool withAnnotations) const
{
    const std::shared_ptr<PDFDocument> live = document();
    if (!live)
        return nullptr;
    const QByteArray bytes = live->dataRepresentation();
    auto copy = std::make_shared<PDFDocument>();
    if (bytes.isEmpty() || !copy->initWithData(bytes))
        return nullptr;
    for (int index = 0; index < copy->pageCount(); ++index) {
        const auto page = copy->pageAtIndex(index);
        for (const auto &annotation : page->annotations()) {
            annotation->setShouldDisplay(withAnnotations);
            annotation->setShouldPrint(withAnnotations);
        }
    }
    return copy;
}

void XPDFView::printWithAnnotations(bool withAnnotations)
{
    const std::shared_ptr<PDFDocument> copy = printCopy(withAnnotations);
    if (!copy)
        return;
    if (!m_printView) {
        m_printView = new PDFView(this);
        m_printView->setGeometry(QRect());
        m_printView->hide();
    }
    // The copy has no file: the suggested file name and the job title come from the live one.
    QPrinter printInfo(QPrinter::HighResolution);
    const QString title = QFileInfo(document()->documentURL().fileName()).completeBaseName();
    if (!title.isEmpty())
        printInfo.setDocName(title + QStringLiteral(".pdf"));
    m_printView->setDocument(copy);
    m_printView->printWithInfo(&printInfo, true);
    m_printView->setDocument(nullptr);
}
