#pragma once

// The one place that converts between page space (PDF user space: y up, unrotated, true box
// origins) and the view space of a box shown at a rotation and scale (origin at the top left of
// the rotated box, y down, units of the scale). Rendering, text and annotations all use it.

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QTransform>

class PageGeometry
{
public:
    PageGeometry(const QRectF &box, int rotation);

    QRectF box() const { return m_box; }
    int rotation() const { return m_rotation; }

    // Size of the rotated box in view units at the scale.
    QSizeF viewSize(double scale = 1.0) const;
    QTransform pageToView(double scale = 1.0) const;
    QTransform viewToPage(double scale = 1.0) const;

    QPointF viewPoint(const QPointF &pagePoint, double scale = 1.0) const;
    QPointF pagePoint(const QPointF &viewPoint, double scale = 1.0) const;
    QRectF viewRect(const QRectF &pageRect, double scale = 1.0) const;
    QRectF pageRect(const QRectF &viewRect, double scale = 1.0) const;

    // 0, 90, 180 or 270 for any multiple of 90 (other angles round to the nearest quarter turn).
    static int normalizedRotation(int degrees);

private:
    QRectF m_box;
    int m_rotation;
};
