#include "PDFSidebarThumbContents.h"

#include "PDFThumbnailModel.h"
#include "PDFThumbnailRenderer.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFAnnotation.h>
#include <view/FDPDFView.h>

#include <QListView>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace {

constexpr int imageTop = 10;
constexpr int numberGap = 2;
constexpr int numberHeight = 22;

// The edge of the square a thumbnail is fitted into: the design's size, or less in a narrow
// sidebar.
int imageEdgeFor(int viewportWidth)
{
    return std::clamp(viewportWidth - 20, 60, int(PDFSidebarThumbContents::thumbnailSize));
}

// Paints a row: the picture (or a blank page of its shape) and the page number below it, both
// marked when the row is selected. Never draws a page itself.
class ThumbnailDelegate : public QStyledItemDelegate
{
public:
    ThumbnailDelegate(PDFThumbnailModel *model, QListView *view)
        : QStyledItemDelegate(view)
        , m_model(model)
        , m_view(view)
    { }

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        const int edge = imageEdgeFor(m_view->viewport()->width());
        return QSize(m_view->viewport()->width(), edge + 42);
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override
    {
        const FDTheme *const theme = FDThemeProvider::current();
        const bool selected = option.state & QStyle::State_Selected;
        const int edge = imageEdgeFor(m_view->viewport()->width());
        const QImage image = m_model->thumbnailForRow(index.row());
        QSizeF shape = image.isNull() ? m_model->pageSizeForRow(index.row()) : QSizeF(image.size());
        if (shape.isEmpty())
            shape = QSizeF(edge, edge);
        shape.scale(edge, edge, Qt::KeepAspectRatio);
        const QRectF square(
            option.rect.center().x() - edge / 2.0, option.rect.top() + imageTop, edge, edge);
        QRectF place(QPointF(0, 0), shape);
        place.moveCenter(square.center());
        place.moveBottom(square.bottom());

        painter->save();
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->setRenderHint(QPainter::Antialiasing);
        if (selected) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(theme->color(FDTheme::selectedBackgroundColor));
            painter->drawRoundedRect(place.adjusted(-5, -5, 5, 5), 4, 4);
        }
        if (image.isNull()) {
            painter->setPen(QPen(theme->color(FDTheme::secondaryBorderColor), 1));
            painter->setBrush(theme->color(FDTheme::pageBackgroundColor));
            painter->drawRect(place.adjusted(0.5, 0.5, -0.5, -0.5));
        } else {
            painter->drawImage(place, image);
        }
        const QRectF numberRect(
            option.rect.left(), square.bottom() + numberGap, option.rect.width(), numberHeight);
        const QString number = index.data().toString();
        if (selected) {
            const double width = option.fontMetrics.horizontalAdvance(number) + 16;
            QRectF bubble(0, 0, width, numberHeight - 4);
            bubble.moveCenter(numberRect.center());
            painter->setPen(Qt::NoPen);
            painter->setBrush(theme->color(FDTheme::selectedBackgroundColor));
            painter->drawRoundedRect(bubble, bubble.height() / 2, bubble.height() / 2);
            painter->setPen(theme->color(FDTheme::selectedTextColor));
        } else {
            painter->setPen(theme->color(FDTheme::secondaryLabelColor));
        }
        painter->drawText(numberRect, Qt::AlignCenter, number);
        painter->restore();
    }

private:
    PDFThumbnailModel *m_model;
    QListView *m_view;
};

} // namespace

PDFSidebarThumbContents::PDFSidebarThumbContents(QWidget *parent)
    : PDFSidebarTabContents(parent)
{
    setObjectName(QStringLiteral("PDFSidebar_Thumb"));
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    m_model = new PDFThumbnailModel(this);
    m_tableView = new QListView(this);
    m_tableView->setObjectName(QStringLiteral("tableView"));
    m_tableView->setModel(m_model);
    m_tableView->setUniformItemSizes(true);
    m_tableView->setItemDelegate(new ThumbnailDelegate(m_model, m_tableView));
    m_tableView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_tableView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tableView->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_tableView->verticalScrollBar()->setSingleStep(24);
    m_tableView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The row size follows the width; a scroll bar that came and went would change it.
    m_tableView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_tableView->setFrameShape(QFrame::NoFrame);
    column->addWidget(m_tableView);
    connect(m_tableView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &PDFSidebarThumbContents::onSelectionChanged);
    connect(m_tableView->verticalScrollBar(), &QScrollBar::valueChanged, this,
        &PDFSidebarThumbContents::dropRequestsOutOfView);
    setTitle(tr("Thumbnails"));
    onThemeChanged();
    reload();
}

PDFSidebarThumbContents::~PDFSidebarThumbContents() = default;

void PDFSidebarThumbContents::onResetObservers()
{
    FDPDFView *const view = selectedPDFView();
    if (!view)
        return;
    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.addObserver(this, PDFView::PageChangedNotification, view,
        [this](const Notification &) { selectCurrentPage(); });
    for (const QString &name :
        { FDDocument::BookmarkDidAddNotification, FDDocument::BookmarkDidRemoveNotification })
        center.addObserver(this, name, view,
            [this](const Notification &notification) { onBookmarkChanged(notification); });
    center.addObserver(this, FDDocument::DocumentPageDidChangeNotification, view,
        [this](const Notification &) { onDocumentPageChanged(); });
    for (const QString &name : { XPDFView::AnnotationDidAddNotification,
             XPDFView::AnnotationDidRemoveNotification, XPDFView::AnnotationDidChangeNotification })
        center.addObserver(this, name, view,
            [this](const Notification &notification) { onAnnotationCUD(notification); });
}

void PDFSidebarThumbContents::onPDFViewChanged()
{
    reload();
}

void PDFSidebarThumbContents::reload()
{
    FDPDFView *const view = selectedPDFView();
    if (view)
        m_model->setDisplayBox(view->displayBox());
    m_model->setDocument(document());
    selectCurrentPage();
}

void PDFSidebarThumbContents::onThemeChanged()
{
    const FDTheme *const theme = FDThemeProvider::current();
    QPalette palette = m_tableView->palette();
    palette.setColor(QPalette::Base, theme->color(FDTheme::tableViewBackgroundColor));
    m_tableView->setPalette(palette);
    // The pictures of the new theme have keys of their own.
    m_tableView->viewport()->update();
}

void PDFSidebarThumbContents::updateItemSize()
{
    m_model->setPixelLength(int(std::lround(thumbnailSize * devicePixelRatioF())));
    // The uniform row size is measured again, and rows that left the view stop drawing.
    m_tableView->doItemsLayout();
    dropRequestsOutOfView();
}

void PDFSidebarThumbContents::showEvent(QShowEvent *event)
{
    PDFSidebarTabContents::showEvent(event);
    updateItemSize();
    selectCurrentPage();
}

void PDFSidebarThumbContents::resizeEvent(QResizeEvent *event)
{
    PDFSidebarTabContents::resizeEvent(event);
    updateItemSize();
}

std::pair<int, int> PDFSidebarThumbContents::visibleRows() const
{
    const int count = m_model->rowCount();
    if (count == 0)
        return { 0, -1 };
    const QRect area = m_tableView->viewport()->rect();
    const QModelIndex first = m_tableView->indexAt(QPoint(area.center().x(), area.top() + 1));
    const QModelIndex last = m_tableView->indexAt(QPoint(area.center().x(), area.bottom() - 1));
    return { first.isValid() ? first.row() : 0, last.isValid() ? last.row() : count - 1 };
}

void PDFSidebarThumbContents::dropRequestsOutOfView()
{
    const auto [first, last] = visibleRows();
    QSet<QString> wanted;
    for (int row = first; row <= last; ++row)
        wanted.insert(m_model->keyForRow(row));
    m_model->retainOnly(wanted);
}

void PDFSidebarThumbContents::selectCurrentPage()
{
    // Only while shown; the next showing catches up.
    if (!isVisible())
        return;
    FDPDFView *const view = selectedPDFView();
    const auto current = document();
    const auto page = view ? view->currentPage() : nullptr;
    const int row = current && page ? current->indexForPage(page) : -1;
    if (row < 0)
        return;
    const QModelIndex index = m_model->index(row);
    m_isSelectingByProgram = true;
    m_tableView->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    m_isSelectingByProgram = false;
    m_tableView->scrollTo(index);
}

void PDFSidebarThumbContents::onSelectionChanged()
{
    if (m_isSelectingByProgram)
        return;
    const QModelIndexList rows = m_tableView->selectionModel()->selectedIndexes();
    FDPDFView *const view = selectedPDFView();
    const auto page = rows.isEmpty() ? nullptr : m_model->pageAt(rows.first().row());
    if (view && page)
        view->goToPage(page);
}

void PDFSidebarThumbContents::onAnnotationCUD(const Notification &notification)
{
    const auto annotation = notification.userInfo.value(QStringLiteral("Annotation"))
                                .value<std::shared_ptr<PDFAnnotation>>();
    auto page = annotation ? annotation->page() : nullptr;
    // A removed annotation no longer knows its page; the notification says it.
    if (!page)
        page
            = notification.userInfo.value(QStringLiteral("Page")).value<std::shared_ptr<PDFPage>>();
    const auto current = document();
    if (page && current)
        m_model->pageDidChange(current->indexForPage(page));
}

void PDFSidebarThumbContents::onBookmarkChanged(const Notification &notification)
{
    const auto bookmark = notification.userInfo.value(QStringLiteral("Bookmark"))
                              .value<std::shared_ptr<FDBookmark>>();
    const auto current = document();
    if (bookmark && bookmark->page() && current)
        m_model->pageDidChange(current->indexForPage(bookmark->page()));
}

void PDFSidebarThumbContents::onDocumentPageChanged()
{
    if (m_isPageReloadQueued)
        return;
    m_isPageReloadQueued = true;
    MainQueue::async(this, [this] {
        m_isPageReloadQueued = false;
        m_model->setDocument(document());
        selectCurrentPage();
    });
}
