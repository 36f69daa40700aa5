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
    , m_collectionView(new PDFCollectionView(this))
    , m_model(new PDFThumbnailModel(this))
{
    setObjectName(QStringLiteral("PDFPagesEditor"));
    m_model->setPixelLength(thumbnailLength);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_collectionView);
    m_collectionView->setItemDelegate(new PagesEditorItemDelegate(m_model, m_collectionView));
    m_collectionView->setGridSize(QSize(itemWidth + 12, itemHeight + numberHeight + 12));
    m_collectionView->setModel(m_model);
    registerForDragAndDrop(m_collectionView);

    connect(m_collectionView, &PDFCollectionView::deleteRequested, this,
        &PDFPagesEditor::deleteSelection);
    connect(m_collectionView, &PDFCollectionView::leaveRequested, this, &PDFPagesEditor::leave);
    connect(m_collectionView, &PDFCollectionView::rotateRequested, this,
        [this] { rotateSelection(90); });
    connect(m_collectionView, &PDFCollectionView::extractRequested, this,
        &PDFPagesEditor::extractSelection);
    connect(m_collectionView, &PDFCollectionView::contextMenuRequestedAt, this,
        &PDFPagesEditor::showContextMenu);
    connect(
        m_collectionView->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
            NotificationCenter::defaultCenter().post(
                PageSelectionDidChangeNotification, m_contents.data());
        });
}

void PDFPagesEditor::setPDFViews(FDPDFView *primary, FDPDFView *secondary)
{
    m_collectionView->setPdfView(primary);
    Q_UNUSED(secondary);
    // Any change of the document's pages, from here or from elsewhere, shows in the grid.
    NotificationCenter::defaultCenter().addObserver(
        this, FDDocument::DocumentPageDidChangeNotification, primary, [this](const Notification &) {
            if (isVisible())
                m_collectionView->viewport()->update();
        });
}

PDFPagesEditor::~PDFPagesEditor()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

std::shared_ptr<FDDocument> PDFPagesEditor::document() const
{
    return documentOf(m_collectionView);
}

PDFCollectionView *PDFPagesEditor::selectedCollectionView() const
{
    return m_collectionView;
}

std::shared_ptr<FDDocument> PDFPagesEditor::documentOf(const PDFCollectionView *pane) const
{
    FDPDFView *const view = pane ? pane->pdfView() : nullptr;
    return view ? view->fdDocument() : nullptr;
}

void PDFPagesEditor::reloadData()
{
    const QList<int> rows = m_collectionView->selectedRows();
    m_model->setDocument(nullptr);
    m_model->setDocument(document());
    const int count = m_model->rowCount();
    QList<int> kept;
    for (const int row : rows) {
        if (row < count)
            kept.append(row);
    }
    m_collectionView->selectRows(kept);
}

void PDFPagesEditor::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    reloadData();
    QTimer::singleShot(0, m_collectionView, [view = QPointer<PDFCollectionView>(m_collectionView)] {
        if (view)
            view->setFocus(Qt::OtherFocusReason);
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
    return !m_collectionView->selectedRows().isEmpty();
}

bool PDFPagesEditor::canExtract() const
{
    return !m_collectionView->selectedRows().isEmpty();
}

void PDFPagesEditor::rotateSelection(int degrees)
{
    const auto current = document();
    const QList<int> rows = m_collectionView->selectedRows();
    if (!current || rows.isEmpty())
        return;
    for (const int row : rows) {
        if (const auto page = current->pageAtIndex(row))
            page->setRotation(page->rotation() + degrees);
    }
    current->setNumberOfPageChanges(current->numberOfPageChanges() + 1);
    didChangePages();
    m_collectionView->selectRows(rows);
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
    const auto current = document();
    const QList<int> rows = m_collectionView->selectedRows();
    if (!current || rows.isEmpty())
        return;
    m_collectionView->performBatchUpdates([&] {
        m_collectionView->clearSelection();
        // From the highest index down, so the lower ones stay valid.
        for (auto row = rows.crbegin(); row != rows.crend(); ++row) {
            if (current->pageAtIndex(*row))
                current->removePageAtIndex(*row);
        }
        // Bookmarks of deleted pages go now, before the save takes the outline.
        current->removeBookmarksOfRemovedPages();
    });
    didChangePages();
    m_collectionView->clearSelection();
}

void PDFPagesEditor::extractSelection()
{
    const QList<int> rows = m_collectionView->selectedRows();
    const auto current = document();
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
    return writePagesOf(document(), rows, url);
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
    const auto current = document();
    const QList<int> rows = m_collectionView->selectedRows();
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
    if (m_collectionView->isAnimating() || !document())
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
    const auto current = document();
    const int start = insertionIndex(m_collectionView->selectedRows(), current->pageCount());
    const QList<QUrl> urls = PDFPagePasteboard::pageFileURLs(QApplication::clipboard()->mimeData());
    if (!urls.isEmpty()) {
        insertURLs(m_collectionView, urls, start);
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
    m_collectionView->selectRows(pasted);
}

bool PDFPagesEditor::respondsToEditCommand(const QString &command) const
{
    return command == QLatin1String("delete:") || command == QLatin1String("selectAll:")
        || command == QLatin1String("copy:") || command == QLatin1String("paste:");
}

bool PDFPagesEditor::validateEditCommand(const QString &command) const
{
    if (command == QLatin1String("selectAll:"))
        return m_model->rowCount() > 0;
    if (command == QLatin1String("copy:"))
        return !m_collectionView->selectedRows().isEmpty();
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
        m_collectionView->selectAll();
}

void PDFPagesEditor::didChangePages()
{
    reloadData();
    const auto current = document();
    // Edits go straight into the file, as any edit does, by the background save.
    if (current && !current->fileURL().isEmpty())
        current->save();
}

void PDFPagesEditor::showContextMenu(const QPoint &globalPos)
{
    QMenu menu(this);
    const bool any = !m_collectionView->selectedRows().isEmpty();
    menu.addAction(tr("Rotate Right"), this, [this] { rotateSelection(90); })->setEnabled(any);
    menu.addAction(tr("Rotate Left"), this, [this] { rotateSelection(-90); })->setEnabled(any);
    menu.addSeparator();
    menu.addAction(tr("Copy"), this, &PDFPagesEditor::copySelection)->setEnabled(any);
    menu.addAction(tr("Paste"), this, &PDFPagesEditor::paste)->setEnabled(canPaste());
    menu.addSeparator();
    menu.addAction(tr("Extract…"), this, &PDFPagesEditor::extractSelection)->setEnabled(any);
    menu.addSeparator();
    menu.addAction(tr("Add Pages from Images…"), this, &PDFPagesEditor::addPagesWithImages);
    menu.addAction(tr("Add Pages from PDF…"), this, &PDFPagesEditor::addPagesWithPDF);
    menu.addAction(tr("Delete"), this, &PDFPagesEditor::deleteSelection);
    menu.exec(globalPos);
}
