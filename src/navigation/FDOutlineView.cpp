#include "FDOutlineView.h"

#include "PDFOutlineModel.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>

#include <QDrag>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>

FDOutlineView::FDOutlineView(QWidget *parent)
    : QTreeView(parent)
{
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(QAbstractItemView::InternalMove);
    setDefaultDropAction(Qt::MoveAction);
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { onThemeChanged(); });
    onThemeChanged();
}

FDOutlineView::~FDOutlineView()
{
    NotificationCenter::qkCenter().removeObserver(this);
}

void FDOutlineView::setDeleteCommand(std::function<bool()> validate, std::function<void()> perform)
{
    m_validateDelete = std::move(validate);
    m_performDelete = std::move(perform);
}

void FDOutlineView::onThemeChanged()
{
    const FDTheme *const theme = FDThemeProvider::current();
    QPalette palette = this->palette();
    palette.setColor(QPalette::Base, theme->color(FDTheme::tableViewBackgroundColor));
    palette.setColor(QPalette::AlternateBase, theme->color(FDTheme::tableRowViewBackgroundColor));
    palette.setColor(QPalette::Text, theme->color(FDTheme::labelColor));
    palette.setColor(QPalette::Highlight, theme->color(FDTheme::selectedBackgroundColor));
    palette.setColor(QPalette::HighlightedText, theme->color(FDTheme::selectedTextColor));
    setPalette(palette);
    viewport()->update();
}

void FDOutlineView::startDrag(Qt::DropActions)
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    if (rows.isEmpty() || !model())
        return;
    if (m_draggingWillBegin)
        m_draggingWillBegin(rows);
    auto *const drag = new QDrag(this);
    drag->setMimeData(model()->mimeData(rows));
    // The moved rows are put in place by the drop; nothing is taken out here afterwards.
    drag->exec(Qt::MoveAction, Qt::MoveAction);
    if (m_draggingDidEnd)
        m_draggingDidEnd();
}

void FDOutlineView::dropTargetAt(const QPoint &point, QModelIndex *target, int *childIndex) const
{
    const QModelIndex hit = indexAt(point).siblingAtColumn(0);
    *target = QModelIndex();
    *childIndex = -1;
    if (!hit.isValid())
        return;
    const QRect rect = visualRect(hit);
    const int margin = std::max(2, rect.height() / 4);
    if (point.y() - rect.top() < margin) {
        *target = hit.parent();
        *childIndex = hit.row();
    } else if (rect.bottom() - point.y() < margin && !isExpanded(hit)) {
        *target = hit.parent();
        *childIndex = hit.row() + 1;
    } else if (rect.bottom() - point.y() < margin) {
        // Below an open item is before its first child.
        *target = hit;
        *childIndex = 0;
    } else {
        *target = hit;
    }
}

void FDOutlineView::dragEnterEvent(QDragEnterEvent *event)
{
    if (!event->mimeData()->hasFormat(PDFOutlineModel::PasteboardType) || event->source() != this) {
        event->ignore();
        return;
    }
    QTreeView::dragEnterEvent(event);
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

void FDOutlineView::dragMoveEvent(QDragMoveEvent *event)
{
    if (event->source() != this) {
        event->ignore();
        return;
    }
    // The base draws the indicator and scrolls near the edges.
    QTreeView::dragMoveEvent(event);
    QModelIndex target;
    int childIndex = -1;
    dropTargetAt(event->position().toPoint(), &target, &childIndex);
    if (m_validateDrop && m_validateDrop(target, childIndex)) {
        event->setDropAction(Qt::MoveAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void FDOutlineView::dropEvent(QDropEvent *event)
{
    QModelIndex target;
    int childIndex = -1;
    dropTargetAt(event->position().toPoint(), &target, &childIndex);
    const bool accepted = event->source() == this && m_validateDrop
        && m_validateDrop(target, childIndex) && m_acceptDrop && m_acceptDrop(target, childIndex);
    // The base would copy the rows through the model; the drop is wholly ours.
    setState(NoState);
    viewport()->update();
    if (accepted) {
        event->setDropAction(Qt::MoveAction);
        event->accept();
    } else {
        event->ignore();
    }
}

bool FDOutlineView::respondsToEditCommand(const QString &command) const
{
    return command == QLatin1String("delete:") && m_performDelete;
}

bool FDOutlineView::validateEditCommand(const QString &command) const
{
    return respondsToEditCommand(command) && (!m_validateDelete || m_validateDelete());
}

void FDOutlineView::performEditCommand(const QString &command)
{
    if (respondsToEditCommand(command))
        m_performDelete();
}
