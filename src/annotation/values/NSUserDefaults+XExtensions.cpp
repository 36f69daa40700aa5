#include "NSUserDefaults+XExtensions.h"

#include <kit/base/Archiver.h>
#include <kit/base/UserDefaults.h>

#include <QVariantList>

#include <algorithm>
#include <cmath>

namespace {

// The store is a file a person may edit: components outside 0..1 are pulled in, not trusted.
float component(double value)
{
    return std::isnan(value) ? 0.0f : float(std::clamp(value, 0.0, 1.0));
}

} // namespace

void setColorForKey(UserDefaults &defaults, const QColor &color, const QString &key)
{
    if (!color.isValid()) {
        defaults.removeObjectForKey(key);
        return;
    }
    defaults.setObject(Archiver::archivedData(color), key);
}

QColor colorForKey(const UserDefaults &defaults, const QString &key)
{
    const QVariant value = defaults.objectForKey(key);
    if (value.typeId() == QMetaType::QByteArray) {
        const QVariant color = Archiver::unarchive(value.toByteArray());
        return color.typeId() == QMetaType::QColor ? color.value<QColor>() : QColor();
    }
    // Numbers written by hand into the file come back as text; they count as numbers too.
    const bool isList
        = value.typeId() == QMetaType::QVariantList || value.typeId() == QMetaType::QStringList;
    const QVariantList list = isList ? value.toList() : QVariantList();
    bool numbers = !list.isEmpty();
    for (const QVariant &element : list) {
        bool ok = false;
        element.toDouble(&ok);
        numbers = numbers && ok;
    }
    if (numbers) {
        const double r = list.at(0).toDouble();
        const double g = list.size() >= 3 ? list.at(1).toDouble() : r;
        const double b = list.size() >= 3 ? list.at(2).toDouble() : r;
        const double alpha = list.size() == 2 ? list.at(1).toDouble()
            : list.size() >= 4                ? list.at(3).toDouble()
                                              : 1.0;
        return QColor::fromRgbF(component(r), component(g), component(b), component(alpha));
    }
    return QColor(0, 0, 0, 0);
}
