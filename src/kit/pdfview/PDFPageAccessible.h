#pragma once

// One page of a PDFView for screen readers: a section named "Page <label>" whose text is the
// page's text layout, with a caret of its own and the view's selection on that page.

#include <QAccessibleInterface>
#include <QPointer>

#include <memory>

class PDFPage;
class PDFView;

class PDFPageAccessible : public QAccessibleInterface, public QAccessibleTextInterface
{
public:
    PDFPageAccessible(
        PDFView *view, QAccessibleInterface *parent, const std::shared_ptr<PDFPage> &page);

    const PDFPage *page() const { return m_page.get(); }

    // QAccessibleInterface
    bool isValid() const override;
    QObject *object() const override { return nullptr; }
    QWindow *window() const override;
    QAccessibleInterface *parent() const override { return m_parent; }
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    QString text(QAccessible::Text t) const override;
    void setText(QAccessible::Text, const QString &) override { }
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::Section; }
    QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    // QAccessibleTextInterface
    void selection(int selectionIndex, int *startOffset, int *endOffset) const override;
    int selectionCount() const override;
    void addSelection(int startOffset, int endOffset) override;
    void removeSelection(int selectionIndex) override;
    void setSelection(int selectionIndex, int startOffset, int endOffset) override;
    int cursorPosition() const override { return m_caret; }
    void setCursorPosition(int position) override;
    QString text(int startOffset, int endOffset) const override;
    QString textBeforeOffset(int offset, QAccessible::TextBoundaryType boundaryType,
        int *startOffset, int *endOffset) const override;
    QString textAfterOffset(int offset, QAccessible::TextBoundaryType boundaryType,
        int *startOffset, int *endOffset) const override;
    QString textAtOffset(int offset, QAccessible::TextBoundaryType boundaryType, int *startOffset,
        int *endOffset) const override;
    int characterCount() const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint &point) const override;
    void scrollToSubstring(int startIndex, int endIndex) override;
    QString attributes(int offset, int *startOffset, int *endOffset) const override;

private:
    QString pageText() const;
    // The [start, end) of the unit holding offset; an empty range past the end.
    std::pair<int, int> unitAt(int offset, QAccessible::TextBoundaryType boundaryType) const;

    QPointer<PDFView> m_view;
    QAccessibleInterface *m_parent;
    std::shared_ptr<PDFPage> m_page;
    int m_caret = 0;
};
