#pragma once

// Bookmarking the page a view shows: the title is the selected text, else the start of the
// page's text, else "Untitled". Main thread only.

#include <memory>

class FDPDFView;
class PDFPage;

namespace FDBookmarkCommands {

// The most characters of page text a title takes.
constexpr int maxTitleLength = 30;

// Adds a bookmark on the page of the view's document; false when the page has no text layer
// answer, is no FDPage of an FDDocument, or has a bookmark already.
bool bookmarkPage(FDPDFView &view, const std::shared_ptr<PDFPage> &page);
// The current page's bookmark goes if it has one, else one is added; false with no page.
bool toggleBookmarkOfCurrentPage(FDPDFView &view);

} // namespace FDBookmarkCommands
