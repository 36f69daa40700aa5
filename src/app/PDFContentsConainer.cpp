#include "PDFContentsConainer.h"

#include "PDFContents.h"
#include "containers/PDFViewBottomContainer.h"
#include "containers/PDFViewRightContainer.h"
#include "containers/PDFViewTopLeftContainer.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>
#include <pages/PDFPagesEditor.h>
#include <view/FDPDFView.h>

#include <QFrame>
#include <QSplitter>
#include <QVBoxLayout>

namespace {

QVBoxLayout *fillingLayout(QWidget *widget)
{
    auto *const layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return layout;
}

QSplitter *makeSplitter(Qt::Orientation orientation, const QString &name)
{
    auto *const splitter = new QSplitter(orientation);
    splitter->setObjectName(name);
    splitter->setChildrenCollapsible(false);
    splitter->setHandleWidth(1);
    return splitter;
}

QFrame *makeFrame(const QString &name)
{
    auto *const frame = new QFrame;
    frame->setObjectName(name);
    frame->setAutoFillBackground(true);
    return frame;
}

void setBackground(QWidget *widget, const QColor &colour)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::Window, colour);
    widget->setPalette(palette);
    widget->setAutoFillBackground(true);
}

} // namespace

PDFContentsConainer::PDFContentsConainer(
    PDFContents *contents, FDPDFView *primary, FDPDFView *secondary)
    : m_contents(contents)
{
    setObjectName(QStringLiteral("PDFContentsConainer"));
    QVBoxLayout *const column = fillingLayout(this);

    // Filled by the document toolbars; empty until then.
    m_toolbarContainer = new QWidget;
    m_toolbarContainer->setObjectName(QStringLiteral("toolbarContainer"));
    fillingLayout(m_toolbarContainer);
    column->addWidget(m_toolbarContainer);

    m_mainView = new QWidget;
    m_mainView->setObjectName(QStringLiteral("mainView"));
    column->addWidget(m_mainView, 1);
    m_pagesEditor = makeFrame(QStringLiteral("pagesEditor"));
    m_pagesEditorController = new PDFPagesEditor(contents);
    m_pagesEditorController->setPDFViews(primary, secondary);
    fillingLayout(m_pagesEditor)->addWidget(m_pagesEditorController);
    m_pagesEditor->hide();
    column->addWidget(m_pagesEditor, 1);

    // Search results at the right of everything, the sidebar at the left of the views.
    m_searchSplitView = makeSplitter(Qt::Horizontal, QStringLiteral("searchSplitView"));
    fillingLayout(m_mainView)->addWidget(m_searchSplitView);
    m_sidebarSplitView = makeSplitter(Qt::Horizontal, QStringLiteral("sidebarSplitView"));
    m_searchResultsContainer = makeFrame(QStringLiteral("searchResultsContainer"));
    fillingLayout(m_searchResultsContainer);
    m_searchResultsContainer->hide();
    m_searchSplitView->addWidget(m_sidebarSplitView);
    m_searchSplitView->addWidget(m_searchResultsContainer);
    m_searchSplitView->setStretchFactor(0, 1);

    m_sidebarContainer = makeFrame(QStringLiteral("sidebarContainer"));
    fillingLayout(m_sidebarContainer);
    m_sidebarContainer->setMinimumWidth(160);
    m_sidebarContainer->hide();
    m_pdfAreaView = new QWidget;
    m_pdfAreaView->setObjectName(QStringLiteral("pdfAreaView"));
    m_sidebarSplitView->addWidget(m_sidebarContainer);
    m_sidebarSplitView->addWidget(m_pdfAreaView);
    m_sidebarSplitView->setStretchFactor(1, 1);

    // Side by side: the first place (itself split one above the other) and the right place.
    m_vertPDFSplitView = makeSplitter(Qt::Horizontal, QStringLiteral("vertPDFSplitView"));
    m_horiPDFSplitView = makeSplitter(Qt::Vertical, QStringLiteral("horiPDFSplitView"));
    fillingLayout(m_pdfAreaView)->addWidget(m_vertPDFSplitView);
    m_topLeftContainer = new PDFViewTopLeftContainer(contents);
    m_topLeftContainer->setObjectName(QStringLiteral("topLeftContainer"));
    m_rightContainer = new PDFViewRightContainer(contents);
    m_rightContainer->setObjectName(QStringLiteral("rightContainer"));
    m_bottomContainer = new PDFViewBottomContainer(contents);
    m_bottomContainer->setObjectName(QStringLiteral("bottomContainer"));
    m_horiPDFSplitView->addWidget(m_topLeftContainer);
    m_horiPDFSplitView->addWidget(m_bottomContainer);
    m_vertPDFSplitView->addWidget(m_horiPDFSplitView);
    m_vertPDFSplitView->addWidget(m_rightContainer);
    placeView(primary, m_topLeftContainer);
    placeView(secondary, m_rightContainer);
    m_rightContainer->hide();
    m_bottomContainer->hide();
    onThemeChanged();
}

PDFContentsConainer::~PDFContentsConainer()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    NotificationCenter::qkCenter().removeObserver(this);
}

void PDFContentsConainer::onViewInit()
{
    NotificationCenter &center = NotificationCenter::defaultCenter();
    const void *const tab = m_contents.data();
    center.addObserver(this, PDFContents::PagesEditingModeDidChangeNotification, tab,
        [this](const Notification &) { onPagesEditingModeChanged(); });
    center.addObserver(this, PDFContents::SidebarVisibilityDidChangeNotification, tab,
        [this](const Notification &) { onSidebarVisibilityChanged(); });
    center.addObserver(this, PDFContents::QueryStringDidChangeNotification, tab,
        [this](const Notification &) { onQueryStringChanged(); });
    center.addObserver(this, PDFContents::SplitModeDidChangeNotification, tab,
        [this](const Notification &) { onSplitModeChanged(); });
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { onThemeChanged(); });
    updateDividers();
    for (PDFViewContainer *const place :
        { m_topLeftContainer, m_rightContainer, m_bottomContainer })
        place->onViewInit();
}

void PDFContentsConainer::placeView(FDPDFView *view, QWidget *place)
{
    if (QWidget *const old = view->parentWidget(); old && old->layout())
        old->layout()->removeWidget(view);
    view->setParent(place);
    place->layout()->addWidget(view);
    view->show();
}

void PDFContentsConainer::onPagesEditingModeChanged()
{
    const bool editing = m_contents && m_contents->isPagesEditingMode();
    m_mainView->setVisible(!editing);
    m_pagesEditor->setVisible(editing);
}

void PDFContentsConainer::onSidebarVisibilityChanged()
{
    m_sidebarContainer->setVisible(m_contents && !m_contents->isSidebarHidden());
}

void PDFContentsConainer::onQueryStringChanged()
{
    m_searchResultsContainer->setVisible(m_contents && m_contents->queryString().has_value());
    updateDividers();
}

void PDFContentsConainer::onSplitModeChanged()
{
    if (!m_contents)
        return;
    const PDFSplitViewMode mode = m_contents->splitMode();
    // The view in the second place follows the mode into the right or the bottom place.
    FDPDFView *const second = m_contents->primaryPDFView()->parentWidget() == m_topLeftContainer
        ? m_contents->secondaryPDFView()
        : m_contents->primaryPDFView();
    QWidget *const shown = mode == PDFSplitViewMode::horizontal ? m_rightContainer
        : mode == PDFSplitViewMode::vertical                    ? m_bottomContainer
                                                                : nullptr;
    if (shown && second->parentWidget() != shown)
        placeView(second, shown);
    m_rightContainer->setVisible(shown == m_rightContainer);
    m_bottomContainer->setVisible(shown == m_bottomContainer);
    updateDividers();
    // A new split opens at half of the area.
    if (shown == m_rightContainer) {
        const int half = m_vertPDFSplitView->width() / 2;
        m_vertPDFSplitView->setSizes({ half, m_vertPDFSplitView->width() - half });
    } else if (shown == m_bottomContainer) {
        const int half = m_horiPDFSplitView->height() / 2;
        m_horiPDFSplitView->setSizes({ half, m_horiPDFSplitView->height() - half });
    }
}

void PDFContentsConainer::updateDividers()
{
    for (QSplitter *const splitter :
        { m_searchSplitView, m_vertPDFSplitView, m_horiPDFSplitView }) {
        const bool hide = !m_contents || m_contents->splitViewShouldHideDivider(splitter);
        if (QSplitterHandle *const handle = splitter->handle(1))
            handle->setVisible(!hide);
    }
}

void PDFContentsConainer::onThemeChanged()
{
    const FDTheme *const theme = FDThemeProvider::current();
    setBackground(this, theme->color(FDTheme::contentViewBackgroundColor));
    setBackground(m_toolbarContainer, theme->color(FDTheme::toolbarBackgroundColor));
    setBackground(m_sidebarContainer, theme->color(FDTheme::tableViewBackgroundColor));
    setBackground(m_searchResultsContainer, theme->color(FDTheme::tableViewBackgroundColor));
    setBackground(m_pagesEditor, theme->color(FDTheme::contentViewBackgroundColor));
    setBackground(m_pdfAreaView, theme->color(FDTheme::pageBackgroundColor));
    for (QSplitter *const splitter :
        { m_searchSplitView, m_sidebarSplitView, m_vertPDFSplitView, m_horiPDFSplitView }) {
        for (int index = 1; index < splitter->count(); ++index)
            setBackground(splitter->handle(index), theme->color(FDTheme::borderColor));
    }
}
