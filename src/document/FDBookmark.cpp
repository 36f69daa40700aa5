#include "FDBookmark.h"

#include "FDPage.h"

#include <QtGlobal>

void FDBookmark::init()
{
    qFatal("FDBookmark::init is not for use: make a bookmark with initWithTitle(title, page)");
}

void FDBookmark::initWithTitle(const QString &title, const std::shared_ptr<FDPage> &page)
{
    m_title = title;
    m_page = page;
}
