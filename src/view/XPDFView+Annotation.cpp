// XPDFView: every change to the annotations of a page, and every property edit of the selected
// annotation, as one path: undo registration, repaint, change count and notification.

#include "FDPDFView.h"
#include "QKOverlayView.h"
#include "XPDFView.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/PDFAnnotationInk+XExtensions.h>
#include <annotation/PDFSelection+XExtensions.h>
#include <kit/base/BezierPath.h>
#include <kit/base/Geometry.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UndoManager.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QCoreApplication>
#include <QDateTime>

#include <algorithm>
#include <cmath>

const QString XPDFView::AnnotationDidAddNotification
    = QStringLiteral("kPDFViewAnnotationDidAddNotification");
const QString XPDFView::AnnotationDidRemoveNotification
    = QStringLiteral("kPDFViewAnnotationDidRemoveNotification");
const QString XPDFView::AnnotationDidChangeNotification
    = QStringLiteral("kPDFViewAnnotationDidChangeNotification");
const QString XPDFView::ContentSelectionDidChangeNotification
    = QStringLiteral("kPDFViewContentSelectionDidChangeNotification");
const QString XPDFView::PendingAnnInkDidChangeNotification
    = QStringLiteral("kPDFViewPendingAnnInkDidChangeNotification");
const QString XPDFView::AddNoteActionName
    = QStringLiteral(QT_TRANSLATE_NOOP("XPDFView", "Add Note"));
const QString XPDFView::DeleteAnnotationActionName
    = QStringLiteral(QT_TRANSLATE_NOOP("XPDFView", "Delete Annotation"));
const QString XPDFView::EditNoteActionName
    = QStringLiteral(QT_TRANSLATE_NOOP("XPDFView", "Edit Note"));
const QString XPDFView::RotatePageActionName
    = QStringLiteral(QT_TRANSLATE_NOOP("XPDFView", "Rotate Page"));

namespace {

const QString kModificationDate = QStringLiteral("modificationDate");
const QString kUserName = QStringLiteral("userName");

} // namespace

void XPDFView::postAnnotationNotification(const QString &name,
    const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page)
{
    NotificationCenter::defaultCenter().post(name, this,
        { { QStringLiteral("Annotation"), QVariant::fromValue(annotation) },
            { QStringLiteral("Page"), QVariant::fromValue(page) } });
}

void XPDFView::addAnnotation(
    const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page)
{
    addAnnotationNow(annotation, page);
}

void XPDFView::removeAnnotation(const std::shared_ptr<PDFAnnotation> &annotation)
{
    if (annotation)
        removeAnnotationNow(annotation);
}

void XPDFView::moveAnnotation(
    const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page)
{
    if (annotation && page)
        moveAnnotationNow(annotation, page);
}

// The kit's undo manager names the step being built, so every step registers before it names
// itself: naming first would rename the previous step.
void XPDFView::addAnnotationNow(
    const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page)
{
    if (!annotation || !page)
        return;
    if (m_undoManager) {
        m_undoManager->registerUndo(this, [this, annotation] { removeAnnotation(annotation); });
        m_undoManager->setActionName(
            QCoreApplication::translate("XPDFView", qUtf8Printable(AddNoteActionName)));
    }
    // Author and time are stamped before anyone sees the annotation.
    registerUserName(*annotation);
    // Hidden from engine drawing before it joins the page: one the overlay draws costs no render.
    QKOverlayView::setDisplayFlag(*annotation);
    page->addAnnotation(annotation);
    setNeedsDisplayForAnnotation(annotation, page);
    annotationsChangedOnPage(page);
    if (!annotation->page())
        annotation->setPage(page);
    // A markup uses the text selection up and is not selected; anything else is.
    if (isMarkup(*annotation))
        clearSelection();
    else
        setSelectedAnn(annotation);
    postAnnotationNotification(AnnotationDidAddNotification, annotation, page);
    // Also on undoing a deletion: a note that comes back opens its editor.
    if (isEditable(*annotation))
        MainQueue::async(this, [this] { editSelectedAnnotation(); });
}

void XPDFView::removeAnnotationNow(const std::shared_ptr<PDFAnnotation> &annotation)
{
    // First, since an editor that closes on an empty text removes its annotation itself.
    commitEditing();
    const std::shared_ptr<PDFPage> page = annotation->page();
    if (!page)
        return;
    if (m_undoManager) {
        m_undoManager->registerUndo(
            this, [this, annotation, page] { addAnnotationNow(annotation, page); });
        m_undoManager->setActionName(
            QCoreApplication::translate("XPDFView", qUtf8Printable(DeleteAnnotationActionName)));
    }
    if (selectedAnn() == annotation)
        setSelectedAnn(nullptr);
    page->removeAnnotation(annotation);
    setNeedsDisplayForAnnotation(annotation, page);
    annotationsChangedOnPage(page);
    postAnnotationNotification(AnnotationDidRemoveNotification, annotation, page);
}

void XPDFView::moveAnnotationNow(
    const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page)
{
    const std::shared_ptr<PDFPage> oldPage = annotation->page();
    if (!oldPage)
        return;
    if (m_undoManager) {
        m_undoManager->registerUndo(
            this, [this, annotation, oldPage] { moveAnnotation(annotation, oldPage); });
        m_undoManager->setActionName(
            QCoreApplication::translate("XPDFView", qUtf8Printable(EditNoteActionName)));
    }
    setNeedsDisplayForAnnotation(annotation, oldPage);
    QKOverlayView::setDisplayFlag(*annotation);
    oldPage->removeAnnotation(annotation);
    page->addAnnotation(annotation);
    setNeedsDisplayForAnnotation(annotation, page);
    annotationsChangedOnPage(oldPage);
    annotationsChangedOnPage(page);
    postAnnotationNotification(AnnotationDidRemoveNotification, annotation, oldPage);
    postAnnotationNotification(AnnotationDidAddNotification, annotation, page);
}

std::shared_ptr<PDFAnnotation> XPDFView::addAnnotationWithType(
    const QString &type, std::shared_ptr<PDFPage> page, QRectF bounds)
{
    std::shared_ptr<PDFAnnotation> annotation;
    const auto selected = selectedAnn();
    const bool editing = selected && isEditing(*selected);
    if (type == QLatin1String("Highlight") || type == QLatin1String("Underline")
        || type == QLatin1String("StrikeOut")) {
        const auto selection = currentSelection();
        if (!selection || !hasCharacters(*selection))
            return nullptr;
        annotation = createAnnMarkupWithType(type);
        if (!page)
            page = safeFirstPage(*selection);
    } else if (type == QLatin1String("Ink")) {
        if (!m_pendingInkPath)
            return nullptr;
        auto ink = std::dynamic_pointer_cast<PDFAnnotationInk>(
            FDPDFView::classForAnnotationClass(type)());
        if (ink && initWithPaths(*ink, { m_pendingInkPath }))
            annotation = ink;
    } else if (type == QLatin1String("Line") || type == QLatin1String("Circle")
        || type == QLatin1String("Square") || type == QLatin1String("FreeText")
        || type == QLatin1String("Text")) {
        // A click while a text is being edited only ends the edit.
        if (editing && (type == QLatin1String("FreeText") || type == QLatin1String("Text")))
            return nullptr;
        // Notes are stored against the media box, the pointer speaks of the display box.
        if (type == QLatin1String("Text")) {
            const QPointF offset = offsetBasedOnMediaBoxInPage(page, displayBox());
            bounds.translate(offset);
        }
        annotation = FDPDFView::classForAnnotationClass(type)();
        if (annotation && !annotation->initWithBounds(bounds))
            annotation.reset();
    } else {
        return nullptr;
    }
    if (!annotation || !page)
        return nullptr;
    addAnnotationNow(annotation, page);
    return annotation;
}

QPointF XPDFView::offsetBasedOnMediaBoxInPage(
    const std::shared_ptr<PDFPage> &page, PDFDisplayBox box)
{
    if (!page)
        return {};
    return page->boundsForBox(box).topLeft()
        - page->boundsForBox(PDFDisplayBox::MediaBox).topLeft();
}

void XPDFView::setAnnotationProperties(const std::shared_ptr<AnnotationPropertyMap> &map)
{
    if (!map)
        return;
    // A copy: the writes below come back through observation and may touch the map.
    const AnnotationPropertyMap entries = *map;
    for (const auto &[key, entry] : entries) {
        Q_UNUSED(key);
        entry.annotation->setValuesForKeysWithDictionary(entry.values);
        // An annotation no longer observed reports nothing itself: its page still shows the
        // change and the document still counts it.
        const bool observed
            = std::find(m_observedAnns.begin(), m_observedAnns.end(), entry.annotation)
            != m_observedAnns.end();
        if (const auto page = entry.annotation->page(); page && !observed) {
            setNeedsDisplayForAnnotation(entry.annotation, page);
            annotationsChangedOnPage(page);
            postAnnotationNotification(AnnotationDidChangeNotification, entry.annotation, page);
        }
    }
}

void XPDFView::rotatePageAtIndex(int index, int degrees)
{
    const auto page = document() ? document()->pageAtIndex(index) : nullptr;
    if (!page)
        return;
    if (m_undoManager) {
        m_undoManager->registerUndo(
            this, [this, index, degrees] { rotatePageAtIndex(index, -degrees); });
        m_undoManager->setActionName(
            QCoreApplication::translate("XPDFView", qUtf8Printable(RotatePageActionName)));
    }
    page->setRotation(page->rotation() + degrees);
    layoutDocumentView();
}

void XPDFView::startObservingAnnotations(
    const std::vector<std::shared_ptr<PDFAnnotation>> &annotations)
{
    if (annotations.empty())
        qFatal("XPDFView::startObservingAnnotations: annotations.count > 0");
    for (const auto &annotation : annotations) {
        if (std::find(m_observedAnns.begin(), m_observedAnns.end(), annotation)
            != m_observedAnns.end())
            continue;
        m_observedAnns.push_back(annotation);
        const QStringList *const keys = keysForValuesToObserveForUndo(*annotation);
        if (!keys)
            continue;
        annotation->addObserver(this,
            [this, keys](PDFAnnotation &changed, const QString &keyPath, const QVariant &oldValue,
                const QVariant &newValue) {
                if (keys->contains(keyPath))
                    annotationDidChange(changed, keyPath, oldValue, newValue);
            });
    }
}

void XPDFView::stopObservingAnnotations(
    const std::vector<std::shared_ptr<PDFAnnotation>> &annotations)
{
    // A copy, walked from the end: the argument may be m_observedAnns itself.
    const std::vector<std::shared_ptr<PDFAnnotation>> list = annotations;
    for (auto it = list.rbegin(); it != list.rend(); ++it) {
        std::erase(m_observedAnns, *it);
        (*it)->removeObserver(this);
    }
}

// The map of old values is made once and never cleared, by design: only the first property edit
// in the view's life registers an undo step, and undoing it returns every annotation in the map
// to its first recorded values. The writes of that undo find the map and register nothing, so a
// property edit has no redo.
void XPDFView::annotationDidChange(PDFAnnotation &annotation, const QString &keyPath,
    const QVariant &oldValue, const QVariant &newValue)
{
    if (oldValue == newValue)
        return;
    const bool undoingOrRedoing
        = m_undoManager && (m_undoManager->isUndoing() || m_undoManager->isRedoing());
    if (!m_undoGroupOldPropertiesPerAnn) {
        m_undoGroupOldPropertiesPerAnn = std::make_shared<AnnotationPropertyMap>();
        if (m_undoManager) {
            const auto map = m_undoGroupOldPropertiesPerAnn;
            m_undoManager->registerUndo(this, [this, map] { setAnnotationProperties(map); });
            if (!undoingOrRedoing)
                m_undoManager->setActionName(
                    QCoreApplication::translate("XPDFView", qUtf8Printable(EditNoteActionName)));
        }
    }
    const std::shared_ptr<PDFAnnotation> shared = annotation.shared_from_this();
    AnnotationPropertyMap &map = *m_undoGroupOldPropertiesPerAnn;
    if (map.find(&annotation) == map.end()) {
        map.emplace(&annotation, OldProperties { shared, {} });
        // This write comes back here, where the entry now exists, so the old date is kept too.
        if (!UserDefaults::standard().boolForKey(kModificationDate) && !undoingOrRedoing
            && keyPath != kModificationDate)
            annotation.setModificationDate(QDateTime::currentDateTime());
    }
    const auto entry = map.find(&annotation);
    if (entry != map.end() && !entry->second.values.contains(keyPath))
        entry->second.values.insert(keyPath, oldValue);
    if (keyPath != kModificationDate && keyPath != kUserName)
        setNeedsDisplayForAnnotation(shared);
    const auto page = annotation.page();
    annotationsChangedOnPage(page);
    postAnnotationNotification(AnnotationDidChangeNotification, shared, page);
}

void XPDFView::setNeedsDisplayInRect(const QRectF &rect, const std::shared_ptr<PDFPage> &page)
{
    if (!page)
        return;
    // Room for what is drawn beyond an annotation's rect: handles, line ends, shadows.
    QRectF area = convertRectFromPage(rect, page);
    const double grow = 50 + scaleFactor();
    area = Geometry::integralRect(area.adjusted(-grow, -grow, grow, grow));
    area = Geometry::intersectionRect(area, QRectF(viewport()->rect()));
    if (!area.isEmpty())
        viewport()->update(area.toAlignedRect());
}

void XPDFView::setNeedsDisplayForAnnotation(
    const std::shared_ptr<PDFAnnotation> &annotation, const std::shared_ptr<PDFPage> &page)
{
    if (!annotation || !page)
        return;
    QRectF rect = displayRect(*annotation);
    if (annotation == selectedAnn() && isResizable(*annotation) && scaleFactor() > 0) {
        const double handle = 4 / scaleFactor();
        rect.adjust(-handle, -handle, handle, handle);
    }
    setNeedsDisplayInRect(rect, page);
}

void XPDFView::setNeedsDisplayForAnnotation(const std::shared_ptr<PDFAnnotation> &annotation)
{
    if (annotation)
        setNeedsDisplayForAnnotation(annotation, annotation->page());
}
