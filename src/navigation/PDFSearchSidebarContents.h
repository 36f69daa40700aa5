#pragma once

// The search results beside a tab's views: the list of whichever view is selected, its count,
// and previous, next and stop. Each view keeps its own list and row across switches.
// Main thread only.

#include "PDFSidebarTabContents.h"

class PDFSearchResultDelegate;
class PDFSearchResultModel;
class PDFSearchResultView;
class PDFViewSearcher;
class QLabel;
class QToolButton;

class PDFSearchSidebarContents : public PDFSidebarTabContents
{
    Q_OBJECT

public:
    explicit PDFSearchSidebarContents(QWidget *parent = nullptr);
    ~PDFSearchSidebarContents() override;

    // The selected view's searcher; null without one.
    PDFViewSearcher *searcher() const;
    PDFSearchResultView *listView() const { return m_listView; }
    PDFSearchResultModel *model() const { return m_model; }
    QToolButton *prevButton() const { return m_prevButton; }
    QToolButton *nextButton() const { return m_nextButton; }
    QToolButton *stopButton() const { return m_stopButton; }
    int selectedRow() const;

    // Move to the match before or after the selected row, skipping headers.
    void selectPreviousMatch();
    void selectNextMatch();

    // "Found: N", no prefix above 9999, "..." while the find runs.
    static QString titleFor(int count, bool finding);

protected:
    void onPDFViewChanged() override;
    void onResetObservers() override;
    void onThemeChanged() override;

private:
    void onSearchBegin();
    void onSearchMatched(const QVariantMap &userInfo);
    void onSearchEnd();
    void onSearchCancel();
    void onSelectionChanged();
    void updateTitle();
    void updateButtons();
    void updateIndicator();
    // Selects a stored row when it is a valid one and not already selected.
    void restoreRow(int row);
    void selectRow(int row);

    QLabel *m_indicator = nullptr;
    QLabel *m_titleLabel = nullptr;
    QToolButton *m_prevButton = nullptr;
    QToolButton *m_nextButton = nullptr;
    QToolButton *m_stopButton = nullptr;
    PDFSearchResultView *m_listView = nullptr;
    PDFSearchResultModel *m_model = nullptr;
    PDFSearchResultDelegate *m_delegate = nullptr;
    bool m_isRestoringSelection = false;
};
