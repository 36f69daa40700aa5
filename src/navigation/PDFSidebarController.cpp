#include "PDFSidebarController.h"

#include "FDCommonImageProvider.h"
#include "FDVerticalTabBar.h"
#include "PDFSidebarAnnContents.h"
#include "PDFSidebarBookmarkContents.h"
#include "PDFSidebarOutlineContents.h"
#include "PDFSidebarTabContents.h"
#include "PDFSidebarThumbContents.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>

#include <QAbstractButton>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// A tab that a later part of the program fills: it shows its title and nothing else.
class PlainTabContents : public PDFSidebarTabContents
{
public:
    explicit PlainTabContents(const QString &title) { setTitle(title); }
};

QHash<PDFSidebarMode, PDFSidebarController::TabContentsMaker> &makers()
{
    static QHash<PDFSidebarMode, PDFSidebarController::TabContentsMaker> table;
    return table;
}

struct TabInfo
{
    PDFSidebarMode mode;
    const char *name;
};

constexpr TabInfo tabs[] = {
    { PDFSidebarMode::thumbnails, QT_TRANSLATE_NOOP("PDFSidebarController", "Thumbnails") },
    { PDFSidebarMode::toc, QT_TRANSLATE_NOOP("PDFSidebarController", "Table of Contents") },
    { PDFSidebarMode::annotations, QT_TRANSLATE_NOOP("PDFSidebarController", "Annotations") },
    { PDFSidebarMode::bookmarks, QT_TRANSLATE_NOOP("PDFSidebarController", "Bookmarks") },
};

PDFSidebarTabContents *makeTab(PDFSidebarMode mode)
{
    if (const auto maker = makers().value(mode))
        return maker();
    switch (mode) {
    case PDFSidebarMode::thumbnails:
        return new PDFSidebarThumbContents;
    case PDFSidebarMode::toc:
        return new PDFSidebarOutlineContents;
    case PDFSidebarMode::bookmarks:
        return new PDFSidebarBookmarkContents;
    case PDFSidebarMode::annotations:
        return new PDFSidebarAnnContents;
    }
    return new PlainTabContents(PDFSidebarController::tr("Annotations"));
}

} // namespace

PDFSidebarController::PDFSidebarController(PDFContents *contents, QWidget *parent)
    : PDFContentsBar(contents, parent)
{
    setObjectName(QStringLiteral("PDFSidebar"));
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    m_tabBar = new FDVerticalTabBar(this);
    row->addWidget(m_tabBar);

    auto *const column = new QVBoxLayout;
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    row->addLayout(column, 1);
    auto *const header = new QHBoxLayout;
    header->setContentsMargins(10, 6, 8, 6);
    m_titleTextField = new QLabel(this);
    m_titleTextField->setObjectName(QStringLiteral("titleTextField"));
    QFont titleFont = m_titleTextField->font();
    titleFont.setBold(true);
    m_titleTextField->setFont(titleFont);
    m_titleTextField->setTextInteractionFlags(Qt::NoTextInteraction);
    m_indicatorIconView = new QLabel(this);
    m_indicatorIconView->setObjectName(QStringLiteral("indicatorIconView"));
    m_indicatorIconView->setFixedSize(
        FDCommonImageProvider::iconSize, FDCommonImageProvider::iconSize);
    header->addWidget(m_titleTextField, 1);
    header->addWidget(m_indicatorIconView);
    column->addLayout(header);
    m_tabContentsArea = new QStackedWidget(this);
    m_tabContentsArea->setObjectName(QStringLiteral("tabContentsArea"));
    column->addWidget(m_tabContentsArea, 1);

    for (const TabInfo &tab : tabs) {
        QAbstractButton *const button = m_tabBar->addTabButton(int(tab.mode), tr(tab.name));
        connect(button, &QAbstractButton::clicked, this,
            [this, button] { onTabBarButtonClickedWithButton(button); });
    }
    // Every button of the bar is a tab; a tag past the modes is a fault of the program.
    for (QAbstractButton *const button : m_tabBar->buttons()) {
        const int tag = button->property("tag").toInt();
        if (tag < 0 || tag > 3)
            qFatal("sidebar tab button with tag %d, which is no PDFSidebarMode", tag);
        m_tabButtons.insert(PDFSidebarMode(tag), button);
    }
    NotificationCenter &center = NotificationCenter::defaultCenter();
    const void *const tab = contents;
    center.addObserver(this, PDFContents::SelectedPDFViewDidChangeNotification, tab,
        [this](const Notification &) { updateIndicator(); });
    center.addObserver(this, PDFContents::SplitModeDidChangeNotification, tab,
        [this](const Notification &) { updateIndicator(); });
    center.addObserver(this, PDFContents::PDFViewsDidSwapNotification, tab,
        [this](const Notification &) { updateIndicator(); });
    center.addObserver(this, PDFContents::SidebarModeDidChangeNotification, tab,
        [this](const Notification &) { onSidebarModeChanged(); });
    // A sidebar hidden at the start, as most are, makes its tabs and pictures when first shown:
    // none of them is needed for the document's first screen.
    onSidebarModeChanged();
    updateIndicator();
}

PDFSidebarController::~PDFSidebarController()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

void PDFSidebarController::setTabContentsMaker(PDFSidebarMode mode, TabContentsMaker maker)
{
    makers().insert(mode, std::move(maker));
}

PDFSidebarTabContents *PDFSidebarController::controller(PDFSidebarMode mode)
{
    if (PDFSidebarTabContents *const made = m_controllers.value(mode))
        return made;
    PDFSidebarTabContents *const controller = makeTab(mode);
    controller->setDelegate(this);
    m_tabContentsArea->addWidget(controller);
    m_controllers.insert(mode, controller);
    // A tab made late reads the view's document as it is now, and follows it from here on.
    controller->setContents(contents());
    return controller;
}

PDFSidebarTabContents *PDFSidebarController::currentController()
{
    PDFContents *const tab = contents();
    return tab ? controller(tab->sidebarMode()) : nullptr;
}

void PDFSidebarController::showEvent(QShowEvent *event)
{
    PDFContentsBar::showEvent(event);
    if (!m_iconsDrawn)
        applyTheme();
    showCurrentController();
}

void PDFSidebarController::showCurrentController()
{
    PDFSidebarTabContents *const controller = currentController();
    if (!controller)
        return;
    m_tabContentsArea->setCurrentWidget(controller);
    m_titleTextField->setText(controller->title());
}

void PDFSidebarController::onTabBarButtonClickedWithButton(QAbstractButton *button)
{
    PDFContents *const tab = contents();
    const int tag = button->property("tag").toInt();
    if (!tab || tag < 0 || tag >= 4) {
        button->setChecked(button == m_selectedTabButton);
        return;
    }
    // The button shows its state when the notification comes back.
    button->setChecked(button == m_selectedTabButton);
    tab->setSidebarMode(PDFSidebarMode(tag));
}

void PDFSidebarController::onSidebarModeChanged()
{
    PDFContents *const tab = contents();
    if (!tab)
        return;
    const PDFSidebarMode mode = tab->sidebarMode();
    if (m_selectedTabButton)
        m_selectedTabButton->setChecked(false);
    m_selectedTabButton = m_tabButtons.value(mode);
    if (m_selectedTabButton)
        m_selectedTabButton->setChecked(true);
    // A hidden sidebar makes the tab when it shows; one made before is brought to the front. A
    // sidebar the tab asks to show makes it now, so that what follows the change finds it.
    if (isVisible() || !tab->isSidebarHidden() || m_controllers.contains(mode))
        showCurrentController();
}

void PDFSidebarController::updateSidebarTitleWithController(PDFSidebarTabContents *controller)
{
    PDFContents *const tab = contents();
    if (tab && controller == m_controllers.value(tab->sidebarMode()))
        m_titleTextField->setText(controller->title());
}

void PDFSidebarController::updateIndicator()
{
    PDFContents *const tab = contents();
    if (!tab || tab->splitMode() == PDFSplitViewMode::none) {
        m_indicatorIconView->clear();
        m_indicatorIconView->setToolTip(QString());
        return;
    }
    FDCommonImageProvider &images = FDCommonImageProvider::shared();
    const bool primary = tab->selectedPDFView() == tab->primaryPDFView();
    const QIcon icon
        = primary ? images.primaryIndicatorOnStateIcon() : images.secondaryIndicatorOnStateIcon();
    const int edge = FDCommonImageProvider::iconSize;
    m_indicatorIconView->setPixmap(icon.pixmap(QSize(edge, edge), devicePixelRatioF()));
    m_indicatorIconView->setToolTip(primary ? tr("View A") : tr("View B"));
}

void PDFSidebarController::refreshIcons()
{
    m_iconsDrawn = true;
    const FDTheme *const theme = FDThemeProvider::current();
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText, theme->color(FDTheme::labelColor));
    setPalette(palette);
    m_tabBar->repaintButtons();
    // The markers were drawn again in the new colours.
    updateIndicator();
}

void PDFSidebarController::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), FDThemeProvider::current()->color(FDTheme::tableViewBackgroundColor));
}
