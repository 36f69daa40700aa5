#include "PDFPagesEditor.h"

#include "PDFCollectionView.h"
#include "PDFPagePasteboard.h"

#include <app/Alert.h>
#include <app/FDFilePanel.h>
#include <app/PDFContents.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/Workspace.h>
#include <navigation/PDFThumbnailModel.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QSplitter>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QUuid>
#include <QVBoxLayout>

#include <algorithm>

const QString PDFPagesEditor::PageSelectionDidChangeNotification
    = QStringLiteral("PDFPagesEditor_PageSelectionDidChange");

const QString PDFPagesEditor::PageMarkerType = QStringLiteral("Folidoc.Pasteboard.PDFPage");

namespace {

constexpr int itemWidth = 218;
constexpr int itemHeight = 286;
constexpr int imageWidth = 210;
constexpr int numberHeight = 22;

// Paints an item: the picture (or a blank page of its shape) framed when selected, and the page
// number in a bubble below. Never draws a page itself.
class PagesEditorItemDelegate : public QStyledItemDelegate
{
public:
    PagesEditorItemDelegate(PDFThumbnailModel *model, QObject *parent)
        : QStyledItemDelegate(parent)
        , m_model(model)
    { }

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        return QSize(itemWidth, itemHeight + numberHeight);
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override
    {
        const FDTheme *const theme = FDThemeProvider::current();
        const bool selected = option.state & QStyle::State_Selected;
        const QImage image = m_model->thumbnailForRow(index.row());
        QSizeF shape = image.isNull() ? m_model->pageSizeForRow(index.row()) : QSizeF(image.size());
        const double imageHeight = PDFPagesEditor::thumbnailLength;
        if (shape.isEmpty())
            shape = QSizeF(imageWidth, imageHeight);
        shape.scale(imageWidth, imageHeight, Qt::KeepAspectRatio);
        const QRectF square(option.rect.center().x() - imageWidth / 2.0,
            option.rect.top() + (itemHeight - imageHeight) / 2.0, imageWidth, imageHeight);
        QRectF place(QPointF(0, 0), shape);
        place.moveCenter(square.center());

        painter->save();
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->setRenderHint(QPainter::Antialiasing);
        if (image.isNull()) {
            painter->setPen(QPen(theme->color(FDTheme::secondaryBorderColor), 1));
            painter->setBrush(theme->color(FDTheme::pageBackgroundColor));
            painter->drawRect(place.adjusted(0.5, 0.5, -0.5, -0.5));
        } else {
            painter->drawImage(place, image);
        }
        if (selected) {
            painter->setPen(QPen(theme->color(FDTheme::selectedBackgroundColor), 4));
            painter->setBrush(Qt::NoBrush);
            painter->drawRect(place.adjusted(-2, -2, 2, 2));
        }
        const QRectF numberRect(
            option.rect.left(), option.rect.top() + itemHeight, option.rect.width(), numberHeight);
        const QString number = QString::number(index.row() + 1);
        const double width = option.fontMetrics.horizontalAdvance(number) + 16;
        QRectF bubble(0, 0, width, numberHeight - 4);
        bubble.moveCenter(numberRect.center());
        painter->setPen(Qt::NoPen);
        painter->setBrush(selected ? theme->color(FDTheme::selectedBackgroundColor)
                                   : theme->color(FDTheme::secondaryButtonBackgroundColor));
        painter->drawRoundedRect(bubble, bubble.height() / 2, bubble.height() / 2);
        painter->setPen(theme->color(FDTheme::selectedTextColor));
        painter->drawText(numberRect, Qt::AlignCenter, number);
        painter->restore();
    }

private:
    PDFThumbnailModel *m_model;
};

} // namespace

PDFPagesEditor::PDFPagesEditor(PDFContents *contents, QWidget *parent)
    : QWidget(parent)
    , m_contents(contents)
    , m_splitter(new QSplitter(this))
{
    setObjectName(QStringLiteral("PDFPagesEditor"));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_splitter);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setHandleWidth(1);
    m_primaryPane = makePane(QStringLiteral("primaryCollectionView"));
    m_secondaryPane = makePane(QStringLiteral("secondaryCollectionView"));
    m_secondaryPane->hide();
}

PDFCollectionView *PDFPagesEditor::makePane(const QString &name)
{
    auto *const pane = new PDFCollectionView(m_splitter);
    pane->setObjectName(name);
    auto *const model = new PDFThumbnailModel(pane);
    model->setPixelLength(thumbnailLength);
    pane->setItemDelegate(new PagesEditorItemDelegate(model, pane));
    pane->setGridSize(QSize(itemWidth + 12, itemHeight + numberHeight + 12));
    pane->setModel(model);
    m_splitter->addWidget(pane);
    registerForDragAndDrop(pane);

    connect(pane, &PDFCollectionView::deleteRequested, this, &PDFPagesEditor::deleteSelection);
    connect(pane, &PDFCollectionView::leaveRequested, this, &PDFPagesEditor::leave);
    connect(pane, &PDFCollectionView::rotateRequested, this, [this] { rotateSelection(90); });
    connect(pane, &PDFCollectionView::extractRequested, this, &PDFPagesEditor::extractSelection);
    connect(
        pane, &PDFCollectionView::contextMenuRequestedAt, this, &PDFPagesEditor::showContextMenu);
    connect(pane, &PDFCollectionView::didBecomeFirstResponder, this,
        [this, pane] { collectionViewDidBecomeFirstResponder(pane); });
    connect(pane->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        NotificationCenter::defaultCenter().post(
            PageSelectionDidChangeNotification, m_contents.data());
    });
    return pane;
}

void PDFPagesEditor::setPDFViews(FDPDFView *primary, FDPDFView *secondary)
{
    m_primaryPane->setPdfView(primary);
    m_secondaryPane->setPdfView(secondary);
    NotificationCenter &center = NotificationCenter::defaultCenter();
    // Any change of a document's pages, from here or from elsewhere, shows in the grids.
    for (FDPDFView *const view : { primary, secondary }) {
        center.addObserver(
            this, PDFView::DocumentChangedNotification, view, [this](const Notification &) {
                if (isVisible())
                    reloadData();
            });
        center.addObserver(this, FDDocument::DocumentPageDidChangeNotification, view,
            [this](const Notification &) {
                if (!isVisible())
                    return;
                m_primaryPane->viewport()->update();
                m_secondaryPane->viewport()->update();
            });
    }
    center.addObserver(this, PDFContents::SplitModeDidChangeNotification, m_contents.data(),
        [this](const Notification &) { onSplitModeChanged(); });
    // The bar and the menus follow the selected pane.
    center.addObserver(this, PDFContents::SelectedPDFViewDidChangeNotification, m_contents.data(),
        [this](const Notification &) {
            NotificationCenter::defaultCenter().post(
                PageSelectionDidChangeNotification, m_contents.data());
        });
    onSplitModeChanged();
}

PDFPagesEditor::~PDFPagesEditor()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

std::shared_ptr<FDDocument> PDFPagesEditor::document() const
{
    return documentOf(selectedCollectionView());
}

PDFCollectionView *PDFPagesEditor::selectedCollectionView() const
{
    FDPDFView *const selected = m_contents ? m_contents->selectedPDFView() : nullptr;
    FDPDFView *const primary = m_primaryPane->pdfView();
    FDPDFView *const secondary = m_secondaryPane->pdfView();
    if (selected == primary || primary == secondary || !m_secondaryPane->isVisibleTo(this))
        return m_primaryPane;
    return selected == secondary ? m_secondaryPane : m_primaryPane;
}

std::shared_ptr<FDDocument> PDFPagesEditor::documentOf(const PDFCollectionView *pane) const
{
    FDPDFView *const view = pane ? pane->pdfView() : nullptr;
    return view ? view->fdDocument() : nullptr;
}

void PDFPagesEditor::collectionViewDidBecomeFirstResponder(PDFCollectionView *pane)
{
    if (m_contents && pane->pdfView())
        m_contents->PDFViewDidBecomeFirstResponder(pane->pdfView());
}

void PDFPagesEditor::onSplitModeChanged()
{
    const PDFSplitViewMode mode = m_contents ? m_contents->splitMode() : PDFSplitViewMode::none;
    // The panes stand as the views do: side by side for a horizontal split, else one above
    // the other.
    m_splitter->setOrientation(mode == PDFSplitViewMode::vertical ? Qt::Vertical : Qt::Horizontal);
    const bool split = mode != PDFSplitViewMode::none;
    if (split == m_secondaryPane->isVisibleTo(this))
        return;
    m_secondaryPane->setVisible(split);
    if (split) {
        reloadPane(m_secondaryPane);
        const int length = m_splitter->orientation() == Qt::Horizontal ? m_splitter->width()
                                                                       : m_splitter->height();
        m_splitter->setSizes({ length / 2, length - length / 2 });
    } else if (m_contents && m_contents->selectedPDFView() == m_secondaryPane->pdfView()) {
        m_primaryPane->setFocus(Qt::OtherFocusReason);
    }
}

void PDFPagesEditor::reloadPane(PDFCollectionView *pane)
{
    auto *const model = static_cast<PDFThumbnailModel *>(pane->model());
    const QList<int> rows = pane->selectedRows();
    model->setDocument(nullptr);
    model->setDocument(pane->isVisibleTo(this) ? documentOf(pane) : nullptr);
    const int count = model->rowCount();
    QList<int> kept;
    for (const int row : rows) {
        if (row < count)
            kept.append(row);
    }
    pane->selectRows(kept);
}

void PDFPagesEditor::reloadData()
{
    reloadPane(m_primaryPane);
    reloadPane(m_secondaryPane);
}

void PDFPagesEditor::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    reloadData();
    QTimer::singleShot(0, this, [this] {
        if (PDFCollectionView *const pane = selectedCollectionView())
            pane->setFocus(Qt::OtherFocusReason);
    });
}

int PDFPagesEditor::insertionIndex(const QList<int> &selectedRows, int itemCount)
{
    if (selectedRows.isEmpty())
        return itemCount;
    return *std::max_element(selectedRows.begin(), selectedRows.end()) + 1;
}

QString PDFPagesEditor::proposedExtractName(const QUrl &documentURL, QList<int> rows)
{
    if (documentURL.isEmpty() || rows.isEmpty())
        return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    std::sort(rows.begin(), rows.end());
    QStringList items;
    for (const int row : rows)
        items.append(QString::number(row));
    const QString base = QFileInfo(documentURL.path()).completeBaseName();
    return base + QLatin1Char('-') + items.join(QLatin1Char(',')) + QStringLiteral(".pdf");
}

bool PDFPagesEditor::canRotate() const
{
    return !selectedCollectionView()->selectedRows().isEmpty();
}

bool PDFPagesEditor::canExtract() const
{
    return canRotate();
}

void PDFPagesEditor::rotateSelection(int degrees)
{
    PDFCollectionView *const pane = selectedCollectionView();
    const auto current = documentOf(pane);
    const QList<int> rows = pane->selectedRows();
    if (!current || rows.isEmpty())
        return;
    for (const int row : rows) {
        if (const auto page = current->pageAtIndex(row))
            page->setRotation(page->rotation() + degrees);
    }
    current->setNumberOfPageChanges(current->numberOfPageChanges() + 1);
    didChangePages();
    pane->selectRows(rows);
}

void PDFPagesEditor::deleteSelection()
{
    AlertRequest request;
    request.style = AlertRequest::Warning;
    request.messageText = tr("Are you sure you want to delete selected pages?");
    request.informativeText = tr("You can't undo this action!");
    request.buttons = { tr("Delete"), tr("Cancel") };
    if (Alert::runModal(request) != Alert::FirstButtonReturn)
        return;
    PDFCollectionView *const pane = selectedCollectionView();
    const auto current = documentOf(pane);
    const QList<int> rows = pane->selectedRows();
    if (!current || rows.isEmpty())
        return;
    pane->performBatchUpdates([&] {
        pane->clearSelection();
        // From the highest index down, so the lower ones stay valid.
        for (auto row = rows.crbegin(); row != rows.crend(); ++row) {
            if (current->pageAtIndex(*row))
                current->removePageAtIndex(*row);
        }
        // Bookmarks of deleted pages go now, before the save takes the outline.
        current->removeBookmarksOfRemovedPages();
    });
    didChangePages();
    pane->clearSelection();
}

void PDFPagesEditor::extractSelection()
{
    PDFCollectionView *const pane = selectedCollectionView();
    const QList<int> rows = pane->selectedRows();
    const auto current = documentOf(pane);
    if (!current || rows.isEmpty())
        return;
    FilePanelRequest request;
    request.kind = FilePanelRequest::Save;
    request.nameFieldStringValue = proposedExtractName(current->fileURL(), rows);
    request.parent = this;
    const QUrl chosen = FDFilePanel::runModal(request);
    if (chosen.isEmpty())
        return;
    writePages(rows, chosen);
    Workspace::activateFileViewerSelectingURLs({ chosen });
}

bool PDFPagesEditor::writePages(const QList<int> &rows, const QUrl &url) const
{
    return writePages(selectedCollectionView(), rows, url);
}

bool PDFPagesEditor::writePages(
    const PDFCollectionView *pane, const QList<int> &rows, const QUrl &url) const
{
    return writePagesOf(documentOf(pane), rows, url);
}

void PDFPagesEditor::leave()
{
    if (m_contents && m_contents->isPagesEditingMode())
        m_contents->setIsPagesEditingMode(false);
}

QList<std::weak_ptr<PDFPage>> &PDFPagesEditor::pageClipboard()
{
    static QList<std::weak_ptr<PDFPage>> pages;
    return pages;
}

void PDFPagesEditor::copySelection()
{
    PDFCollectionView *const pane = selectedCollectionView();
    const auto current = documentOf(pane);
    const QList<int> rows = pane->selectedRows();
    if (!current || rows.isEmpty())
        return;
    QList<std::weak_ptr<PDFPage>> &pages = pageClipboard();
    pages.clear();
    for (const int row : rows) {
        if (const auto page = current->pageAtIndex(row))
            pages.append(page);
    }
    auto *const mime = new QMimeData;
    mime->setData(PageMarkerType, QByteArray::number(QApplication::applicationPid()));
    QApplication::clipboard()->setMimeData(mime);
}

bool PDFPagesEditor::canPaste() const
{
    // Not while a batch of item changes runs in either pane.
    if (m_primaryPane->isAnimating() || m_secondaryPane->isAnimating() || !document())
        return false;
    // Files that another program put on the clipboard win over pages copied here earlier.
    if (!PDFPagePasteboard::pageFileURLs(QApplication::clipboard()->mimeData()).isEmpty())
        return true;
    const QList<std::weak_ptr<PDFPage>> &pages = pageClipboard();
    return std::any_of(pages.begin(), pages.end(),
        [](const std::weak_ptr<PDFPage> &page) { return !page.expired(); });
}

void PDFPagesEditor::paste()
{
    if (!canPaste())
        return;
    PDFCollectionView *const pane = selectedCollectionView();
    const auto current = documentOf(pane);
    const int start = insertionIndex(pane->selectedRows(), current->pageCount());
    const QList<QUrl> urls = PDFPagePasteboard::pageFileURLs(QApplication::clipboard()->mimeData());
    if (!urls.isEmpty()) {
        insertURLs(pane, urls, start);
        return;
    }
    int index = start;
    // Copies, so that pasting twice or into the pages' own document makes new pages.
    for (const std::weak_ptr<PDFPage> &weak : pageClipboard()) {
        if (const auto page = weak.lock()) {
            current->insertPage(page->copy(), index);
            ++index;
        }
    }
    QList<int> pasted;
    for (int row = start; row < index; ++row)
        pasted.append(row);
    didChangePages();
    pane->selectRows(pasted);
}

bool PDFPagesEditor::respondsToEditCommand(const QString &command) const
{
    return command == QLatin1String("delete:") || command == QLatin1String("selectAll:")
        || command == QLatin1String("copy:") || command == QLatin1String("paste:");
}

bool PDFPagesEditor::validateEditCommand(const QString &command) const
{
    if (command == QLatin1String("selectAll:"))
        return selectedCollectionView()->model()->rowCount() > 0;
    if (command == QLatin1String("copy:"))
        return canRotate();
    if (command == QLatin1String("paste:"))
        return canPaste();
    return command == QLatin1String("delete:");
}

void PDFPagesEditor::performEditCommand(const QString &command)
{
    if (command == QLatin1String("copy:"))
        copySelection();
    else if (command == QLatin1String("paste:"))
        paste();
    else if (command == QLatin1String("delete:"))
        deleteSelection();
    else if (command == QLatin1String("selectAll:"))
        selectedCollectionView()->selectAll();
}

void PDFPagesEditor::didChangePages()
{
    reloadData();
    // Edits go into the file by the background save, as any edit does; it starts on the next
    // turn, so that the grid shows the change first and a run of edits makes one save.
    if (m_isSaveQueued)
        return;
    m_isSaveQueued = true;
    MainQueue::async(this, [this] {
        m_isSaveQueued = false;
        saveChangedDocuments();
    });
}

void PDFPagesEditor::saveChangedDocuments()
{
    const auto primary = documentOf(m_primaryPane);
    const auto secondary = documentOf(m_secondaryPane);
    for (const auto &changed : { primary, secondary == primary ? nullptr : secondary }) {
        if (changed && changed->numberOfChanges() > 0 && !changed->fileURL().isEmpty())
            changed->save();
    }
}

void PDFPagesEditor::showContextMenu(const QPoint &globalPos)
{
    QMenu menu(this);
    const bool any = canRotate();
    menu.addAction(tr("Rotate Right"), this, [this] { rotateSelection(90); })->setEnabled(any);
    menu.addAction(tr("Rotate Left"), this, [this] { rotateSelection(-90); })->setEnabled(any);
    menu.addSeparator();
    menu.addAction(tr("Copy"), this, &PDFPagesEditor::copySelection)->setEnabled(any);
    menu.addAction(tr("Paste"), this, &PDFPagesEditor::paste)->setEnabled(canPaste());
    menu.addSeparator();
    menu.addAction(tr("Extract…"), this, &PDFPagesEditor::extractSelection)->setEnabled(any);
    menu.addAction(tr("Delete"), this, &PDFPagesEditor::deleteSelection);
    menu.addSeparator();
    menu.addAction(tr("Add Pages from Images…"), this, &PDFPagesEditor::addPagesWithImages);
    menu.addAction(tr("Add Pages from PDF…"), this, &PDFPagesEditor::addPagesWithPDF);
    menu.exec(globalPos);
}
