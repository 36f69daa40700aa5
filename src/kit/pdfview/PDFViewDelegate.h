#pragma once

// What a PDF view asks or tells its owner. Every method has a default, so an owner implements
// only what it cares about. Main thread only.

#include <QUrl>

#include <memory>

class PDFPage;
class PDFView;
class QWidget;

class PDFViewDelegate
{
public:
    virtual ~PDFViewDelegate() = default;

    // A link to a URL was clicked. The default opens it with the desktop's handler.
    virtual void PDFViewWillClickOnLink(PDFView *sender, const QUrl &url);
    // A page view was created for the page at index; the owner may put widgets into it.
    virtual void pdfViewDidAddView(
        PDFView *sender, QWidget *pageView, const std::shared_ptr<PDFPage> &page, int index);
    // The page view is about to go away (far out of view, or a new layout).
    virtual void pdfViewWillRemoveView(
        PDFView *sender, QWidget *pageView, const std::shared_ptr<PDFPage> &page, int index);
    // The scale the view is about to take; the answer is taken instead.
    virtual double PDFViewWillChangeScaleFactor(PDFView *sender, double scale);
};
