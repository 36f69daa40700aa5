// The pictures other readers show: for the kinds the kit draws with plain strokes and fills, the
// normal appearance is the kit's drawing written as a content stream, so that every reader shows
// them where and how the application does. A free text keeps MuPDF's text, started where the
// kit starts it.

#include "AnnotationIO.h"

#include "AnnotationPainting.h"
#include "PDFAnnotation.h"
#include "PDFAnnotationFreeText.h"
#include "PDFAnnotationInk.h"
#include "PDFAnnotationLine.h"
#include "PDFAnnotationMarkup.h"
#include "PDFAnnotationShape.h"
#include "mupdf/MuOwned.h"

#include <kit/base/BezierPath.h>

#include <QFontMetricsF>
#include <QImage>
#include <QRegularExpression>
#include <QTransform>

#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace AnnotationIO {
namespace {

// A content stream in page space, the box it covers, and the graphics state it needs.
struct Picture
{
    QByteArray content;
    QRectF box;
    bool multiply = false;
    double strokeAlpha = 1;
    double fillAlpha = 1;
};

QByteArray number(double value)
{
    QByteArray text = QByteArray::number(num(value), 'f', 4);
    while (text.endsWith('0'))
        text.chop(1);
    if (text.endsWith('.'))
        text.chop(1);
    return text == "-0" ? QByteArray("0") : text;
}

QByteArray point(const QPointF &p)
{
    return number(p.x()) + ' ' + number(p.y());
}

QByteArray colorOperator(const QColor &color, const char *op)
{
    const QColor rgb = color.toRgb();
    return number(rgb.redF()) + ' ' + number(rgb.greenF()) + ' ' + number(rgb.blueF()) + ' ' + op
        + '\n';
}

bool visible(const QColor &color)
{
    return color.isValid() && color.alpha() > 0;
}

void appendPath(QByteArray &out, const BezierPath &path)
{
    for (int i = 0; i < path.elementCount(); ++i) {
        QPointF p[3];
        switch (path.elementAt(i, p)) {
        case BezierPath::MoveTo:
            out += point(p[0]) + " m\n";
            break;
        case BezierPath::LineTo:
            out += point(p[0]) + " l\n";
            break;
        case BezierPath::CurveTo:
            out += point(p[0]) + ' ' + point(p[1]) + ' ' + point(p[2]) + " c\n";
            break;
        case BezierPath::ClosePath:
            out += "h\n";
            break;
        }
    }
}

// The dash as the kit strokes it: a pattern with a negative length, or with nothing but zeros,
// draws solid.
QByteArray dashOf(const QList<double> &pattern)
{
    const bool valid = !pattern.isEmpty()
        && std::all_of(pattern.begin(), pattern.end(), [](double d) { return d >= 0; })
        && std::any_of(pattern.begin(), pattern.end(), [](double d) { return d > 0; });
    if (!valid)
        return {};
    QByteArray op = "[";
    for (qsizetype i = 0; i < pattern.size(); ++i)
        op += (i ? " " : "") + number(pattern[i]);
    return op + "] 0 d\n";
}

struct Stroke
{
    double width = 1;
    QList<double> dash;
    const char *cap = "0 J\n";
    const char *join = "0 j\n";
};

// Strokes the paths as AnnotationPainting::stroke does; the box grows by what the stroke covers.
void stroke(
    Picture &picture, const std::vector<BezierPath> &paths, const QColor &color, const Stroke &how)
{
    if (!visible(color) || paths.empty())
        return;
    picture.content += number(std::max(0.0, how.width)) + " w\n" + how.cap + how.join
        + dashOf(how.dash) + colorOperator(color, "RG");
    // Miter joins reach out up to the miter limit; the ends the kit draws stay well within 1.2.
    const double reach = std::max(0.0, how.width) * 1.2 + 1;
    for (const BezierPath &path : paths) {
        appendPath(picture.content, path);
        picture.content += "S\n";
        picture.box
            = picture.box.united(path.controlPointBounds().adjusted(-reach, -reach, reach, reach));
    }
    picture.strokeAlpha = color.alphaF();
}

void fill(Picture &picture, const BezierPath &path, const QColor &color)
{
    if (!visible(color) || path.isEmpty())
        return;
    picture.content += colorOperator(color, "rg");
    appendPath(picture.content, path);
    picture.content += "f\n";
    picture.box = picture.box.united(path.controlPointBounds());
    picture.fillAlpha = color.alphaF();
}

void drawLine(Picture &picture, const PDFAnnotationLine &line)
{
    const QPointF origin = line.bounds().topLeft();
    const QPointF s = origin + line.startPoint();
    const QPointF e = origin + line.endPoint();
    if (s == e)
        return;
    const double w = AnnotationPainting::lineWidth(line);
    const double angle = std::atan2(e.y() - s.y(), e.x() - s.x());
    std::vector<BezierPath> paths(1);
    paths[0].moveTo(s);
    paths[0].lineTo(e);
    if (line.startLineStyle() != PDFAnnotationLine::None)
        paths.push_back(AnnotationPainting::lineEnd(line.startLineStyle(), s, angle + M_PI, w));
    if (line.endLineStyle() != PDFAnnotationLine::None)
        paths.push_back(AnnotationPainting::lineEnd(line.endLineStyle(), e, angle, w));
    std::erase_if(paths, [](const BezierPath &path) { return path.isEmpty(); });
    stroke(picture, paths, line.color(), { w, AnnotationPainting::dash(line) });
}

void drawInk(Picture &picture, const PDFAnnotationInk &ink)
{
    const QRectF area = ink.bounds();
    if (area.width() <= 0 || area.height() <= 0)
        return;
    const QTransform toPage = QTransform::fromTranslate(area.left(), area.top());
    std::vector<BezierPath> paths;
    for (const auto &path : ink.paths()) {
        paths.push_back(*path);
        paths.back().transform(toPage);
    }
    const QList<double> dash = AnnotationPainting::dash(ink);
    stroke(picture, paths, ink.color(),
        { AnnotationPainting::lineWidth(ink), dash, dash.isEmpty() ? "1 J\n" : "0 J\n", "1 j\n" });
}

void drawShape(Picture &picture, const PDFAnnotationShape &shape)
{
    const QRectF area = shape.bounds();
    if (area.width() <= 0 || area.height() <= 0)
        return;
    const double w = AnnotationPainting::lineWidth(shape);
    const double inset = std::min({ w / 2, area.width() / 2, area.height() / 2 });
    const QRectF figure = area.adjusted(inset, inset, -inset, -inset);
    const BezierPath path = shape.type() == QLatin1String("Circle")
        ? BezierPath::bezierPathWithOvalInRect(figure)
        : BezierPath::bezierPathWithRect(figure);
    fill(picture, path, shape.interiorColor());
    // A border of width 0 is no border.
    if (w > 0)
        stroke(picture, { path }, shape.color(), { w, AnnotationPainting::dash(shape) });
    // The stroke stays inside: the box, and with it the file's rect, is the bounds.
    picture.box = area;
}

void drawMarkup(Picture &picture, const PDFAnnotationMarkup &markup)
{
    const QColor ink = markup.color();
    if (!visible(ink))
        return;
    const QList<QPointF> q = markup.quadrilateralPoints();
    const QPointF o = markup.bounds().topLeft();
    for (qsizetype i = 0; i + 3 < q.size(); i += 4) {
        const QPointF topLeft = o + q[i];
        const QPointF topRight = o + q[i + 1];
        const QPointF bottomLeft = o + q[i + 2];
        const QPointF bottomRight = o + q[i + 3];
        if (markup.markupType() == PDFAnnotationMarkup::Highlight) {
            BezierPath area;
            area.moveTo(topLeft);
            area.lineTo(topRight);
            area.lineTo(bottomRight);
            area.lineTo(bottomLeft);
            area.closePath();
            fill(picture, area, ink);
            picture.multiply = true;
            continue;
        }
        // Underlines a little above the bottom edge, strike-outs across the middle, with the
        // square ends of the kit's pen.
        const double t = markup.markupType() == PDFAnnotationMarkup::Underline ? 0.1 : 0.5;
        const double height = QLineF(bottomLeft, topLeft).length();
        BezierPath line;
        line.moveTo(bottomLeft + (topLeft - bottomLeft) * t);
        line.lineTo(bottomRight + (topRight - bottomRight) * t);
        stroke(picture, { line }, ink, { std::max(1.0, height / 14), {}, "2 J\n" });
    }
}

std::optional<Picture> pictureOf(const PDFAnnotation &annotation)
{
    Picture picture;
    if (const auto *line = dynamic_cast<const PDFAnnotationLine *>(&annotation))
        drawLine(picture, *line);
    else if (const auto *ink = dynamic_cast<const PDFAnnotationInk *>(&annotation))
        drawInk(picture, *ink);
    else if (const auto *shape = dynamic_cast<const PDFAnnotationShape *>(&annotation))
        drawShape(picture, *shape);
    else if (const auto *markup = dynamic_cast<const PDFAnnotationMarkup *>(&annotation))
        drawMarkup(picture, *markup);
    else
        return std::nullopt;
    // Readers need a box even for a picture with nothing in it.
    if (picture.box.isEmpty())
        picture.box = annotation.bounds().normalized().adjusted(0, 0, 1, 1);
    return picture;
}

// Measuring a font loads it, which costs far more than the rest of a picture: a page of free
// texts mostly uses a few fonts.
double ascentInPoints(const QFont &font)
{
    thread_local std::vector<std::pair<QFont, double>> known;
    for (const auto &[measured, ascent] : known) {
        if (measured == font)
            return ascent;
    }
    QImage device(1, 1, QImage::Format_ARGB32_Premultiplied);
    const QFontMetricsF metrics(font, &device);
    const double ascent = metrics.ascent() * 72.0 / std::max(1, device.logicalDpiY());
    if (known.size() >= 16)
        known.clear();
    known.emplace_back(font, ascent);
    return ascent;
}

QPointF freeTextShift(const PDFAnnotationFreeText &text, double fontSize)
{
    // The kit writes inside a 2 point margin, its first baseline one ascent below the top;
    // MuPDF starts at the left edge, 0.8 of the size below the top.
    const double ascent = ascentInPoints(text.font());
    const double dy = 0.8 * fontSize - (2 + ascent);
    const int alignment = text.alignment();
    const double dx = alignment == PDFAnnotationFreeText::Center ? 0
        : alignment == PDFAnnotationFreeText::Right              ? -2
                                                                 : 2;
    return { dx, dy };
}

QByteArray shiftedText(const QByteArray &content, const QPointF &shift)
{
    // MuPDF opens the text object with the move to the first line's top: "BT ... x y Td".
    static const QRegularExpression first(
        QStringLiteral("BT\\n(?:[^\\n]*\\n)*?(-?[\\d.]+) (-?[\\d.]+) Td"));
    const QString text = QString::fromLatin1(content);
    const QRegularExpressionMatch match = first.match(text);
    if (!match.hasMatch())
        return content;
    const QByteArray moved = number(match.captured(1).toDouble() + shift.x()) + ' '
        + number(match.captured(2).toDouble() + shift.y());
    QByteArray out = content;
    out.replace(match.capturedStart(1), match.capturedEnd(2) - match.capturedStart(1), moved);
    return out;
}

QByteArray loadStream(fz_context *ctx, pdf_obj *stream)
{
    mu::Buffer buffer;
    mu::Error error;
    mu::run(ctx, error, [&] {
        if (pdf_is_stream(ctx, stream))
            buffer.p = pdf_load_stream(ctx, stream);
    });
    if (!buffer.p)
        return {};
    unsigned char *data = nullptr;
    const size_t length = fz_buffer_storage(ctx, buffer.p, &data);
    return QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(length));
}

} // namespace

void adjustEngineAppearance(
    fz_context *ctx, pdf_document *doc, pdf_obj *dict, const PDFAnnotation &annotation)
{
    const auto *text = dynamic_cast<const PDFAnnotationFreeText *>(&annotation);
    if (!text)
        return;
    mu::Error error;
    pdf_obj *normal = nullptr;
    mu::run(ctx, error, [&] { normal = pdf_dict_getp(ctx, dict, "AP/N"); });
    const QByteArray content = loadStream(ctx, normal);
    if (content.isEmpty())
        return;
    float size = 12;
    mu::run(ctx, error, [&] {
        const char *da = pdf_dict_get_text_string(ctx, dict, PDF_NAME(DA));
        const char *font = nullptr;
        int n = 0;
        float color[4];
        if (da && *da)
            pdf_parse_default_appearance(ctx, da, &font, &size, &n, color);
    });
    const QByteArray shifted = shiftedText(content, freeTextShift(*text, size));
    if (shifted == content)
        return;
    const auto *bytes = reinterpret_cast<const unsigned char *>(shifted.constData());
    const size_t length = static_cast<size_t>(shifted.size());
    mu::Buffer fresh;
    mu::run(ctx, error, [&] {
        fresh.p = fz_new_buffer_from_copied_data(ctx, bytes, length);
        pdf_update_stream(ctx, doc, normal, fresh.p, 0);
    });
}

bool writeOwnAppearance(
    fz_context *ctx, pdf_document *doc, pdf_obj *dict, const PDFAnnotation &annotation)
{
    const auto picture = pictureOf(annotation);
    if (!picture)
        return false;
    // One graphics state sets the blending and the opacities of strokes and fills.
    const bool state = picture->multiply || picture->strokeAlpha < 1 || picture->fillAlpha < 1;
    const QByteArray content = (state ? QByteArray("/H gs\n") : QByteArray()) + picture->content;
    const auto *bytes = reinterpret_cast<const unsigned char *>(content.constData());
    const size_t length = static_cast<size_t>(content.size());
    const fz_rect box = fz_make_rect(num(picture->box.left()), num(picture->box.top()),
        num(picture->box.right()), num(picture->box.bottom()));
    const bool multiply = picture->multiply;
    const auto strokeAlpha = static_cast<float>(picture->strokeAlpha);
    const auto fillAlpha = static_cast<float>(picture->fillAlpha);
    mu::Buffer buffer;
    mu::Object form;
    mu::Error error;
    // A fresh appearance with the normal picture alone: states and keys of an older one (a
    // file's own, say) must not outlive it. The form's matrix is the identity, which readers
    // assume when it has none, and it names resources only when it uses some.
    return mu::run(ctx, error, [&] {
        buffer.p = fz_new_buffer_from_copied_data(ctx, bytes, length);
        form.p = pdf_new_dict(ctx, doc, 4);
        pdf_dict_put(ctx, form.p, PDF_NAME(Type), PDF_NAME(XObject));
        pdf_dict_put(ctx, form.p, PDF_NAME(Subtype), PDF_NAME(Form));
        pdf_dict_put_rect(ctx, form.p, PDF_NAME(BBox), box);
        if (state) {
            pdf_obj *resources = pdf_dict_put_dict(ctx, form.p, PDF_NAME(Resources), 1);
            pdf_obj *states = pdf_dict_put_dict(ctx, resources, PDF_NAME(ExtGState), 1);
            pdf_obj *gs = pdf_dict_put_dict(ctx, states, PDF_NAME(H), 4);
            pdf_dict_put(ctx, gs, PDF_NAME(Type), PDF_NAME(ExtGState));
            if (multiply)
                pdf_dict_put(ctx, gs, PDF_NAME(BM), PDF_NAME(Multiply));
            if (strokeAlpha < 1)
                pdf_dict_put_real(ctx, gs, PDF_NAME(CA), strokeAlpha);
            if (fillAlpha < 1)
                pdf_dict_put_real(ctx, gs, PDF_NAME(ca), fillAlpha);
        }
        pdf_obj *ap = pdf_dict_put_dict(ctx, dict, PDF_NAME(AP), 1);
        pdf_dict_put_drop(ctx, ap, PDF_NAME(N), pdf_add_stream(ctx, doc, buffer.p, form.p, 0));
        pdf_dict_put_rect(ctx, dict, PDF_NAME(Rect), box);
    });
}

} // namespace AnnotationIO
