#pragma once

// What the application asks of any page, whether or not it is an FDPage. Main thread only.

class PDFPage;

// The page's index in its document; -1 without a document or when the document has no pages.
int pageIndex(const PDFPage &page);
