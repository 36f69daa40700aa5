#include "PDFViewInfoBarContainer.h"

#include <app/FDFilePanel.h>
#include <app/PDFContents.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/Workspace.h>
#include <navigation/FDCommonImageProvider.h>
#include <pages/PDFPagePasteboard.h>
#include <view/FDPDFView.h>

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeData>
#include <QPainter>
#include <QPushButton>

PDFViewInfoBarContainer::PDFViewInfoBarContainer(PDFContents *contents, QWidget *parent)
    : QWidget(parent)
    , m_contents(contents)
{
    setObjectName(QStringLiteral("PDFViewInfoBarContainer"));
    setAcceptDrops(true);
    auto *const layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 0, 4, 1);
    layout->setSpacing(6);
    m_indicatorImgView = new QLabel;
    m_indicatorImgView->setObjectName(QStringLiteral("indicatorImgView"));
    m_indicatorImgView->setFixedSize(
        FDCommonImageProvider::iconSize, FDCommonImageProvider::iconSize);
    m_titleTextField = new QLabel;
    m_titleTextField->setObjectName(QStringLiteral("titleTextField"));
    m_titleTextField->setTextFormat(Qt::PlainText);
    m_changeButton = new QPushButton(tr("Change…"));
    m_changeButton->setObjectName(QStringLiteral("changeButton"));
    m_changeButton->setFlat(true);
    m_changeButton->setFocusPolicy(Qt::NoFocus);
    m_changeButton->setToolTip(tr("Open another document in this view"));
    layout->addWidget(m_indicatorImgView);
    layout->addWidget(m_titleTextField, 1);
    layout->addWidget(m_changeButton);
    connect(
        m_changeButton, &QPushButton::clicked, this, [this] { onChangeButtonClickedWithButton(); });
}

PDFViewInfoBarContainer::~PDFViewInfoBarContainer()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    NotificationCenter::qkCenter().removeObserver(this);
}

void PDFViewInfoBarContainer::onViewInit()
{
    NotificationCenter &center = NotificationCenter::defaultCenter();
    const void *const tab = m_contents.data();
    for (const QString &name :
        { PDFContents::SelectedPDFViewDidChangeNotification,
            PDFContents::PDFViewsDidSwapNotification, PDFContents::SplitModeDidChangeNotification })
        center.addObserver(this, name, tab, [this](const Notification &) { update_(); });
    // Any view: this bar's view changes with a swap.
    for (const QString &name :
        { FDPDFView::URLDidChangeNotification, PDFView::DocumentChangedNotification }) {
        center.addObserver(this, name, nullptr, [this](const Notification &notification) {
            if (notification.sender == static_cast<const void *>(m_pdfView.data()))
                update_();
        });
    }
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { update_(); });
    update_();
}

void PDFViewInfoBarContainer::setPDFView(FDPDFView *view)
{
    m_pdfView = view;
    update_();
}

void PDFViewInfoBarContainer::update_()
{
    const FDTheme *const theme = FDThemeProvider::current();
    const bool primary = m_contents && m_pdfView && m_pdfView == m_contents->primaryPDFView();
    m_isIndicatorOn = m_contents && m_pdfView && m_pdfView == m_contents->selectedPDFView();
    m_isPrimary = primary;
    // A bar folded away, as it is outside a split, draws its marker when it unfolds: drawing
    // the letters is a font lookup of its own that the first window can do without.
    m_markerStale = true;
    if (height() > 0)
        drawMarker();
    m_titleTextField->setText(m_pdfView ? m_pdfView->title() : QString());
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText,
        theme->color(m_isIndicatorOn ? FDTheme::labelColor : FDTheme::secondaryLabelColor));
    palette.setColor(QPalette::ButtonText, theme->color(FDTheme::primaryColor));
    palette.setColor(QPalette::Window, theme->color(FDTheme::toolbarBackgroundColor));
    setPalette(palette);
    m_titleTextField->setPalette(palette);
    m_changeButton->setPalette(palette);
    update();
}

void PDFViewInfoBarContainer::drawMarker()
{
    m_markerStale = false;
    FDCommonImageProvider &images = FDCommonImageProvider::shared();
    const QIcon icon = m_isPrimary ? (m_isIndicatorOn ? images.primaryIndicatorOnStateIcon()
                                                      : images.primaryIndicatorOffStateIcon())
                                   : (m_isIndicatorOn ? images.secondaryIndicatorOnStateIcon()
                                                      : images.secondaryIndicatorOffStateIcon());
    m_indicatorImgView->setPixmap(
        icon.pixmap(QSize(FDCommonImageProvider::iconSize, FDCommonImageProvider::iconSize),
            devicePixelRatioF()));
}

void PDFViewInfoBarContainer::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_markerStale && height() > 0)
        drawMarker();
}

void PDFViewInfoBarContainer::onChangeButtonClickedWithButton()
{
    FilePanelRequest request;
    request.kind = FilePanelRequest::Open;
    request.parent = window();
    const QUrl url = FDFilePanel::runModal(request);
    if (!url.isEmpty())
        openInView(url);
}

void PDFViewInfoBarContainer::openInView(const QUrl &url)
{
    // The view lets go of its document (saving it when changed) and reads the new one.
    if (m_pdfView)
        m_pdfView->loadDocument(url);
}

QUrl PDFViewInfoBarContainer::droppedPDF(const QMimeData *mime) const
{
    if (!mime || !mime->hasUrls() || PDFPagePasteboard::hasPageMarker(mime) || !m_contents
        || m_pdfView != m_contents->secondaryPDFView())
        return {};
    const QList<QUrl> urls = mime->urls();
    if (urls.size() != 1 || !urls.first().isLocalFile()
        || !Workspace::isPDF(urls.first().toLocalFile()))
        return {};
    return urls.first();
}

void PDFViewInfoBarContainer::dragEnterEvent(QDragEnterEvent *event)
{
    if (!droppedPDF(event->mimeData()).isEmpty())
        event->acceptProposedAction();
    else
        event->ignore();
}

void PDFViewInfoBarContainer::dropEvent(QDropEvent *event)
{
    const QUrl url = droppedPDF(event->mimeData());
    if (url.isEmpty()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    openInView(url);
}

void PDFViewInfoBarContainer::paintEvent(QPaintEvent *)
{
    const FDTheme *const theme = FDThemeProvider::current();
    QPainter painter(this);
    painter.fillRect(rect(), theme->color(FDTheme::toolbarBackgroundColor));
    // The bottom border parts the bar from the page below.
    painter.fillRect(QRect(0, height() - 1, width(), 1), theme->color(FDTheme::borderColor));
}
