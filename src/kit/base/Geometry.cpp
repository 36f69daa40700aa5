#include "Geometry.h"

#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace Geometry {

namespace {

double minX(QRectF r)
{
    return r.x();
}
double minY(QRectF r)
{
    return r.y();
}
double maxX(QRectF r)
{
    return r.x() + r.width();
}
double maxY(QRectF r)
{
    return r.y() + r.height();
}

// Reads the exact forms the writers produce: braces, commas and numbers, with optional spaces
// between tokens.
class TextReader
{
public:
    explicit TextReader(const QString &text)
        : m_text(text)
    { }

    bool expect(QChar c)
    {
        skipSpaces();
        if (m_pos < m_text.size() && m_text.at(m_pos) == c) {
            ++m_pos;
            return true;
        }
        return false;
    }

    std::optional<double> number()
    {
        skipSpaces();
        static const QRegularExpression pattern(
            QStringLiteral(R"([-+]?(?:(?:\d+(?:\.\d*)?|\.\d+)(?:[eE][-+]?\d+)?|inf|nan))"));
        const QRegularExpressionMatch match = pattern.match(m_text, m_pos,
            QRegularExpression::NormalMatch, QRegularExpression::AnchorAtOffsetMatchOption);
        if (!match.hasMatch())
            return std::nullopt;
        m_pos = match.capturedEnd();
        const QString token = match.captured();
        const bool negative = token.startsWith(QLatin1Char('-'));
        if (token.endsWith(QLatin1String("inf")))
            return negative ? -std::numeric_limits<double>::infinity()
                            : std::numeric_limits<double>::infinity();
        if (token.endsWith(QLatin1String("nan")))
            return std::numeric_limits<double>::quiet_NaN();
        bool ok = false;
        const double value = QLocale::c().toDouble(token, &ok);
        if (!ok)
            return std::nullopt;
        return value;
    }

    // Reads "{a, b}".
    std::optional<std::pair<double, double>> pair()
    {
        if (!expect(QLatin1Char('{')))
            return std::nullopt;
        const std::optional<double> a = number();
        if (!a || !expect(QLatin1Char(',')))
            return std::nullopt;
        const std::optional<double> b = number();
        if (!b || !expect(QLatin1Char('}')))
            return std::nullopt;
        return std::make_pair(*a, *b);
    }

    bool atEnd()
    {
        skipSpaces();
        return m_pos == m_text.size();
    }

private:
    void skipSpaces()
    {
        while (m_pos < m_text.size() && m_text.at(m_pos).isSpace())
            ++m_pos;
    }

    const QString &m_text;
    qsizetype m_pos = 0;
};

QString pairString(double a, double b)
{
    return QLatin1Char('{') + numberString(a) + QLatin1String(", ") + numberString(b)
        + QLatin1Char('}');
}

} // namespace

bool pointInRect(QPointF point, QRectF rect)
{
    return point.x() >= minX(rect) && point.x() < maxX(rect) && point.y() >= minY(rect)
        && point.y() < maxY(rect);
}

QRectF integralRect(QRectF rect)
{
    if (isEmptyRect(rect))
        return QRectF(0, 0, 0, 0);
    const double x = std::floor(minX(rect));
    const double y = std::floor(minY(rect));
    return QRectF(x, y, std::ceil(maxX(rect)) - x, std::ceil(maxY(rect)) - y);
}

bool isEmptyRect(QRectF rect)
{
    // Written as "not positive" so that a NaN extent also counts as empty.
    return !(rect.width() > 0) || !(rect.height() > 0);
}

QRectF insetRect(QRectF rect, double dx, double dy)
{
    return QRectF(rect.x() + dx, rect.y() + dy, rect.width() - 2 * dx, rect.height() - 2 * dy);
}

QRectF offsetRect(QRectF rect, double dx, double dy)
{
    return QRectF(rect.x() + dx, rect.y() + dy, rect.width(), rect.height());
}

QRectF unionRect(QRectF a, QRectF b)
{
    const bool aEmpty = isEmptyRect(a);
    const bool bEmpty = isEmptyRect(b);
    if (aEmpty && bEmpty)
        return QRectF(0, 0, 0, 0);
    if (aEmpty)
        return b;
    if (bEmpty)
        return a;
    const double x = std::min(minX(a), minX(b));
    const double y = std::min(minY(a), minY(b));
    return QRectF(x, y, std::max(maxX(a), maxX(b)) - x, std::max(maxY(a), maxY(b)) - y);
}

QRectF intersectionRect(QRectF a, QRectF b)
{
    if (maxX(a) <= minX(b) || maxX(b) <= minX(a) || maxY(a) <= minY(b) || maxY(b) <= minY(a))
        return QRectF(0, 0, 0, 0);
    const double x = std::max(minX(a), minX(b));
    const double y = std::max(minY(a), minY(b));
    return QRectF(x, y, std::min(maxX(a), maxX(b)) - x, std::min(maxY(a), maxY(b)) - y);
}

bool intersectsRect(QRectF a, QRectF b)
{
    return !isEmptyRect(a) && !isEmptyRect(b) && !isEmptyRect(intersectionRect(a, b));
}

bool containsRect(QRectF a, QRectF b)
{
    return !isEmptyRect(b) && minX(a) <= minX(b) && minY(a) <= minY(b) && maxX(a) >= maxX(b)
        && maxY(a) >= maxY(b);
}

void divideRect(QRectF inRect, QRectF *slice, QRectF *remainder, double amount, RectEdge edge)
{
    QRectF cut(0, 0, 0, 0);
    QRectF rest(0, 0, 0, 0);
    if (!isEmptyRect(inRect)) {
        const double x = inRect.x();
        const double y = inRect.y();
        const double w = inRect.width();
        const double h = inRect.height();
        const bool horizontal = edge == RectEdge::MinX || edge == RectEdge::MaxX;
        const double a = std::clamp(amount, 0.0, horizontal ? w : h);
        switch (edge) {
        case RectEdge::MinX:
            cut = QRectF(x, y, a, h);
            rest = QRectF(x + a, y, w - a, h);
            break;
        case RectEdge::MaxX:
            cut = QRectF(x + w - a, y, a, h);
            rest = QRectF(x, y, w - a, h);
            break;
        case RectEdge::MinY:
            cut = QRectF(x, y, w, a);
            rest = QRectF(x, y + a, w, h - a);
            break;
        case RectEdge::MaxY:
            cut = QRectF(x, y + h - a, w, a);
            rest = QRectF(x, y, w, h - a);
            break;
        }
    }
    if (slice)
        *slice = cut;
    if (remainder)
        *remainder = rest;
}

bool equalRects(QRectF a, QRectF b)
{
    return a.x() == b.x() && a.y() == b.y() && a.width() == b.width() && a.height() == b.height();
}

bool equalPoints(QPointF a, QPointF b)
{
    return a.x() == b.x() && a.y() == b.y();
}

bool equalSizes(QSizeF a, QSizeF b)
{
    return a.width() == b.width() && a.height() == b.height();
}

QRectF standardizeRect(QRectF rect)
{
    double x = rect.x();
    double y = rect.y();
    double w = rect.width();
    double h = rect.height();
    if (w < 0) {
        x += w;
        w = -w;
    }
    if (h < 0) {
        y += h;
        h = -h;
    }
    return QRectF(x, y, w, h);
}

QPointF subtractPoints(QPointF a, QPointF b)
{
    return QPointF(a.x() - b.x(), a.y() - b.y());
}

QPointF addPoints(QPointF a, QPointF b)
{
    return QPointF(a.x() + b.x(), a.y() + b.y());
}

QString numberString(double value)
{
    if (value == 0)
        value = 0; // drops the sign of -0
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString stringFromRect(QRectF rect)
{
    return QLatin1Char('{') + pairString(rect.x(), rect.y()) + QLatin1String(", ")
        + pairString(rect.width(), rect.height()) + QLatin1Char('}');
}

QString stringFromPoint(QPointF point)
{
    return pairString(point.x(), point.y());
}

QString stringFromSize(QSizeF size)
{
    return pairString(size.width(), size.height());
}

QRectF rectFromString(const QString &text)
{
    TextReader reader(text);
    if (!reader.expect(QLatin1Char('{')))
        return QRectF(0, 0, 0, 0);
    const auto origin = reader.pair();
    if (!origin || !reader.expect(QLatin1Char(',')))
        return QRectF(0, 0, 0, 0);
    const auto size = reader.pair();
    if (!size || !reader.expect(QLatin1Char('}')) || !reader.atEnd())
        return QRectF(0, 0, 0, 0);
    return QRectF(origin->first, origin->second, size->first, size->second);
}

QPointF pointFromString(const QString &text)
{
    TextReader reader(text);
    const auto value = reader.pair();
    if (!value || !reader.atEnd())
        return QPointF(0, 0);
    return QPointF(value->first, value->second);
}

QSizeF sizeFromString(const QString &text)
{
    TextReader reader(text);
    const auto value = reader.pair();
    if (!value || !reader.atEnd())
        return QSizeF(0, 0);
    return QSizeF(value->first, value->second);
}

} // namespace Geometry
