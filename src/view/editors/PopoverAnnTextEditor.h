#pragma once

// The popover of a note's text: a frameless panel in the note colour beside the note, with a
// text view that fills it and a button that removes the note. It grabs nothing: a press outside
// closes it and still reaches what it was aimed at. However it closes (Escape, a press outside,
// close()), its delegate hears onWillClose once. Main thread only.

#include <QFrame>
#include <QPointer>

class FDAnnTextEditor;
class QPlainTextEdit;
class QToolButton;

class PopoverAnnTextEditor : public QFrame
{
    Q_OBJECT

public:
    // The note colour, opaque.
    static QColor backgroundColor() { return QColor(252, 243, 188); }

    explicit PopoverAnnTextEditor(QWidget *parent = nullptr);
    ~PopoverAnnTextEditor() override;

    FDAnnTextEditor *delegate() const { return m_delegate; }
    void setDelegate(FDAnnTextEditor *delegate) { m_delegate = delegate; }
    QPlainTextEdit *textView() const { return m_textView; }
    QToolButton *removeButton() const { return m_removeButton; }

    bool isShown() const { return m_isShown; }
    // Shows beside rect (in the coordinates of the parent), to its right when there is room,
    // else to its left, kept inside the parent; the text view takes the focus.
    void showRelativeToRect(const QRect &rect);
    void close();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void onRemoveAnn();
    void onWillClose();
    void onWillShow();

    FDAnnTextEditor *m_delegate = nullptr;
    QPlainTextEdit *m_textView = nullptr;
    QToolButton *m_removeButton = nullptr;
    bool m_isShown = false;
    bool m_isMonitoring = false;
};
