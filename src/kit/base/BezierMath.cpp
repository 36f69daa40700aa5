#include "BezierMath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace BezierMath {

namespace {

constexpr int maxFlatteningDepth = 12;

QPointF lerp(QPointF a, QPointF b, double t)
{
    return a + (b - a) * t;
}

double distanceToSegment(QPointF p, QPointF a, QPointF b)
{
    const QPointF ab = b - a;
    const double length2 = QPointF::dotProduct(ab, ab);
    double t = 0;
    if (length2 > 0)
        t = std::clamp(QPointF::dotProduct(p - a, ab) / length2, 0.0, 1.0);
    const QPointF d = p - (a + ab * t);
    return std::hypot(d.x(), d.y());
}

void flattenPiece(QPointF p0, QPointF c1, QPointF c2, QPointF p3, double flatness, int depth,
    const std::function<void(QPointF)> &lineTo)
{
    if (depth >= maxFlatteningDepth
        || (distanceToSegment(c1, p0, p3) <= flatness
            && distanceToSegment(c2, p0, p3) <= flatness)) {
        lineTo(p3);
        return;
    }
    // de Casteljau split at the middle.
    const QPointF a = lerp(p0, c1, 0.5);
    const QPointF b = lerp(c1, c2, 0.5);
    const QPointF c = lerp(c2, p3, 0.5);
    const QPointF ab = lerp(a, b, 0.5);
    const QPointF bc = lerp(b, c, 0.5);
    const QPointF mid = lerp(ab, bc, 0.5);
    flattenPiece(p0, a, ab, mid, flatness, depth + 1, lineTo);
    flattenPiece(mid, bc, c, p3, flatness, depth + 1, lineTo);
}

} // namespace

QPointF cubicAt(QPointF p0, QPointF c1, QPointF c2, QPointF p3, double t)
{
    const double u = 1 - t;
    return p0 * (u * u * u) + c1 * (3 * u * u * t) + c2 * (3 * u * t * t) + p3 * (t * t * t);
}

int extremaParameters(double p0, double c1, double c2, double p3, double roots[2])
{
    // The derivative divided by 3: a t^2 + b t + c.
    const double a = -p0 + 3 * c1 - 3 * c2 + p3;
    const double b = 2 * (p0 - 2 * c1 + c2);
    const double c = c1 - p0;
    int count = 0;
    const auto keep = [&](double t) {
        if (t > 0 && t < 1)
            roots[count++] = t;
    };
    const double scale = std::max({ std::abs(a), std::abs(b), std::abs(c) });
    if (scale == 0)
        return 0;
    if (std::abs(a) <= 1e-12 * scale) {
        if (b != 0)
            keep(-c / b);
        return count;
    }
    const double discriminant = b * b - 4 * a * c;
    if (discriminant < 0)
        return 0;
    const double root = std::sqrt(discriminant);
    keep((-b + root) / (2 * a));
    keep((-b - root) / (2 * a));
    return count;
}

void flattenCubic(QPointF p0, QPointF c1, QPointF c2, QPointF p3, double flatness,
    const std::function<void(QPointF)> &lineTo)
{
    flattenPiece(p0, c1, c2, p3, flatness, 0, lineTo);
}

std::vector<Cubic> arcCubics(
    QPointF center, double radius, double startRadians, double sweepRadians)
{
    std::vector<Cubic> cubics;
    if (sweepRadians == 0 || !std::isfinite(sweepRadians))
        return cubics;
    const int pieces
        = std::max(1, int(std::ceil(std::abs(sweepRadians) / (std::numbers::pi / 2) - 1e-9)));
    const double step = sweepRadians / pieces;
    // Control arm length for a piece of the given angle, as a fraction of the radius.
    const double k = 4.0 / 3.0 * std::tan(step / 4);
    double a = startRadians;
    for (int i = 0; i < pieces; ++i) {
        const double b = a + step;
        const QPointF from = center + radius * QPointF(std::cos(a), std::sin(a));
        const QPointF to = center + radius * QPointF(std::cos(b), std::sin(b));
        cubics.push_back({ from + k * radius * QPointF(-std::sin(a), std::cos(a)),
            to + k * radius * QPointF(std::sin(b), -std::cos(b)), to });
        a = b;
    }
    return cubics;
}

int polygonWinding(const std::vector<QPointF> &polygon, QPointF p)
{
    int winding = 0;
    const size_t n = polygon.size();
    for (size_t i = 0; i < n; ++i) {
        const QPointF a = polygon[i];
        const QPointF b = polygon[(i + 1) % n];
        const double side = (b.x() - a.x()) * (p.y() - a.y()) - (p.x() - a.x()) * (b.y() - a.y());
        if (a.y() <= p.y()) {
            if (b.y() > p.y() && side > 0)
                ++winding;
        } else if (b.y() <= p.y() && side < 0) {
            --winding;
        }
    }
    return winding;
}

} // namespace BezierMath
