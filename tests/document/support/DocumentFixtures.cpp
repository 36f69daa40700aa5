#include "DocumentFixtures.h"

#include <document/FDDocument.h>
#include <document/FDDocumentDelegate.h>
#include <document/FDPage.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <support/PdfFixtures.h>

#include <QFile>

namespace {

std::shared_ptr<FDPage> blankPage()
{
    auto page = std::make_shared<FDPage>();
    if (!page->init())
        qFatal("the engine cannot make a blank page");
    return page;
}

class ObjectDelegate : public FDDocumentDelegate
{
public:
    explicit ObjectDelegate(QObject *view)
        : m_view(view)
    { }
    QObject *pdfView() const override { return m_view; }

private:
    QObject *m_view;
};

} // namespace

namespace DocumentFixtures {

void writeBlankPDF(const QString &path, int pageCount, int linesPerPage)
{
    if (!PdfFixtures::write(PdfFixtures::textPages(pageCount, linesPerPage, 0), path))
        qFatal("cannot write the fixture %s", qPrintable(path));
}

int pageCountOf(const QString &path)
{
    auto document = std::make_shared<PDFDocument>();
    return document->initWithURL(QUrl::fromLocalFile(path)) ? document->pageCount() : -1;
}

std::shared_ptr<FDDocument> open(
    const QString &path, const std::shared_ptr<FDDocumentDelegate> &delegate)
{
    auto document = std::make_shared<FDDocument>();
    if (!document->initWithURL(QUrl::fromLocalFile(path), delegate))
        qFatal("cannot open %s: %s", qPrintable(path), qPrintable(document->errorString()));
    return document;
}

void appendBlankPages(FDDocument &document, int count)
{
    for (int added = 0; added < count; ++added)
        document.insertPage(blankPage(), document.pageCount());
}

} // namespace DocumentFixtures

ViewDelegate::ViewDelegate()
    : m_delegate(std::make_shared<ObjectDelegate>(&m_view))
{ }

ViewDelegate::~ViewDelegate() = default;
