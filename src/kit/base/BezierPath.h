#pragma once

// A path with an element model: move-to, line-to, curve-to (control 1, control 2, end) and close,
// editable by index, plus the stroke attributes used to draw it. A copyable value; any thread,
// one thread at a time.

#include <QList>
#include <QMetaType>
#include <QPainterPath>
#include <QPen>
#include <QPointF>
#include <QRectF>

#include <vector>

class QDataStream;
class QPainter;
class QTransform;

class BezierPath
{
public:
    enum ElementType { MoveTo, LineTo, CurveTo, ClosePath };
    enum WindingRule { NonZero, EvenOdd };
    enum LineCap { ButtCap, RoundCap, SquareCap };
    enum LineJoin { MiterJoin, RoundJoin, BevelJoin };

    static BezierPath bezierPathWithRect(QRectF rect);
    static BezierPath bezierPathWithOvalInRect(QRectF rect);

    // A line or curve with no current point is preceded by a MoveTo to its end point; one that
    // follows a close is preceded by a MoveTo to the closed subpath's first point.
    void moveTo(QPointF point);
    void lineTo(QPointF point);
    void curveTo(QPointF end, QPointF control1, QPointF control2);
    void closePath();
    void appendPath(const BezierPath &path);
    // Four lines from the min corner, then a close: five elements.
    void appendRect(QRectF rect);
    // Four quarter curves from (maxX, midY), then a close: six elements.
    void appendOval(QRectF rect);
    // Corners rounded by quarter ellipses; radii are capped at half the sides, and a radius
    // that is not positive gives the plain rect.
    void appendRoundedRect(QRectF rect, double xRadius, double yRadius);
    // An arc of a circle, angles in degrees from the x axis, counter-clockwise in y-up space
    // unless clockwise. A line joins the current point to the arc's start (a move when there is
    // no current point).
    void appendArc(
        QPointF center, double radius, double startAngle, double endAngle, bool clockwise = false);
    // A line towards point1, rounded off by an arc of the radius tangent to the lines from the
    // current point to point1 and from point1 to point2; ends at the second tangent point.
    // Without a current point it only moves to point1; without a corner, it only lines to it.
    void appendArcFromPoint(QPointF point1, QPointF point2, double radius);

    int elementCount() const { return int(m_elements.size()); }
    bool isEmpty() const { return m_elements.empty(); }
    // Fills points with the element's points (one for MoveTo/LineTo; c1, c2, end for CurveTo;
    // none for ClosePath). An index out of range answers ClosePath with no points.
    ElementType elementAt(int index, QPointF points[3] = nullptr) const;
    // Replaces the points of the element at index (as many as its type has); out of range is a
    // no-op.
    void setAssociatedPoints(const QPointF points[], int index);
    void removeAllPoints();
    void transform(const QTransform &transform);
    // The last point reached; after a close, the first point of that subpath; (0, 0) when empty.
    QPointF currentPoint() const;

    // The smallest rect holding every point on the path, curve extrema included; zero when empty.
    QRectF bounds() const;
    // The smallest rect holding every point and control point.
    QRectF controlPointBounds() const;
    // The same outline with curves replaced by lines that stay within flatness of the curve.
    BezierPath flattened(double flatness = 0.6) const;
    // Whether the filled path covers the point, open subpaths taken as closed.
    bool containsPoint(QPointF point) const;

    WindingRule windingRule() const { return m_windingRule; }
    void setWindingRule(WindingRule rule) { m_windingRule = rule; }
    double lineWidth() const { return m_lineWidth; }
    void setLineWidth(double width) { m_lineWidth = width; }
    LineCap lineCap() const { return m_lineCap; }
    void setLineCap(LineCap cap) { m_lineCap = cap; }
    LineJoin lineJoin() const { return m_lineJoin; }
    void setLineJoin(LineJoin join) { m_lineJoin = join; }
    // Ratio of miter length to line width beyond which a miter join is bevelled.
    double miterLimit() const { return m_miterLimit; }
    void setMiterLimit(double limit) { m_miterLimit = limit; }
    // Dash lengths in path units, alternating on and off; empty means solid.
    void setLineDash(const QList<double> &pattern, double phase);
    QList<double> lineDash() const { return m_dash; }
    double lineDashPhase() const { return m_dashPhase; }

    QPainterPath toPainterPath() const;
    // The painter's pen colour (stroke) or brush (fill), with this path's width, cap, join,
    // miter limit, dash and winding rule. The painter's state is left as it was.
    void stroke(QPainter &painter) const;
    void fill(QPainter &painter) const;
    // A pen carrying this path's stroke attributes in the given colour.
    QPen pen(const QColor &color) const;

    bool operator==(const BezierPath &other) const;
    bool operator!=(const BezierPath &other) const { return !(*this == other); }

private:
    struct Element
    {
        ElementType type = MoveTo;
        QPointF points[3];
        bool operator==(const Element &other) const;
    };

    friend QDataStream &operator<<(QDataStream &stream, const BezierPath &path);
    friend QDataStream &operator>>(QDataStream &stream, BezierPath &path);

    void append(ElementType type, QPointF p0, QPointF p1 = {}, QPointF p2 = {});
    bool hasCurrentPoint() const;
    QPointF subpathStart() const;

    std::vector<Element> m_elements;
    WindingRule m_windingRule = NonZero;
    double m_lineWidth = 1.0;
    LineCap m_lineCap = ButtCap;
    LineJoin m_lineJoin = MiterJoin;
    double m_miterLimit = 10.0;
    QList<double> m_dash;
    double m_dashPhase = 0.0;
};

// Writes the elements and attributes; reading validates counts and kinds against the bytes left
// and sets ReadCorruptData on nonsense, leaving the path empty.
QDataStream &operator<<(QDataStream &stream, const BezierPath &path);
QDataStream &operator>>(QDataStream &stream, BezierPath &path);

Q_DECLARE_METATYPE(BezierPath)
