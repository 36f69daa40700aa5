// FDPDFView: the one open text editor, of a free text box or a note.

#include "FDPDFView.h"

#include "editors/FDAnnFreeTextEditor.h"
#include "editors/FDAnnTextEditor.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <kit/engine/PDFAnnotation.h>

void FDPDFView::editSelectedAnnotation()
{
    const auto annotation = selectedAnn();
    if (annotation && !isLink(*annotation)) {
        const bool sameAnnotation = m_annEditor && m_annEditor->ann() == annotation;
        FDAnnotationEditor *made = nullptr;
        if (!sameAnnotation && isFreeText(*annotation))
            made = new FDAnnFreeTextEditor(annotation, this, this);
        else if (!sameAnnotation && isText(*annotation))
            made = new FDAnnTextEditor(annotation, this, this);
        if (made) {
            // Another annotation's editor ends before this one opens.
            commitEditing();
            if (m_annEditor)
                m_annEditor->deleteLater();
            m_annEditor = made;
            made->setParent(this);
        }
    }
    if (m_annEditor)
        m_annEditor->beginEditing();
}

void FDPDFView::commitEditing()
{
    if (m_annEditor)
        m_annEditor->commit();
}

void FDPDFView::discardEditing()
{
    if (m_annEditor)
        m_annEditor->discard();
}

void FDPDFView::annEditorWillCloseWithEditor(FDAnnotationEditor *editor)
{
    if (!editor)
        return;
    editor->setDelegate(nullptr);
    if (editor == m_annEditor)
        m_annEditor = nullptr;
    // Deleted once the closing that called here has run to its end.
    editor->deleteLater();
    setFocus(Qt::OtherFocusReason);
}
