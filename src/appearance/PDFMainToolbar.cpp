#include "PDFMainToolbar.h"

#include "FDPopoverController.h"
#include "FDTheme.h"
#include "FDThemePicker.h"
#include "FDThemeProvider.h"
#include "FDToolbarIcons.h"
#include "PDFLayoutPicker.h"
#include "PDFZoomPicker.h"

#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <kit/base/NotificationCenter.h>
#include <kit/tabs/TabStripModel.h>

#include <QEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>

PDFMainToolbar::PDFMainToolbar(PDFContents *contents, QWidget *parent)
    : PDFContentsBar(contents, parent)
{
    setObjectName(QStringLiteral("PDFMainToolbar"));
    setFixedHeight(38);
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(4);
    m_sidebarButton = makeButton(tr("Sidebar"), QKeySequence(Qt::Key_F9), true);
    m_searchField = new QLineEdit(this);
    m_searchField->setObjectName(QStringLiteral("searchField"));
    m_searchField->setPlaceholderText(tr("Search"));
    m_searchField->setAccessibleName(
        titleWithKey(tr("Search"), QKeySequence(Qt::CTRL | Qt::Key_F)));
    m_searchField->setToolTip(m_searchField->accessibleName());
    // The clear button shows only over text, and making it looks its icon up in the desktop's
    // icon themes: it is made when the field is first used, not with the window.
    m_searchField->installEventFilter(this);
    connect(m_searchField, &QLineEdit::textChanged, m_searchField, [field = m_searchField] {
        if (!field->isClearButtonEnabled())
            field->setClearButtonEnabled(true);
    });
    m_searchField->setFixedWidth(220);
    m_annBarButton = makeButton(tr("Annotation Tools"), {}, true);
    m_layoutButton = makeButton(tr("Page Layout"));
    m_zoomButton = makeButton(tr("Zoom"));
    m_themeButton = makeButton(tr("Theme"));
    m_pagesEditorButton
        = makeButton(tr("Edit Pages"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_P), true);

    row->addWidget(m_sidebarButton);
    row->addSpacing(6);
    row->addWidget(m_annBarButton);
    row->addStretch(1);
    row->addWidget(m_layoutButton);
    row->addWidget(m_zoomButton);
    row->addWidget(m_themeButton);
    row->addWidget(m_pagesEditorButton);
    row->addSpacing(8);
    row->addWidget(m_searchField);

    connect(m_sidebarButton, &QToolButton::clicked, this,
        [this] { onSidebarButtonClickedWithButton(m_sidebarButton); });
    connect(m_annBarButton, &QToolButton::clicked, this,
        [this] { onAnnBarButtonClickedWithButton(m_annBarButton); });
    connect(m_layoutButton, &QToolButton::clicked, this,
        [this] { onLayoutButtonClickedWithButton(m_layoutButton); });
    connect(m_zoomButton, &QToolButton::clicked, this,
        [this] { onZoomButtonClickedWithButton(m_zoomButton); });
    connect(m_themeButton, &QToolButton::clicked, this,
        [this] { onThemeButtonClickedWithButton(m_themeButton); });
    connect(m_pagesEditorButton, &QToolButton::clicked, this,
        [this] { onPagesEditorButtonClickedWithButton(m_pagesEditorButton); });
    connect(m_searchField, &QLineEdit::returnPressed, this,
        [this] { onSearchBeginWithSearchField(m_searchField); });
    // The clear button empties the field: that ends the search, and sends no query.
    connect(m_searchField, &QLineEdit::textChanged, this, [this](const QString &text) {
        if (text.isEmpty())
            onSearchCancel();
    });
    addObservers();
    applyTheme();
    onSecondaryToolbarVisibilityChanged();
    onSidebarVisibilityChanged();
    onPagesEditingModeChanged();
}

void PDFMainToolbar::addObservers()
{
    PDFContents *const tab = contents();
    if (!tab)
        return;
    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.addObserver(this, PDFContents::SecondaryTBVisibilityDidChangeNotification, tab,
        [this](const Notification &) { onSecondaryToolbarVisibilityChanged(); });
    center.addObserver(this, PDFContents::SidebarVisibilityDidChangeNotification, tab,
        [this](const Notification &) { onSidebarVisibilityChanged(); });
    center.addObserver(this, PDFContents::PagesEditingModeDidChangeNotification, tab,
        [this](const Notification &) { onPagesEditingModeChanged(); });
    center.addObserver(
        this, PDFContents::QueryStringDidChangeNotification, tab, [this](const Notification &) {
            // A search ended elsewhere (the results' stop button) empties the field too.
            if (contents() && !contents()->queryString().has_value() && !m_searchField->hasFocus())
                m_searchField->clear();
        });
    center.addObserver(this, PDFWindowController::PerformFindPanelActionNotification, nullptr,
        [this](const Notification &notification) {
            if (notification.sender == window())
                onPerformFindPanelAction();
        });
}

void PDFMainToolbar::removeObservers()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

void PDFMainToolbar::onPerformFindPanelAction()
{
    PDFContents *const tab = contents();
    const TabStripModel *const model = tab ? tab->tabStripModel() : nullptr;
    if (!model || model->getSelectedTabContents() != tab)
        return;
    focusSearchField();
}

void PDFMainToolbar::focusSearchField()
{
    m_searchField->setFocus(Qt::ShortcutFocusReason);
    m_searchField->selectAll();
}

void PDFMainToolbar::onSecondaryToolbarVisibilityChanged()
{
    m_annBarButton->setChecked(contents() && contents()->isAnnBarPinned());
}

void PDFMainToolbar::onSidebarVisibilityChanged()
{
    m_sidebarButton->setChecked(contents() && !contents()->isSidebarHidden());
}

void PDFMainToolbar::onPagesEditingModeChanged()
{
    const bool editing = contents() && contents()->isPagesEditingMode();
    m_pagesEditorButton->setChecked(editing);
    // Reading controls have nothing to act on while the pages editor shows.
    const QList<QWidget *> controls { m_annBarButton, m_layoutButton, m_zoomButton, m_searchField };
    for (QWidget *const control : controls)
        control->setEnabled(!editing);
}

void PDFMainToolbar::onSidebarButtonClickedWithButton(QToolButton *)
{
    if (PDFContents *const tab = contents())
        tab->setIsSidebarHidden(!tab->isSidebarHidden());
    onSidebarVisibilityChanged();
}

void PDFMainToolbar::onAnnBarButtonClickedWithButton(QToolButton *)
{
    if (PDFContents *const tab = contents())
        tab->setIsAnnBarPinned(!tab->isAnnBarPinned());
    onSecondaryToolbarVisibilityChanged();
}

void PDFMainToolbar::onPagesEditorButtonClickedWithButton(QToolButton *)
{
    if (PDFContents *const tab = contents())
        tab->setIsPagesEditingMode(!tab->isPagesEditingMode());
    onPagesEditingModeChanged();
}

void PDFMainToolbar::onLayoutButtonClickedWithButton(QToolButton *button)
{
    PDFLayoutPicker &picker = PDFLayoutPicker::shared();
    picker.setContents(contents());
    FDPopoverController::shared().showContent(
        { &picker, [&picker] { picker.onWillShow(); }, nullptr }, button);
}

void PDFMainToolbar::onZoomButtonClickedWithButton(QToolButton *button)
{
    PDFZoomPicker &picker = PDFZoomPicker::shared();
    picker.setContents(contents());
    FDPopoverController::shared().showContent(
        { &picker, [&picker] { picker.onWillShow(); }, [&picker] { picker.onWillClose(); } },
        button);
}

void PDFMainToolbar::onThemeButtonClickedWithButton(QToolButton *button)
{
    // The picker's own popup is the shared one of the theme; here it shows in the popover, as
    // every picker of the row does.
    static FDThemePicker *const picker = new FDThemePicker(new QWidget);
    FDPopoverController::shared().showContent({ picker, nullptr, nullptr }, button);
}

void PDFMainToolbar::onSearchBeginWithSearchField(QLineEdit *searchField)
{
    if (PDFContents *const tab = contents())
        tab->setQueryString(searchField->text());
}

void PDFMainToolbar::onSearchCancel()
{
    PDFContents *const tab = contents();
    if (tab && tab->queryString().has_value())
        tab->setQueryString(QString());
}

bool PDFMainToolbar::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_searchField && event->type() == QEvent::FocusIn
        && !m_searchField->isClearButtonEnabled())
        m_searchField->setClearButtonEnabled(true);
    return PDFContentsBar::eventFilter(watched, event);
}

void PDFMainToolbar::refreshIcons()
{
    const QColor color = iconColor();
    m_sidebarButton->setIcon(FDToolbarIcons::icon(FDToolbarIcons::Sidebar, color));
    m_annBarButton->setIcon(FDToolbarIcons::icon(FDToolbarIcons::AnnotationBar, color));
    m_layoutButton->setIcon(FDToolbarIcons::icon(FDToolbarIcons::Layout, color));
    m_zoomButton->setIcon(FDToolbarIcons::icon(FDToolbarIcons::Zoom, color));
    m_themeButton->setIcon(FDToolbarIcons::icon(FDToolbarIcons::Theme, color));
    m_pagesEditorButton->setIcon(FDToolbarIcons::icon(FDToolbarIcons::PagesEditor, color));
    const FDTheme *const theme = FDThemeProvider::current();
    QPalette palette = m_searchField->palette();
    palette.setColor(QPalette::Base, theme->color(FDTheme::textFieldBackgroundColor));
    palette.setColor(QPalette::Text, theme->isDark() ? FDTheme::white(1.0) : FDTheme::white(0.1));
    palette.setColor(QPalette::PlaceholderText, FDTheme::white(0.55));
    m_searchField->setPalette(palette);
}
