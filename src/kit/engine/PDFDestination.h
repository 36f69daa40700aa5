#pragma once

// A place in a document: a page (held by identity, so it follows the page when it moves) and a
// page-space point, with an optional zoom. Main thread only.

#include <QPointF>

#include <cfloat>
#include <memory>

class PDFPage;

class PDFDestination
{
public:
    // Marks a coordinate or zoom the destination leaves as it is.
    static constexpr double UnspecifiedValue = FLT_MAX;

    PDFDestination(const std::shared_ptr<PDFPage> &page, const QPointF &point);

    std::shared_ptr<PDFPage> page() const { return m_page; }
    QPointF point() const { return m_point; }
    double zoom() const { return m_zoom; }
    void setZoom(double zoom) { m_zoom = zoom; }

private:
    std::shared_ptr<PDFPage> m_page;
    QPointF m_point;
    double m_zoom = UnspecifiedValue;
};
