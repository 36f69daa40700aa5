#include "PDFSidebarAnnContents.h"

#include "PDFAnnotationListDelegate.h"
#include "PDFAnnotationListModel.h"
#include "PDFSidebarListView.h"

#include <document/FDDocument.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFAnnotation.h>
#include <view/FDPDFView.h>

#include <QAction>
#include <QLocale>
#include <QMenu>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>

namespace {

std::shared_ptr<PDFAnnotation> annotationOf(const Notification &notification)
{
    return notification.userInfo.value(QStringLiteral("Annotation"))
        .value<std::shared_ptr<PDFAnnotation>>();
}

} // namespace

PDFSidebarAnnContents::PDFSidebarAnnContents(QWidget *parent)
    : PDFSidebarTabContents(parent)
{
    setObjectName(QStringLiteral("PDFSidebarAnn"));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_listView = new PDFSidebarListView(this);
    m_listView->setObjectName(QStringLiteral("annotationList"));
    m_listView->setContextMenuPolicy(Qt::CustomContextMenu);
    m_listView->setAccessibleName(tr("Annotations"));
    m_model = new PDFAnnotationListModel(this);
    m_delegate = new PDFAnnotationListDelegate(this);
    m_listView->setModel(m_model);
    m_listView->setItemDelegate(m_delegate);
    layout->addWidget(m_listView);
    // Heights are kept per annotation, so rows that shift keep theirs; a rebuild measures anew.
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] { m_delegate->clearHeights(); });
    connect(m_listView, &QListView::clicked, this,
        [this](const QModelIndex &index) { onRowClicked(index.row()); });
    connect(m_listView, &QListView::customContextMenuRequested, this,
        [this](const QPoint &position) { showMenu(position); });
    auto *const deleteKey = new QShortcut(QKeySequence::Delete, m_listView);
    deleteKey->setContext(Qt::WidgetShortcut);
    connect(deleteKey, &QShortcut::activated, this, [this] { deleteSelected(); });
    updateTitle();
}

void PDFSidebarAnnContents::onResetObservers()
{
    FDPDFView *const view = selectedPDFView();
    if (!view)
        return;
    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.addObserver(this, XPDFView::AnnotationDidAddNotification, view,
        [this](const Notification &notification) { onAnnotationAdded(notification); });
    center.addObserver(this, XPDFView::AnnotationDidRemoveNotification, view,
        [this](const Notification &notification) { onAnnotationRemoved(notification); });
    center.addObserver(this, XPDFView::AnnotationDidChangeNotification, view,
        [this](const Notification &notification) { onAnnotationChanged(notification); });
    center.addObserver(this, XPDFView::SelectedAnnotationDidChangeNotification, view,
        [this](const Notification &) { onSelectedAnnotationChanged(); });
    center.addObserver(this, FDDocument::DocumentPageDidChangeNotification, view,
        [this](const Notification &) { onDocumentPageChanged(); });
}

void PDFSidebarAnnContents::onDocumentPageChanged()
{
    // A page operation may post this once per page: one rebuild serves them all.
    if (m_stale || m_rebuildPending)
        return;
    m_stale = true;
    QTimer::singleShot(0, this, [this] { rebuildIfStale(); });
}

void PDFSidebarAnnContents::rebuildIfStale(const std::shared_ptr<PDFAnnotation> &leaveOut)
{
    if (m_stale)
        rebuild(leaveOut);
}

void PDFSidebarAnnContents::onPDFViewChanged()
{
    if (isVisible()) {
        rebuild();
        return;
    }
    // A hidden list would read every page of a long document before its first screen shows.
    m_rebuildPending = true;
    m_model->rebuild(nullptr);
}

void PDFSidebarAnnContents::showEvent(QShowEvent *event)
{
    PDFSidebarTabContents::showEvent(event);
    if (m_rebuildPending)
        rebuild();
}

void PDFSidebarAnnContents::onThemeChanged()
{
    m_listView->viewport()->update();
}

void PDFSidebarAnnContents::rebuild(const std::shared_ptr<PDFAnnotation> &leaveOut)
{
    m_stale = false;
    m_rebuildPending = false;
    FDPDFView *const view = selectedPDFView();
    m_model->rebuild(view ? view->document() : nullptr, leaveOut);
    onSelectedAnnotationChanged();
    updateTitle();
}

void PDFSidebarAnnContents::updateTitle()
{
    setTitle(tr("Annotations ( %1 )").arg(QLocale().toString(m_model->annCount())));
}

void PDFSidebarAnnContents::onAnnotationAdded(const Notification &notification)
{
    if (m_rebuildPending)
        return;
    // The new one still leads its group when the rows are rebuilt first.
    const auto annotation = annotationOf(notification);
    rebuildIfStale(annotation);
    const int row = m_model->add(annotation);
    updateTitle();
    if (row >= 0)
        selectRow(row);
}

void PDFSidebarAnnContents::onAnnotationRemoved(const Notification &notification)
{
    if (m_rebuildPending)
        return;
    const auto annotation = annotationOf(notification);
    const int row = m_model->rowOf(annotation);
    if (row >= 0) {
        m_listView->scrollTo(m_model->index(row));
        // Another annotation may be made at the same address later.
        m_delegate->forgetHeight(m_model->index(row));
    }
    m_model->remove(annotation);
    updateTitle();
}

void PDFSidebarAnnContents::onAnnotationChanged(const Notification &notification)
{
    // Stale rows are rebuilt with their heights on the next turn anyway.
    if (m_stale || m_rebuildPending)
        return;
    const auto annotation = annotationOf(notification);
    const int row = m_model->rowOf(annotation);
    if (row < 0)
        return;
    // Only this row is measured again, once its text is in; the others keep their heights.
    m_delegate->forgetHeight(m_model->index(row));
    m_model->change(annotation);
    QTimer::singleShot(0, m_listView, [list = m_listView] { list->doItemsLayout(); });
}

void PDFSidebarAnnContents::onSelectedAnnotationChanged()
{
    if (m_rebuildPending)
        return;
    FDPDFView *const view = selectedPDFView();
    const auto selected = view ? view->selectedAnn() : nullptr;
    const int row = m_model->rowOf(selected);
    if (row >= 0)
        selectRow(row);
}

void PDFSidebarAnnContents::selectRow(int row)
{
    const QModelIndex index = m_model->index(row);
    m_listView->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    m_listView->scrollTo(index);
}

void PDFSidebarAnnContents::onRowClicked(int row)
{
    FDPDFView *const view = selectedPDFView();
    const auto annotation = m_model->annotationAt(row);
    if (!view || !annotation)
        return;
    view->setSelectedAnn(annotation);
    view->goToRect(annotation->bounds(), annotation->page());
}

void PDFSidebarAnnContents::copyAnn(int row)
{
    FDPDFView *const view = selectedPDFView();
    if (const auto annotation = m_model->annotationAt(row); view && annotation)
        view->copyToPasteboard(annotation);
}

void PDFSidebarAnnContents::deleteAnn(int row)
{
    // The row goes when the view says the annotation went, never before.
    FDPDFView *const view = selectedPDFView();
    if (const auto annotation = m_model->annotationAt(row); view && annotation)
        view->removeAnnotation(annotation);
}

void PDFSidebarAnnContents::deleteSelected()
{
    const QModelIndexList rows = m_listView->selectionModel()->selectedRows();
    if (!rows.isEmpty())
        deleteAnn(rows.front().row());
}

void PDFSidebarAnnContents::showMenu(const QPoint &position)
{
    const int row = m_listView->indexAt(position).row();
    if (!m_model->annotationAt(row))
        return;
    QMenu menu(this);
    menu.addAction(tr("Copy"), this, [this, row] { copyAnn(row); });
    menu.addSeparator();
    menu.addAction(tr("Delete"), this, [this, row] { deleteAnn(row); });
    menu.exec(m_listView->viewport()->mapToGlobal(position));
}
