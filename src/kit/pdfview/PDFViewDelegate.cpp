#include "PDFViewDelegate.h"

#include <kit/base/Workspace.h>

void PDFViewDelegate::PDFViewWillClickOnLink(PDFView *, const QUrl &url)
{
    Workspace::openURL(url);
}

void PDFViewDelegate::pdfViewDidAddView(PDFView *, QWidget *, const std::shared_ptr<PDFPage> &, int)
{ }

void PDFViewDelegate::pdfViewWillRemoveView(
    PDFView *, QWidget *, const std::shared_ptr<PDFPage> &, int)
{ }

double PDFViewDelegate::PDFViewWillChangeScaleFactor(PDFView *, double scale)
{
    return scale;
}
