#include "CompressContents.h"

#include "PDFWindowController.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>

#include <QWidget>

CompressContents::CompressContents(QObject *parent)
    : FDContents(parent)
{ }

QString CompressContents::title() const
{
    return tr("Compress");
}

void CompressContents::setTitle(const QString &)
{ }

PDFWindowController *CompressContents::windowController()
{
    return qobject_cast<PDFWindowController *>(TabWindowController::fromView(view()));
}

std::unique_ptr<QWidget> CompressContents::loadView()
{
    auto view = std::make_unique<QWidget>();
    view->setAutoFillBackground(true);
    QPalette palette = view->palette();
    palette.setColor(
        QPalette::Window, FDThemeProvider::current()->color(FDTheme::contentViewBackgroundColor));
    view->setPalette(palette);
    return view;
}
