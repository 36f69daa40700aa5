#pragma once

// A transparent child of the PDF view that covers one laid-out page, for the owner's overlays.
// It never takes mouse presses: they fall through to the view. Main thread only.

#include <QWidget>

#include <memory>

class PDFPage;

class PDFPageView : public QWidget
{
public:
    PDFPageView(const std::shared_ptr<PDFPage> &page, QWidget *parent);

    std::shared_ptr<PDFPage> page() const { return m_page.lock(); }

private:
    std::weak_ptr<PDFPage> m_page;
};
