#include "FDAnnTextEditor.h"

#include "PopoverAnnTextEditor.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFPage.h>
#include <view/FDPDFView.h>

#include <QDateTime>
#include <QPlainTextEdit>

FDAnnTextEditor::FDAnnTextEditor(const std::shared_ptr<PDFAnnotation> &annotation,
    FDPDFView *pdfView, FDAnnotationEditorDelegate *delegate)
    : FDAnnotationEditor(annotation, pdfView, delegate)
{ }

FDAnnTextEditor::~FDAnnTextEditor()
{
    delete m_popover.data();
}

void FDAnnTextEditor::beginEditing()
{
    const auto annotation = ann();
    FDPDFView *const view = pdfView();
    const auto page = annotation ? annotation->page() : nullptr;
    if (!annotation || !page || !view)
        return;
    if (!m_popover)
        m_popover = new PopoverAnnTextEditor(view->viewport());
    m_popover->setDelegate(this);
    if (m_popover->isShown())
        m_popover->close();
    // Filled before it shows, so that filling is no change of the note.
    m_popover->setDelegate(nullptr);
    m_popover->textView()->setPlainText(annotation->contents());
    m_popover->setDelegate(this);
    const QRectF bounds = annotation->bounds().intersected(page->boundsForBox(view->displayBox()));
    const QRect anchor
        = view->convertRectFromPage(bounds.isEmpty() ? annotation->bounds() : bounds, page)
              .toAlignedRect();
    m_popover->showRelativeToRect(anchor);
    setIsEditing(*annotation, true);
    view->setNeedsDisplayForAnnotation(annotation);
}

void FDAnnTextEditor::textDidChange()
{
    const auto annotation = ann();
    if (!annotation || !m_popover)
        return;
    const QString text = m_popover->textView()->toPlainText();
    if (annotation->contents() != text)
        annotation->setContents(text);
}

void FDAnnTextEditor::commit()
{
    close();
}

void FDAnnTextEditor::discard()
{
    close();
}

void FDAnnTextEditor::close()
{
    if (m_popover)
        m_popover->close();
}

void FDAnnTextEditor::popoverWillClose()
{
    tellDelegateWillClose();
    const auto annotation = ann();
    if (!annotation)
        return;
    FDPDFView *const view = pdfView();
    const QString text = m_popover ? m_popover->textView()->toPlainText() : annotation->contents();
    if (annotation->contents() != text)
        annotation->setContents(text);
    annotation->setModificationDate(QDateTime::currentDateTime());
    setIsEditing(*annotation, false);
    clearTargets();
    if (!view)
        return;
    view->setNeedsDisplayForAnnotation(annotation);
    if (annotation->contents().isEmpty())
        view->removeAnnotation(annotation);
}

void FDAnnTextEditor::removeAnn()
{
    const auto annotation = ann();
    if (FDPDFView *const view = pdfView(); view && annotation)
        view->removeAnnotation(annotation);
}
