#pragma once

// The row of the pages editor's commands in the tab's second toolbar row: rotate left and
// right, delete, extract, add pages from images or PDF files, and leave, enabled as the editor's
// selection allows. Main thread only.

#include <appearance/PDFContentsBar.h>

#include <QPointer>

class PDFPagesEditor;
class QToolButton;

class PDFEditBar : public PDFContentsBar
{
    Q_OBJECT

public:
    PDFEditBar(PDFContents *contents, PDFPagesEditor *editor, QWidget *parent = nullptr);
    ~PDFEditBar() override;

    QToolButton *rotateLeftButton() const { return m_rotateLeftButton; }
    QToolButton *rotateRightButton() const { return m_rotateRightButton; }
    QToolButton *removeButton() const { return m_removeButton; }
    QToolButton *extractButton() const { return m_extractButton; }
    QToolButton *addImagesButton() const { return m_addImagesButton; }
    QToolButton *addPDFButton() const { return m_addPDFButton; }
    QToolButton *doneButton() const { return m_doneButton; }

    // Enables the buttons for the editor's selection as it is now.
    void updateButtons();

protected:
    void refreshIcons() override;

private:
    QToolButton *makeTextButton(const QString &title, const QKeySequence &key = {});

    QPointer<PDFPagesEditor> m_editor;
    QToolButton *m_rotateLeftButton = nullptr;
    QToolButton *m_rotateRightButton = nullptr;
    QToolButton *m_removeButton = nullptr;
    QToolButton *m_extractButton = nullptr;
    QToolButton *m_addImagesButton = nullptr;
    QToolButton *m_addPDFButton = nullptr;
    QToolButton *m_doneButton = nullptr;
};
