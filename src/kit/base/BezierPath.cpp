#include "BezierPath.h"

#include "BezierMath.h"

#include <QDataStream>
#include <QIODevice>
#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double ovalKappa = 0.5522847498307936; // 4/3 (sqrt(2) - 1): a quarter circle
constexpr double containsFlatness = 0.05;

int pointCount(BezierPath::ElementType type)
{
    switch (type) {
    case BezierPath::MoveTo:
    case BezierPath::LineTo:
        return 1;
    case BezierPath::CurveTo:
        return 3;
    case BezierPath::ClosePath:
        return 0;
    }
    return 0;
}

double radians(double degrees)
{
    return degrees * std::numbers::pi / 180;
}

void growBounds(QRectF &box, bool &any, QPointF p)
{
    if (!any) {
        box = QRectF(p, QSizeF(0, 0));
        any = true;
        return;
    }
    const double minX = std::min(box.left(), p.x());
    const double minY = std::min(box.top(), p.y());
    const double maxX = std::max(box.right(), p.x());
    const double maxY = std::max(box.bottom(), p.y());
    box = QRectF(minX, minY, maxX - minX, maxY - minY);
}

} // namespace

bool BezierPath::Element::operator==(const Element &other) const
{
    if (type != other.type)
        return false;
    for (int i = 0; i < pointCount(type); ++i) {
        if (points[i] != other.points[i])
            return false;
    }
    return true;
}

BezierPath BezierPath::bezierPathWithRect(QRectF rect)
{
    BezierPath path;
    path.appendRect(rect);
    return path;
}

BezierPath BezierPath::bezierPathWithOvalInRect(QRectF rect)
{
    BezierPath path;
    path.appendOval(rect);
    return path;
}

void BezierPath::append(ElementType type, QPointF p0, QPointF p1, QPointF p2)
{
    Element element;
    element.type = type;
    element.points[0] = p0;
    element.points[1] = p1;
    element.points[2] = p2;
    m_elements.push_back(element);
}

bool BezierPath::hasCurrentPoint() const
{
    return !m_elements.empty() && m_elements.back().type != ClosePath;
}

QPointF BezierPath::subpathStart() const
{
    for (auto it = m_elements.rbegin(); it != m_elements.rend(); ++it) {
        if (it->type == MoveTo)
            return it->points[0];
    }
    return QPointF(0, 0);
}

void BezierPath::moveTo(QPointF point)
{
    append(MoveTo, point);
}

void BezierPath::lineTo(QPointF point)
{
    if (m_elements.empty())
        append(MoveTo, point);
    else if (!hasCurrentPoint())
        append(MoveTo, subpathStart());
    append(LineTo, point);
}

void BezierPath::curveTo(QPointF end, QPointF control1, QPointF control2)
{
    if (m_elements.empty())
        append(MoveTo, end);
    else if (!hasCurrentPoint())
        append(MoveTo, subpathStart());
    append(CurveTo, control1, control2, end);
}

void BezierPath::closePath()
{
    if (hasCurrentPoint())
        append(ClosePath, QPointF());
}

void BezierPath::appendPath(const BezierPath &path)
{
    m_elements.insert(m_elements.end(), path.m_elements.begin(), path.m_elements.end());
}

void BezierPath::appendRect(QRectF rect)
{
    const double x0 = rect.x();
    const double y0 = rect.y();
    const double x1 = rect.x() + rect.width();
    const double y1 = rect.y() + rect.height();
    moveTo(QPointF(x0, y0));
    lineTo(QPointF(x1, y0));
    lineTo(QPointF(x1, y1));
    lineTo(QPointF(x0, y1));
    closePath();
}

void BezierPath::appendOval(QRectF rect)
{
    const double rx = rect.width() / 2;
    const double ry = rect.height() / 2;
    const double cx = rect.x() + rx;
    const double cy = rect.y() + ry;
    const double kx = rx * ovalKappa;
    const double ky = ry * ovalKappa;
    moveTo(QPointF(cx + rx, cy));
    curveTo(QPointF(cx, cy + ry), QPointF(cx + rx, cy + ky), QPointF(cx + kx, cy + ry));
    curveTo(QPointF(cx - rx, cy), QPointF(cx - kx, cy + ry), QPointF(cx - rx, cy + ky));
    curveTo(QPointF(cx, cy - ry), QPointF(cx - rx, cy - ky), QPointF(cx - kx, cy - ry));
    curveTo(QPointF(cx + rx, cy), QPointF(cx + kx, cy - ry), QPointF(cx + rx, cy - ky));
    closePath();
}

void BezierPath::appendRoundedRect(QRectF rect, double xRadius, double yRadius)
{
    const double rx = std::min(xRadius, std::abs(rect.width()) / 2);
    const double ry = std::min(yRadius, std::abs(rect.height()) / 2);
    if (!(rx > 0) || !(ry > 0)) {
        appendRect(rect);
        return;
    }
    const double x0 = rect.x();
    const double y0 = rect.y();
    const double x1 = rect.x() + rect.width();
    const double y1 = rect.y() + rect.height();
    const double kx = rx * (1 - ovalKappa);
    const double ky = ry * (1 - ovalKappa);
    moveTo(QPointF(x0 + rx, y0));
    lineTo(QPointF(x1 - rx, y0));
    curveTo(QPointF(x1, y0 + ry), QPointF(x1 - kx, y0), QPointF(x1, y0 + ky));
    lineTo(QPointF(x1, y1 - ry));
    curveTo(QPointF(x1 - rx, y1), QPointF(x1, y1 - ky), QPointF(x1 - kx, y1));
    lineTo(QPointF(x0 + rx, y1));
    curveTo(QPointF(x0, y1 - ry), QPointF(x0 + kx, y1), QPointF(x0, y1 - ky));
    lineTo(QPointF(x0, y0 + ry));
    curveTo(QPointF(x0 + rx, y0), QPointF(x0, y0 + ky), QPointF(x0 + kx, y0));
    closePath();
}

void BezierPath::appendArc(
    QPointF center, double radius, double startAngle, double endAngle, bool clockwise)
{
    double sweep = endAngle - startAngle;
    if (!std::isfinite(sweep) || !std::isfinite(radius))
        return;
    // Reduce to one turn at most, in the asked direction; a whole turn stays whole.
    if (clockwise) {
        sweep = std::fmod(sweep, 360.0);
        if (sweep > 0)
            sweep -= 360;
        if (sweep == 0 && endAngle != startAngle)
            sweep = -360;
    } else {
        sweep = std::fmod(sweep, 360.0);
        if (sweep < 0)
            sweep += 360;
        if (sweep == 0 && endAngle != startAngle)
            sweep = 360;
    }
    const double start = radians(startAngle);
    const QPointF first = center + radius * QPointF(std::cos(start), std::sin(start));
    if (hasCurrentPoint())
        lineTo(first);
    else
        moveTo(first);
    for (const BezierMath::Cubic &cubic :
        BezierMath::arcCubics(center, radius, start, radians(sweep)))
        append(CurveTo, cubic.control1, cubic.control2, cubic.end);
}

void BezierPath::appendArcFromPoint(QPointF point1, QPointF point2, double radius)
{
    if (!hasCurrentPoint()) {
        moveTo(point1);
        return;
    }
    const QPointF current = currentPoint();
    const QPointF toCurrent = current - point1;
    const QPointF toNext = point2 - point1;
    const double lengthA = std::hypot(toCurrent.x(), toCurrent.y());
    const double lengthB = std::hypot(toNext.x(), toNext.y());
    const double cross = toCurrent.x() * toNext.y() - toCurrent.y() * toNext.x();
    if (!(radius > 0) || lengthA == 0 || lengthB == 0 || cross == 0) {
        lineTo(point1); // no corner to round
        return;
    }
    const QPointF a = toCurrent / lengthA;
    const QPointF b = toNext / lengthB;
    const double half = std::acos(std::clamp(QPointF::dotProduct(a, b), -1.0, 1.0)) / 2;
    const double tangentDistance = radius / std::tan(half);
    const QPointF start = point1 + a * tangentDistance;
    const QPointF end = point1 + b * tangentDistance;
    const QPointF bisector = (a + b) / std::hypot((a + b).x(), (a + b).y());
    const QPointF center = point1 + bisector * (radius / std::sin(half));
    const double from = std::atan2(start.y() - center.y(), start.x() - center.x());
    double sweep = std::atan2(end.y() - center.y(), end.x() - center.x()) - from;
    // Between the two tangent points the arc always turns the short way.
    if (sweep > std::numbers::pi)
        sweep -= 2 * std::numbers::pi;
    else if (sweep <= -std::numbers::pi)
        sweep += 2 * std::numbers::pi;
    lineTo(start);
    for (const BezierMath::Cubic &cubic : BezierMath::arcCubics(center, radius, from, sweep))
        append(CurveTo, cubic.control1, cubic.control2, cubic.end);
}

BezierPath::ElementType BezierPath::elementAt(int index, QPointF points[3]) const
{
    if (index < 0 || index >= elementCount())
        return ClosePath;
    const Element &element = m_elements[size_t(index)];
    if (points) {
        for (int i = 0; i < pointCount(element.type); ++i)
            points[i] = element.points[i];
    }
    return element.type;
}

void BezierPath::setAssociatedPoints(const QPointF points[], int index)
{
    if (!points || index < 0 || index >= elementCount())
        return;
    Element &element = m_elements[size_t(index)];
    for (int i = 0; i < pointCount(element.type); ++i)
        element.points[i] = points[i];
}

void BezierPath::removeAllPoints()
{
    m_elements.clear();
}

void BezierPath::transform(const QTransform &transform)
{
    for (Element &element : m_elements) {
        for (int i = 0; i < pointCount(element.type); ++i)
            element.points[i] = transform.map(element.points[i]);
    }
}

QPointF BezierPath::currentPoint() const
{
    if (m_elements.empty())
        return QPointF(0, 0);
    const Element &last = m_elements.back();
    switch (last.type) {
    case MoveTo:
    case LineTo:
        return last.points[0];
    case CurveTo:
        return last.points[2];
    case ClosePath:
        break;
    }
    return subpathStart();
}

QRectF BezierPath::bounds() const
{
    QRectF box(0, 0, 0, 0);
    bool any = false;
    QPointF current(0, 0);
    QPointF start(0, 0);
    for (const Element &element : m_elements) {
        switch (element.type) {
        case MoveTo:
            start = element.points[0];
            [[fallthrough]];
        case LineTo:
            current = element.points[0];
            growBounds(box, any, current);
            break;
        case CurveTo: {
            const QPointF c1 = element.points[0];
            const QPointF c2 = element.points[1];
            const QPointF end = element.points[2];
            growBounds(box, any, current);
            growBounds(box, any, end);
            double roots[2];
            const int nx
                = BezierMath::extremaParameters(current.x(), c1.x(), c2.x(), end.x(), roots);
            for (int i = 0; i < nx; ++i)
                growBounds(box, any, BezierMath::cubicAt(current, c1, c2, end, roots[i]));
            const int ny
                = BezierMath::extremaParameters(current.y(), c1.y(), c2.y(), end.y(), roots);
            for (int i = 0; i < ny; ++i)
                growBounds(box, any, BezierMath::cubicAt(current, c1, c2, end, roots[i]));
            current = end;
            break;
        }
        case ClosePath:
            current = start;
            break;
        }
    }
    return box;
}

QRectF BezierPath::controlPointBounds() const
{
    QRectF box(0, 0, 0, 0);
    bool any = false;
    for (const Element &element : m_elements) {
        for (int i = 0; i < pointCount(element.type); ++i)
            growBounds(box, any, element.points[i]);
    }
    return box;
}

BezierPath BezierPath::flattened(double flatness) const
{
    // A non-positive or NaN flatness would never be reached; the depth limit bounds the work.
    const double tolerance = flatness > 1e-6 ? flatness : 1e-6;
    BezierPath out = *this;
    out.m_elements.clear();
    out.m_elements.reserve(m_elements.size());
    QPointF current(0, 0);
    QPointF start(0, 0);
    for (const Element &element : m_elements) {
        switch (element.type) {
        case MoveTo:
            start = current = element.points[0];
            out.append(MoveTo, current);
            break;
        case LineTo:
            current = element.points[0];
            out.append(LineTo, current);
            break;
        case CurveTo:
            if (out.m_elements.empty())
                out.append(MoveTo, current);
            BezierMath::flattenCubic(current, element.points[0], element.points[1],
                element.points[2], tolerance, [&out](QPointF p) { out.append(LineTo, p); });
            current = element.points[2];
            break;
        case ClosePath:
            out.append(ClosePath, QPointF());
            current = start;
            break;
        }
    }
    return out;
}

bool BezierPath::containsPoint(QPointF point) const
{
    // The control points enclose the curves, so a point outside them needs no flattening.
    const QRectF hull = controlPointBounds();
    if (m_elements.empty() || point.x() < hull.left() || point.x() > hull.right()
        || point.y() < hull.top() || point.y() > hull.bottom())
        return false;
    const BezierPath flat = flattened(containsFlatness);
    int winding = 0;
    std::vector<QPointF> polygon;
    const auto closePolygon = [&]() {
        if (polygon.size() > 2)
            winding += BezierMath::polygonWinding(polygon, point);
        polygon.clear();
    };
    QPointF start(0, 0);
    for (const Element &element : flat.m_elements) {
        switch (element.type) {
        case MoveTo:
            closePolygon();
            start = element.points[0];
            polygon.push_back(start);
            break;
        case LineTo:
            if (polygon.empty())
                polygon.push_back(start);
            polygon.push_back(element.points[0]);
            break;
        case CurveTo: // not present after flattening
            break;
        case ClosePath:
            closePolygon();
            break;
        }
    }
    closePolygon();
    return m_windingRule == EvenOdd ? (winding % 2) != 0 : winding != 0;
}

void BezierPath::setLineDash(const QList<double> &pattern, double phase)
{
    m_dash = pattern;
    m_dashPhase = phase;
}

QPainterPath BezierPath::toPainterPath() const
{
    QPainterPath path;
    path.setFillRule(m_windingRule == EvenOdd ? Qt::OddEvenFill : Qt::WindingFill);
    for (const Element &element : m_elements) {
        switch (element.type) {
        case MoveTo:
            path.moveTo(element.points[0]);
            break;
        case LineTo:
            path.lineTo(element.points[0]);
            break;
        case CurveTo:
            path.cubicTo(element.points[0], element.points[1], element.points[2]);
            break;
        case ClosePath:
            path.closeSubpath();
            break;
        }
    }
    return path;
}

QPen BezierPath::pen(const QColor &color) const
{
    QPen result(color);
    result.setWidthF(std::max(0.0, m_lineWidth));
    result.setCapStyle(m_lineCap == RoundCap ? Qt::RoundCap
            : m_lineCap == SquareCap         ? Qt::SquareCap
                                             : Qt::FlatCap);
    result.setJoinStyle(m_lineJoin == RoundJoin ? Qt::RoundJoin
            : m_lineJoin == BevelJoin           ? Qt::BevelJoin
                                                : Qt::SvgMiterJoin);
    // Qt measures the miter from the joint, half of the usual miter length.
    result.setMiterLimit(m_miterLimit / 2);
    const bool validDash = !m_dash.isEmpty()
        && std::all_of(m_dash.begin(), m_dash.end(), [](double d) { return d >= 0; })
        && std::any_of(m_dash.begin(), m_dash.end(), [](double d) { return d > 0; });
    if (validDash) {
        // Qt's dashes are in units of the pen width; an odd pattern repeats to alternate.
        const double unit = m_lineWidth > 0 ? m_lineWidth : 1.0;
        QList<qreal> pattern;
        for (const double d : m_dash)
            pattern.append(d / unit);
        if (pattern.size() % 2 != 0)
            pattern.append(pattern);
        result.setDashPattern(pattern);
        result.setDashOffset(m_dashPhase / unit);
    }
    return result;
}

void BezierPath::stroke(QPainter &painter) const
{
    QPen strokePen = pen(painter.pen().color());
    strokePen.setBrush(painter.pen().brush());
    painter.save();
    painter.setPen(strokePen);
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(toPainterPath());
    painter.restore();
}

void BezierPath::fill(QPainter &painter) const
{
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.drawPath(toPainterPath());
    painter.restore();
}

bool BezierPath::operator==(const BezierPath &other) const
{
    return m_elements == other.m_elements && m_windingRule == other.m_windingRule
        && m_lineWidth == other.m_lineWidth && m_lineCap == other.m_lineCap
        && m_lineJoin == other.m_lineJoin && m_miterLimit == other.m_miterLimit
        && m_dash == other.m_dash && m_dashPhase == other.m_dashPhase;
}

QDataStream &operator<<(QDataStream &stream, const BezierPath &path)
{
    stream << quint32(path.m_elements.size());
    for (const BezierPath::Element &element : path.m_elements) {
        stream << quint8(element.type);
        for (int i = 0; i < pointCount(element.type); ++i)
            stream << element.points[i].x() << element.points[i].y();
    }
    stream << quint8(path.m_windingRule) << path.m_lineWidth << quint8(path.m_lineCap)
           << quint8(path.m_lineJoin) << path.m_miterLimit << quint32(path.m_dash.size());
    for (const double d : path.m_dash)
        stream << d;
    stream << path.m_dashPhase;
    return stream;
}

QDataStream &operator>>(QDataStream &stream, BezierPath &path)
{
    path = BezierPath();
    const auto fail = [&]() -> QDataStream & {
        path = BezierPath();
        stream.setStatus(QDataStream::ReadCorruptData);
        return stream;
    };
    // Counts are checked against the bytes left so that garbage cannot demand huge allocations.
    const auto fits = [&](quint64 count, quint64 bytesEach) {
        const QIODevice *device = stream.device();
        return device && count * bytesEach <= quint64(device->bytesAvailable());
    };
    quint32 count = 0;
    stream >> count;
    if (stream.status() != QDataStream::Ok || !fits(count, 1))
        return fail();
    BezierPath result;
    result.m_elements.reserve(count);
    for (quint32 n = 0; n < count; ++n) {
        quint8 type = 0;
        stream >> type;
        if (stream.status() != QDataStream::Ok || type > BezierPath::ClosePath)
            return fail();
        BezierPath::Element element;
        element.type = BezierPath::ElementType(type);
        for (int i = 0; i < pointCount(element.type); ++i) {
            double x = 0;
            double y = 0;
            stream >> x >> y;
            element.points[i] = QPointF(x, y);
        }
        if (stream.status() != QDataStream::Ok)
            return fail();
        result.m_elements.push_back(element);
    }
    quint8 rule = 0;
    quint8 cap = 0;
    quint8 join = 0;
    quint32 dashCount = 0;
    stream >> rule >> result.m_lineWidth >> cap >> join >> result.m_miterLimit >> dashCount;
    if (stream.status() != QDataStream::Ok || rule > BezierPath::EvenOdd
        || cap > BezierPath::SquareCap || join > BezierPath::BevelJoin
        || !fits(dashCount, sizeof(double)))
        return fail();
    result.m_windingRule = BezierPath::WindingRule(rule);
    result.m_lineCap = BezierPath::LineCap(cap);
    result.m_lineJoin = BezierPath::LineJoin(join);
    for (quint32 i = 0; i < dashCount; ++i) {
        double d = 0;
        stream >> d;
        result.m_dash.append(d);
    }
    stream >> result.m_dashPhase;
    if (stream.status() != QDataStream::Ok)
        return fail();
    path = std::move(result);
    return stream;
}
