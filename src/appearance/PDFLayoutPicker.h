#pragma once

// The layout popover of the main toolbar: one or two pages across (for both views of the tab),
// no split or a split side by side or one above the other, and, while split, the two documents
// with their "A" and "B" marks, a swap and a change of document per side. Main thread only.

#include <QImage>
#include <QPointer>
#include <QUrl>
#include <QWidget>

class FDPDFView;
class PDFContents;
class QLabel;
class QToolButton;

class PDFLayoutPicker : public QWidget
{
    Q_OBJECT

public:
    static PDFLayoutPicker &shared();

    void setContents(PDFContents *contents) { m_contents = contents; }
    // Marks the layout and split in force and shows the lower section only with a split.
    void onWillShow();

    // Tag 0 single page, 1 two pages, on both views.
    void onPageLayoutButtonClickedWithButton(QToolButton *button);
    // Tag: the split mode.
    void onSplitLayoutButtonClickedWithButton(QToolButton *button);
    void onSplitSwapButtonClickedWithButton(QToolButton *button);
    // Tag 0 the left (first) place, 1 the right one: asks for a PDF file for that side.
    void onDocChangeButtonClickedWithButton(QToolButton *button);
    void splitDocumentsDidSwap();
    void leftDocumentDidChangeWithUrl(const QUrl &url);
    void rightDocumentDidChangeWithUrl(const QUrl &url);
    // The first page of the document in each place, small; null without one.
    QImage imageForLeft() const;
    QImage imageForRight() const;

    QToolButton *singlePageButton() const { return m_singlePageButton; }
    QToolButton *twoPagesButton() const { return m_twoPagesButton; }
    QToolButton *splitNoneButton() const { return m_splitNoneButton; }
    QToolButton *splitHoriButton() const { return m_splitHoriButton; }
    QToolButton *splitVertButton() const { return m_splitVertButton; }
    QToolButton *swapButton() const { return m_swapButton; }
    QToolButton *docChangeButton(int side) const
    {
        return side == 0 ? m_leftChange : m_rightChange;
    }
    QWidget *lowerSection() const { return m_lowerSection; }
    int totalHeight() const { return m_totalHeight; }

private:
    PDFLayoutPicker();
    FDPDFView *viewInPlace(bool left) const;
    void refresh();
    void refreshThumbnails();

    QPointer<PDFContents> m_contents;
    QToolButton *m_singlePageButton = nullptr;
    QToolButton *m_twoPagesButton = nullptr;
    QToolButton *m_splitNoneButton = nullptr;
    QToolButton *m_splitHoriButton = nullptr;
    QToolButton *m_splitVertButton = nullptr;
    QToolButton *m_swapButton = nullptr;
    QToolButton *m_leftChange = nullptr;
    QToolButton *m_rightChange = nullptr;
    QLabel *m_leftThumbImageView = nullptr;
    QLabel *m_rightThumbImageView = nullptr;
    QWidget *m_dashedLineSeparator = nullptr;
    QWidget *m_lowerSection = nullptr;
    int m_totalHeight = 0;
};
