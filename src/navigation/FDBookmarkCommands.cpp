#include "FDBookmarkCommands.h"

#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <kit/engine/PDFSelection.h>
#include <view/FDPDFView.h>

namespace FDBookmarkCommands {

bool bookmarkPage(FDPDFView &view, const std::shared_ptr<PDFPage> &page)
{
    const auto document = view.fdDocument();
    const auto fdPage = std::dynamic_pointer_cast<FDPage>(page);
    if (!document || !fdPage)
        return false;
    const QString text = fdPage->string();
    if (text.isNull())
        return false;
    QString title;
    const auto selection = view.currentSelection();
    if (selection && !selection->string().isNull() && !selection->string().isEmpty())
        title = selection->string();
    else
        title = (text.size() < maxTitleLength + 1 ? text : text.left(maxTitleLength)).trimmed();
    if (title.isEmpty())
        title = FDDocument::untitledTitle();
    return document->addBookmarkWith(fdPage, title);
}

bool toggleBookmarkOfCurrentPage(FDPDFView &view)
{
    const auto document = view.fdDocument();
    const auto page = view.currentPage();
    if (!document || !page)
        return false;
    if (const auto bookmark = document->bookmarkFor(page)) {
        document->removeBookmark(bookmark);
        return true;
    }
    return bookmarkPage(view, page);
}

} // namespace FDBookmarkCommands
