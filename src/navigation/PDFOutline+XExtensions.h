#pragma once

// What the application asks of an outline item beyond the engine's tree. Main thread only.

#include <memory>

class PDFOutline;
class PDFPage;

// The page the item leads to: its destination's page, else the page of its go-to action's
// destination; null when it leads to no page.
std::shared_ptr<PDFPage> page(const PDFOutline &outline);
