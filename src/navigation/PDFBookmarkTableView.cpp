#include "PDFBookmarkTableView.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>

PDFBookmarkTableView::PDFBookmarkTableView(QWidget *parent)
    : QTableView(parent)
{
    onThemeChanged();
}

PDFBookmarkTableView::~PDFBookmarkTableView() = default;

void PDFBookmarkTableView::setDeleteCommand(
    std::function<bool()> validate, std::function<void()> perform)
{
    m_validateDelete = std::move(validate);
    m_performDelete = std::move(perform);
}

void PDFBookmarkTableView::onThemeChanged()
{
    const FDTheme *const theme = FDThemeProvider::current();
    QPalette palette = this->palette();
    palette.setColor(QPalette::Base, theme->color(FDTheme::tableViewBackgroundColor));
    palette.setColor(QPalette::Text, theme->color(FDTheme::labelColor));
    palette.setColor(QPalette::Highlight, theme->color(FDTheme::selectedBackgroundColor));
    palette.setColor(QPalette::HighlightedText, theme->color(FDTheme::selectedTextColor));
    setPalette(palette);
    viewport()->update();
}

bool PDFBookmarkTableView::respondsToEditCommand(const QString &command) const
{
    return command == QLatin1String("delete:") && m_performDelete && state() != EditingState;
}

bool PDFBookmarkTableView::validateEditCommand(const QString &command) const
{
    return respondsToEditCommand(command) && (!m_validateDelete || m_validateDelete());
}

void PDFBookmarkTableView::performEditCommand(const QString &command)
{
    if (respondsToEditCommand(command))
        m_performDelete();
}
