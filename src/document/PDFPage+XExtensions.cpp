#include "PDFPage+XExtensions.h"

#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

int pageIndex(const PDFPage &page)
{
    const std::shared_ptr<PDFDocument> document = page.document();
    if (!document || document->pageCount() == 0)
        return -1;
    return document->indexForPage(std::const_pointer_cast<PDFPage>(page.shared_from_this()));
}

std::vector<std::shared_ptr<PDFAnnotation>> validAnnotations(const PDFPage &page)
{
    std::vector<std::shared_ptr<PDFAnnotation>> valid;
    for (const std::shared_ptr<PDFAnnotation> &annotation : page.annotations()) {
        const QString type = annotation->type();
        if (type != QLatin1String("Popup") && type != QLatin1String("Link"))
            valid.push_back(annotation);
    }
    return valid;
}
