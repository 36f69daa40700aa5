#include "PdfFixtures.h"

#include "TestTools.h"

#include <QFile>
#include <QHash>
#include <QtMath>

#include <cmath>

namespace PdfFixtures {
namespace {

QByteArray number(double value)
{
    if (value == std::floor(value) && std::abs(value) < 1e9)
        return QByteArray::number(static_cast<qint64>(value));
    return QByteArray::number(value, 'f', 4);
}

QByteArray rectArray(const QRectF &r)
{
    return "[" + number(r.left()) + " " + number(r.top()) + " " + number(r.right()) + " "
        + number(r.bottom()) + "]";
}

// A literal string; non-ASCII text becomes UTF-16BE with a byte order mark.
QByteArray textString(const QString &text)
{
    bool ascii = true;
    for (const QChar c : text)
        ascii = ascii && c.unicode() < 128;
    if (!ascii) {
        QByteArray hex = "<FEFF";
        for (const QChar c : text)
            hex += QByteArray::number(c.unicode(), 16).rightJustified(4, '0').toUpper();
        return hex + ">";
    }
    QByteArray out = "(";
    for (const char c : text.toLatin1()) {
        if (c == '(' || c == ')' || c == '\\')
            out += '\\';
        out += c;
    }
    return out + ")";
}

QByteArray ref(int n)
{
    return QByteArray::number(n) + " 0 R";
}

class Writer
{
public:
    int reserve() { return ++m_count; }
    void set(int number, const QByteArray &body) { m_bodies[number] = body; }
    int add(const QByteArray &body)
    {
        const int n = reserve();
        set(n, body);
        return n;
    }
    int addStream(const QByteArray &dict, const QByteArray &data)
    {
        return add("<< " + dict + " /Length " + QByteArray::number(data.size()) + " >>\nstream\n"
            + data + "\nendstream");
    }
    QByteArray finish(int root) const { return finish("/Root " + ref(root)); }
    QByteArray finish(const QByteArray &trailer) const
    {
        QByteArray out = "%PDF-1.7\n%\xe2\xe3\xcf\xd3\n";
        QList<qsizetype> offsets(m_count + 1, 0);
        for (int n = 1; n <= m_count; ++n) {
            offsets[n] = out.size();
            out += QByteArray::number(n) + " 0 obj\n" + m_bodies.value(n, "null") + "\nendobj\n";
        }
        const qsizetype xref = out.size();
        out += "xref\n0 " + QByteArray::number(m_count + 1) + "\n0000000000 65535 f \n";
        for (int n = 1; n <= m_count; ++n)
            out += QByteArray::number(offsets[n]).rightJustified(10, '0') + " 00000 n \n";
        out += "trailer\n<< /Size " + QByteArray::number(m_count + 1) + " " + trailer
            + " >>\nstartxref\n" + QByteArray::number(xref) + "\n%%EOF\n";
        return out;
    }

private:
    int m_count = 0;
    QHash<int, QByteArray> m_bodies;
};

QByteArray destination(int pageObject, const QPointF &point, double zoom)
{
    return "[" + ref(pageObject) + " /XYZ " + number(point.x()) + " " + number(point.y()) + " "
        + (zoom > 0 ? number(zoom) : QByteArray("null")) + "]";
}

int visible(const QList<OutlineItem> &items)
{
    int count = 0;
    for (const OutlineItem &item : items)
        count += 1 + (item.open ? visible(item.children) : 0);
    return count;
}

void writeOutline(Writer &w, const QList<OutlineItem> &items, int parent,
    const QList<int> &pageObjects, QByteArray *firstLast)
{
    QList<int> numbers;
    for (int i = 0; i < items.size(); ++i)
        numbers.append(w.reserve());
    for (int i = 0; i < items.size(); ++i) {
        const OutlineItem &item = items[i];
        QByteArray body = "<< /Title " + textString(item.title) + " /Parent " + ref(parent);
        if (i > 0)
            body += " /Prev " + ref(numbers[i - 1]);
        if (i + 1 < items.size())
            body += " /Next " + ref(numbers[i + 1]);
        if (item.page >= 0 && item.page < pageObjects.size())
            body += " /Dest " + destination(pageObjects[item.page], item.point, item.zoom);
        if (!item.children.isEmpty()) {
            QByteArray children;
            writeOutline(w, item.children, numbers[i], pageObjects, &children);
            body += children + " /Count "
                + QByteArray::number((item.open ? 1 : -1) * visible(item.children));
        }
        w.set(numbers[i], body + " >>");
    }
    if (!numbers.isEmpty())
        *firstLast = " /First " + ref(numbers.first()) + " /Last " + ref(numbers.last());
}

} // namespace

QByteArray build(const Document &document)
{
    Writer w;
    const int catalog = w.reserve();
    const int pages = w.reserve();
    const int font = w.add("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica "
                           "/Encoding /WinAnsiEncoding >>");
    QList<int> pageObjects;
    for (int i = 0; i < document.pages.size(); ++i)
        pageObjects.append(w.reserve());

    for (int i = 0; i < document.pages.size(); ++i) {
        const Page &page = document.pages[i];
        QByteArray content;
        QByteArray xobjects;
        if (page.image.width > 0 && !page.imageRect.isEmpty()) {
            const QByteArray filter = page.image.jpeg ? "/DCTDecode" : "/FlateDecode";
            const QByteArray data
                = page.image.jpeg ? page.image.data : qCompress(page.image.data, 6).mid(4);
            const int image = w.addStream("/Type /XObject /Subtype /Image /Width "
                    + QByteArray::number(page.image.width) + " /Height "
                    + QByteArray::number(page.image.height)
                    + " /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter " + filter,
                data);
            xobjects = " /XObject << /Im0 " + ref(image) + " >>";
            const QRectF &r = page.imageRect;
            content += "q " + number(r.width()) + " 0 0 " + number(r.height()) + " "
                + number(r.left()) + " " + number(r.top()) + " cm /Im0 Do Q\n";
        }
        for (const Fill &fill : page.fills) {
            content += number(fill.red) + " " + number(fill.green) + " " + number(fill.blue)
                + " rg " + number(fill.rect.left()) + " " + number(fill.rect.top()) + " "
                + number(fill.rect.width()) + " " + number(fill.rect.height()) + " re f\n";
        }
        if (!page.lines.isEmpty()) {
            content += "0 g ";
            content += "BT /F1 " + number(page.fontSize) + " Tf " + number(page.textStart.x()) + " "
                + number(page.textStart.y()) + " Td\n";
            for (int l = 0; l < page.lines.size(); ++l) {
                if (l > 0 && page.textObjectPerLine)
                    content += "BT /F1 " + number(page.fontSize) + " Tf "
                        + number(page.textStart.x()) + " "
                        + number(page.textStart.y() - l * page.leading) + " Td\n";
                else if (l > 0)
                    content += "0 " + number(-page.leading) + " Td\n";
                content += textString(page.lines[l]) + " Tj\n";
                if (page.textObjectPerLine && l + 1 < page.lines.size())
                    content += "ET\n";
            }
            content += "ET\n";
        }
        const int contents = w.addStream("", content);
        QByteArray annots;
        for (const Link &link : page.links) {
            QByteArray body = "<< /Type /Annot /Subtype /Link /Rect " + rectArray(link.rect)
                + " /Border [0 0 0]";
            if (!link.uri.isEmpty())
                body += " /A << /S /URI /URI " + textString(link.uri) + " >>";
            else if (link.targetPage >= 0 && link.targetPage < pageObjects.size())
                body += " /Dest " + destination(pageObjects[link.targetPage], link.targetPoint, 0);
            annots += ref(w.add(body + " >>")) + " ";
        }
        for (const RawAnnotation &annotation : page.annotations) {
            QByteArray body = "<< /Type /Annot " + annotation.entries;
            if (!annotation.appearance.isEmpty()) {
                const int stream = w.addStream(
                    "/Type /XObject /Subtype /Form /BBox " + rectArray(annotation.bbox),
                    annotation.appearance);
                body += " /AP << /N " + ref(stream) + " >>";
            }
            annots += ref(w.add(body + " /P " + ref(pageObjects[i]) + " >>")) + " ";
        }
        QByteArray body
            = "<< /Type /Page /Parent " + ref(pages) + " /MediaBox " + rectArray(page.mediaBox);
        if (!page.cropBox.isEmpty())
            body += " /CropBox " + rectArray(page.cropBox);
        if (page.rotate)
            body += " /Rotate " + QByteArray::number(page.rotate);
        body += " /Resources << /Font << /F1 " + ref(font) + " >>" + xobjects + " >> /Contents "
            + ref(contents);
        if (!annots.isEmpty())
            body += " /Annots [" + annots.trimmed() + "]";
        w.set(pageObjects[i], body + " >>");
    }

    QByteArray kids;
    for (const int n : std::as_const(pageObjects))
        kids += ref(n) + " ";
    w.set(pages,
        "<< /Type /Pages /Kids [" + kids.trimmed() + "] /Count "
            + QByteArray::number(pageObjects.size()) + " >>");

    QByteArray catalogBody = "<< /Type /Catalog /Pages " + ref(pages);
    if (!document.outline.isEmpty()) {
        const int outlines = w.reserve();
        QByteArray firstLast;
        writeOutline(w, document.outline, outlines, pageObjects, &firstLast);
        w.set(outlines,
            "<< /Type /Outlines" + firstLast + " /Count "
                + QByteArray::number(visible(document.outline)) + " >>");
        catalogBody += " /Outlines " + ref(outlines);
    }
    if (!document.labels.isEmpty()) {
        QByteArray nums;
        for (const LabelRange &range : document.labels) {
            nums += QByteArray::number(range.firstPage) + " <<";
            if (range.style)
                nums += " /S /" + QByteArray(1, range.style);
            if (!range.prefix.isEmpty())
                nums += " /P " + textString(range.prefix);
            if (range.start != 1)
                nums += " /St " + QByteArray::number(range.start);
            nums += " >> ";
        }
        catalogBody += " /PageLabels << /Nums [" + nums.trimmed() + "] >>";
    }
    w.set(catalog, catalogBody + " >>");
    return w.finish(catalog);
}

bool write(const Document &document, const QString &path)
{
    QFile file(path);
    const QByteArray bytes = build(document);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

Image photo(int width, int height, quint32 seed)
{
    Image image;
    image.width = width;
    image.height = height;
    image.data.resize(static_cast<qsizetype>(width) * height * 3);
    quint32 state = seed * 2654435761u + 1;
    auto *out = reinterpret_cast<unsigned char *>(image.data.data());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            state = state * 1664525u + 1013904223u;
            const int grain = static_cast<int>(state >> 27) - 16;
            const double u = static_cast<double>(x) / width;
            const double v = static_cast<double>(y) / height;
            const int r = static_cast<int>(128 + 100 * std::sin(6.0 * u + seed)) + grain;
            const int g = static_cast<int>(128 + 90 * std::cos(5.0 * v + 2.0 * u)) + grain;
            const int b = static_cast<int>(128 + 80 * std::sin(4.0 * (u + v))) + grain;
            *out++ = static_cast<unsigned char>(qBound(0, r, 255));
            *out++ = static_cast<unsigned char>(qBound(0, g, 255));
            *out++ = static_cast<unsigned char>(qBound(0, b, 255));
        }
    }
    return image;
}

Document standard()
{
    Document doc;
    Page first;
    first.lines = { QStringLiteral("The quick brown fox jumps over the lazy dog"),
        QStringLiteral("Alpha beta gamma delta"), QStringLiteral("Folio one marker") };
    first.links
        = { { QRectF(72, 600, 200, 20), QStringLiteral("https://example.org/folidoc"), -1, {} },
              { QRectF(72, 560, 200, 20), QString(), 2, QPointF(0, 792) } };
    doc.pages.append(first);

    Page cropped;
    cropped.cropBox = QRectF(QPointF(10, 20), QPointF(590, 780));
    cropped.lines = { QStringLiteral("Cropped page text"), QStringLiteral("Second line here") };
    doc.pages.append(cropped);

    const QStringList rotatedText = { QStringLiteral("Rotated ninety degrees"),
        QStringLiteral("Rotated half turn"), QStringLiteral("Rotated three quarters") };
    for (int i = 0; i < 3; ++i) {
        Page rotated;
        rotated.rotate = 90 * (i + 1);
        rotated.lines = { rotatedText[i] };
        doc.pages.append(rotated);
    }

    Page picture;
    picture.lines = { QStringLiteral("Picture page") };
    picture.image = photo(64, 48, 7);
    picture.imageRect = QRectF(72, 300, 320, 240);
    doc.pages.append(picture);

    OutlineItem chapterOne { QStringLiteral("Chapter One"), 0, QPointF(0, 792), 0, true, {} };
    chapterOne.children = {
        { QStringLiteral("Section 1.1"), 1, QPointF(10, 700), 0, true, {} },
        { QStringLiteral("Section 1.2"), 2, QPointF(0, 792), 0, true, {} },
    };
    OutlineItem deeper { QStringLiteral("Deeper"), 5, QPointF(72, 500), 2, true, {} };
    OutlineItem deep { QStringLiteral("Deep"), 4, QPointF(0, 792), 0, false, { deeper } };
    OutlineItem chapterTwo { QStringLiteral("Chapter Two"), 4, QPointF(0, 792), 0, true, { deep } };
    OutlineItem unicode { QStringLiteral("Résumé – ünïcode"), 3, QPointF(0, 792), 0, true, {} };
    doc.outline = { chapterOne, chapterTwo, unicode };
    doc.labels = { { 0, 'r', QString(), 1 }, { 2, 'D', QStringLiteral("A-"), 5 } };
    return doc;
}

Document textPages(int count, int linesPerPage, int needleEvery)
{
    Document doc;
    static const char *const words[] = { "lorem", "ipsum", "dolor", "sit", "amet", "consectetur",
        "adipiscing", "elit", "sed", "eiusmod", "tempor", "incididunt" };
    for (int p = 0; p < count; ++p) {
        Page page;
        page.textStart = QPointF(56, 760);
        page.fontSize = 10;
        page.leading = 17;
        for (int l = 0; l < linesPerPage; ++l) {
            QString line = QStringLiteral("Page %1 line %2").arg(p + 1).arg(l + 1);
            for (int k = 0; k < 8; ++k)
                line += QLatin1Char(' ') + QLatin1String(words[(p * 7 + l * 3 + k) % 12]);
            if (l == 2 && needleEvery > 0 && (p + 1) % needleEvery == 0)
                line += QStringLiteral(" needle");
            page.lines.append(line);
        }
        doc.pages.append(page);
    }
    return doc;
}

QByteArray ownFontPages(int count, const QByteArray &font, int fontsPerPage)
{
    QList<QByteArray> objects { "<< /Type /Catalog /Pages 2 0 R >>", {} };
    QByteArray kids;
    const auto number = [](qint64 n) { return QByteArray::number(n); };
    for (int i = 0; i < count; ++i) {
        const int page = int(objects.size()) + 1;
        const auto ref = [&](int offset) { return number(page + offset) + " 0 R"; };
        kids += ref(0) + ' ';
        QByteArray text = "BT 72 600 Td";
        QByteArray fonts;
        for (int f = 0; f < fontsPerPage; ++f) {
            text += " /F" + number(f) + " 40 Tf (Page " + number(i + 1) + " in font " + number(f)
                + ") Tj 0 -40 Td";
            fonts += " /F" + number(f) + ' ' + ref(2 + 3 * f);
        }
        text += " ET";
        objects << "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Resources << /Font <<"
                + fonts + " >> >> /Contents " + ref(1) + " >>"
                << "<< /Length " + number(text.size()) + " >>\nstream\n" + text + "\nendstream";
        for (int f = 0; f < fontsPerPage; ++f) {
            const QByteArray name = "/Own" + number(i) + '-' + number(f);
            const int at = 2 + 3 * f;
            objects << "<< /Type /Font /Subtype /TrueType /BaseFont " + name
                    + " /Encoding /WinAnsiEncoding /FontDescriptor " + ref(at + 1) + " >>"
                    << "<< /Type /FontDescriptor /FontName " + name
                    + " /Flags 32 /FontBBox [-1021 -463 1793 1232] /ItalicAngle 0 /Ascent 928 "
                      "/Descent -236 /CapHeight 729 /StemV 80 /FontFile2 "
                    + ref(at + 2) + " >>"
                    << "<< /Length " + number(font.size()) + " /Length1 " + number(font.size())
                    + " >>\nstream\n" + font + "\nendstream";
        }
    }
    objects[1] = "<< /Type /Pages /Kids [" + kids + "] /Count " + number(count) + " >>";
    return fromObjects(objects);
}

QByteArray fromObjects(const QList<QByteArray> &objects, const QByteArray &trailer)
{
    Writer writer;
    for (const QByteArray &object : objects)
        writer.add(object);
    return writer.finish(trailer);
}

QByteArray withoutXref(const QByteArray &pdf)
{
    QByteArray damaged = pdf;
    const qsizetype xref = damaged.lastIndexOf("\nxref\n");
    if (xref >= 0)
        damaged.replace(xref + 1, 4, "junk");
    const qsizetype start = damaged.lastIndexOf("startxref\n");
    if (start >= 0) {
        const qsizetype end = damaged.indexOf('\n', start + 10);
        damaged.replace(start + 10, end - start - 10, "999999999");
    }
    return damaged;
}

QByteArray truncated(const QByteArray &pdf, double fraction)
{
    return pdf.left(static_cast<qsizetype>(pdf.size() * fraction));
}

bool encryptWithQpdf(const QString &qpdf, const QString &in, const QString &out,
    const QString &userPassword, const QString &ownerPassword, bool allowPrinting,
    bool allowCopying, QString *error)
{
    const QStringList arguments = { QStringLiteral("--encrypt"), userPassword, ownerPassword,
        QStringLiteral("256"), QStringLiteral("--print=") + (allowPrinting ? "full" : "none"),
        QStringLiteral("--extract=") + (allowCopying ? "y" : "n"), QStringLiteral("--"), in, out };
    const TestTools::RunResult result = TestTools::run(qpdf, arguments);
    if (result.exitCode != 0 && error)
        *error = QString::fromUtf8(result.err);
    return result.exitCode == 0;
}

} // namespace PdfFixtures
