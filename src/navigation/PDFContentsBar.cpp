#include "PDFContentsBar.h"

#include <app/PDFContents.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>

PDFContentsBar::PDFContentsBar(PDFContents *contents, QWidget *parent)
    : QWidget(parent)
    , m_contents(contents)
{
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { onThemeChanged(); });
}

PDFContentsBar::~PDFContentsBar()
{
    NotificationCenter::qkCenter().removeObserver(this);
}

PDFContents *PDFContentsBar::contents() const
{
    return m_contents;
}

void PDFContentsBar::setContents(PDFContents *contents)
{
    m_contents = contents;
}

void PDFContentsBar::onThemeChanged()
{
    if (!autoFillBackground())
        return;
    QPalette palette = this->palette();
    palette.setColor(
        QPalette::Window, FDThemeProvider::current()->color(FDTheme::toolbarBackgroundColor));
    setPalette(palette);
}
