#include "PDFSearchSidebarContainer.h"

#include "PDFSearchSidebarContents.h"

#include <QShortcut>
#include <QVBoxLayout>

PDFSearchSidebarContainer::PDFSearchSidebarContainer(PDFContents *contents, QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("PDFSearchSidebarContainer"));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_controller = new PDFSearchSidebarContents(this);
    m_controller->setContents(contents);
    layout->addWidget(m_controller);
    // Shortcuts of a hidden widget do not fire, so only the tab in front with results steps.
    auto *const next = new QShortcut(QKeySequence(Qt::Key_F3), this);
    next->setContext(Qt::WindowShortcut);
    connect(next, &QShortcut::activated, m_controller, &PDFSearchSidebarContents::selectNextMatch);
    auto *const previous = new QShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F3), this);
    previous->setContext(Qt::WindowShortcut);
    connect(previous, &QShortcut::activated, m_controller,
        &PDFSearchSidebarContents::selectPreviousMatch);
}
