#pragma once

// Edits a note's text in a popover beside it. Every change is written into the note at once;
// however the popover closes, the text and the present date are written, and a note left with
// no text at all is removed (a single space keeps it). Main thread only.

#include "FDAnnotationEditor.h"

#include <QPointer>

#include "PopoverAnnTextEditor.h"

class FDAnnTextEditor : public FDAnnotationEditor
{
    Q_OBJECT

public:
    FDAnnTextEditor(const std::shared_ptr<PDFAnnotation> &annotation, FDPDFView *pdfView,
        FDAnnotationEditorDelegate *delegate);
    ~FDAnnTextEditor() override;

    PopoverAnnTextEditor *popover() const { return m_popover; }

    void beginEditing() override;
    // Both only close the popover; its closing does the rest.
    void commit() override;
    void discard() override;

    // From the popover.
    void textDidChange();
    void popoverWillClose();
    // The popover's remove button: an ordinary removal, which closes the popover first.
    void removeAnn();

private:
    void close();

    QPointer<PopoverAnnTextEditor> m_popover;
};
