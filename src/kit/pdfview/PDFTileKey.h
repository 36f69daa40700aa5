#pragma once

// Identifies one rendered tile: the page (by identity), what it showed (the page's revision and
// the view's own invalidation count), the device scale and the tile's place in the page's grid.

#include <QRect>
#include <QtGlobal>

#include <functional>

struct PDFTileKey
{
    // Tiles are squares of this many device pixels, except at the right and bottom edges.
    static constexpr int TileSize = 512;

    const void *page = nullptr;
    quint64 revision = 0;
    qint64 scale = 0; // device pixels per point, in millionths
    int column = 0;
    int row = 0;

    static qint64 scaleKey(double devicePixelsPerPoint)
    {
        return qRound64(devicePixelsPerPoint * 1e6);
    }
    double devicePixelsPerPoint() const { return double(scale) / 1e6; }
    // The tile's rect in the device pixels of the page's view space at its scale.
    QRect pixelRect(const QSize &pagePixels) const
    {
        return QRect(column * TileSize, row * TileSize, TileSize, TileSize)
            .intersected(QRect(QPoint(0, 0), pagePixels));
    }
    bool operator==(const PDFTileKey &) const = default;
};

struct PDFTileKeyHash
{
    size_t operator()(const PDFTileKey &key) const
    {
        size_t h = std::hash<const void *>()(key.page);
        const auto mix = [&h](quint64 value) {
            h ^= std::hash<quint64>()(value) + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
        };
        mix(key.revision);
        mix(quint64(key.scale));
        mix(quint64(quint32(key.column)) << 32 | quint32(key.row));
        return h;
    }
};
