// Saved annotations as other readers (poppler, MuPDF, qpdf) see them.

#include "support/AnnotationFixtures.h"
#include "support/RawPdf.h"

#include <support/TestTools.h>

#include <kit/base/BezierPath.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationCircle.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationMarkup.h>
#include <kit/engine/PDFAnnotationSquare.h>
#include <kit/engine/PDFAnnotationText.h>
#include <kit/engine/PDFBorder.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QJsonDocument>
#include <QPainter>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

using namespace AnnotationFixtures;

namespace {

const QColor Red(255, 68, 60);
const QColor Blue(30, 60, 230);
const QColor Green(20, 180, 40);
const QColor Yellow(255, 255, 0);
const QColor Orange(255, 150, 0);

// The page space rect of a word of the generated text page.
QRectF wordRect(const PDFPage &page, const QString &word)
{
    const int at = static_cast<int>(page.string().indexOf(word));
    const auto selection = page.selectionForRange({ at, static_cast<int>(word.size()) });
    if (at < 0 || !selection)
        return {};
    const auto rects
        = selection->lineRectsForPage(std::const_pointer_cast<PDFPage>(page.shared_from_this()));
    return rects.empty() ? QRectF() : rects.front();
}

QVariant border(double width, bool dashed)
{
    auto made = std::make_shared<PDFBorder>();
    made->setLineWidth(width);
    made->setStyle(dashed ? PDFBorder::Dashed : PDFBorder::Solid);
    if (dashed)
        made->setDashPattern({ 6, 4 });
    return QVariant::fromValue(made);
}

// Each kind the application makes, named with its variant ("Square filled dashed").
std::shared_ptr<PDFAnnotation> makeKind(const QString &kind, const PDFPage &page)
{
    const QString type = kind.section(QLatin1Char(' '), 0, 0);
    const auto has = [&](const char *variant) { return kind.contains(QLatin1String(variant)); };
    QVariantMap values { { "userName", QStringLiteral("Zoë Writer") },
        { "modificationDate", QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC) },
        { "contents", QString(kind + QStringLiteral(" é")) }, { "color", Red } };
    QRectF bounds(150, 200, 200, 120);
    if (type == QLatin1String("Highlight") || type == QLatin1String("Underline")
        || type == QLatin1String("StrikeOut")) {
        bounds = wordRect(page, QStringLiteral("brown"));
        const double w = bounds.width();
        const double h = bounds.height();
        values["quadrilateralPoints"]
            = QVariantList { QPointF(0, h), QPointF(w, h), QPointF(0, 0), QPointF(w, 0) };
        if (type == QLatin1String("Highlight"))
            values["color"] = Yellow;
    } else if (type == QLatin1String("Ink")) {
        bounds = QRectF(100, 400, 200, 100);
        BezierPath path;
        path.moveTo({ 10, 50 });
        path.lineTo({ 190, 50 });
        path.lineTo({ 190, 90 });
        values.insert({ { "paths", QVariantList { QVariant::fromValue(path) } },
            { "border", border(3, false) }, { "color", Blue } });
    } else if (type == QLatin1String("Line")) {
        bounds = QRectF(100, 300, 300, 0);
        values.insert({ { "startPoint", QPointF(20, 0) }, { "endPoint", QPointF(280, 0) },
            { "startLineStyle", has("closed") ? 0 : 4 }, { "endLineStyle", has("closed") ? 5 : 4 },
            { "border", border(3, has("dashed")) } });
    } else if (type == QLatin1String("Circle") || type == QLatin1String("Square")) {
        if (has("filled"))
            values["interiorColor"] = Green;
        values["border"] = border(has("no border") ? 0 : 4, has("dashed"));
        if (has("half transparent"))
            values["color"] = QColor(Red.red(), Red.green(), Red.blue(), 128);
    } else if (type == QLatin1String("FreeText")) {
        bounds = QRectF(100, 400, 400, 60);
        QFont font(QStringLiteral("Helvetica"));
        font.setPointSizeF(24);
        values.insert({ { "font", font }, { "fontColor", Red }, { "contents", "MMMM" },
            { "color", has("background") ? Orange : QColor(255, 255, 255, 0) },
            { "alignment",
                has("right")        ? PDFAnnotationFreeText::Right
                    : has("centre") ? PDFAnnotationFreeText::Center
                                    : PDFAnnotationFreeText::Left } });
    } else if (type == QLatin1String("Text")) {
        bounds = QRectF(300, 500, 24, 24);
        values.insert({ { "iconType", PDFAnnotationText::Comment }, { "color", Orange } });
    }
    const auto made = PDFAnnotation::classForType(type)();
    made->initWithBounds(bounds, type, values);
    return made;
}

// The generated page is US letter; renderings are at 144 dpi, two pixels a point.
constexpr int PageHeight = 792;
constexpr int Scale = 2;

QRect pixelsOf(const QRectF &pageRect)
{
    return QRectF(pageRect.left() * Scale, (PageHeight - pageRect.bottom()) * Scale,
        pageRect.width() * Scale, pageRect.height() * Scale)
        .toAlignedRect();
}

bool near(QRgb a, const QColor &b)
{
    return std::abs(qRed(a) - b.red()) < 60 && std::abs(qGreen(a) - b.green()) < 60
        && std::abs(qBlue(a) - b.blue()) < 60;
}

QRgb pixel(const QImage &image, int x, int y)
{
    return reinterpret_cast<const QRgb *>(image.constScanLine(y))[x];
}

// The pixels of the area that show the colour: their share of it and their bounding rect.
std::pair<double, QRect> shownIn(const QImage &image, const QRect &area, const QColor &color)
{
    const QRect within = area.intersected(image.rect());
    int hits = 0;
    QRect found;
    for (int y = within.top(); y <= within.bottom(); ++y) {
        for (int x = within.left(); x <= within.right(); ++x) {
            if (near(pixel(image, x, y), color)) {
                ++hits;
                found = found.united(QRect(x, y, 1, 1));
            }
        }
    }
    return { within.isEmpty() ? 0 : double(hits) / (within.width() * within.height()), found };
}

// qpdf's reading of a file: every object by its "obj:N G R" name.
QJsonObject qpdfObjects(const QString &qpdf, const QString &path)
{
    const auto result = TestTools::run(qpdf,
        { QStringLiteral("--json=2"), QStringLiteral("--json-key=qpdf"),
            QStringLiteral("--json-stream-data=inline"), path });
    const QJsonArray parts
        = QJsonDocument::fromJson(result.out).object().value(QStringLiteral("qpdf")).toArray();
    return parts.size() == 2 ? parts[1].toObject() : QJsonObject();
}

QJsonValue deref(const QJsonObject &objects, const QJsonValue &value)
{
    static const QRegularExpression reference(QStringLiteral("^\\d+ \\d+ R$"));
    if (!value.isString() || !reference.match(value.toString()).hasMatch())
        return value;
    const QJsonObject entry = objects.value(QStringLiteral("obj:") + value.toString()).toObject();
    return entry.contains(QStringLiteral("stream")) ? entry.value(QStringLiteral("stream"))
                                                    : entry.value(QStringLiteral("value"));
}

// The annotation dictionaries of the file's first page.
QList<QJsonObject> annotationsOf(const QJsonObject &objects)
{
    QList<QJsonObject> list;
    for (const QJsonValue &entry : objects) {
        const QJsonObject page = entry.toObject().value(QStringLiteral("value")).toObject();
        if (page.value(QStringLiteral("/Type")) != QLatin1String("/Page"))
            continue;
        for (const QJsonValue &annot : page.value(QStringLiteral("/Annots")).toArray())
            list.append(deref(objects, annot).toObject());
        break;
    }
    return list;
}

// A value with every reference followed, so that files numbered otherwise compare equal.
QJsonValue resolved(const QJsonObject &objects, const QJsonValue &value, int depth = 0)
{
    const QJsonValue target = deref(objects, value);
    if (depth > 12)
        return QStringLiteral("(too deep)");
    if (target.isArray()) {
        QJsonArray out;
        for (const QJsonValue &item : target.toArray())
            out.append(resolved(objects, item, depth + 1));
        return out;
    }
    if (!target.isObject())
        return target;
    QJsonObject in = target.toObject();
    QJsonObject out;
    if (in.contains(QStringLiteral("dict"))) {
        // A stream: its decoded data and its dictionary, less how it is packed.
        QJsonObject dict = in.value(QStringLiteral("dict")).toObject();
        for (const char *packing : { "/Length", "/Filter", "/DecodeParms" })
            dict.remove(QLatin1String(packing));
        out.insert(QStringLiteral("dict"), resolved(objects, dict, depth + 1));
        out.insert(QStringLiteral("data"), in.value(QStringLiteral("data")));
        return out;
    }
    for (auto it = in.begin(); it != in.end(); ++it) {
        if (it.key() == QLatin1String("/P") || it.key() == QLatin1String("/Parent")
            || it.key() == QLatin1String("/Popup") || it.key() == QLatin1String("/IRT")) {
            const QJsonObject other = deref(objects, it.value()).toObject();
            out.insert(it.key(),
                other.value(QStringLiteral("/Subtype"))
                    .toString(other.value(QStringLiteral("/Type")).toString()));
        } else {
            out.insert(it.key(), resolved(objects, it.value(), depth + 1));
        }
    }
    return out;
}

// Numbers as the file holds them (floats, e.g. 0.26666669) compare equal to exact ones.
bool sameValue(const QJsonValue &a, const QJsonValue &b)
{
    if (a.isDouble() && b.isDouble())
        return std::abs(a.toDouble() - b.toDouble()) < 0.01;
    if (a.isArray() && b.isArray()) {
        const QJsonArray x = a.toArray();
        const QJsonArray y = b.toArray();
        return std::equal(x.begin(), x.end(), y.begin(), y.end(),
            [](const QJsonValue &p, const QJsonValue &q) { return sameValue(p, q); });
    }
    return a == b;
}

QString shown(const QJsonValue &value)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonArray { value }).toJson(QJsonDocument::Compact).mid(1).chopped(1));
}

// Kinds the application does not make (link, field, stamp, attachment, note with popup) and a
// square.
QByteArray handWrittenFile()
{
    using RawPdf::stream;
    const QList<QByteArray> objects = {
        "<< /Type /Catalog /Pages 2 0 R /AcroForm << /Fields [7 0 R] /DA (/Helv 0 Tf 0 g) "
        "/DR << /Font << /Helv 12 0 R >> >> >> >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Contents 4 0 R "
        "/Resources << /Font << /F1 12 0 R >> >> "
        "/Annots [5 0 R 6 0 R 7 0 R 8 0 R 9 0 R 10 0 R 15 0 R] >>",
        stream("", "BT /F1 12 Tf 20 275 Td (Survivors) Tj ET"),
        "<< /Type /Annot /Subtype /Link /Rect [20 250 120 265] /Border [0 0 1] /H /I "
        "/A << /S /URI /URI (https://example.org/folio) >> >>",
        "<< /Type /Annot /Subtype /Stamp /Rect [150 220 250 280] /Name /Approved /F 4 "
        "/Contents (Stamped) /T (Clerk) /M (D:20230102030405Z) /AP << /N 11 0 R >> >>",
        "<< /Type /Annot /Subtype /Widget /FT /Tx /T (name) /V (Folio) /Rect [20 200 120 220] "
        "/F 4 /DA (/Helv 10 Tf 0 g) /MK << /BG [0.9 0.9 0.9] >> /P 3 0 R "
        "/AP << /N 13 0 R >> >>",
        "<< /Type /Annot /Subtype /FileAttachment /Rect [20 150 36 170] /Name /PushPin "
        "/Contents (attached notes) /C [0 0 1] /FS << /Type /Filespec /F (notes.txt) "
        "/UF (notes.txt) /EF << /F 14 0 R >> >> >>",
        "<< /Type /Annot /Subtype /Text /Rect [200 100 220 120] /Contents (parent note) "
        "/C [1 1 0] /Name /Comment /Popup 10 0 R /AP << /N 16 0 R >> >>",
        "<< /Type /Annot /Subtype /Popup /Rect [220 60 300 120] /Parent 9 0 R /Open false >>",
        stream("/Type /XObject /Subtype /Form /BBox [0 0 100 60]", "0 0.6 0 rg 0 0 100 60 re f"),
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>",
        stream("/Type /XObject /Subtype /Form /BBox [0 0 100 20] "
               "/Resources << /Font << /Helv 12 0 R >> >>",
            "/Tx BMC BT /Helv 10 Tf 0 g 2 6 Td (Folio) Tj ET EMC"),
        stream("/Type /EmbeddedFile", "first line\nsecond line"),
        "<< /Type /Annot /Subtype /Square /Rect [150 20 250 80] /C [1 0 0] /BS << /W 2 >> "
        "/AP << /N 17 0 R >> >>",
        stream("/Type /XObject /Subtype /Form /BBox [0 0 20 20]", "1 1 0 rg 0 0 20 20 re f"),
        stream("/Type /XObject /Subtype /Form /BBox [150 20 250 80]",
            "1 0 0 RG 2 w 151 21 98 58 re S"),
    };
    return RawPdf::build(objects);
}

// An annotation's keys as readers take them: "/BS/W", plain text, /DA as [font, size, r, g, b].
QJsonObject readerKeys(const QJsonObject &objects, const QJsonObject &annotation)
{
    QJsonObject keys;
    for (auto it = annotation.begin(); it != annotation.end(); ++it) {
        const QJsonValue value = deref(objects, it.value());
        if (it.key() == QLatin1String("/BS")) {
            const QJsonObject bs = value.toObject();
            for (auto entry = bs.begin(); entry != bs.end(); ++entry)
                keys.insert(QStringLiteral("/BS") + entry.key(), entry.value());
        } else if (it.key() == QLatin1String("/DA")) {
            const QStringList parts = value.toString().mid(2).split(QLatin1Char(' '));
            QJsonArray da;
            if (parts.size() >= 7 && parts[2] == QLatin1String("Tf"))
                da = { parts[0], parts[1].toDouble(), parts[3].toDouble(), parts[4].toDouble(),
                    parts[5].toDouble() };
            keys.insert(it.key(), da);
        } else if (value.isString() && value.toString().startsWith(QLatin1String("u:"))) {
            keys.insert(it.key(), value.toString().mid(2));
        } else {
            keys.insert(it.key(), value);
        }
    }
    return keys;
}

// The quadrilateral of a word of the text page, in the file's order.
QJsonArray quadOf(const QString &word)
{
    const auto doc = textDocument();
    const QRectF r = wordRect(*doc->pageAtIndex(0), word);
    return { r.left(), r.bottom(), r.right(), r.bottom(), r.left(), r.top(), r.right(), r.top() };
}

QJsonArray rgb(const QColor &color)
{
    return { color.redF(), color.greenF(), color.blueF() };
}

} // namespace

class AnnotationInteropTest : public QObject
{
    Q_OBJECT

    struct Renders
    {
        QString path;
        QImage kit;
        QImage poppler;
        QImage mupdf;
    };

    QTemporaryDir m_dir;
    QHash<QString, Renders> m_renders;

    // The kind saved on the text page and drawn by the kit, poppler and MuPDF, once per kind.
    const Renders *renders(const QString &kind)
    {
        if (m_renders.contains(kind))
            return &m_renders[kind];
        const QString pdftoppm = TestTools::findTool(QStringLiteral("pdftoppm"));
        const QString mutool = TestTools::findTool(QStringLiteral("mutool"));
        const QString qpdf = TestTools::findTool(QStringLiteral("qpdf"));
        const auto doc = textDocument();
        const auto page = doc->pageAtIndex(0);
        const auto annotation = makeKind(kind, *page);
        if (!annotation)
            return nullptr;
        page->addAnnotation(annotation);
        Renders made;
        const QString stem = m_dir.filePath(QString(kind).replace(QLatin1Char(' '), '_'));
        made.path = stem + QStringLiteral(".pdf");
        if (!doc->writeToURL(QUrl::fromLocalFile(made.path)))
            return nullptr;
        const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), made.path });
        if (check.exitCode != 0) {
            qWarning() << check.out << check.err;
            return nullptr;
        }
        made.kit = QImage(612 * Scale, PageHeight * Scale, QImage::Format_ARGB32_Premultiplied);
        made.kit.fill(Qt::white);
        QPainter painter(&made.kit);
        painter.scale(Scale, Scale);
        annotation->drawWithBox(painter, PDFDisplayBox::MediaBox);
        painter.end();
        TestTools::run(pdftoppm,
            { QStringLiteral("-r"), QStringLiteral("144"), QStringLiteral("-singlefile"), made.path,
                stem + QStringLiteral("-poppler") });
        TestTools::run(mutool,
            { QStringLiteral("draw"), QStringLiteral("-q"), QStringLiteral("-r"),
                QStringLiteral("144"), QStringLiteral("-o"), stem + QStringLiteral("-mupdf.ppm"),
                made.path, QStringLiteral("1") });
        made.kit.convertTo(QImage::Format_RGB32);
        made.poppler
            = QImage(stem + QStringLiteral("-poppler.ppm")).convertToFormat(QImage::Format_RGB32);
        made.mupdf
            = QImage(stem + QStringLiteral("-mupdf.ppm")).convertToFormat(QImage::Format_RGB32);
        if (made.poppler.size() != made.kit.size() || made.mupdf.size() != made.kit.size())
            return nullptr;
        for (const char *reader : { "-poppler.ppm", "-mupdf.ppm" })
            QFile::remove(stem + QLatin1String(reader));
        return &*m_renders.insert(kind, made);
    }

private slots:
    void eachKindShowsInOtherReadersWhereTheKitDrawsIt_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QColor>("color");
        QTest::addColumn<QRectF>("inside"); // page space
        QTest::addColumn<double>("least"); // share of inside showing the colour
        QTest::addColumn<double>("most");
        QTest::addColumn<QRectF>("outside"); // shows none of the colour
        QTest::addColumn<int>("slack"); // points the colour's extent may differ by across

        const auto row
            = [](const char *name, const char *kind, const QColor &color, const QRectF &inside,
                  double least, double most, const QRectF &outside, int slack = 2) {
                  QTest::newRow(name)
                      << QString(kind) << color << inside << least << most << outside << slack;
              };
        // "brown" on the first line spans about x 127 to 160 and y 716 to 733.
        row("highlight", "Highlight", Yellow, { 130, 718, 27, 13 }, 0.3, 1.0, { 110, 736, 70, 6 });
        row("highlight's ends", "Highlight", Yellow, { 128, 718, 2, 13 }, 0.3, 1.0,
            { 118, 718, 6, 13 });
        row("underline", "Underline", Red, { 130, 716, 27, 4 }, 0.2, 1.0, { 110, 722, 70, 14 });
        row("strike-out", "StrikeOut", Red, { 130, 722, 27, 3 }, 0.2, 1.0, { 110, 727, 70, 10 });
        row("ink", "Ink", Blue, { 120, 449, 160, 2 }, 0.9, 1.0, { 120, 455, 160, 30 });
        row("line", "Line open", Red, { 140, 299, 220, 2 }, 0.9, 1.0, { 140, 305, 220, 20 });
        // Open arrows are 3 widths long and 1.5 wide on each side of the line.
        row("line's arrow heads", "Line open", Red, { 374, 301, 2, 2 }, 0.5, 1.0,
            { 350, 309, 40, 10 });
        row("dashed line", "Line closed dashed", Red, { 140, 299.5, 200, 1 }, 0.4, 0.8,
            { 140, 305, 200, 20 });
        row("circle's fill", "Circle filled", Green, { 200, 240, 100, 40 }, 0.95, 1.0,
            { 150, 200, 15, 15 });
        row("circle's border", "Circle filled", Red, { 230, 316.5, 40, 2 }, 0.9, 1.0,
            { 230, 250, 40, 20 });
        row("dashed circle without fill", "Circle dashed", Red, { 235, 316.5, 30, 1.5 }, 0.3, 0.85,
            { 200, 240, 100, 40 });
        row("dashed square's fill", "Square filled dashed", Green, { 160, 210, 180, 100 }, 0.95,
            1.0, { 100, 200, 45, 120 });
        row("dashed square's border", "Square filled dashed", Red, { 170, 316.5, 160, 2 }, 0.3,
            0.85, { 170, 250, 160, 40 });
        // No border: the fill reaches the bounds and no line is drawn round it.
        row("square without border", "Square no border filled", Red, {}, 0.0, 0.0,
            { 140, 190, 220, 140 });
        row("square without border's fill", "Square no border filled", Green,
            { 151, 201, 198, 118 }, 0.97, 1.0, { 140, 190, 8, 140 });
        row("half transparent square", "Square half transparent", QColor(255, 162, 158),
            { 152, 202, 196, 1 }, 0.9, 1.0, { 200, 240, 100, 40 });
        // Free text is 24 point "MMMM" in a box from x 100 to 500, y 400 to 460.
        row("free text at the left", "FreeText left", Red, { 100, 425, 80, 30 }, 0.1, 1.0,
            { 200, 400, 300, 60 }, 6);
        row("free text in the centre", "FreeText centre", Red, { 260, 425, 80, 30 }, 0.1, 1.0,
            { 100, 400, 130, 60 }, 6);
        row("free text at the right", "FreeText right", Red, { 420, 425, 80, 30 }, 0.1, 1.0,
            { 100, 400, 300, 60 }, 6);
        row("free text's background", "FreeText background", Orange, { 101, 401, 398, 10 }, 0.95,
            1.0, { 100, 462, 400, 10 });
        row("free text without border", "FreeText background", Red, {}, 0.0, 0.0,
            { 100, 400, 400, 18 }, 6);
        row("note", "Text", Orange, { 302, 502, 3, 20 }, 0.9, 1.0, { 280, 480, 18, 60 }, 3);
    }
    void eachKindShowsInOtherReadersWhereTheKitDrawsIt()
    {
        QFETCH(QString, kind);
        QFETCH(QColor, color);
        QFETCH(QRectF, inside);
        QFETCH(double, least);
        QFETCH(double, most);
        QFETCH(QRectF, outside);
        QFETCH(int, slack);
        FOLIDOC_REQUIRE_TOOL(pdftoppm, "pdftoppm");
        FOLIDOC_REQUIRE_TOOL(mutool, "mutool");
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        const Renders *made = renders(kind);
        QVERIFY2(made, "the file could not be made, checked or rendered");
        const QList<std::pair<const char *, const QImage *>> images
            = { { "kit", &made->kit }, { "poppler", &made->poppler }, { "MuPDF", &made->mupdf } };
        // Measured near the annotation only: the page's grey text could pass for a light colour.
        const QRect window = pixelsOf(inside.united(outside))
                                 .adjusted(-40 * Scale, -40 * Scale, 40 * Scale, 40 * Scale);
        const QRect kitExtent = shownIn(made->kit, window, color).second;
        for (const auto &[name, image] : images) {
            const double shown = shownIn(*image, pixelsOf(inside), color).first;
            QVERIFY2(inside.isEmpty() || (shown >= least && shown <= most),
                qPrintable(QStringLiteral("%1 shows %2 of the colour").arg(name).arg(shown)));
            const double stray = shownIn(*image, pixelsOf(outside), color).first;
            QVERIFY2(stray < 0.03,
                qPrintable(QStringLiteral("%1 shows %2 of it outside").arg(name).arg(stray)));
            const QRect found = shownIn(*image, window, color).second;
            // Across, text may run wider in the kit's stand-in font; up and down it may not.
            const int across = std::max(std::abs(found.left() - kitExtent.left()),
                std::abs(found.right() - kitExtent.right()));
            const int upDown = std::max(std::abs(found.top() - kitExtent.top()),
                std::abs(found.bottom() - kitExtent.bottom()));
            const auto where = [](const QRect &r) {
                return QString::asprintf("%d,%d %dx%d", r.x(), r.y(), r.width(), r.height());
            };
            QVERIFY2(across <= slack * Scale && upDown <= std::min(slack, 3) * Scale,
                qPrintable(QStringLiteral("%1 shows the colour over %2, the kit over %3")
                               .arg(name, where(found), where(kitExtent))));
        }
    }

    void eachKindCarriesTheKeysReadersRelyOn_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QJsonObject>("expected");
        QTest::addColumn<QStringList>("absent");
        const QJsonArray solid { 0, 0 };
        QTest::newRow("highlight")
            << "Highlight"
            << QJsonObject { { "/QuadPoints", quadOf("brown") }, { "/C", rgb(Yellow) } }
            << QStringList { "/CA", "/IC" };
        QTest::newRow("underline")
            << "Underline" << QJsonObject { { "/QuadPoints", quadOf("brown") }, { "/C", rgb(Red) } }
            << QStringList { "/CA" };
        QTest::newRow("strike-out")
            << "StrikeOut" << QJsonObject { { "/QuadPoints", quadOf("brown") } }
            << QStringList { "/CA" };
        QTest::newRow("ink") << "Ink"
                             << QJsonObject { { "/InkList",
                                                  QJsonArray { QJsonArray {
                                                      110, 450, 290, 450, 290, 490 } } },
                                    { "/BS/W", 3 }, { "/BS/S", "/S" }, { "/C", rgb(Blue) } }
                             << QStringList { "/BS/D", "/IC", "/CA" };
        QTest::newRow("line with open arrows")
            << "Line open"
            << QJsonObject { { "/L", QJsonArray { 120, 300, 380, 300 } },
                   { "/LE", QJsonArray { "/OpenArrow", "/OpenArrow" } }, { "/BS/W", 3 },
                   { "/BS/S", "/S" } }
            << QStringList { "/BS/D", "/IC" };
        QTest::newRow("dashed line with a closed arrow")
            << "Line closed dashed"
            << QJsonObject { { "/LE", QJsonArray { "/None", "/ClosedArrow" } }, { "/BS/S", "/D" },
                   { "/BS/D", QJsonArray { 6, 4 } } }
            << QStringList { "/IC" };
        QTest::newRow("filled circle")
            << "Circle filled"
            << QJsonObject { { "/IC", rgb(Green) }, { "/C", rgb(Red) }, { "/BS/W", 4 },
                   { "/BS/S", "/S" }, { "/Rect", QJsonArray { 150, 200, 350, 320 } } }
            << QStringList { "/BS/D", "/CA" };
        QTest::newRow("dashed circle without fill")
            << "Circle dashed"
            << QJsonObject { { "/BS/S", "/D" }, { "/BS/D", QJsonArray { 6, 4 } } }
            << QStringList { "/IC" };
        QTest::newRow("filled dashed square")
            << "Square filled dashed"
            << QJsonObject { { "/IC", rgb(Green) }, { "/BS/S", "/D" },
                   { "/BS/D", QJsonArray { 6, 4 } },
                   { "/Rect", QJsonArray { 150, 200, 350, 320 } } }
            << QStringList {};
        QTest::newRow("square without border")
            << "Square no border filled" << QJsonObject { { "/BS/W", 0 } } << QStringList {};
        QTest::newRow("half transparent square")
            << "Square half transparent"
            << QJsonObject { { "/CA", 128 / 255.0 }, { "/C", rgb(Red) } } << QStringList { "/IC" };
        QTest::newRow("free text")
            << "FreeText left"
            << QJsonObject { { "/DA", QJsonArray { "/Helv", 24, 1, 68 / 255.0, 60 / 255.0 } },
                   { "/Q", 0 }, { "/BS/W", 0 } }
            << QStringList { "/C", "/IC", "/CA" };
        // Other alignments' /Q: freeTextFontAndAlignmentReachTheFile.
        QTest::newRow("free text with a background")
            << "FreeText background" << QJsonObject { { "/C", rgb(Orange) }, { "/BS/W", 0 } }
            << QStringList { "/CA" };
        QTest::newRow("note") << "Text"
                              << QJsonObject { { "/Name", "/Comment" }, { "/C", rgb(Orange) },
                                     { "/Rect", QJsonArray { 300, 500, 324, 524 } } }
                              << QStringList { "/CA" };
    }
    void eachKindCarriesTheKeysReadersRelyOn()
    {
        QFETCH(QString, kind);
        QFETCH(QJsonObject, expected);
        QFETCH(QStringList, absent);
        FOLIDOC_REQUIRE_TOOL(pdftoppm, "pdftoppm");
        FOLIDOC_REQUIRE_TOOL(mutool, "mutool");
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        const Renders *made = renders(kind);
        QVERIFY(made);
        const QJsonObject objects = qpdfObjects(qpdf, made->path);
        const QList<QJsonObject> annotations = annotationsOf(objects);
        QCOMPARE(annotations.size(), 1);
        const QJsonObject keys = readerKeys(objects, annotations[0]);
        // What every kind says: its author, when it was changed, that it prints, its picture.
        expected.insert(QStringLiteral("/T"), QStringLiteral("Zoë Writer"));
        expected.insert(QStringLiteral("/M"), QStringLiteral("D:20240506070809Z"));
        expected.insert(QStringLiteral("/Subtype"), QLatin1Char('/') + kind.section(' ', 0, 0));
        for (auto it = expected.begin(); it != expected.end(); ++it) {
            QVERIFY2(sameValue(keys.value(it.key()), it.value()),
                qPrintable(QStringLiteral("%1 is %2, not %3")
                               .arg(it.key(), shown(keys.value(it.key())), shown(it.value()))));
        }
        for (const QString &key : absent)
            QVERIFY2(!keys.contains(key), qPrintable(key + QStringLiteral(" is written")));
        QVERIFY(keys.value(QStringLiteral("/F")).toInt() & 4);
        QVERIFY(keys.value(QStringLiteral("/AP")).toObject().contains(QStringLiteral("/N")));
    }

    void freeTextFontAndAlignmentReachTheFile_data()
    {
        QTest::addColumn<QString>("family");
        QTest::addColumn<int>("alignment");
        QTest::addColumn<QString>("baseFont");
        QTest::addColumn<int>("quadding");
        using Pair = std::pair<const char *, const char *>;
        for (const auto &[family, baseFont] :
            std::initializer_list<Pair> { { "Helvetica", "/Helv" }, { "Arial", "/Helv" },
                { "DejaVu Sans", "/Helv" }, { "Times", "/TiRo" }, { "Times New Roman", "/TiRo" },
                { "DejaVu Serif", "/TiRo" }, { "Georgia", "/TiRo" }, { "Courier", "/Cour" },
                { "DejaVu Sans Mono", "/Cour" }, { "Menlo", "/Cour" } })
            QTest::newRow(family) << QString(family) << int(PDFAnnotationFreeText::Left)
                                  << QString(baseFont) << 0;
        QTest::newRow("centred") << "Arial" << int(PDFAnnotationFreeText::Center) << "/Helv" << 1;
        QTest::newRow("at the right")
            << "Arial" << int(PDFAnnotationFreeText::Right) << "/Helv" << 2;
    }
    void freeTextFontAndAlignmentReachTheFile()
    {
        QFETCH(QString, family);
        QFETCH(int, alignment);
        QFETCH(QString, baseFont);
        QFETCH(int, quadding);
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        const auto doc = textDocument();
        auto text = std::make_shared<PDFAnnotationFreeText>();
        text->initWithBounds(QRectF(100, 400, 300, 40));
        QFont font(family);
        font.setPointSizeF(17);
        text->setFont(font);
        text->setFontColor(Blue);
        text->setAlignment(alignment);
        text->setContents(QStringLiteral("Folio"));
        doc->pageAtIndex(0)->addAnnotation(text);
        const QString path = m_dir.filePath(QStringLiteral("font.pdf"));
        QVERIFY(doc->writeToURL(QUrl::fromLocalFile(path)));
        const QJsonObject objects = qpdfObjects(qpdf, path);
        const QJsonObject keys = readerKeys(objects, annotationsOf(objects).value(0));
        const QJsonArray da { baseFont, 17, Blue.redF(), Blue.greenF(), Blue.blueF() };
        QVERIFY2(sameValue(keys.value(QStringLiteral("/DA")), da),
            qPrintable(shown(keys.value(QStringLiteral("/DA")))));
        QCOMPARE(keys.value(QStringLiteral("/Q")).toInt(-1), quadding);
        // And the alignment comes back from the file.
        const auto read = reopen(*doc)->pageAtIndex(0)->annotations();
        QCOMPARE(read.size(), size_t(1));
        QCOMPARE(read[0]->valueForKey(QStringLiteral("alignment")).toInt(), alignment);
    }

    void otherKindsSurviveASaveUntouched_data()
    {
        QTest::addColumn<QString>("edit");
        QTest::newRow("nothing changed") << "none";
        QTest::newRow("a square added") << "add";
        QTest::newRow("a note added") << "add note";
        QTest::newRow("an added square removed again") << "add and remove";
        QTest::newRow("the file's square removed") << "remove";
        QTest::newRow("the file's square recoloured") << "recolour";
    }
    void otherKindsSurviveASaveUntouched()
    {
        QFETCH(QString, edit);
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        const QString original = m_dir.filePath(QStringLiteral("hand.pdf"));
        QVERIFY(RawPdf::writeFile(original, handWrittenFile()));
        const auto before = qpdfObjects(qpdf, original);
        QCOMPARE(annotationsOf(before).size(), 7);

        const auto doc = open(handWrittenFile());
        QVERIFY(doc);
        const auto page = doc->pageAtIndex(0);
        QCOMPARE(page->annotations().size(), size_t(7));
        const auto fileSquare = page->annotations().back();
        QCOMPARE(fileSquare->type(), QStringLiteral("Square"));
        if (edit.startsWith(QLatin1String("add"))) {
            const auto added
                = makeKind(edit == QLatin1String("add note") ? QStringLiteral("Text")
                                                             : QStringLiteral("Square filled"),
                    *page);
            page->addAnnotation(added);
            if (edit == QLatin1String("add and remove")) {
                (void)doc->dataRepresentation(); // its picture is made and written once
                page->removeAnnotation(added);
            }
        } else if (edit == QLatin1String("remove")) {
            page->removeAnnotation(fileSquare);
        } else if (edit == QLatin1String("recolour")) {
            fileSquare->setColor(Blue);
        }
        const QString saved = m_dir.filePath(QStringLiteral("saved.pdf"));
        QVERIFY(doc->writeToURL(QUrl::fromLocalFile(saved)));
        const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), saved });
        QVERIFY2(check.exitCode == 0, check.out.constData());

        const auto after = qpdfObjects(qpdf, saved);
        QHash<QString, QJsonValue> kept;
        for (const QJsonObject &annotation : annotationsOf(after))
            kept.insert(annotation.value(QStringLiteral("/Subtype")).toString(),
                resolved(after, annotation));
        for (const QJsonObject &annotation : annotationsOf(before)) {
            const QString subtype = annotation.value(QStringLiteral("/Subtype")).toString();
            if (subtype == QLatin1String("/Square") || subtype == QLatin1String("/Text"))
                continue;
            QVERIFY2(kept.contains(subtype), qPrintable(subtype + QStringLiteral(" is gone")));
            const QJsonValue was = resolved(before, annotation);
            QVERIFY2(kept[subtype] == was,
                qPrintable(subtype + QStringLiteral(" was ") + shown(was)
                    + QStringLiteral(" and is ") + shown(kept[subtype])));
        }
        // The form still knows its field.
        const auto entry = [&](const QJsonValue &from, const char *key) {
            return deref(after, from).toObject().value(QLatin1String(key));
        };
        const QJsonValue root = entry(after.value(QStringLiteral("trailer")), "value");
        const QJsonArray fields
            = entry(entry(entry(root, "/Root"), "/AcroForm"), "/Fields").toArray();
        QCOMPARE(fields.size(), 1);
        QCOMPARE(deref(after, fields[0]).toObject().value(QStringLiteral("/Subtype")).toString(),
            QStringLiteral("/Widget"));
    }
};

QTEST_MAIN(AnnotationInteropTest)
#include "AnnotationInteropTest.moc"
