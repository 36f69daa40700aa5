#pragma once

// Bytes for colours, fonts, bezier paths and property lists (maps and lists nesting strings,
// numbers, bools, bytes, dates, colours, fonts, paths, points, rects, sizes and URLs), and back.
// Any thread.

#include <QByteArray>
#include <QVariant>

namespace Archiver {

// The archive of value; empty when value (or something inside it) is of a type an archive
// cannot hold, or is itself invalid.
QByteArray archivedData(const QVariant &value);

// The value an archive holds. Bytes that are not a whole, well-formed archive give an invalid
// QVariant. Lists come back as QVariantList (a QStringList too), maps as QVariantMap, and
// numbers keep their type (int, uint, qint64, quint64, double, float); integer points, rects
// and sizes come back as QPointF, QRectF and QSizeF.
QVariant unarchive(const QByteArray &data);

} // namespace Archiver
