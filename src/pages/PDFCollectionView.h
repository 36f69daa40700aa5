#pragma once

// The thumbnail grid of one pane of the pages editor: a list in icon mode over the pages of a
// document, with the editor's own answers to Delete, Escape, a right click and taking the focus.
// Main thread only.

#include <QListView>
#include <QPointer>

class FDPDFView;

class PDFCollectionView : public QListView
{
    Q_OBJECT

public:
    explicit PDFCollectionView(QWidget *parent = nullptr);

    // The view whose document this pane shows.
    FDPDFView *pdfView() const;
    void setPdfView(FDPDFView *view);

    // True while a batch of item changes is being applied; paste waits for it to end.
    bool isAnimating() const { return m_isAnimating; }
    // Runs changes with isAnimating set, clearing it before the completion runs.
    void performBatchUpdates(
        const std::function<void()> &updates, const std::function<void()> &completion = {});

    // The selected rows, ascending.
    QList<int> selectedRows() const;
    void selectRows(const QList<int> &rows);

signals:
    void didBecomeFirstResponder();
    // The Delete key, with or without a selection: the editor asks before anything goes.
    void deleteRequested();
    void leaveRequested();
    void rotateRequested();
    void extractRequested();
    void contextMenuRequestedAt(const QPoint &globalPos);

protected:
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    QPointer<FDPDFView> m_pdfView;
    bool m_isAnimating = false;
};
