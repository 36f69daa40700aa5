#pragma once

// What the application asks of any page, whether or not it is an FDPage. Main thread only.

#include <memory>
#include <vector>

class PDFAnnotation;
class PDFPage;

// The page's index in its document; -1 without a document or when the document has no pages.
int pageIndex(const PDFPage &page);

// The page's annotations that the application handles (no links, no pop-ups), in page order.
std::vector<std::shared_ptr<PDFAnnotation>> validAnnotations(const PDFPage &page);
