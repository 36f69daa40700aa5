#pragma once

// The first row of a document tab: sidebar, search field, annotation bar, layout, zoom, theme and
// pages editor. Buttons act on the tab and follow its notifications; the layout, zoom and theme
// buttons open their popovers below them. Main thread only.

#include "PDFContentsBar.h"

class QLineEdit;

class PDFMainToolbar : public PDFContentsBar
{
    Q_OBJECT

public:
    explicit PDFMainToolbar(PDFContents *contents, QWidget *parent = nullptr);

    // Moves the focus into the search field and selects its text.
    void focusSearchField();
    void addObservers();
    void removeObservers();
    void onSecondaryToolbarVisibilityChanged();
    void onSidebarVisibilityChanged();
    void onPagesEditingModeChanged();
    // Ctrl+F in this tab's window, while this tab is in front.
    void onPerformFindPanelAction();
    void onPagesEditorButtonClickedWithButton(QToolButton *button);
    void onAnnBarButtonClickedWithButton(QToolButton *button);
    void onLayoutButtonClickedWithButton(QToolButton *button);
    void onZoomButtonClickedWithButton(QToolButton *button);
    void onThemeButtonClickedWithButton(QToolButton *button);
    void onSidebarButtonClickedWithButton(QToolButton *button);
    // The field's text goes to the tab's search text; clearing it ends the search.
    void onSearchBeginWithSearchField(QLineEdit *searchField);
    void onSearchCancel();

    QToolButton *sidebarButton() const { return m_sidebarButton; }
    QLineEdit *searchField() const { return m_searchField; }
    QToolButton *annBarButton() const { return m_annBarButton; }
    QToolButton *layoutButton() const { return m_layoutButton; }
    QToolButton *zoomButton() const { return m_zoomButton; }
    QToolButton *themeButton() const { return m_themeButton; }
    QToolButton *pagesEditorButton() const { return m_pagesEditorButton; }

protected:
    void refreshIcons() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QToolButton *m_sidebarButton = nullptr;
    QLineEdit *m_searchField = nullptr;
    QToolButton *m_annBarButton = nullptr;
    QToolButton *m_layoutButton = nullptr;
    QToolButton *m_zoomButton = nullptr;
    QToolButton *m_themeButton = nullptr;
    QToolButton *m_pagesEditorButton = nullptr;
};
