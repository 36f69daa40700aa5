#include "PDFSidebarBookmarkContents.h"

#include "PDFBookmarkModel.h"
#include "PDFBookmarkTableView.h"

#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <kit/base/NotificationCenter.h>
#include <view/FDPDFView.h>

#include <QHeaderView>
#include <QLocale>
#include <QMenu>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace {

// Titles wrap; an empty one is measured as "--" so that its row keeps a line's height.
class BookmarkTitleDelegate : public QStyledItemDelegate
{
public:
    explicit BookmarkTitleDelegate(QTableView *view)
        : QStyledItemDelegate(view)
        , m_view(view)
    { }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        if (index.column() != PDFBookmarkModel::TitleColumn)
            return size;
        QString title = index.data().toString();
        if (title.isEmpty())
            title = QStringLiteral("--");
        const int room = std::max(40, m_view->columnWidth(0) - 2 * 4 - 4);
        const QRect text
            = option.fontMetrics.boundingRect(QRect(0, 0, room, 100000), Qt::TextWordWrap, title);
        size.setHeight(std::max(24, text.height() + 8));
        return size;
    }

private:
    QTableView *m_view;
};

} // namespace

PDFSidebarBookmarkContents::PDFSidebarBookmarkContents(QWidget *parent)
    : PDFSidebarTabContents(parent)
{
    setObjectName(QStringLiteral("PDFSidebar_BM"));
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    m_model = new PDFBookmarkModel(this);
    m_tableView = new PDFBookmarkTableView(this);
    m_tableView->setObjectName(QStringLiteral("tableView"));
    m_tableView->setModel(m_model);
    m_tableView->setItemDelegate(new BookmarkTitleDelegate(m_tableView));
    m_tableView->horizontalHeader()->hide();
    m_tableView->verticalHeader()->hide();
    m_tableView->setShowGrid(false);
    m_tableView->setWordWrap(true);
    m_tableView->setFrameShape(QFrame::NoFrame);
    m_tableView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_tableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_tableView->setEditTriggers(
        QAbstractItemView::SelectedClicked | QAbstractItemView::EditKeyPressed);
    m_tableView->setContextMenuPolicy(Qt::CustomContextMenu);
    m_tableView->horizontalHeader()->setStretchLastSection(false);
    m_tableView->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_tableView->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Fixed);
    m_tableView->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    column->addWidget(m_tableView);
    connect(m_tableView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &PDFSidebarBookmarkContents::onSelectionChanged);
    connect(m_tableView, &QWidget::customContextMenuRequested, this,
        &PDFSidebarBookmarkContents::showContextMenu);
    m_tableView->setDeleteCommand([this] { return m_tableView->selectionModel()->hasSelection(); },
        [this] { deleteBookmark(); });
    reload();
}

PDFSidebarBookmarkContents::~PDFSidebarBookmarkContents() = default;

void PDFSidebarBookmarkContents::onResetObservers()
{
    FDPDFView *const view = selectedPDFView();
    if (!view)
        return;
    NotificationCenter &center = NotificationCenter::defaultCenter();
    const auto bookmarkOf = [](const Notification &notification) {
        return notification.userInfo.value(QStringLiteral("Bookmark"))
            .value<std::shared_ptr<FDBookmark>>();
    };
    center.addObserver(this, FDDocument::BookmarkDidAddNotification, view,
        [this, bookmarkOf](const Notification &notification) {
            updateTitle();
            const auto bookmark = bookmarkOf(notification);
            const auto current = document();
            if (!bookmark || !current)
                return;
            const int row = int(current->bookmarks().indexOf(bookmark));
            // Rows moving under the selection take nobody anywhere.
            m_isSelectingByProgram = true;
            m_model->bookmarkAdded(row, bookmark);
            m_tableView->selectRow(row);
            m_isSelectingByProgram = false;
            m_tableView->scrollTo(m_model->index(row, 0));
            updatePageColumn();
        });
    center.addObserver(this, FDDocument::BookmarkDidRemoveNotification, view,
        [this](const Notification &notification) {
            updateTitle();
            bool ok = false;
            const int row = notification.userInfo.value(QStringLiteral("Index")).toInt(&ok);
            if (ok) {
                m_isSelectingByProgram = true;
                m_model->bookmarkRemoved(row);
                m_isSelectingByProgram = false;
            }
            updatePageColumn();
        });
    center.addObserver(this, FDDocument::BookmarkDidChangeNotification, view,
        [this, bookmarkOf](const Notification &notification) {
            m_model->bookmarkChanged(bookmarkOf(notification));
        });
}

void PDFSidebarBookmarkContents::onPDFViewChanged()
{
    reload();
}

void PDFSidebarBookmarkContents::onThemeChanged()
{
    m_tableView->onThemeChanged();
}

void PDFSidebarBookmarkContents::reload()
{
    updatePageColumn();
    m_model->setDocument(document());
    updateTitle();
}

void PDFSidebarBookmarkContents::updateTitle()
{
    const auto current = document();
    const qsizetype count = current ? current->bookmarks().size() : 0;
    setTitle(tr("Bookmarks ( %1 )").arg(QLocale().toString(count)));
}

void PDFSidebarBookmarkContents::updatePageColumn()
{
    const auto current = document();
    if (!current || current->bookmarks().isEmpty())
        return;
    const auto &page = current->bookmarks().last()->page();
    const int index = page ? current->indexForPage(page) : -1;
    const double width = index > 999 ? 40.0 : index > 99 ? 32.0 : 24.0;
    m_pageColumnWidth = width;
    const QString widest(QString::number(std::max(index + 1, 1)).size(), QLatin1Char('8'));
    const int needed = m_tableView->fontMetrics().horizontalAdvance(widest) + 10;
    m_tableView->horizontalHeader()->resizeSection(1, std::max(int(width), needed));
}

void PDFSidebarBookmarkContents::onSelectionChanged()
{
    if (m_isSelectingByProgram)
        return;
    const QModelIndexList rows = m_tableView->selectionModel()->selectedRows();
    const auto bookmark = rows.isEmpty() ? nullptr : m_model->bookmarkAt(rows.first().row());
    FDPDFView *const view = selectedPDFView();
    if (view && bookmark && bookmark->page())
        view->goToPage(bookmark->page());
}

void PDFSidebarBookmarkContents::editBookmark(int row)
{
    const QModelIndex title = m_model->index(row, PDFBookmarkModel::TitleColumn);
    if (!title.isValid())
        return;
    m_tableView->setCurrentIndex(title);
    m_tableView->edit(title);
}

void PDFSidebarBookmarkContents::deleteBookmark(int clickedRow)
{
    int row = clickedRow;
    if (row < 0) {
        const QModelIndexList rows = m_tableView->selectionModel()->selectedRows();
        row = rows.isEmpty() ? -1 : rows.first().row();
    }
    const auto bookmark = m_model->bookmarkAt(row);
    const auto current = document();
    // The row goes when the document announces the removal.
    if (bookmark && current)
        current->removeBookmark(bookmark);
}

void PDFSidebarBookmarkContents::showContextMenu(const QPoint &point)
{
    const int row = m_tableView->indexAt(point).row();
    if (row < 0)
        return;
    QMenu menu(this);
    QAction *const edit = menu.addAction(tr("Edit"));
    menu.addSeparator();
    QAction *const remove = menu.addAction(tr("Delete"));
    QAction *const chosen = menu.exec(m_tableView->viewport()->mapToGlobal(point));
    if (chosen == edit)
        editBookmark(row);
    else if (chosen == remove)
        deleteBookmark(row);
}
