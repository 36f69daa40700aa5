#pragma once

// Encodes an image as an uncompressed baseline TIFF (8-bit RGBA, associated alpha), so that the
// engine does not depend on an image-format plugin for area exports.

#include <QByteArray>
#include <QImage>

namespace TiffWriter {

QByteArray encode(const QImage &image);

} // namespace TiffWriter
