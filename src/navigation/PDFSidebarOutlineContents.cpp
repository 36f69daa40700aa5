#include "PDFSidebarOutlineContents.h"

#include "FDOutlineView.h"
#include "PDFDestinationEditor.h"
#include "PDFOutline+XExtensions.h"
#include "PDFOutlineModel.h"

#include <app/PDFContents.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <document/FDDocument.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFOutline.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>
#include <view/FDPDFView.h>

#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <utility>

const QString PDFSidebarOutlineContents::OutlineDidChangeNotification
    = QStringLiteral("PDFView_DocumentOutlineDidChange");

namespace {

constexpr double rowHeight = 24.0;

// Labels wrap over as many lines as they need; the height is measured in the room the label
// column leaves at the item's depth.
class OutlineLabelDelegate : public QStyledItemDelegate
{
public:
    explicit OutlineLabelDelegate(QTreeView *view)
        : QStyledItemDelegate(view)
        , m_view(view)
    { }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        if (index.column() != 0) {
            size.setHeight(int(rowHeight));
            return size;
        }
        int depth = 1;
        for (QModelIndex up = index.parent(); up.isValid(); up = up.parent())
            ++depth;
        const int room = std::max(40, m_view->columnWidth(0) - depth * m_view->indentation() - 8);
        const QRect text = option.fontMetrics.boundingRect(
            QRect(0, 0, room, 100000), Qt::TextWordWrap, index.data().toString());
        size.setHeight(std::max(int(rowHeight), text.height() + 8));
        return size;
    }

private:
    QTreeView *m_view;
};

QToolButton *makeButton(
    QWidget *parent, const QString &name, const QString &text, const QString &toolTip)
{
    auto *const button = new QToolButton(parent);
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(toolTip);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

// The position of an item in reading order, for sorting rows.
QList<int> pathOf(const std::shared_ptr<PDFOutline> &item)
{
    QList<int> path;
    for (auto at = item; at && at->parent(); at = at->parent())
        path.prepend(at->index());
    return path;
}

} // namespace

PDFSidebarOutlineContents::PDFSidebarOutlineContents(QWidget *parent)
    : PDFSidebarTabContents(parent)
{
    setObjectName(QStringLiteral("PDFSidebar_Toc"));
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    m_model = new PDFOutlineModel(this);
    m_outlineView = new FDOutlineView(this);
    m_outlineView->setObjectName(QStringLiteral("outlineView"));
    m_outlineView->setModel(m_model);
    m_outlineView->setHeaderHidden(true);
    m_outlineView->setUniformRowHeights(false);
    m_outlineView->setWordWrap(true);
    m_outlineView->setTextElideMode(Qt::ElideNone);
    m_outlineView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_outlineView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_outlineView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_outlineView->setItemDelegate(new OutlineLabelDelegate(m_outlineView));
    m_outlineView->setFrameShape(QFrame::NoFrame);
    m_outlineView->setContextMenuPolicy(Qt::CustomContextMenu);
    m_outlineView->header()->setStretchLastSection(false);
    m_outlineView->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_outlineView->header()->setSectionResizeMode(1, QHeaderView::Fixed);
    column->addWidget(m_outlineView, 1);
    // Wrapped labels take another height when their column changes width.
    connect(m_outlineView->header(), &QHeaderView::sectionResized, this, [this](int section) {
        if (section == 0 && !m_isRelayoutScheduled) {
            m_isRelayoutScheduled = true;
            MainQueue::async(this, [this] {
                m_isRelayoutScheduled = false;
                m_outlineView->doItemsLayout();
            });
        }
    });

    auto *const buttons = new QHBoxLayout;
    buttons->setContentsMargins(6, 2, 6, 4);
    m_addButton = makeButton(this, QStringLiteral("addButton"), QStringLiteral("+"),
        tr("Add an item for the current place"));
    m_editButton = makeButton(this, QStringLiteral("editButton"), tr("Edit"), tr("Edit the item"));
    m_delButton = makeButton(
        this, QStringLiteral("delButton"), QStringLiteral("−"), tr("Delete the selected items"));
    buttons->addWidget(m_addButton);
    buttons->addWidget(m_delButton);
    buttons->addStretch(1);
    buttons->addWidget(m_editButton);
    column->addLayout(buttons);
    connect(m_addButton, &QToolButton::clicked, this, [this] { onAddItem(); });
    connect(m_editButton, &QToolButton::clicked, this, [this] { onEditItem(); });
    connect(m_delButton, &QToolButton::clicked, this, [this] { deleteItems(); });

    connect(m_outlineView, &QTreeView::clicked, this, &PDFSidebarOutlineContents::onItemClicked);
    connect(m_outlineView, &QTreeView::doubleClicked, this,
        &PDFSidebarOutlineContents::onItemDoubleClicked);
    connect(m_outlineView, &QWidget::customContextMenuRequested, this,
        &PDFSidebarOutlineContents::showContextMenu);
    connect(m_outlineView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &PDFSidebarOutlineContents::onSelectionChanged);
    m_outlineView->setDraggingWillBegin([this](const QModelIndexList &rows) {
        std::vector<std::shared_ptr<PDFOutline>> items;
        for (const QModelIndex &row : rows) {
            if (auto item = m_model->itemForIndex(row))
                items.push_back(std::move(item));
        }
        draggingWillBegin(items);
    });
    m_outlineView->setDraggingDidEnd([this] { draggingDidEnd(); });
    m_outlineView->setValidateDrop([this](const QModelIndex &target, int childIndex) {
        return validateDrop(target, childIndex);
    });
    m_outlineView->setAcceptDrop([this](const QModelIndex &target, int childIndex) {
        return acceptDrop(target, childIndex);
    });
    m_outlineView->setDeleteCommand(
        [this] { return m_outlineView->selectionModel()->hasSelection(); },
        [this] { deleteItems(); });

    setTitle(tr("Outline"));
    onSelectionChanged();
    reload();
}

PDFSidebarOutlineContents::~PDFSidebarOutlineContents() = default;

void PDFSidebarOutlineContents::onResetObservers()
{
    NotificationCenter &center = NotificationCenter::defaultCenter();
    if (FDPDFView *const view = selectedPDFView()) {
        center.addObserver(this, PDFView::PageChangedNotification, view,
            [this](const Notification &) { schedulePageFollowing(); });
    }
    if (PDFContents *const tab = contents()) {
        center.addObserver(this, PDFContents::AddOutlineNotification, tab,
            [this](const Notification &) { onAddItem(); });
    }
}

void PDFSidebarOutlineContents::onPDFViewChanged()
{
    reload();
}

void PDFSidebarOutlineContents::reload()
{
    m_mapPagesToOutlines.reset();
    m_lastClickedRow = QPersistentModelIndex();
    m_model->setDocument(document());
    updatePageColumn();
    schedulePageFollowing();
}

void PDFSidebarOutlineContents::updatePageColumn()
{
    const auto current = document();
    const int pages = current ? current->pageCount() : 0;
    const double width = pages > 999 ? 40.0 : pages >= 100 ? 32.0 : 24.0;
    m_pageColumnWidth = width;
    // The widths suit the design's small figures; the font in use may need more.
    const QString widest(QString::number(std::max(pages, 1)).size(), QLatin1Char('8'));
    const int needed = m_outlineView->fontMetrics().horizontalAdvance(widest) + 10;
    m_outlineView->header()->resizeSection(1, std::max(int(width), needed));
}

void PDFSidebarOutlineContents::showEvent(QShowEvent *event)
{
    PDFSidebarTabContents::showEvent(event);
    schedulePageFollowing();
}

void PDFSidebarOutlineContents::onThemeChanged()
{
    m_outlineView->viewport()->update();
}

void PDFSidebarOutlineContents::schedulePageFollowing()
{
    // One step for a burst of page changes within a turn.
    if (m_isPageFollowingScheduled)
        return;
    m_isPageFollowingScheduled = true;
    MainQueue::async(this, [this] {
        m_isPageFollowingScheduled = false;
        followPage();
    });
}

void PDFSidebarOutlineContents::followPage()
{
    FDPDFView *const view = selectedPDFView();
    const auto current = document();
    const auto page = view ? view->currentPage() : nullptr;
    if (!current || !page || !window())
        return;
    const int pageIndex = current->indexForPage(page);
    // A selection that already fits stays, so that items sharing a page are left alone.
    for (const auto &item : selectedItems()) {
        if (::pageIndex(*item) == pageIndex && pageIndex >= 0)
            return;
    }
    // An item's page may take its named destination and a part of the page tree to find: a
    // long outline is matched a few milliseconds per turn, leaving the turns between to the
    // first screen and to input.
    if (!buildPageMap(PageMapMillisecondsPerTurn)) {
        schedulePageFollowing();
        return;
    }
    selectOutlineWithItem(outlineItemForPage(pageIndex));
}

bool PDFSidebarOutlineContents::buildPageMap(int milliseconds)
{
    const auto current = document();
    if (!current)
        return false;
    if (!m_mapPagesToOutlines || m_mapDocument != current.get()) {
        m_mapPagesToOutlines.emplace();
        m_mapDocument = current.get();
        m_mapPending.clear();
        if (const auto top = current->outlineRoot())
            m_mapPending.push_back(top);
    }
    // Parent before children, children in order: a later item of a page replaces an earlier
    // one. The engine's tree has no loops, so the walk ends.
    QElapsedTimer clock;
    clock.start();
    while (!m_mapPending.empty()) {
        if (milliseconds >= 0 && clock.elapsed() >= milliseconds)
            return false;
        const auto item = std::move(m_mapPending.back());
        m_mapPending.pop_back();
        const int index = ::pageIndex(*item);
        if (index >= 0)
            (*m_mapPagesToOutlines)[index] = item;
        for (int child = item->numberOfChildren() - 1; child >= 0; --child)
            m_mapPending.push_back(item->childAtIndex(child));
    }
    return true;
}

std::shared_ptr<PDFOutline> PDFSidebarOutlineContents::outlineItemForPage(int pageIndex)
{
    if (!buildPageMap(-1))
        return nullptr;
    // The last key at or before the page, but none past every key.
    const auto next = m_mapPagesToOutlines->upper_bound(pageIndex);
    if (next == m_mapPagesToOutlines->begin() || next == m_mapPagesToOutlines->end())
        return nullptr;
    return std::prev(next)->second;
}

void PDFSidebarOutlineContents::selectOutlineWithItem(const std::shared_ptr<PDFOutline> &item)
{
    m_isSelectingByProgram = true;
    m_outlineView->clearSelection();
    const QModelIndex index = m_model->indexForItem(item);
    if (index.isValid()) {
        std::vector<QModelIndex> ancestors;
        for (QModelIndex up = index.parent(); up.isValid(); up = up.parent())
            ancestors.insert(ancestors.begin(), up);
        for (const QModelIndex &up : ancestors)
            m_outlineView->expand(up);
        m_outlineView->scrollTo(index);
        m_outlineView->selectionModel()->setCurrentIndex(
            index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    m_isSelectingByProgram = false;
}

std::vector<std::shared_ptr<PDFOutline>> PDFSidebarOutlineContents::selectedItems() const
{
    std::vector<std::shared_ptr<PDFOutline>> items;
    QModelIndexList rows = m_outlineView->selectionModel()->selectedRows();
    for (const QModelIndex &row : rows) {
        if (auto item = m_model->itemForIndex(row))
            items.push_back(std::move(item));
    }
    std::sort(items.begin(), items.end(),
        [](const auto &a, const auto &b) { return pathOf(a) < pathOf(b); });
    return items;
}

void PDFSidebarOutlineContents::onSelectionChanged()
{
    const bool any = m_outlineView->selectionModel()->hasSelection();
    m_editButton->setEnabled(any);
    m_delButton->setEnabled(any);
    if (m_isSelectingByProgram || !any)
        return;
    // A row the person selects takes the view to its page.
    FDPDFView *const view = selectedPDFView();
    const QModelIndex current = m_outlineView->selectionModel()->currentIndex();
    const auto item = m_model->itemForIndex(current.siblingAtColumn(0));
    const auto target = item ? page(*item) : nullptr;
    if (view && target)
        view->goToPage(target);
}

void PDFSidebarOutlineContents::onItemClicked(const QModelIndex &index)
{
    const QModelIndex row = index.siblingAtColumn(0);
    // A second plain click on the same row edits it.
    if (m_lastClickedRow.isValid() && row == QModelIndex(m_lastClickedRow)) {
        m_lastClickedRow = QPersistentModelIndex();
        onEditItem(row);
        return;
    }
    m_lastClickedRow = row;
}

void PDFSidebarOutlineContents::onItemDoubleClicked(const QModelIndex &index)
{
    m_lastClickedRow = QPersistentModelIndex();
    onEditItem(index.siblingAtColumn(0));
}

void PDFSidebarOutlineContents::showContextMenu(const QPoint &point)
{
    const QModelIndex clicked = m_outlineView->indexAt(point).siblingAtColumn(0);
    QMenu menu(this);
    QAction *const add = menu.addAction(tr("Add Item"));
    menu.addSeparator();
    QAction *const edit = menu.addAction(tr("Edit"));
    QAction *const remove = menu.addAction(tr("Delete"));
    edit->setEnabled(clicked.isValid());
    remove->setEnabled(clicked.isValid());
    QAction *const chosen = menu.exec(m_outlineView->viewport()->mapToGlobal(point));
    if (chosen == add)
        onAddItem();
    else if (chosen == edit)
        onEditItem(clicked);
    else if (chosen == remove)
        deleteItems(clicked);
}

void PDFSidebarOutlineContents::noteOutlineEdited()
{
    m_mapPagesToOutlines.reset();
    FDPDFView *const view = selectedPDFView();
    if (view)
        view->noteOutlineChanged();
    if (const auto current = document()) {
        // Counted, so that the edit is saved with the document.
        current->setNumberOfOtherChanges(current->numberOfOtherChanges() + 1);
        NotificationCenter::defaultCenter().post(OutlineDidChangeNotification, view);
    }
}

void PDFSidebarOutlineContents::onAddItem()
{
    FDPDFView *const view = selectedPDFView();
    const auto current = document();
    const auto page = view ? view->currentPage() : nullptr;
    if (!view || !current || !page)
        return;
    const QString text = page->string();
    if (text.isNull())
        return;
    QString label;
    const auto selection = view->currentSelection();
    if (selection && !selection->string().isEmpty())
        label = selection->string();
    else
        label = text.size() > maxLabelLength ? text.left(maxLabelLength) : text;
    // Emptiness is judged before trimming: a label of blanks ends up empty.
    if (label.isEmpty())
        label = FDDocument::untitledTitle();
    label = label.trimmed();

    if (!current->outlineRoot())
        current->setOutlineRoot(std::make_shared<PDFOutline>());
    const auto root = current->outlineRoot();
    auto item = std::make_shared<PDFOutline>();
    item->setLabel(label);
    item->setDestination(std::make_shared<PDFDestination>(page, QPointF(0, 0)));

    const QModelIndex selected = m_outlineView->selectionModel()->currentIndex().siblingAtColumn(0);
    const auto anchor = m_outlineView->selectionModel()->isSelected(selected)
        ? m_model->itemForIndex(selected)
        : nullptr;
    m_isSelectingByProgram = true;
    if (!anchor || !anchor->parent())
        m_model->insertItem(item, root, root->numberOfChildren());
    else if (anchor->numberOfChildren() > 0)
        m_model->insertItem(item, anchor, anchor->numberOfChildren());
    else
        m_model->insertItem(item, anchor->parent(), anchor->index() + 1);
    m_isSelectingByProgram = false;
    selectOutlineWithItem(item);
    onSelectionChanged();
    noteOutlineEdited();
}

void PDFSidebarOutlineContents::deleteItems(const QModelIndex &clicked)
{
    const auto current = document();
    if (!current || !current->outlineRoot())
        return;
    std::vector<std::shared_ptr<PDFOutline>> items = selectedItems();
    const auto clickedItem = m_model->itemForIndex(clicked.siblingAtColumn(0));
    if (clickedItem && std::find(items.begin(), items.end(), clickedItem) == items.end())
        items = { clickedItem };
    if (items.empty())
        return;
    // From the highest row to the lowest, so that the rows not yet removed keep their places.
    std::reverse(items.begin(), items.end());
    std::vector<Removal> removals;
    for (const auto &item : items) {
        if (const auto parent = item->parent())
            removals.push_back({ item, parent, item->index() });
    }
    removeItems(removals);
}

void PDFSidebarOutlineContents::removeItems(const std::vector<Removal> &removals)
{
    std::vector<Removal> removed;
    for (const Removal &removal : removals) {
        if (removal.item->parent() != removal.parent)
            continue;
        removed.push_back({ removal.item, removal.parent, removal.item->index() });
        // The selection shrinking with the rows takes the view nowhere.
        const bool wasByProgram = std::exchange(m_isSelectingByProgram, true);
        m_model->removeItem(removal.item);
        m_isSelectingByProgram = wasByProgram;
    }
    if (removed.empty())
        return;
    noteOutlineEdited();
    onSelectionChanged();
    FDPDFView *const view = selectedPDFView();
    PDFContents *const tab = contents();
    UndoManager *const undo = tab ? tab->undoManager() : nullptr;
    if (!undo || !view)
        return;
    // The view is the target, so that the step goes when the view lets go of the document.
    QPointer<PDFSidebarOutlineContents> self(this);
    undo->registerUndo(static_cast<const XPDFView *>(view), [self, removed] {
        if (self)
            self->restoreItems(removed);
    });
    undo->setActionName(
        removed.size() == 1 ? tr("Delete Outline Item") : tr("Delete Outline Items"));
}

void PDFSidebarOutlineContents::restoreItems(const std::vector<Removal> &removed)
{
    // The reverse of the removals puts every item back where it was.
    const bool wasByProgram = std::exchange(m_isSelectingByProgram, true);
    for (auto at = removed.rbegin(); at != removed.rend(); ++at)
        m_model->insertItem(at->item, at->parent, at->index);
    m_isSelectingByProgram = wasByProgram;
    noteOutlineEdited();
    FDPDFView *const view = selectedPDFView();
    PDFContents *const tab = contents();
    UndoManager *const undo = tab ? tab->undoManager() : nullptr;
    if (undo && view) {
        QPointer<PDFSidebarOutlineContents> self(this);
        undo->registerUndo(static_cast<const XPDFView *>(view), [self, removed] {
            if (self)
                self->removeItems(removed);
        });
    }
    if (!removed.empty())
        selectOutlineWithItem(removed.back().item);
}

void PDFSidebarOutlineContents::onEditItem(const QModelIndex &row)
{
    QModelIndex index = row.isValid()
        ? row.siblingAtColumn(0)
        : m_outlineView->selectionModel()->currentIndex().siblingAtColumn(0);
    const auto item = m_model->itemForIndex(index);
    const auto current = document();
    const auto target = item ? page(*item) : nullptr;
    if (!item || !current || !target || pageIndex(*item) < 0)
        return;
    if (row.isValid()) {
        m_isSelectingByProgram = true;
        m_outlineView->selectionModel()->setCurrentIndex(
            index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        m_isSelectingByProgram = false;
    }
    m_outlineView->scrollTo(index);
    QRect area = m_outlineView->visualRect(index);
    area.setLeft(0);
    area.setRight(m_outlineView->viewport()->width() - 1);
    QPointer<PDFSidebarOutlineContents> self(this);
    PDFDestinationEditor::shared().showOf(m_outlineView->viewport(), area, 2, item->label(),
        current->pageCount(), pageIndex(*item), item,
        [self](const QString &label, int pageIndex, const std::shared_ptr<void> &object) {
            if (!self)
                return;
            const auto edited = std::static_pointer_cast<PDFOutline>(object);
            const auto document = self->document();
            if (!document || !self->m_model->indexForItem(edited).isValid())
                return;
            const auto newPage = document->pageAtIndex(pageIndex);
            if (!newPage)
                return;
            edited->setLabel(label);
            // A finer place the item had is given up, even on the same page.
            edited->setDestination(std::make_shared<PDFDestination>(newPage, QPointF(0, 0)));
            self->noteOutlineEdited();
            self->m_model->itemChanged(edited);
            self->selectOutlineWithItem(edited);
        });
}
