#include "PDFSidebarContainer.h"

#include "PDFSidebarController.h"

#include <app/PDFContents.h>
#include <kit/base/NotificationCenter.h>

#include <QVBoxLayout>

PDFSidebarContainer::PDFSidebarContainer(PDFContents *contents, QWidget *parent)
    : QWidget(parent)
    , m_contents(contents)
{
    setObjectName(QStringLiteral("PDFSidebarContainer"));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_controller = new PDFSidebarController(contents, this);
    layout->addWidget(m_controller);
    NotificationCenter::defaultCenter().addObserver(this,
        PDFContents::SidebarVisibilityDidChangeNotification, contents,
        [this](const Notification &) { onSidebarVisibilityChanged(); });
    onSidebarVisibilityChanged();
}

PDFSidebarContainer::~PDFSidebarContainer()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

void PDFSidebarContainer::onSidebarVisibilityChanged()
{
    // The frame around this place (the tab's layout) hides with it; this keeps the controller's
    // tabs from painting while hidden, they still follow the tab.
    setHidden(!m_contents || m_contents->isSidebarHidden());
}
