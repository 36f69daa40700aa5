#pragma once

// Edits a free text box in place: a text field over the page, in the viewport, that looks like
// the annotation and writes every keystroke into it. Return adds a line, Tab a tab, Escape ends
// the edit; a press anywhere outside ends it too and then goes on to what it was aimed at. A box
// left without visible text is removed, as an ordinary undoable removal. Main thread only.

#include "FDAnnotationEditor.h"

#include <QPointer>

#include <QTextEdit>

class FDAnnFreeTextEditor : public FDAnnotationEditor
{
    Q_OBJECT

public:
    FDAnnFreeTextEditor(const std::shared_ptr<PDFAnnotation> &annotation, FDPDFView *pdfView,
        FDAnnotationEditorDelegate *delegate);
    ~FDAnnFreeTextEditor() override;

    // The keys whose changes restyle the open field at once.
    static const QStringList &observedKeys();

    QTextEdit *textField() const { return m_textField; }

    void beginEditing() override;
    // Both finish the edit: every keystroke is already in the annotation, so there is nothing
    // to revert.
    void commit() override;
    void discard() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void finish();
    void style();
    void textDidChange();
    void fitHeight();

    QPointer<QTextEdit> m_textField;
    bool m_isMonitoring = false;
    bool m_isObserving = false;
    bool m_isStyling = false;
    bool m_hidFromPage = false;
};
