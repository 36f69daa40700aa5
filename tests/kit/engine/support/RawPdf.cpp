#include "RawPdf.h"

#include <support/PdfFixtures.h>

#include <QFile>

#include <zlib.h>

namespace RawPdf {

QByteArray build(const QList<QByteArray> &objects, const QByteArray &trailer)
{
    return PdfFixtures::fromObjects(objects, trailer);
}

QByteArray stream(const QByteArray &entries, const QByteArray &data)
{
    return "<< " + entries + " /Length " + QByteArray::number(data.size()) + " >>\nstream\n" + data
        + "\nendstream";
}

QByteArray page(int parent, int content)
{
    return "<< /Type /Page /Parent " + QByteArray::number(parent)
        + " 0 R /MediaBox [0 0 612 792] /Resources << /Font << /F1 << /Type /Font /Subtype "
          "/Type1 /BaseFont /Helvetica >> >> >> /Contents "
        + QByteArray::number(content) + " 0 R >>";
}

QByteArray textContent(const QByteArray &word)
{
    return stream({}, "BT /F1 48 Tf 72 600 Td (" + word + ") Tj ET");
}

QByteArray deflatedRepeat(const QByteArray &chunk, qint64 count)
{
    // One block compressed with a full flush starts afresh and ends on a byte boundary, so it
    // can be repeated as it stands; the checksum of the repeats is combined arithmetically.
    z_stream z {};
    deflateInit(&z, Z_BEST_COMPRESSION);
    QByteArray block(static_cast<qsizetype>(deflateBound(&z, uLong(chunk.size())) + 64), '\0');
    z.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(chunk.constData()));
    z.avail_in = uInt(chunk.size());
    z.next_out = reinterpret_cast<Bytef *>(block.data());
    z.avail_out = uInt(block.size());
    deflate(&z, Z_FULL_FLUSH);
    block.truncate(static_cast<qsizetype>(z.total_out));
    QByteArray tail(64, '\0');
    z.next_out = reinterpret_cast<Bytef *>(tail.data());
    z.avail_out = uInt(tail.size());
    deflate(&z, Z_FINISH);
    tail.truncate(static_cast<qsizetype>(z.total_out) - block.size() - 4);
    deflateEnd(&z);

    const QByteArray header = block.left(2);
    const QByteArray body = block.mid(2);
    const uLong one = adler32(adler32(0, nullptr, 0),
        reinterpret_cast<const Bytef *>(chunk.constData()), uInt(chunk.size()));
    uLong sum = adler32(0, nullptr, 0);
    QByteArray out = header;
    out.reserve(header.size() + body.size() * count + tail.size() + 4);
    for (qint64 i = 0; i < count; ++i) {
        out += body;
        sum = adler32_combine(sum, one, z_off_t(chunk.size()));
    }
    out += tail;
    for (int shift = 24; shift >= 0; shift -= 8)
        out += char((sum >> shift) & 0xff);
    return out;
}

qint64 lastXrefOffset(const QByteArray &pdf)
{
    const qsizetype at = pdf.lastIndexOf("startxref");
    return pdf.mid(at + 9).trimmed().split('\n').value(0).trimmed().toLongLong();
}

QByteArray withUpdate(const QByteArray &pdf, qint64 prev)
{
    const QByteArray size = pdf.mid(pdf.lastIndexOf("/Size ") + 6).split(' ').value(0);
    const int info = size.toInt();
    QByteArray out = pdf;
    const qint64 offset = out.size();
    out += QByteArray::number(info) + " 0 obj\n<< /Title (Updated) >>\nendobj\n";
    const qint64 xref = out.size();
    out += "xref\n0 1\n0000000000 65535 f \n" + QByteArray::number(info) + " 1\n"
        + QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \ntrailer\n<< /Size "
        + QByteArray::number(info + 1) + " /Root 1 0 R /Info " + QByteArray::number(info)
        + " 0 R /Prev " + QByteArray::number(prev < 0 ? xref : prev) + " >>\nstartxref\n"
        + QByteArray::number(xref) + "\n%%EOF\n";
    return out;
}

QByteArray inflatingStream(const QByteArray &chunk, qint64 count)
{
    return stream("/Filter /FlateDecode", deflatedRepeat(chunk, count));
}

QByteArray pagesAround(const QByteArray &content, const QByteArray &before, const QByteArray &after)
{
    return build({ "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R 5 0 R 7 0 R] /Count 3 >>", page(2, 4), textContent(before),
        page(2, 6), content, page(2, 8), textContent(after) });
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray pageLostByRescan()
{
    return QByteArray(
        "%PDF-1.7\n"
        "1 0 obj\n"
        "<< /Type /Catalog /Pages 2 0 R >>\n"
        "endobj\n"
        "2 0 obj\n"
        "<< /Type /Pages /Kids [4 0 R 5 0 R] /Count 2 >>\n"
        "endobj\n"
        "4 0 obj\n"
        "<< /Type /Page /Parent 2 0 R /Annots [9 0psh >>\n"
        "endobj\n"
        "5 0 obj\n"
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 290 300] /Rotate 90 /Resources 7 0 R >>\n"
        "endobj\n"
        "6 0 obj\n"
        "[ 1 ] ]\n"
        "endobj\n"
        "7 0 obju<< >>\n"
        "endobj\n"
        "xref\n"
        "0 8\n"
        "0000000000 65535 f \n"
        "0000000009 00000 n \n"
        "0000000058 00000 n \n"
        "0000000000 65535 f \n"
        "0000000121 00000 n \n"
        "0000000184 00000 n \n"
        "0000000283 00000 n \n"
        "0000000306 00000 n \n"
        "trailer\n"
        "<< /Size 8 /Root 1 0 R >>\n"
        "startxref\n"
        "327\n"
        "%%EOF\n");
}

} // namespace RawPdf
