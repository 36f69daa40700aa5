#include "PDFSearchSidebarContents.h"

#include "FDCommonImageProvider.h"
#include "PDFSearchResultDelegate.h"
#include "PDFSearchResultModel.h"
#include "PDFSearchResultView.h"
#include "PDFViewSearcher.h"

#include <app/PDFContents.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFSelection.h>
#include <view/FDPDFView.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QToolButton *makeButton(const QString &text, const QString &tip, QWidget *parent)
{
    auto *const button = new QToolButton(parent);
    button->setText(text);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setAutoRaise(true);
    return button;
}

} // namespace

PDFSearchSidebarContents::PDFSearchSidebarContents(QWidget *parent)
    : PDFSidebarTabContents(parent)
{
    setObjectName(QStringLiteral("PDFSearchSidebar"));
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto *const header = new QHBoxLayout;
    header->setContentsMargins(6, 4, 4, 4);
    m_indicator = new QLabel(this);
    m_titleLabel = new QLabel(this);
    m_titleLabel->setObjectName(QStringLiteral("searchTitle"));
    m_prevButton = makeButton(QStringLiteral("\u25B2"), tr("Previous Result"), this);
    m_nextButton = makeButton(QStringLiteral("\u25BC"), tr("Next Result"), this);
    m_stopButton = makeButton(QStringLiteral("\u2715"), tr("Stop Searching"), this);
    m_stopButton->hide();
    header->addWidget(m_indicator);
    header->addWidget(m_titleLabel, 1);
    header->addWidget(m_prevButton);
    header->addWidget(m_nextButton);
    header->addWidget(m_stopButton);
    column->addLayout(header);

    m_listView = new PDFSearchResultView(this);
    m_listView->setObjectName(QStringLiteral("searchResults"));
    m_listView->setAccessibleName(tr("Search Results"));
    m_model = new PDFSearchResultModel(this);
    m_delegate = new PDFSearchResultDelegate(this);
    m_listView->setModel(m_model);
    m_listView->setItemDelegate(m_delegate);
    column->addWidget(m_listView, 1);
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] { m_delegate->clearHeights(); });
    connect(m_listView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        [this] { onSelectionChanged(); });
    connect(m_prevButton, &QToolButton::clicked, this, [this] { selectPreviousMatch(); });
    connect(m_nextButton, &QToolButton::clicked, this, [this] { selectNextMatch(); });
    connect(m_stopButton, &QToolButton::clicked, this, [this] {
        if (contents())
            contents()->setQueryString(QString());
    });
    setMinimumWidth(200);
    updateButtons();
}

PDFSearchSidebarContents::~PDFSearchSidebarContents() = default;

PDFViewSearcher *PDFSearchSidebarContents::searcher() const
{
    PDFContents *const tab = contents();
    if (!tab)
        return nullptr;
    const bool primary = tab->selectedPDFView() == tab->primaryPDFView();
    return primary ? tab->primarySearcher() : tab->secondarySearcher();
}

int PDFSearchSidebarContents::selectedRow() const
{
    const QModelIndexList rows = m_listView->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
}

QString PDFSearchSidebarContents::titleFor(int count, bool finding)
{
    QString title = count > 9999 ? QString() : tr("Found: ");
    title += QString::number(count);
    if (finding)
        title += QStringLiteral("...");
    return title;
}

void PDFSearchSidebarContents::onResetObservers()
{
    FDPDFView *const view = selectedPDFView();
    NotificationCenter &qk = NotificationCenter::qkCenter();
    if (view) {
        qk.addObserver(this, PDFViewSearcher::SearchDidBeginNotification, view,
            [this](const Notification &) { onSearchBegin(); });
        qk.addObserver(this, PDFViewSearcher::SearchDidFindMatchesNotification, view,
            [this](const Notification &notification) { onSearchMatched(notification.userInfo); });
        qk.addObserver(this, PDFViewSearcher::SearchDidEndNotification, view,
            [this](const Notification &) { onSearchEnd(); });
        qk.addObserver(this, PDFViewSearcher::SearchDidCancelNotification, view,
            [this](const Notification &) { onSearchCancel(); });
    }
    if (contents()) {
        for (const QString &name : { PDFContents::SplitModeDidChangeNotification,
                 PDFContents::PDFViewsDidSwapNotification })
            NotificationCenter::defaultCenter().addObserver(
                this, name, contents(), [this](const Notification &) { updateIndicator(); });
    }
}

void PDFSearchSidebarContents::onPDFViewChanged()
{
    updateIndicator();
    m_model->setSearcher(searcher());
    updateTitle();
    // Putting the stored row back shows the list as it was and moves no view.
    m_isRestoringSelection = true;
    restoreRow(searcher() ? searcher()->lastSelectedRow() : -1);
    m_isRestoringSelection = false;
}

void PDFSearchSidebarContents::onThemeChanged()
{
    updateIndicator();
    m_listView->viewport()->update();
}

void PDFSearchSidebarContents::updateIndicator()
{
    const PDFContents *const tab = contents();
    if (!tab || tab->splitMode() == PDFSplitViewMode::none) {
        m_indicator->clear();
        m_indicator->hide();
        return;
    }
    // The marker of the view whose results these are, as the sidebar's title line shows it.
    FDCommonImageProvider &images = FDCommonImageProvider::shared();
    const bool primary = tab->selectedPDFView() == tab->primaryPDFView();
    const QIcon icon
        = primary ? images.primaryIndicatorOnStateIcon() : images.secondaryIndicatorOnStateIcon();
    const int edge = FDCommonImageProvider::iconSize;
    m_indicator->setPixmap(icon.pixmap(QSize(edge, edge), devicePixelRatioF()));
    m_indicator->setToolTip(primary ? tr("View A") : tr("View B"));
    m_indicator->setAccessibleName(m_indicator->toolTip());
    m_indicator->show();
}

void PDFSearchSidebarContents::onSearchBegin()
{
    setTitle(tr("Searching..."));
    m_titleLabel->setText(title());
    m_model->reload();
}

void PDFSearchSidebarContents::onSearchMatched(const QVariantMap &userInfo)
{
    updateTitle();
    const QList<int> rows = userInfo.value(PDFViewSearcher::IndexSetKey).value<QList<int>>();
    if (rows.isEmpty())
        return;
    m_model->insertRows(rows.front(), rows.back());
    // The first batch shows its first hit, as a click on it would.
    if (rows.front() == 0)
        restoreRow(1);
}

void PDFSearchSidebarContents::onSearchEnd()
{
    // The count loses its ellipsis once the document has finished finding.
    QTimer::singleShot(0, this, [this] { updateTitle(); });
}

void PDFSearchSidebarContents::onSearchCancel()
{
    updateTitle();
    m_model->reload();
    updateButtons();
}

void PDFSearchSidebarContents::updateTitle()
{
    const PDFViewSearcher *const current = searcher();
    setTitle(
        titleFor(current ? current->realMatchedCount() : 0, current && current->isSearching()));
    m_titleLabel->setText(title());
    updateButtons();
}

void PDFSearchSidebarContents::updateButtons()
{
    const PDFViewSearcher *const current = searcher();
    if (!current || !current->hasList()) {
        m_prevButton->setEnabled(false);
        m_nextButton->setEnabled(false);
        return;
    }
    m_stopButton->show();
    const int row = selectedRow();
    m_prevButton->setEnabled(row > 1);
    m_nextButton->setEnabled(row < m_model->rowCount() - 1);
}

void PDFSearchSidebarContents::selectRow(int row)
{
    const QModelIndex index = m_model->index(row);
    m_listView->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    m_listView->scrollTo(index);
}

void PDFSearchSidebarContents::restoreRow(int row)
{
    const PDFViewSearcher *const current = searcher();
    if (!current || current->realMatchedCount() <= 0 || row < 0 || row == selectedRow()
        || row >= m_model->rowCount())
        return;
    selectRow(row);
}

void PDFSearchSidebarContents::selectPreviousMatch()
{
    for (int row = selectedRow() - 1; row >= 0; --row) {
        if (!m_model->isGroupRow(row)) {
            selectRow(row);
            break;
        }
    }
    updateButtons();
}

void PDFSearchSidebarContents::selectNextMatch()
{
    const int count = m_model->rowCount();
    for (int row = selectedRow() + 1; row < count; ++row) {
        if (!m_model->isGroupRow(row)) {
            selectRow(row);
            break;
        }
    }
    updateButtons();
}

void PDFSearchSidebarContents::onSelectionChanged()
{
    const int row = selectedRow();
    PDFViewSearcher *const current = searcher();
    if (!m_isRestoringSelection && current && row >= 0 && row < current->itemCount()) {
        const auto selection = current->item(row).selection;
        if (FDPDFView *const view = selectedPDFView(); view && selection) {
            view->goToSelection(selection);
            view->setCurrentSelection(selection, true);
        }
    }
    if (current)
        current->setLastSelectedRow(row);
    updateButtons();
}
