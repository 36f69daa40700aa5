#include "PDFPageView.h"

PDFPageView::PDFPageView(const std::shared_ptr<PDFPage> &page, QWidget *parent)
    : QWidget(parent)
    , m_page(page)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
}
