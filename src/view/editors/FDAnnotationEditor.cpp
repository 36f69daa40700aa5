#include "FDAnnotationEditor.h"

#include <view/FDPDFView.h>

FDAnnotationEditor::FDAnnotationEditor(const std::shared_ptr<PDFAnnotation> &annotation,
    FDPDFView *pdfView, FDAnnotationEditorDelegate *delegate)
    : m_ann(annotation)
    , m_pdfView(pdfView)
    , m_view(pdfView)
    , m_delegate(delegate)
{ }

FDAnnotationEditor::~FDAnnotationEditor() = default;

FDPDFView *FDAnnotationEditor::pdfView() const
{
    return m_pdfView ? m_view : nullptr;
}

void FDAnnotationEditor::clearTargets()
{
    m_ann.reset();
    m_pdfView = nullptr;
}

void FDAnnotationEditor::tellDelegateWillClose()
{
    if (FDAnnotationEditorDelegate *const delegate = m_delegate) {
        m_delegate = nullptr;
        delegate->annEditorWillCloseWithEditor(this);
    }
}
