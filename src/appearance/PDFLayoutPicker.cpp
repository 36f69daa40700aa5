#include "PDFLayoutPicker.h"

#include "FDPopoverController.h"
#include "FDTheme.h"
#include "FDThemeProvider.h"

#include <app/FDFilePanel.h>
#include <app/PDFContents.h>
#include <app/PDFContentsConainer.h>
#include <document/PDFPage+XExtensions.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <view/FDPDFView.h>

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QToolButton>
#include <QVBoxLayout>

#include <functional>

namespace {

constexpr QSize PictureSize(44, 32);
constexpr double ThumbLength = 72.0;

QColor ink()
{
    return FDThemeProvider::current()->isDark() ? FDTheme::white(0.9) : FDTheme::white(0.3);
}

QIcon picture(const std::function<void(QPainter &)> &draw)
{
    QIcon icon;
    for (const double ratio : { 1.0, 2.0 }) {
        QPixmap pixmap(qRound(PictureSize.width() * ratio), qRound(PictureSize.height() * ratio));
        pixmap.setDevicePixelRatio(ratio);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(ink(), 1.5));
        painter.setBrush(Qt::NoBrush);
        draw(painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

void pageWithLines(QPainter &painter, const QRectF &page)
{
    painter.drawRoundedRect(page, 1.5, 1.5);
    const double inset = page.width() * 0.2;
    for (double y = page.top() + 5; y < page.bottom() - 3; y += 4)
        painter.drawLine(QPointF(page.left() + inset, y), QPointF(page.right() - inset, y));
}

QIcon singlePageImage()
{
    return picture([](QPainter &painter) { pageWithLines(painter, QRectF(14.5, 2.5, 15, 27)); });
}

QIcon twoPagesImage()
{
    return picture([](QPainter &painter) {
        pageWithLines(painter, QRectF(5.5, 2.5, 15, 27));
        pageWithLines(painter, QRectF(23.5, 2.5, 15, 27));
    });
}

QIcon splitImage(PDFSplitViewMode mode)
{
    return picture([mode](QPainter &painter) {
        const QRectF frame(4.5, 2.5, 35, 27);
        painter.drawRoundedRect(frame, 2, 2);
        if (mode == PDFSplitViewMode::horizontal)
            painter.drawLine(QPointF(22, 2.5), QPointF(22, 29.5));
        else if (mode == PDFSplitViewMode::vertical)
            painter.drawLine(QPointF(4.5, 16), QPointF(39.5, 16));
    });
}

// The mark of a view in the thumbnails: "A" for the primary, "B" for the secondary.
QPixmap markedThumbnail(const QImage &thumbnail, const QString &mark)
{
    const double ratio = 2.0;
    QPixmap pixmap(qRound(ThumbLength * ratio), qRound(ThumbLength * ratio));
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (!thumbnail.isNull()) {
        QSizeF size = thumbnail.deviceIndependentSize();
        size.scale(ThumbLength - 4, ThumbLength - 4, Qt::KeepAspectRatio);
        const QRectF target(QPointF((ThumbLength - size.width()) / 2, 2), size);
        painter.drawImage(target, thumbnail);
        painter.setPen(QPen(FDTheme::white(0.6), 1));
        painter.drawRect(target);
    } else {
        painter.setPen(QPen(ink(), 1, Qt::DashLine));
        painter.drawRect(QRectF(14, 2, ThumbLength - 28, ThumbLength - 4));
    }
    const QPointF centre(ThumbLength - 12, ThumbLength - 12);
    painter.setPen(Qt::NoPen);
    painter.setBrush(FDThemeProvider::current()->color(FDTheme::primaryColor));
    painter.drawEllipse(centre, 9, 9);
    QFont font;
    font.setPixelSize(12);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRectF(centre - QPointF(9, 9), QSizeF(18, 18)), Qt::AlignCenter, mark);
    return pixmap;
}

QToolButton *layoutButton(const QString &title, int tag, QWidget *parent)
{
    auto *const button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setCheckable(true);
    button->setToolTip(title);
    button->setAccessibleName(title);
    button->setIconSize(PictureSize);
    button->setProperty("tag", tag);
    return button;
}

} // namespace

PDFLayoutPicker &PDFLayoutPicker::shared()
{
    static PDFLayoutPicker *const picker = new PDFLayoutPicker;
    return *picker;
}

PDFLayoutPicker::PDFLayoutPicker()
{
    setObjectName(QStringLiteral("PDFLayoutPicker"));
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->setSpacing(8);
    auto *const upper = new QGridLayout;
    upper->setHorizontalSpacing(6);
    m_singlePageButton = layoutButton(tr("Single Page"), 0, this);
    m_twoPagesButton = layoutButton(tr("Two Pages"), 1, this);
    m_splitNoneButton = layoutButton(tr("No Split"), int(PDFSplitViewMode::none), this);
    m_splitHoriButton
        = layoutButton(tr("Split Side by Side"), int(PDFSplitViewMode::horizontal), this);
    m_splitVertButton
        = layoutButton(tr("Split One Above the Other"), int(PDFSplitViewMode::vertical), this);
    upper->addWidget(m_singlePageButton, 0, 0);
    upper->addWidget(m_twoPagesButton, 0, 1);
    upper->addWidget(m_splitNoneButton, 1, 0);
    upper->addWidget(m_splitHoriButton, 1, 1);
    upper->addWidget(m_splitVertButton, 1, 2);
    column->addLayout(upper);
    for (QToolButton *const button : { m_singlePageButton, m_twoPagesButton }) {
        connect(button, &QToolButton::clicked, this,
            [this, button] { onPageLayoutButtonClickedWithButton(button); });
    }
    for (QToolButton *const button : { m_splitNoneButton, m_splitHoriButton, m_splitVertButton }) {
        connect(button, &QToolButton::clicked, this,
            [this, button] { onSplitLayoutButtonClickedWithButton(button); });
    }

    m_lowerSection = new QWidget(this);
    auto *const lower = new QVBoxLayout(m_lowerSection);
    lower->setContentsMargins(0, 0, 0, 0);
    m_dashedLineSeparator = new QWidget(m_lowerSection);
    m_dashedLineSeparator->setFixedHeight(1);
    m_dashedLineSeparator->setAutoFillBackground(true);
    lower->addWidget(m_dashedLineSeparator);
    auto *const documents = new QGridLayout;
    m_leftThumbImageView = new QLabel(m_lowerSection);
    m_rightThumbImageView = new QLabel(m_lowerSection);
    m_swapButton = new QToolButton(m_lowerSection);
    m_swapButton->setText(QStringLiteral("⇄"));
    m_swapButton->setToolTip(tr("Swap Documents"));
    m_swapButton->setAccessibleName(tr("Swap Documents"));
    m_swapButton->setAutoRaise(true);
    m_leftChange = new QToolButton(m_lowerSection);
    m_rightChange = new QToolButton(m_lowerSection);
    for (QToolButton *const change : { m_leftChange, m_rightChange }) {
        const int side = change == m_leftChange ? 0 : 1;
        change->setProperty("tag", side);
        change->setText(tr("Change…"));
        const QString name = side == 0 ? tr("Change Document A") : tr("Change Document B");
        change->setToolTip(name);
        change->setAccessibleName(name);
        connect(change, &QToolButton::clicked, this,
            [this, change] { onDocChangeButtonClickedWithButton(change); });
    }
    connect(m_swapButton, &QToolButton::clicked, this,
        [this] { onSplitSwapButtonClickedWithButton(m_swapButton); });
    documents->addWidget(m_leftThumbImageView, 0, 0, Qt::AlignCenter);
    documents->addWidget(m_swapButton, 0, 1, Qt::AlignCenter);
    documents->addWidget(m_rightThumbImageView, 0, 2, Qt::AlignCenter);
    documents->addWidget(m_leftChange, 1, 0, Qt::AlignCenter);
    documents->addWidget(m_rightChange, 1, 2, Qt::AlignCenter);
    lower->addLayout(documents);
    column->addWidget(m_lowerSection);
}

FDPDFView *PDFLayoutPicker::viewInPlace(bool left) const
{
    if (!m_contents)
        return nullptr;
    FDPDFView *const primary = m_contents->primaryPDFView();
    const bool primaryIsFirst
        = primary && primary->parentWidget() == m_contents->container()->topLeftContainer();
    return left == primaryIsFirst ? primary : m_contents->secondaryPDFView();
}

void PDFLayoutPicker::onWillShow()
{
    m_singlePageButton->setIcon(singlePageImage());
    m_twoPagesButton->setIcon(twoPagesImage());
    m_splitNoneButton->setIcon(splitImage(PDFSplitViewMode::none));
    m_splitHoriButton->setIcon(splitImage(PDFSplitViewMode::horizontal));
    m_splitVertButton->setIcon(splitImage(PDFSplitViewMode::vertical));
    QPalette palette = m_dashedLineSeparator->palette();
    palette.setColor(QPalette::Window, ink());
    m_dashedLineSeparator->setPalette(palette);
    refresh();
}

void PDFLayoutPicker::refresh()
{
    const FDPDFView *const pdfView = m_contents ? m_contents->selectedPDFView() : nullptr;
    const int mode = pdfView ? pdfView->displayMode() : PDFView::SinglePageContinuous;
    const bool twoUp = mode == PDFView::TwoUp || mode == PDFView::TwoUpContinuous;
    m_singlePageButton->setChecked(!twoUp);
    m_twoPagesButton->setChecked(twoUp);
    const PDFSplitViewMode split = m_contents ? m_contents->splitMode() : PDFSplitViewMode::none;
    m_splitNoneButton->setChecked(split == PDFSplitViewMode::none);
    m_splitHoriButton->setChecked(split == PDFSplitViewMode::horizontal);
    m_splitVertButton->setChecked(split == PDFSplitViewMode::vertical);
    m_lowerSection->setVisible(split != PDFSplitViewMode::none);
    if (split != PDFSplitViewMode::none)
        refreshThumbnails();
    layout()->activate();
    adjustSize();
    m_totalHeight = sizeHint().height();
    FDPopoverController::shared().fitToContent();
}

void PDFLayoutPicker::refreshThumbnails()
{
    // "A" marks the primary view wherever it stands.
    const bool primaryIsLeft = m_contents && viewInPlace(true) == m_contents->primaryPDFView();
    m_leftThumbImageView->setPixmap(
        markedThumbnail(imageForLeft(), primaryIsLeft ? QStringLiteral("A") : QStringLiteral("B")));
    m_rightThumbImageView->setPixmap(markedThumbnail(
        imageForRight(), primaryIsLeft ? QStringLiteral("B") : QStringLiteral("A")));
}

QImage PDFLayoutPicker::imageForLeft() const
{
    const FDPDFView *const pdfView = viewInPlace(true);
    const auto document = pdfView ? pdfView->document() : nullptr;
    const auto page = document && document->pageCount() > 0 ? document->pageAtIndex(0) : nullptr;
    return page ? thumbnailWithMaxLength(*page, ThumbLength * 2, pdfView->displayBox()) : QImage();
}

QImage PDFLayoutPicker::imageForRight() const
{
    const FDPDFView *const pdfView = viewInPlace(false);
    const auto document = pdfView ? pdfView->document() : nullptr;
    const auto page = document && document->pageCount() > 0 ? document->pageAtIndex(0) : nullptr;
    return page ? thumbnailWithMaxLength(*page, ThumbLength * 2, pdfView->displayBox()) : QImage();
}

void PDFLayoutPicker::onPageLayoutButtonClickedWithButton(QToolButton *button)
{
    if (!m_contents)
        return;
    const int tag = button->property("tag").toInt();
    const int mode = tag == 1 ? PDFView::TwoUpContinuous : PDFView::SinglePageContinuous;
    for (FDPDFView *const pdfView :
        { m_contents->primaryPDFView(), m_contents->secondaryPDFView() }) {
        if (pdfView)
            pdfView->setDisplayMode(mode);
    }
    refresh();
}

void PDFLayoutPicker::onSplitLayoutButtonClickedWithButton(QToolButton *button)
{
    if (!m_contents)
        return;
    const int tag = button->property("tag").toInt();
    if (tag < 0 || tag > int(PDFSplitViewMode::vertical))
        qFatal("A split button with tag %d, which is no PDFSplitViewMode", tag);
    m_contents->setSplitMode(PDFSplitViewMode(tag));
    refresh();
}

void PDFLayoutPicker::onSplitSwapButtonClickedWithButton(QToolButton *)
{
    if (!m_contents || m_contents->splitMode() == PDFSplitViewMode::none)
        return;
    m_contents->swapPDFViews();
    splitDocumentsDidSwap();
}

void PDFLayoutPicker::splitDocumentsDidSwap()
{
    refreshThumbnails();
}

void PDFLayoutPicker::onDocChangeButtonClickedWithButton(QToolButton *button)
{
    if (!m_contents)
        return;
    const int side = button->property("tag").toInt();
    QPointer<PDFContents> contents = m_contents;
    // The modal panel takes the pointer: the popover goes first.
    FDPopoverController::shared().hide();
    FilePanelRequest request;
    request.kind = FilePanelRequest::Open;
    request.parent = contents ? contents->container() : nullptr;
    const QUrl url = FDFilePanel::runModal(request);
    if (url.isEmpty() || !contents)
        return;
    m_contents = contents;
    if (side == 0)
        leftDocumentDidChangeWithUrl(url);
    else
        rightDocumentDidChangeWithUrl(url);
}

void PDFLayoutPicker::leftDocumentDidChangeWithUrl(const QUrl &url)
{
    if (FDPDFView *const pdfView = viewInPlace(true))
        pdfView->loadDocument(url);
}

void PDFLayoutPicker::rightDocumentDidChangeWithUrl(const QUrl &url)
{
    if (FDPDFView *const pdfView = viewInPlace(false))
        pdfView->loadDocument(url);
}
