#include "PDFSecondaryToolbar.h"

#include "FDTheme.h"
#include "FDThemeProvider.h"
#include "PDFAnnBar.h"

#include <app/PDFContents.h>
#include <app/PDFContentsConainer.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <pages/PDFEditBar.h>
#include <pages/PDFPagesEditor.h>
#include <view/FDPDFView.h>

#include <QPainter>
#include <QSplitter>
#include <QVBoxLayout>

PDFSecondaryToolbar::PDFSecondaryToolbar(PDFContents *contents, QWidget *parent)
    : QWidget(parent)
    , m_contents(contents)
{
    setObjectName(QStringLiteral("PDFSecondaryToolbar"));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    setFixedHeight(0);
    hide();
}

PDFSecondaryToolbar::~PDFSecondaryToolbar()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    NotificationCenter::qkCenter().removeObserver(this);
}

PDFAnnBar *PDFSecondaryToolbar::annController()
{
    if (!m_annController)
        m_annController = new PDFAnnBar(m_contents, this);
    return m_annController;
}

PDFEditBar *PDFSecondaryToolbar::editBar()
{
    if (!m_editBar && m_contents && m_contents->container())
        m_editBar
            = new PDFEditBar(m_contents, m_contents->container()->pagesEditorController(), this);
    return m_editBar;
}

void PDFSecondaryToolbar::onViewInit()
{
    if (!m_contents)
        return;
    NotificationCenter::defaultCenter().addObserver(this,
        PDFContents::PagesEditingModeDidChangeNotification, m_contents.data(),
        [this](const Notification &) { onSecondaryToolbarVisibilityChanged(); });
    NotificationCenter::defaultCenter().addObserver(this,
        PDFContents::SecondaryTBVisibilityDidChangeNotification, m_contents.data(),
        [this](const Notification &) { onSecondaryToolbarVisibilityChanged(); });
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { update(); });
    onSecondaryToolbarVisibilityChanged();
}

void PDFSecondaryToolbar::onSecondaryToolbarVisibilityChanged()
{
    if (!m_contents)
        return;
    const QPointer<FDPDFView> primary = m_contents->primaryPDFView();
    const QPointer<FDPDFView> secondary = m_contents->secondaryPDFView();
    for (FDPDFView *const pdfView : { primary.data(), secondary.data() }) {
        if (pdfView)
            pdfView->setIsClipViewFrozen(true);
    }
    // One view above the other: the first pane keeps its height, the second takes the change.
    QSplitter *const stacked = m_contents->horiPDFSplitView();
    const bool isStacked = stacked && m_contents->splitMode() == PDFSplitViewMode::vertical;
    const int firstHeight = isStacked && stacked->sizes().size() > 1 ? stacked->sizes().at(0) : -1;
    if (isStacked) {
        stacked->setStretchFactor(0, 0);
        stacked->setStretchFactor(1, 1);
    }
    const bool editing = m_contents->isPagesEditingMode();
    const bool hidden = !editing && m_contents->isAnnBarHidden() && m_contents->isEditBarHidden();
    PDFAnnBar *const bar = (hidden || editing) && !m_annController ? nullptr : annController();
    if (bar) {
        if (layout()->indexOf(bar) < 0)
            layout()->addWidget(bar);
        bar->setVisible(!editing && !m_contents->isAnnBarHidden());
    }
    PDFEditBar *const pagesBar = editing ? editBar() : m_editBar.data();
    if (pagesBar) {
        if (layout()->indexOf(pagesBar) < 0)
            layout()->addWidget(pagesBar);
        pagesBar->setVisible(editing);
        pagesBar->updateButtons();
    }
    setFixedHeight(hidden ? 0 : shownHeight);
    setVisible(!hidden);
    if (QWidget *const enclosing = parentWidget()) {
        for (QWidget *widget = enclosing; widget; widget = widget->parentWidget()) {
            if (widget->layout())
                widget->layout()->activate();
            if (widget->isWindow())
                break;
        }
    }
    if (isStacked && firstHeight >= 0) {
        const int total = stacked->sizes().at(0) + stacked->sizes().at(1);
        stacked->setSizes({ firstHeight, qMax(0, total - firstHeight) });
    }
    MainQueue::async(
        this, [primary, secondary, stacked = QPointer<QSplitter>(stacked), isStacked, firstHeight] {
            for (FDPDFView *const pdfView : { primary.data(), secondary.data() }) {
                if (pdfView)
                    pdfView->setIsClipViewFrozen(false);
            }
            if (stacked && isStacked && firstHeight >= 0 && stacked->sizes().size() > 1) {
                const int total = stacked->sizes().at(0) + stacked->sizes().at(1);
                stacked->setSizes({ firstHeight, qMax(0, total - firstHeight) });
                stacked->setStretchFactor(0, 1);
            }
        });
}

void PDFSecondaryToolbar::paintEvent(QPaintEvent *)
{
    const FDTheme *const theme = FDThemeProvider::current();
    QPainter painter(this);
    painter.fillRect(rect(), theme->color(FDTheme::toolbarBackgroundColor));
    painter.fillRect(QRectF(0, height() - theme->lineWidth(), width(), theme->lineWidth()),
        theme->color(FDTheme::borderColor));
}
