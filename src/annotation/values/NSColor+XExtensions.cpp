#include "NSColor+XExtensions.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

quint32 toByte(float component)
{
    return quint32(std::clamp(component, 0.0f, 1.0f) * 255.0f) & 0xff;
}

QGradientStops gradient(QColor from, QColor to)
{
    return { { 0.0, from }, { 1.0, to } };
}

} // namespace

quint32 uint32HSBAValue(const QColor &color)
{
    if (!color.isValid())
        return 0;
    const QColor hsv = color.toRgb().toHsv();
    const float hue = std::max(hsv.hsvHueF(), 0.0f); // a grey answers -1
    return toByte(hue) << 24 | toByte(hsv.hsvSaturationF()) << 16 | toByte(hsv.valueF()) << 8
        | toByte(hsv.alphaF());
}

int colorCompare(const QColor &color, const QColor &other)
{
    const quint32 mine = uint32HSBAValue(color);
    const quint32 theirs = uint32HSBAValue(other);
    return mine < theirs ? -1 : mine > theirs ? 1 : 0;
}

bool isEqual_(const QColor &color, const QColor &other)
{
    if (color.isValid() != other.isValid())
        return false;
    if (!color.isValid())
        return true;
    const QColor a = color.toRgb();
    const QColor b = other.toRgb();
    const float differences[] = { a.redF() - b.redF(), a.greenF() - b.greenF(),
        a.blueF() - b.blueF(), a.alphaF() - b.alphaF() };
    return std::all_of(std::begin(differences), std::end(differences),
        [](float d) { return std::abs(d) <= 0.05f; });
}

void drawSwatchInRoundedRect(const QColor &color, QPainter &painter, QRectF rect)
{
    if (rect.width() <= 0 || rect.height() <= 0)
        return;
    const double radius = std::min(rect.width(), rect.height()) / 4.0;
    QPainterPath shape;
    shape.addRoundedRect(rect, radius, radius);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipPath(shape, Qt::IntersectClip);
    if (color.alpha() < 255) {
        constexpr double kSquare = 4.0;
        painter.fillRect(rect, Qt::white);
        for (int row = 0; row * kSquare < rect.height(); ++row) {
            for (int column = row % 2; column * kSquare < rect.width(); column += 2) {
                painter.fillRect(
                    QRectF(rect.x() + column * kSquare, rect.y() + row * kSquare, kSquare, kSquare),
                    QColor(204, 204, 204));
            }
        }
    }
    painter.fillRect(rect, color);
    painter.setClipping(false);
    painter.setPen(QPen(QColor(0, 0, 0, 90), 1.0));
    painter.setBrush(Qt::NoBrush);
    const QRectF inner = rect.adjusted(0.5, 0.5, -0.5, -0.5);
    painter.drawRoundedRect(inner, radius - 0.5, radius - 0.5);
    painter.restore();
}

QList<int> scriptingRgbaColorDescriptor(const QColor &color)
{
    const QColor rgb = color.toRgb();
    const auto scaled = [](float component) { return int(std::lround(component * 65535.0)); };
    return { scaled(rgb.redF()), scaled(rgb.greenF()), scaled(rgb.blueF()), scaled(rgb.alphaF()) };
}

QColor scriptingRgbaColorWithDescriptor(const QList<int> &descriptor)
{
    const auto component = [&](int index, int missing) {
        const int value = index < descriptor.size() ? descriptor.at(index) : missing;
        return float(std::clamp(value, 0, 65535) / 65535.0);
    };
    return QColor::fromRgbF(component(0, 0), component(1, 0), component(2, 0), component(3, 65535));
}

QString accessibilityValue(const QColor &color)
{
    if (!color.isValid())
        return QStringLiteral("no colour");
    const QColor hsv = color.toRgb().toHsv();
    const float value = hsv.valueF();
    const float saturation = hsv.hsvSaturationF();
    QString name;
    if (saturation < 0.15f || value < 0.08f) {
        name = value < 0.08f ? QStringLiteral("black")
            : value < 0.4f   ? QStringLiteral("dark grey")
            : value < 0.75f  ? QStringLiteral("grey")
            : value < 0.95f  ? QStringLiteral("light grey")
                             : QStringLiteral("white");
    } else {
        const int hue = hsv.hsvHue();
        name = hue < 15 ? QStringLiteral("red")
            : hue < 45  ? QStringLiteral("orange")
            : hue < 70  ? QStringLiteral("yellow")
            : hue < 165 ? QStringLiteral("green")
            : hue < 195 ? QStringLiteral("cyan")
            : hue < 255 ? QStringLiteral("blue")
            : hue < 290 ? QStringLiteral("purple")
            : hue < 335 ? QStringLiteral("pink")
                        : QStringLiteral("red");
        if (name == QLatin1String("orange") && value < 0.6f)
            name = QStringLiteral("brown");
        else if (value < 0.6f)
            name.prepend(QStringLiteral("dark "));
        else if (saturation < 0.4f && value > 0.85f)
            name.prepend(QStringLiteral("light "));
    }
    if (hsv.alpha() < 255)
        name += QStringLiteral(", %1% opaque").arg(std::lround(hsv.alphaF() * 100.0f));
    return name;
}

QGradientStops keySourceListHighlightColor()
{
    return gradient(QColor(96, 116, 138), QColor(55, 114, 190));
}

QGradientStops mainSourceListHighlightColor()
{
    return gradient(QColor(147, 162, 177), QColor(135, 152, 188));
}

QGradientStops disabledSourceListHighlightColor()
{
    return gradient(QColor(158, 158, 158), QColor(158, 158, 158));
}

QColor selectionHighlightColor()
{
    static const QColor color = QColor::fromRgbF(0.278477f, 0.467857f, 0.810941f, 1.0f);
    return color;
}

QColor selectionHighlightInteriorColor()
{
    static const QColor color = QColor::fromRgbF(0.737118f, 0.837339f, 0.983108f, 0.8f);
    return color;
}

QColor disabledSelectionHighlightColor()
{
    static const QColor color = QColor::fromRgbF(0.46682f, 0.46682f, 0.46682f, 1.0f);
    return color;
}

QColor disabledSelectionHighlightInteriorColor()
{
    static const QColor color = QColor::fromRgbF(0.827376f, 0.827376f, 0.827376f, 0.8f);
    return color;
}
