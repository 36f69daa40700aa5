#include "PDFDestination.h"

PDFDestination::PDFDestination(const std::shared_ptr<PDFPage> &page, const QPointF &point)
    : m_page(page)
    , m_point(point)
{ }
