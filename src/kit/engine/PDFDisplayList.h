#pragma once

// A recorded page, immutable: any number of threads may rasterise it at once, without the
// document's lock. Coordinates are page space; geometry() gives the view space of its box.

#include "PageGeometry.h"

#include <QImage>
#include <QRect>
#include <QTransform>

#include <memory>

class PDFCancellation;
struct PDFDisplayListPrivate;

class PDFDisplayList
{
public:
    explicit PDFDisplayList(std::unique_ptr<PDFDisplayListPrivate> d);
    ~PDFDisplayList();
    PDFDisplayList(const PDFDisplayList &) = delete;
    PDFDisplayList &operator=(const PDFDisplayList &) = delete;

    PageGeometry geometry() const;
    quint64 revision() const;

    // Draws into target (Format_ARGB32_Premultiplied, cleared to white first) with pageToDevice
    // mapping page space to target pixels. False when cancelled or on failure.
    bool render(
        QImage &target, const QTransform &pageToDevice, PDFCancellation *cancel = nullptr) const;
    // A tile of the box's view space at the scale: tile is in view pixels.
    QImage renderTile(const QRect &tile, double scale, PDFCancellation *cancel = nullptr) const;

private:
    std::unique_ptr<PDFDisplayListPrivate> d;
};
