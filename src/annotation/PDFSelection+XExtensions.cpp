#include "PDFSelection+XExtensions.h"

#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

QString firstPageLabel(const PDFSelection &selection)
{
    const auto page = safeFirstPage(selection);
    return page ? page->label() : QString();
}

QString cleanedString(const PDFSelection &selection)
{
    return selection.string();
}

qint64 safeIndexOfFirstCharacterOnPage(
    const PDFSelection &selection, const std::shared_ptr<PDFPage> &page)
{
    if (!page || selection.numberOfTextRangesOnPage(page) == 0)
        return SelectionNotFound;
    return selection.rangeAtIndex(0, page).location;
}

qint64 safeIndexOfLastCharacterOnPage(
    const PDFSelection &selection, const std::shared_ptr<PDFPage> &page)
{
    const int count = page ? selection.numberOfTextRangesOnPage(page) : 0;
    if (count == 0)
        return SelectionNotFound;
    return selection.rangeAtIndex(count - 1, page).end();
}

std::shared_ptr<PDFPage> safePage(
    const PDFSelection &selection, const std::shared_ptr<PDFPage> &page)
{
    if (!page)
        return nullptr;
    const int count = selection.numberOfTextRangesOnPage(page);
    for (int i = 0; i < count; ++i) {
        if (selection.rangeAtIndex(i, page).length > 0)
            return page;
    }
    return nullptr;
}

std::shared_ptr<PDFPage> safeFirstPage(const PDFSelection &selection)
{
    const auto pages = selection.pages();
    return pages.empty() ? nullptr : safePage(selection, pages.front());
}

std::shared_ptr<PDFPage> safeLastPage(const PDFSelection &selection)
{
    const auto pages = selection.pages();
    return pages.empty() ? nullptr : safePage(selection, pages.back());
}

bool hasCharacters(const PDFSelection &selection)
{
    return safeFirstPage(selection) != nullptr;
}
