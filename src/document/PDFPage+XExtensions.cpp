#include "PDFPage+XExtensions.h"

#include "PageThumbnail.h"

#include <annotation/PDFAnnotation+XExtensions.h>
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
        if (isValid(*annotation))
            valid.push_back(annotation);
    }
    return valid;
}

QImage thumbnailWithMaxLength(const PDFPage &page, double maxLength, PDFDisplayBox box)
{
    return PageThumbnail::plain(page, maxLength, box).render();
}

QImage thumbnailWithSize(const PDFPage &page, QSizeF size, PDFDisplayBox box)
{
    return thumbnailWithMaxLength(page, std::max(size.width(), size.height()), box);
}
