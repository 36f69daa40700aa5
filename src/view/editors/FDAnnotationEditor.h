#pragma once

// The base of the short-lived editors of an annotation's text: what is edited, in which view,
// and whom to tell when editing closes. Subclasses begin, commit and discard; here all three do
// nothing. Main thread only.

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>

class FDAnnotationEditor;
class FDPDFView;
class PDFAnnotation;

class FDAnnotationEditorDelegate
{
public:
    virtual ~FDAnnotationEditorDelegate() = default;
    virtual void annEditorWillCloseWithEditor(FDAnnotationEditor *editor) = 0;
};

class FDAnnotationEditor : public QObject
{
    Q_OBJECT

public:
    FDAnnotationEditor(const std::shared_ptr<PDFAnnotation> &annotation, FDPDFView *pdfView,
        FDAnnotationEditorDelegate *delegate);
    ~FDAnnotationEditor() override;

    std::shared_ptr<PDFAnnotation> ann() const { return m_ann.lock(); }
    FDPDFView *pdfView() const;
    FDAnnotationEditorDelegate *delegate() const { return m_delegate; }
    void setDelegate(FDAnnotationEditorDelegate *delegate) { m_delegate = delegate; }

    virtual void beginEditing() { }
    virtual void commit() { }
    virtual void discard() { }

protected:
    void clearTargets();
    // Tells the delegate once, and forgets it.
    void tellDelegateWillClose();

private:
    std::weak_ptr<PDFAnnotation> m_ann;
    // Weak; a QWidget pointer since the view's class includes this header.
    QPointer<QWidget> m_pdfView;
    FDPDFView *m_view = nullptr;
    FDAnnotationEditorDelegate *m_delegate = nullptr;
};
