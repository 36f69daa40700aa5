#include "QKColor.h"

#include <algorithm>

namespace {
double unit(double component, double scale)
{
    return std::clamp(component / scale, 0.0, 1.0);
}
} // namespace

QColor QKColor(double red, double green, double blue, double alpha)
{
    return QColor::fromRgbF(float(unit(red, 255.0)), float(unit(green, 255.0)),
        float(unit(blue, 255.0)), float(unit(alpha, 255.0)));
}

QColor QKGray(double white, double alpha)
{
    const auto level = float(unit(white, 1.0));
    return QColor::fromRgbF(level, level, level, float(unit(alpha, 1.0)));
}
