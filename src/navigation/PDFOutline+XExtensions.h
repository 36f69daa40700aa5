#pragma once

// What the application asks of an outline item beyond the engine's tree. Main thread only.

#include <QString>

#include <memory>

class PDFOutline;
class PDFPage;

// The page the item leads to: its destination's page, else the page of its go-to action's
// destination; null when it leads to no page.
std::shared_ptr<PDFPage> page(const PDFOutline &outline);

// The label of the item's page; with no page, when its action leads to a page of another file,
// that page's number; else a null string.
QString pageLabel(const PDFOutline &outline);
// The index of the item's page in its document; -1 with no page.
int pageIndex(const PDFOutline &outline);
