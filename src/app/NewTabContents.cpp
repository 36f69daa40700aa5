#include "NewTabContents.h"

#include "FDFilePanel.h"
#include "FDRecentDocuments.h"
#include "FDThumbnailCache.h"
#include "GlobalService.h"
#include "NewTabDropFileArea.h"
#include "PDFContents.h"
#include "PDFWindowController.h"
#include "RecentCollectionViewItem.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int sectionInset = 10;
constexpr int minimumInteritemSpacing = 2;
constexpr int minimumLineSpacing = 20;
constexpr int clearAnimationMs = 700;

} // namespace

NewTabContents::NewTabContents(QObject *parent)
    : FDContents(parent)
{ }

NewTabContents::~NewTabContents() = default;

QString NewTabContents::title() const
{
    return tr("New Tab");
}

QVariantMap NewTabContents::lastOpenedWindowsRecord() const
{
    return { { GlobalService::kLOW_IsNewTab, true } };
}

PDFWindowController *NewTabContents::windowController()
{
    return qobject_cast<PDFWindowController *>(TabWindowController::fromView(view()));
}

std::unique_ptr<QWidget> NewTabContents::loadView()
{
    auto root = std::make_unique<QWidget>();
    m_root = root.get();
    m_root->setAutoFillBackground(true);
    auto *const layout = new QVBoxLayout(m_root);
    layout->setContentsMargins(28, 22, 28, 22);
    layout->setSpacing(14);

    auto *const buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    m_openButton = makeButton(tr("Open…"), true);
    m_newButton = makeButton(tr("New"), false);
    m_mergeButton = makeButton(tr("Merge"), false);
    m_convertButton = makeButton(tr("Convert"), false);
    m_compressButton = makeButton(tr("Compress"), false);
    m_clearButton = makeButton(tr("Clear Recents"), false);
    for (QPushButton *button :
        { m_openButton, m_newButton, m_mergeButton, m_convertButton, m_compressButton })
        buttons->addWidget(button);
    buttons->addStretch();
    buttons->addWidget(m_clearButton);
    layout->addLayout(buttons);
    connect(m_openButton, &QPushButton::clicked, this, &NewTabContents::onOpen);
    connect(m_newButton, &QPushButton::clicked, this, &NewTabContents::onNew);
    connect(m_mergeButton, &QPushButton::clicked, this, &NewTabContents::onMergeSplit);
    connect(m_convertButton, &QPushButton::clicked, this, &NewTabContents::onConvert);
    connect(m_compressButton, &QPushButton::clicked, this, &NewTabContents::onCompress);
    connect(m_clearButton, &QPushButton::clicked, this, &NewTabContents::onClear);

    m_contentsContainer = new QWidget(m_root);
    auto *const containerLayout = new QVBoxLayout(m_contentsContainer);
    containerLayout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_contentsContainer, 1);

    m_dragAndDropView = new NewTabDropFileArea(m_contentsContainer);
    m_dragAndDropView->hide();

    m_recentsView = new QWidget(m_contentsContainer);
    auto *const recentsLayout = new QVBoxLayout(m_recentsView);
    recentsLayout->setContentsMargins(0, 0, 0, 0);
    auto *const heading = new QLabel(tr("Recent Documents"), m_recentsView);
    heading->setObjectName(QStringLiteral("heading"));
    QFont headingFont = heading->font();
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.15);
    headingFont.setWeight(QFont::DemiBold);
    heading->setFont(headingFont);
    recentsLayout->addWidget(heading);
    m_recentsCollectionView = new QListWidget(m_recentsView);
    // Screen readers announce the list by the heading's words; each item by its title.
    m_recentsCollectionView->setAccessibleName(tr("Recent Documents"));
    heading->setBuddy(m_recentsCollectionView);
    m_recentsCollectionView->setViewMode(QListView::IconMode);
    m_recentsCollectionView->setMovement(QListView::Static);
    m_recentsCollectionView->setResizeMode(QListView::Adjust);
    m_recentsCollectionView->setUniformItemSizes(true);
    m_recentsCollectionView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_recentsCollectionView->setFrameShape(QFrame::NoFrame);
    m_recentsCollectionView->setMouseTracking(true);
    m_recentsCollectionView->setGridSize(
        QSize(RecentCollectionViewItem::itemSize.width() + minimumInteritemSpacing,
            RecentCollectionViewItem::itemSize.height() + minimumLineSpacing));
    m_recentsCollectionView->setContentsMargins(
        sectionInset, sectionInset, sectionInset, sectionInset);
    m_recentsCollectionView->setItemDelegate(new RecentCollectionViewItem(m_recentsCollectionView));
    recentsLayout->addWidget(m_recentsCollectionView, 1);
    m_recentsView->hide();
    connect(m_recentsCollectionView, &QListWidget::itemClicked, this, &NewTabContents::openItem);
    connect(m_recentsCollectionView, &QListWidget::itemActivated, this, &NewTabContents::openItem);

    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { applyTheme(); });
    buildContents();
    return root;
}

QPushButton *NewTabContents::makeButton(const QString &text, bool prominent)
{
    auto *const button = new QPushButton(text, m_root);
    button->setProperty("prominent", prominent);
    button->setCursor(Qt::PointingHandCursor);
    button->setMinimumHeight(30);
    return button;
}

void NewTabContents::buildContents()
{
    // Whichever of the two is in the container now is taken out first.
    QLayout *const container = m_contentsContainer->layout();
    for (QWidget *view : { m_recentsView, static_cast<QWidget *>(m_dragAndDropView) }) {
        container->removeWidget(view);
        view->hide();
    }

    loadRecents();
    const bool hasRecents = !m_recentItems.isEmpty();
    if (hasRecents) {
        container->addWidget(m_recentsView);
        m_recentsView->show();
    } else {
        container->addWidget(m_dragAndDropView);
        m_dragAndDropView->show();
    }
    m_clearButton->setEnabled(hasRecents);
    applyTheme();
}

bool NewTabContents::isShowingRecents() const
{
    return m_recentsView && m_recentsView->isVisibleTo(m_contentsContainer);
}

void NewTabContents::loadRecents()
{
    m_recentItems.clear();
    m_recentsCollectionView->clear();
    const QList<QUrl> urls = FDRecentDocuments::recentDocumentURLs();
    for (const QUrl &url : urls) {
        RecentItem item;
        item.URL = url;
        item.title = QFileInfo(url.path()).completeBaseName();
        item.thumb
            = FDThumbnailCache::thumbnailForURL(url, RecentCollectionViewItem::thumbnailSize);
        m_recentItems.append(item);
        auto *const row = new QListWidgetItem(item.title, m_recentsCollectionView);
        row->setData(RecentCollectionViewItem::URLRole, url);
        row->setData(RecentCollectionViewItem::ThumbRole, item.thumb);
        row->setToolTip(url.isLocalFile() ? url.toLocalFile() : url.toString());
        row->setSizeHint(RecentCollectionViewItem::itemSize);
    }
}

void NewTabContents::openItem(QListWidgetItem *item)
{
    PDFWindowController *const controller = windowController();
    if (!item || !controller)
        return;
    controller->openPDFDocumentWithURL(
        item->data(RecentCollectionViewItem::URLRole).toUrl(), true, true);
}

void NewTabContents::onOpen()
{
    if (PDFWindowController *const controller = windowController())
        controller->openDocument();
}

void NewTabContents::onNew()
{
    if (GlobalService *const service = GlobalService::shared())
        service->onNew();
}

void NewTabContents::onCompress()
{
    if (PDFWindowController *const controller = windowController())
        controller->openCompressTab();
}

void NewTabContents::onConvert()
{
    FilePanelRequest request;
    request.allowedFileTypes = { QStringLiteral("png"), QStringLiteral("jpg"),
        QStringLiteral("jpeg"), QStringLiteral("gif"), QStringLiteral("PNG"), QStringLiteral("JPG"),
        QStringLiteral("JPEG"), QStringLiteral("GIF") };
    request.fileTypesTitle = tr("Images");
    openNewDocumentWithPagesOf(request);
}

void NewTabContents::onMergeSplit()
{
    openNewDocumentWithPagesOf(FilePanelRequest());
}

void NewTabContents::openNewDocumentWithPagesOf(FilePanelRequest request)
{
    PDFWindowController *const controller = windowController();
    if (!controller)
        return;
    request.kind = FilePanelRequest::Open;
    request.allowsMultipleSelection = true;
    request.parent = m_root;
    const QList<QUrl> urls = FDFilePanel::runModalForURLs(request);
    if (urls.isEmpty())
        return;
    // The new tab takes this one's place: nothing of this object is used after it.
    auto *const made
        = qobject_cast<PDFContents *>(controller->openPDFDocumentWithURL(QUrl(), true, true));
    if (made)
        made->addPagesFromURLs(urls);
}

void NewTabContents::onClear()
{
    if (m_isClearing)
        return;
    FDRecentDocuments::clearRecentDocuments();
    m_isClearing = true;
    m_clearButton->setEnabled(false);
    // The grid slides down out of the container, then the view is built again.
    auto *const slide = new QPropertyAnimation(m_recentsView, "geometry", this);
    slide->setDuration(clearAnimationMs);
    slide->setEasingCurve(QEasingCurve::InCubic);
    // Out of the layout, so that the slide alone places it meanwhile.
    const QRect from = m_recentsView->geometry();
    m_contentsContainer->layout()->removeWidget(m_recentsView);
    m_recentsView->setGeometry(from);
    slide->setStartValue(from);
    slide->setEndValue(from.translated(0, m_contentsContainer->height()));
    connect(slide, &QPropertyAnimation::finished, this, [this] {
        m_isClearing = false;
        buildContents();
        emit viewRebuilt();
    });
    slide->start(QAbstractAnimation::DeleteWhenStopped);
}

void NewTabContents::applyTheme()
{
    if (!m_root)
        return;
    const FDTheme *const theme = FDThemeProvider::current();
    QPalette palette = m_root->palette();
    palette.setColor(QPalette::Window, theme->color(FDTheme::contentViewBackgroundColor));
    palette.setColor(QPalette::Base, theme->color(FDTheme::contentViewBackgroundColor));
    palette.setColor(QPalette::WindowText, theme->color(FDTheme::labelColor));
    palette.setColor(QPalette::Text, theme->color(FDTheme::labelColor));
    palette.setColor(QPalette::Highlight, Qt::transparent);
    m_root->setPalette(palette);
    m_recentsCollectionView->setPalette(palette);
    m_recentsCollectionView->viewport()->setAutoFillBackground(false);

    const QColor primary = theme->color(FDTheme::primaryColor);
    const QColor label = theme->color(FDTheme::labelColor);
    const QColor plain = theme->isDark() ? FDTheme::white(0.3) : FDTheme::white(1.0);
    const QColor edge = theme->color(FDTheme::secondaryBorderColor);
    const QString style
        = QStringLiteral(
            "QPushButton { background: %1; color: %2; border: 1px solid %3; border-radius: 6px;"
            " padding: 4px 14px; }"
            "QPushButton:hover { border-color: %4; }"
            "QPushButton:disabled { color: %5; }"
            "QPushButton[prominent=\"true\"] { background: %4; color: white; border-color: %4; }")
              .arg(plain.name(), label.name(QColor::HexArgb), edge.name(), primary.name(),
                  theme->color(FDTheme::disabledControlColor).name());
    for (QPushButton *button : { m_openButton, m_newButton, m_mergeButton, m_convertButton,
             m_compressButton, m_clearButton })
        button->setStyleSheet(style);
    if (auto *const heading = m_recentsView->findChild<QLabel *>(QStringLiteral("heading"))) {
        QPalette headingPalette = palette;
        headingPalette.setColor(QPalette::WindowText, theme->color(FDTheme::secondaryLabelColor));
        heading->setPalette(headingPalette);
    }
    m_root->update();
}
