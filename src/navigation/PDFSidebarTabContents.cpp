#include "PDFSidebarTabContents.h"

#include "PDFSidebarTabContentsDelegate.h"

#include <app/PDFContents.h>
#include <appearance/FDThemeProvider.h>
#include <document/FDDocument.h>
#include <kit/base/NotificationCenter.h>
#include <view/FDPDFView.h>

PDFSidebarTabContents::PDFSidebarTabContents(QWidget *parent)
    : QWidget(parent)
{ }

PDFSidebarTabContents::~PDFSidebarTabContents()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    NotificationCenter::qkCenter().removeObserver(this);
}

PDFContents *PDFSidebarTabContents::contents() const
{
    return m_contents;
}

void PDFSidebarTabContents::setContents(PDFContents *contents)
{
    m_contents = contents;
    resetObservers();
    // A tab made after its view has a document reads it now: no notification will tell.
    if (document())
        onPDFViewChanged();
}

FDPDFView *PDFSidebarTabContents::selectedPDFView() const
{
    return m_contents ? m_contents->selectedPDFView() : nullptr;
}

std::shared_ptr<FDDocument> PDFSidebarTabContents::document() const
{
    const FDPDFView *const view = selectedPDFView();
    return view ? view->fdDocument() : nullptr;
}

void PDFSidebarTabContents::setTitle(const QString &title)
{
    m_title = title;
    if (m_delegate)
        m_delegate->updateSidebarTitleWithController(this);
}

void PDFSidebarTabContents::resetObservers()
{
    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.removeObserver(this);
    NotificationCenter::qkCenter().removeObserver(this);
    if (!m_contents)
        return;
    center.addObserver(this, PDFContents::SelectedPDFViewDidChangeNotification, m_contents.data(),
        [this](const Notification &) { onSelectedPDFViewChanged(); });
    if (FDPDFView *const view = selectedPDFView()) {
        center.addObserver(this, PDFView::DocumentChangedNotification, view,
            [this](const Notification &) { onPDFViewChanged(); });
    }
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { onThemeChanged(); });
    onResetObservers();
}

void PDFSidebarTabContents::onSelectedPDFViewChanged()
{
    resetObservers();
    onPDFViewChanged();
}
