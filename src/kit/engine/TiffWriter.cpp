#include "TiffWriter.h"

#include <QtEndian>

namespace TiffWriter {
namespace {

void put16(QByteArray &out, quint16 value)
{
    char bytes[2];
    qToLittleEndian(value, bytes);
    out.append(bytes, 2);
}

void put32(QByteArray &out, quint32 value)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    out.append(bytes, 4);
}

void entry(QByteArray &out, quint16 tag, quint16 type, quint32 count, quint32 value)
{
    put16(out, tag);
    put16(out, type);
    put32(out, count);
    if (type == 3 && count == 1) {
        put16(out, static_cast<quint16>(value));
        put16(out, 0);
    } else {
        put32(out, value);
    }
}

} // namespace

QByteArray encode(const QImage &source)
{
    if (source.isNull())
        return {};
    const QImage image = source.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    const quint32 width = static_cast<quint32>(image.width());
    const quint32 height = static_cast<quint32>(image.height());
    const quint32 pixelBytes = width * height * 4;
    const quint16 entries = 12;
    const quint32 ifdOffset = 8;
    const quint32 ifdSize = 2 + entries * 12 + 4;
    const quint32 bitsOffset = ifdOffset + ifdSize;
    const quint32 resolutionOffset = bitsOffset + 8;
    const quint32 pixelOffset = resolutionOffset + 8;

    QByteArray out;
    out.reserve(static_cast<qsizetype>(pixelOffset + pixelBytes));
    out.append("II", 2);
    put16(out, 42);
    put32(out, ifdOffset);
    put16(out, entries);
    entry(out, 256, 4, 1, width); // ImageWidth
    entry(out, 257, 4, 1, height); // ImageLength
    entry(out, 258, 3, 4, bitsOffset); // BitsPerSample 8,8,8,8
    entry(out, 259, 3, 1, 1); // no compression
    entry(out, 262, 3, 1, 2); // RGB
    entry(out, 273, 4, 1, pixelOffset); // StripOffsets
    entry(out, 277, 3, 1, 4); // SamplesPerPixel
    entry(out, 278, 4, 1, height); // RowsPerStrip
    entry(out, 279, 4, 1, pixelBytes); // StripByteCounts
    entry(out, 282, 5, 1, resolutionOffset); // XResolution
    entry(out, 283, 5, 1, resolutionOffset); // YResolution
    entry(out, 338, 3, 1, 1); // ExtraSamples: associated alpha
    put32(out, 0);
    for (int i = 0; i < 4; ++i)
        put16(out, 8);
    put32(out, 72);
    put32(out, 1);
    for (quint32 y = 0; y < height; ++y)
        out.append(reinterpret_cast<const char *>(image.constScanLine(static_cast<int>(y))),
            static_cast<qsizetype>(width * 4));
    return out;
}

} // namespace TiffWriter
