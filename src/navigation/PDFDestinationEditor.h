#pragma once

// The one small popup that edits a label and a one-based page number for the sidebar's lists.
// There is no cancel: however it closes (Return, a click elsewhere, Escape, another showing),
// the values go to the handler, with the page as a zero-based index, as long as the object it
// was shown for still lives. Main thread only.

#include <QFrame>
#include <QPointer>

#include <functional>
#include <memory>

class QLabel;
class QLineEdit;

class PDFDestinationEditor : public QFrame
{
    Q_OBJECT

public:
    using CompletionHandler = std::function<void(
        const QString &label, int pageIndex, const std::shared_ptr<void> &representedObject)>;

    // The one instance, made on first use.
    static PDFDestinationEditor &shared();

    // Opens beside the area of the view (its whole rect when the area is empty), on the edge
    // given as 0 left, 1 bottom, 2 right, 3 top; pageIndex is zero-based. A handler not yet
    // called is called now, with the values it had, then replaced.
    void showOf(QWidget *view, const QRect &area, int preferredEdge, const QString &label,
        int numberOfPages, int pageIndex, const std::weak_ptr<void> &reprentedObject,
        CompletionHandler completionHandler);

    QString label() const;
    // The one-based page number in the field; 0 when it is empty.
    int pageIndex() const;
    QString numberOfPages() const;
    QLineEdit *labelField() const { return m_labelField; }
    QLineEdit *pageIndexField() const { return m_pageIndexField; }
    // Closes, which commits.
    void close();

protected:
    void hideEvent(QHideEvent *event) override;

private:
    PDFDestinationEditor();
    void onFieldEnter();
    void onWillClose();
    void applyTheme();

    QLineEdit *m_labelField = nullptr;
    QLineEdit *m_pageIndexField = nullptr;
    QLabel *m_numberOfPagesField = nullptr;
    std::weak_ptr<void> m_reprentedObject;
    CompletionHandler m_completionHandler;
};
