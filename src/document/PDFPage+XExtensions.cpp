#include "PDFPage+XExtensions.h"

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

int pageIndex(const PDFPage &page)
{
    const std::shared_ptr<PDFDocument> document = page.document();
    if (!document || document->pageCount() == 0)
        return -1;
    return document->indexForPage(std::const_pointer_cast<PDFPage>(page.shared_from_this()));
}
