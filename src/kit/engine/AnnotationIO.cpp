#include "AnnotationIO.h"

#include "PDFActionRemoteGoTo.h"
#include "PDFAnnotation.h"
#include "PDFAnnotationFreeText.h"
#include "PDFAnnotationInk.h"
#include "PDFAnnotationLine.h"
#include "PDFAnnotationLink.h"
#include "PDFAnnotationMarkup.h"
#include "PDFAnnotationPopup.h"
#include "PDFAnnotationPrivate.h"
#include "PDFAnnotationShape.h"
#include "PDFAnnotationStamp.h"
#include "PDFAnnotationText.h"
#include "PDFBorder.h"
#include "PDFDestination.h"

#include <QFontInfo>

#include <cmath>
#include <vector>

namespace AnnotationIO {
namespace {

constexpr const char *LineStyleNames[]
    = { "None", "Square", "Circle", "Diamond", "OpenArrow", "ClosedArrow" };

// Numbers a file can hold: what is not finite becomes 0, and magnitudes stay where readers
// accept them.
float num(double value)
{
    return std::isfinite(value) ? static_cast<float>(std::clamp(value, -1e7, 1e7)) : 0.0f;
}

int lineStyleForName(const char *name)
{
    for (int i = 0; i < 6; ++i) {
        if (name && std::strcmp(name, LineStyleNames[i]) == 0)
            return i;
    }
    return 0;
}

// Colour arrays hold 0 (none), 1 (grey), 3 (RGB) or 4 (CMYK) components.
QColor colorFrom(int n, const float *c, float alpha)
{
    const auto clamp = [](float v) { return std::clamp(static_cast<double>(v), 0.0, 1.0); };
    QColor color;
    if (n == 1)
        color = QColor::fromRgbF(clamp(c[0]), clamp(c[0]), clamp(c[0]));
    else if (n == 3)
        color = QColor::fromRgbF(clamp(c[0]), clamp(c[1]), clamp(c[2]));
    else if (n == 4)
        color = QColor::fromCmykF(clamp(c[0]), clamp(c[1]), clamp(c[2]), clamp(c[3]));
    if (color.isValid())
        color.setAlphaF(clamp(alpha));
    return color;
}

int readColor(fz_context *ctx, pdf_obj *array, float out[4])
{
    const int n = pdf_is_array(ctx, array) ? pdf_array_len(ctx, array) : 0;
    if (n != 1 && n != 3 && n != 4)
        return 0;
    for (int i = 0; i < n; ++i)
        out[i] = pdf_to_real(ctx, pdf_array_get(ctx, array, i));
    return n;
}

QString text(const char *utf8)
{
    return utf8 ? QString::fromUtf8(utf8) : QString();
}

struct Base
{
    float rect[4] = {};
    const char *contents = nullptr;
    const char *author = nullptr;
    int colorCount = 0;
    float color[4] = {};
    float alpha = 1;
    int64_t modified = 0;
    int flags = 0;
    bool hasBorder = false;
    float borderWidth = 1;
    bool dashed = false;
    int dashCount = 0;
    float dash[8] = {};
    bool hasAppearance = false;
};

void readBase(fz_context *ctx, pdf_obj *dict, Base &b)
{
    const fz_rect r = pdf_dict_get_rect(ctx, dict, PDF_NAME(Rect));
    b.rect[0] = r.x0;
    b.rect[1] = r.y0;
    b.rect[2] = r.x1;
    b.rect[3] = r.y1;
    if (pdf_dict_get(ctx, dict, PDF_NAME(Contents)))
        b.contents = pdf_dict_get_text_string(ctx, dict, PDF_NAME(Contents));
    if (pdf_dict_get(ctx, dict, PDF_NAME(T)))
        b.author = pdf_dict_get_text_string(ctx, dict, PDF_NAME(T));
    b.colorCount = readColor(ctx, pdf_dict_get(ctx, dict, PDF_NAME(C)), b.color);
    pdf_obj *ca = pdf_dict_get(ctx, dict, PDF_NAME(CA));
    if (pdf_is_number(ctx, ca))
        b.alpha = pdf_to_real(ctx, ca);
    b.modified = pdf_dict_get_date(ctx, dict, PDF_NAME(M));
    b.flags = pdf_dict_get_int(ctx, dict, PDF_NAME(F));
    pdf_obj *bs = pdf_dict_get(ctx, dict, PDF_NAME(BS));
    pdf_obj *border = pdf_dict_get(ctx, dict, PDF_NAME(Border));
    pdf_obj *dash = nullptr;
    if (pdf_is_dict(ctx, bs)) {
        b.hasBorder = true;
        pdf_obj *w = pdf_dict_get(ctx, bs, PDF_NAME(W));
        b.borderWidth = pdf_is_number(ctx, w) ? pdf_to_real(ctx, w) : 1;
        b.dashed = pdf_name_eq(ctx, pdf_dict_get(ctx, bs, PDF_NAME(S)), PDF_NAME(D));
        dash = pdf_dict_get(ctx, bs, PDF_NAME(D));
    } else if (pdf_is_array(ctx, border) && pdf_array_len(ctx, border) >= 3) {
        b.hasBorder = true;
        b.borderWidth = pdf_to_real(ctx, pdf_array_get(ctx, border, 2));
        dash = pdf_array_get(ctx, border, 3);
        b.dashed = pdf_is_array(ctx, dash);
    }
    if (pdf_is_array(ctx, dash)) {
        b.dashCount = std::min(pdf_array_len(ctx, dash), 8);
        for (int i = 0; i < b.dashCount; ++i)
            b.dash[i] = pdf_to_real(ctx, pdf_array_get(ctx, dash, i));
    }
    pdf_obj *ap = pdf_dict_get(ctx, dict, PDF_NAME(AP));
    b.hasAppearance = pdf_dict_get(ctx, ap, PDF_NAME(N)) != nullptr;
}

// Numbers of an array of arrays (InkList) or a flat array (QuadPoints, L): first the lengths,
// then the values, each in its own guarded block.
std::vector<std::vector<float>> readNumberLists(fz_context *ctx, pdf_obj *array, bool nested)
{
    std::vector<int> lengths;
    int count = 0;
    mu::Error error;
    mu::run(ctx, error, [&] {
        count = pdf_is_array(ctx, array) ? pdf_array_len(ctx, array) : 0;
        if (!nested)
            count = count > 0 ? 1 : 0;
    });
    if (count <= 0)
        return {};
    lengths.assign(static_cast<size_t>(count), 0);
    int *const lengthOut = lengths.data();
    mu::run(ctx, error, [&] {
        for (int i = 0; i < count; ++i) {
            pdf_obj *list = nested ? pdf_array_get(ctx, array, i) : array;
            lengthOut[i] = pdf_is_array(ctx, list) ? pdf_array_len(ctx, list) : 0;
        }
    });
    std::vector<std::vector<float>> lists(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        lists[static_cast<size_t>(i)].assign(
            static_cast<size_t>(lengths[static_cast<size_t>(i)]), 0);
        float *const out = lists[static_cast<size_t>(i)].data();
        const int n = lengths[static_cast<size_t>(i)];
        mu::run(ctx, error, [&] {
            pdf_obj *list = nested ? pdf_array_get(ctx, array, i) : array;
            for (int k = 0; k < n; ++k)
                out[k] = pdf_to_real(ctx, pdf_array_get(ctx, list, k));
        });
    }
    return lists;
}

void readKind(fz_context *ctx, pdf_obj *dict, PDFAnnotation &annotation, const QPointF &origin,
    const PageForObject &pageForObject)
{
    mu::Error error;
    if (auto *line = dynamic_cast<PDFAnnotationLine *>(&annotation)) {
        const auto l = readNumberLists(ctx, pdf_dict_get(ctx, dict, PDF_NAME(L)), false);
        if (!l.empty() && l[0].size() >= 4) {
            line->setStartPoint(QPointF(l[0][0], l[0][1]) - origin);
            line->setEndPoint(QPointF(l[0][2], l[0][3]) - origin);
        }
        const char *names[2] = {};
        mu::run(ctx, error, [&] {
            pdf_obj *le = pdf_dict_get(ctx, dict, PDF_NAME(LE));
            names[0] = pdf_to_name(ctx, pdf_array_get(ctx, le, 0));
            names[1] = pdf_to_name(ctx, pdf_array_get(ctx, le, 1));
        });
        line->setStartLineStyle(lineStyleForName(names[0]));
        line->setEndLineStyle(lineStyleForName(names[1]));
    } else if (dynamic_cast<PDFAnnotationShape *>(&annotation)) {
        float c[4] = {};
        int n = 0;
        mu::run(ctx, error, [&] { n = readColor(ctx, pdf_dict_get(ctx, dict, PDF_NAME(IC)), c); });
        annotation.setValueForKey(
            n ? QVariant(colorFrom(n, c, 1)) : QVariant(), QStringLiteral("interiorColor"));
    } else if (auto *ink = dynamic_cast<PDFAnnotationInk *>(&annotation)) {
        for (const auto &list :
            readNumberLists(ctx, pdf_dict_get(ctx, dict, PDF_NAME(InkList)), true)) {
            auto path = std::make_shared<BezierPath>();
            for (size_t k = 0; k + 1 < list.size(); k += 2) {
                const QPointF point = QPointF(list[k], list[k + 1]) - origin;
                if (k == 0)
                    path->moveTo(point);
                else
                    path->lineTo(point);
            }
            if (!path->isEmpty())
                ink->addBezierPath(path);
        }
    } else if (auto *markup = dynamic_cast<PDFAnnotationMarkup *>(&annotation)) {
        QList<QPointF> points;
        const auto q = readNumberLists(ctx, pdf_dict_get(ctx, dict, PDF_NAME(QuadPoints)), false);
        if (!q.empty()) {
            for (size_t k = 0; k + 1 < q[0].size(); k += 2)
                points.append(QPointF(q[0][k], q[0][k + 1]) - origin);
        }
        markup->setQuadrilateralPoints(points);
    } else if (auto *freeText = dynamic_cast<PDFAnnotationFreeText *>(&annotation)) {
        const char *fontName = nullptr;
        float size = 12;
        int n = 0;
        float c[4] = {};
        int quadding = 0;
        mu::run(ctx, error, [&] {
            const char *da = pdf_dict_get_text_string(ctx, dict, PDF_NAME(DA));
            if (da && *da)
                pdf_parse_default_appearance(ctx, da, &fontName, &size, &n, c);
            quadding = pdf_dict_get_int(ctx, dict, PDF_NAME(Q));
        });
        const QString name = text(fontName);
        QFont font(name == QLatin1String("TiRo") ? QStringLiteral("Times")
                : name == QLatin1String("Cour")  ? QStringLiteral("Courier")
                                                 : QStringLiteral("Helvetica"));
        font.setPointSizeF(size > 0 ? size : 12);
        freeText->setFont(font);
        freeText->setFontColor(n ? colorFrom(n, c, 1) : QColor(Qt::black));
        freeText->setAlignment(quadding == 1 ? PDFAnnotationFreeText::Center
                : quadding == 2              ? PDFAnnotationFreeText::Right
                                             : PDFAnnotationFreeText::Left);
    } else if (auto *note = dynamic_cast<PDFAnnotationText *>(&annotation)) {
        const char *name = nullptr;
        mu::run(ctx, error, [&] { name = pdf_dict_get_name(ctx, dict, PDF_NAME(Name)); });
        note->setIconType(PDFAnnotationText::iconTypeForName(text(name)));
    } else if (auto *stamp = dynamic_cast<PDFAnnotationStamp *>(&annotation)) {
        const char *name = nullptr;
        mu::run(ctx, error, [&] { name = pdf_dict_get_name(ctx, dict, PDF_NAME(Name)); });
        stamp->setName(text(name));
    } else if (auto *popup = dynamic_cast<PDFAnnotationPopup *>(&annotation)) {
        bool open = false;
        mu::run(ctx, error, [&] { open = pdf_dict_get_bool(ctx, dict, PDF_NAME(Open)); });
        popup->setIsOpen(open);
    } else if (auto *link = dynamic_cast<PDFAnnotationLink *>(&annotation)) {
        const char *uri = nullptr;
        const char *remoteFile = nullptr;
        int remotePage = -1;
        int pageObject = 0;
        float point[2] = { 0, 0 };
        mu::run(ctx, error, [&] {
            pdf_obj *action = pdf_dict_get(ctx, dict, PDF_NAME(A));
            pdf_obj *dest = pdf_dict_get(ctx, dict, PDF_NAME(Dest));
            pdf_obj *kind = pdf_dict_get(ctx, action, PDF_NAME(S));
            if (pdf_name_eq(ctx, kind, PDF_NAME(URI)))
                uri = pdf_dict_get_text_string(ctx, action, PDF_NAME(URI));
            if (pdf_name_eq(ctx, kind, PDF_NAME(GoToR))) {
                // A page of another file: its number, and the point of an XYZ destination.
                pdf_obj *file = pdf_dict_get(ctx, action, PDF_NAME(F));
                if (pdf_is_dict(ctx, file))
                    file = pdf_dict_get(ctx, file, PDF_NAME(UF))
                        ? pdf_dict_get(ctx, file, PDF_NAME(UF))
                        : pdf_dict_get(ctx, file, PDF_NAME(F));
                remoteFile = pdf_is_string(ctx, file) ? pdf_to_text_string(ctx, file) : "";
                pdf_obj *remote = pdf_dict_get(ctx, action, PDF_NAME(D));
                remotePage = pdf_is_int(ctx, pdf_array_get(ctx, remote, 0))
                    ? pdf_to_int(ctx, pdf_array_get(ctx, remote, 0))
                    : 0;
                if (pdf_name_eq(ctx, pdf_array_get(ctx, remote, 1), PDF_NAME(XYZ))) {
                    point[0] = pdf_to_real(ctx, pdf_array_get(ctx, remote, 2));
                    point[1] = pdf_to_real(ctx, pdf_array_get(ctx, remote, 3));
                }
            } else if (!dest
                && pdf_name_eq(ctx, pdf_dict_get(ctx, action, PDF_NAME(S)), PDF_NAME(GoTo)))
                dest = pdf_dict_get(ctx, action, PDF_NAME(D));
            if (pdf_is_name(ctx, dest) || pdf_is_string(ctx, dest))
                dest = pdf_lookup_dest(ctx, pdf_get_bound_document(ctx, dict), dest);
            if (pdf_is_dict(ctx, dest))
                dest = pdf_dict_get(ctx, dest, PDF_NAME(D));
            if (pdf_is_array(ctx, dest)) {
                pageObject = pdf_to_num(ctx, pdf_array_get(ctx, dest, 0));
                if (pdf_name_eq(ctx, pdf_array_get(ctx, dest, 1), PDF_NAME(XYZ))) {
                    point[0] = pdf_to_real(ctx, pdf_array_get(ctx, dest, 2));
                    point[1] = pdf_to_real(ctx, pdf_array_get(ctx, dest, 3));
                }
            }
        });
        if (uri)
            link->setURL(QUrl(text(uri)));
        if (remoteFile)
            link->setAction(std::make_shared<PDFActionRemoteGoTo>(
                std::max(remotePage, 0), QPointF(point[0], point[1]), QUrl(text(remoteFile))));
        const auto target = pageObject > 0 && pageForObject ? pageForObject(pageObject) : nullptr;
        if (target)
            link->setDestination(
                std::make_shared<PDFDestination>(target, QPointF(point[0], point[1])));
    }
}

} // namespace

QString subtypeOf(fz_context *ctx, pdf_obj *dict)
{
    const char *name = nullptr;
    mu::Error error;
    mu::run(
        ctx, error, [&] { name = pdf_to_name(ctx, pdf_dict_get(ctx, dict, PDF_NAME(Subtype))); });
    return text(name);
}

void read(
    fz_context *ctx, pdf_obj *dict, PDFAnnotation &annotation, const PageForObject &pageForObject)
{
    Base b;
    mu::Error error;
    mu::run(ctx, error, [&] { readBase(ctx, dict, b); });
    PDFAnnotationPrivate &d = PDFAnnotationPrivate::of(annotation);
    const bool wasLoading = d.loading;
    d.loading = true;
    const QRectF bounds
        = QRectF(QPointF(b.rect[0], b.rect[1]), QPointF(b.rect[2], b.rect[3])).normalized();
    annotation.setBounds(bounds);
    annotation.setContents(text(b.contents));
    annotation.setUserName(text(b.author));
    annotation.setColor(colorFrom(b.colorCount, b.color, b.alpha));
    annotation.setModificationDate(
        b.modified > 0 ? QDateTime::fromSecsSinceEpoch(b.modified) : QDateTime());
    annotation.setShouldDisplay(!(b.flags & PDF_ANNOT_IS_HIDDEN));
    annotation.setShouldPrint(b.flags & PDF_ANNOT_IS_PRINT);
    const QString type = annotation.type();
    const bool bordered = type == QLatin1String("Line") || type == QLatin1String("Ink")
        || type == QLatin1String("Circle") || type == QLatin1String("Square");
    // A free text's zero-width border is how the file says it has none.
    const bool freeTextWithout = b.hasBorder && b.borderWidth <= 0
        && dynamic_cast<const PDFAnnotationFreeText *>(&annotation);
    if ((b.hasBorder || bordered) && !freeTextWithout) {
        auto border = std::make_shared<PDFBorder>();
        border->setLineWidth(b.hasBorder ? b.borderWidth : 1.0);
        border->setStyle(b.dashed ? PDFBorder::Dashed : PDFBorder::Solid);
        QList<double> dash;
        for (int i = 0; i < b.dashCount; ++i)
            dash.append(b.dash[i]);
        border->setDashPattern(dash);
        annotation.setBorder(border);
    } else {
        annotation.setBorder(nullptr);
    }
    d.ownAppearance = b.hasAppearance;
    readKind(ctx, dict, annotation, bounds.topLeft(), pageForObject);
    d.loading = wasLoading;
}

QByteArray dashOperator(const PDFAnnotation &annotation)
{
    const auto border = annotation.border();
    if (!border || border->style() != PDFBorder::Dashed)
        return {};
    QList<double> pattern;
    for (const double value : border->dashPattern()) {
        if (num(value) > 0)
            pattern.append(num(value));
    }
    if (pattern.isEmpty())
        pattern = { 3.0 };
    QByteArray op = "[";
    for (qsizetype i = 0; i < pattern.size(); ++i)
        op += (i ? " " : "") + QByteArray::number(pattern[i], 'g', 6);
    return op + "] 0 d\n";
}

namespace {

struct FileColor
{
    int n = 0;
    float c[3] = {};
    float alpha = 1;
};

FileColor fileColorOf(const QColor &color)
{
    FileColor result;
    if (!color.isValid() || color.alpha() == 0)
        return result;
    const QColor rgb = color.toRgb();
    result.n = 3;
    result.c[0] = static_cast<float>(rgb.redF());
    result.c[1] = static_cast<float>(rgb.greenF());
    result.c[2] = static_cast<float>(rgb.blueF());
    result.alpha = static_cast<float>(rgb.alphaF());
    return result;
}

void putColor(fz_context *ctx, pdf_obj *dict, pdf_obj *key, const FileColor &color)
{
    if (!color.n) {
        pdf_dict_del(ctx, dict, key);
        return;
    }
    pdf_obj *array = pdf_dict_put_array(ctx, dict, key, 3);
    for (int i = 0; i < 3; ++i)
        pdf_array_push_real(ctx, array, color.c[i]);
}

void putText(fz_context *ctx, pdf_obj *dict, pdf_obj *key, const char *utf8)
{
    if (utf8)
        pdf_dict_put_text_string(ctx, dict, key, utf8);
    else
        pdf_dict_del(ctx, dict, key);
}

const char *baseFontOf(const QFont &font)
{
    const QString family = font.family().toLower();
    if (family.contains(QLatin1String("courier")) || family.contains(QLatin1String("mono")))
        return "Cour";
    if (family.contains(QLatin1String("times"))
        || (family.contains(QLatin1String("serif")) && !family.contains(QLatin1String("sans"))))
        return "TiRo";
    return "Helv";
}

// The flattened points of each subpath, in page space.
std::vector<std::vector<float>> inkLists(const PDFAnnotationInk &ink, const QPointF &origin)
{
    std::vector<std::vector<float>> lists;
    for (const auto &path : ink.paths()) {
        const BezierPath flat = path->flattened(0.25);
        for (int i = 0; i < flat.elementCount(); ++i) {
            QPointF points[3];
            const auto kind = flat.elementAt(i, points);
            if (kind == BezierPath::MoveTo || lists.empty())
                lists.emplace_back();
            if (kind == BezierPath::ClosePath)
                continue;
            lists.back().push_back(num(points[0].x() + origin.x()));
            lists.back().push_back(num(points[0].y() + origin.y()));
        }
    }
    std::erase_if(lists, [](const std::vector<float> &list) { return list.size() < 2; });
    return lists;
}

bool writeKind(fz_context *ctx, pdf_document *doc, pdf_obj *dict, const PDFAnnotation &annotation,
    const QPointF &origin, const ObjectForPage &objectForPage, mu::Error &error)
{
    if (const auto *line = dynamic_cast<const PDFAnnotationLine *>(&annotation)) {
        const QPointF s = origin + line->startPoint();
        const QPointF e = origin + line->endPoint();
        const float l[4] = { num(s.x()), num(s.y()), num(e.x()), num(e.y()) };
        const auto styleName
            = [](int style) { return LineStyleNames[style >= 0 && style <= 5 ? style : 0]; };
        const char *const startName = styleName(line->startLineStyle());
        const char *const endName = styleName(line->endLineStyle());
        return mu::run(ctx, error, [&] {
            pdf_obj *array = pdf_dict_put_array(ctx, dict, PDF_NAME(L), 4);
            for (const float v : l)
                pdf_array_push_real(ctx, array, v);
            pdf_obj *ends = pdf_dict_put_array(ctx, dict, PDF_NAME(LE), 2);
            pdf_array_push_name(ctx, ends, startName);
            pdf_array_push_name(ctx, ends, endName);
        });
    }
    if (dynamic_cast<const PDFAnnotationShape *>(&annotation)) {
        const FileColor interior
            = fileColorOf(annotation.valueForKey(QStringLiteral("interiorColor")).value<QColor>());
        return mu::run(ctx, error, [&] { putColor(ctx, dict, PDF_NAME(IC), interior); });
    }
    if (const auto *ink = dynamic_cast<const PDFAnnotationInk *>(&annotation)) {
        const auto lists = inkLists(*ink, origin);
        bool ok = mu::run(ctx, error, [&] {
            pdf_dict_put_array(ctx, dict, PDF_NAME(InkList), static_cast<int>(lists.size()));
        });
        for (const auto &list : lists) {
            const float *const values = list.data();
            const int n = static_cast<int>(list.size());
            ok = ok && mu::run(ctx, error, [&] {
                pdf_obj *outer = pdf_dict_get(ctx, dict, PDF_NAME(InkList));
                pdf_obj *inner = pdf_array_push_array(ctx, outer, n);
                for (int i = 0; i < n; ++i)
                    pdf_array_push_real(ctx, inner, values[i]);
            });
        }
        return ok;
    }
    if (const auto *markup = dynamic_cast<const PDFAnnotationMarkup *>(&annotation)) {
        std::vector<float> values;
        for (const QPointF &point : markup->quadrilateralPoints()) {
            values.push_back(num(point.x() + origin.x()));
            values.push_back(num(point.y() + origin.y()));
        }
        const float *const data = values.data();
        const int n = static_cast<int>(values.size());
        return mu::run(ctx, error, [&] {
            if (n == 0) {
                pdf_dict_del(ctx, dict, PDF_NAME(QuadPoints));
                return;
            }
            pdf_obj *array = pdf_dict_put_array(ctx, dict, PDF_NAME(QuadPoints), n);
            for (int i = 0; i < n; ++i)
                pdf_array_push_real(ctx, array, data[i]);
        });
    }
    if (const auto *freeText = dynamic_cast<const PDFAnnotationFreeText *>(&annotation)) {
        const char *const font = baseFontOf(freeText->font());
        const QFont &qfont = freeText->font();
        const float size = static_cast<float>(qfont.pointSizeF() > 0
                ? qfont.pointSizeF()
                : (qfont.pixelSize() > 0 ? qfont.pixelSize() : 12));
        FileColor textColor = fileColorOf(freeText->fontColor());
        if (!textColor.n)
            textColor.n = 3;
        const int alignment = freeText->alignment();
        const int quadding = alignment == PDFAnnotationFreeText::Center ? 1
            : alignment == PDFAnnotationFreeText::Right                 ? 2
                                                                        : 0;
        return mu::run(ctx, error, [&] {
            char da[200];
            pdf_print_default_appearance(ctx, da, sizeof da, font, size, 3, textColor.c);
            pdf_dict_put_string(ctx, dict, PDF_NAME(DA), da, strlen(da));
            pdf_dict_put_int(ctx, dict, PDF_NAME(Q), quadding);
        });
    }
    if (const auto *note = dynamic_cast<const PDFAnnotationText *>(&annotation)) {
        const QByteArray name = PDFAnnotationText::iconName(note->iconType()).toLatin1();
        const char *const iconName = name.constData();
        return mu::run(ctx, error, [&] { pdf_dict_put_name(ctx, dict, PDF_NAME(Name), iconName); });
    }
    if (const auto *popup = dynamic_cast<const PDFAnnotationPopup *>(&annotation)) {
        const bool open = popup->isOpen();
        return mu::run(ctx, error, [&] { pdf_dict_put_bool(ctx, dict, PDF_NAME(Open), open); });
    }
    if (const auto *link = dynamic_cast<const PDFAnnotationLink *>(&annotation)) {
        const QByteArray url = link->URL().toEncoded();
        const char *const uri = url.isEmpty() ? nullptr : url.constData();
        const auto destination = link->destination();
        pdf_obj *const target = destination && destination->page() && objectForPage
            ? objectForPage(*destination->page())
            : nullptr;
        const float x = destination ? num(destination->point().x()) : 0;
        const float y = destination ? num(destination->point().y()) : 0;
        return mu::run(ctx, error, [&] {
            if (uri) {
                pdf_dict_del(ctx, dict, PDF_NAME(Dest));
                pdf_obj *action = pdf_dict_put_dict(ctx, dict, PDF_NAME(A), 2);
                pdf_dict_put(ctx, action, PDF_NAME(S), PDF_NAME(URI));
                pdf_dict_put_string(ctx, action, PDF_NAME(URI), uri, strlen(uri));
            } else if (target) {
                pdf_dict_del(ctx, dict, PDF_NAME(A));
                pdf_obj *dest = pdf_dict_put_array(ctx, dict, PDF_NAME(Dest), 5);
                pdf_array_push(ctx, dest, target);
                pdf_array_push(ctx, dest, PDF_NAME(XYZ));
                pdf_array_push_real(ctx, dest, x);
                pdf_array_push_real(ctx, dest, y);
                pdf_array_push(ctx, dest, PDF_NULL);
            }
        });
    }
    Q_UNUSED(doc);
    return true;
}
} // namespace

bool write(fz_context *ctx, pdf_document *doc, pdf_obj *dict, const PDFAnnotation &annotation,
    const ObjectForPage &objectForPage, mu::Error &error)
{
    const QString type = annotation.type();
    const QRectF bounds = annotation.bounds().normalized();
    const fz_rect rect = fz_make_rect(
        num(bounds.left()), num(bounds.top()), num(bounds.right()), num(bounds.bottom()));
    const QByteArray contents = annotation.contents().toUtf8();
    const char *const contentsText
        = annotation.contents().isNull() ? nullptr : contents.constData();
    const QByteArray author = annotation.userName().toUtf8();
    const char *const authorText = annotation.userName().isNull() ? nullptr : author.constData();
    const QDateTime modified = annotation.modificationDate();
    const int64_t time = modified.isValid() ? modified.toSecsSinceEpoch() : 0;
    const bool isFreeText = dynamic_cast<const PDFAnnotationFreeText *>(&annotation) != nullptr;
    const FileColor color = fileColorOf(annotation.color());
    const auto border = annotation.border();
    const bool writesBorder = type == QLatin1String("Line") || type == QLatin1String("Ink")
        || type == QLatin1String("Circle") || type == QLatin1String("Square") || isFreeText;
    const float borderWidth = border ? std::max(0.0f, num(border->lineWidth())) : 0.0f;
    const bool dashed = border && border->style() == PDFBorder::Dashed;
    std::vector<float> dash;
    if (border) {
        for (const double value : border->dashPattern()) {
            if (num(value) > 0)
                dash.push_back(num(value));
        }
    }
    const float *const dashValues = dash.data();
    const int dashCount = static_cast<int>(dash.size());
    const QByteArray subtype = type.toLatin1();
    const char *const subtypeName = subtype.constData();
    const bool markup = dynamic_cast<const PDFAnnotationMarkup *>(&annotation) != nullptr;

    if (!mu::run(ctx, error, [&] {
            if (markup)
                pdf_dict_put_name(ctx, dict, PDF_NAME(Subtype), subtypeName);
            pdf_dict_put_rect(ctx, dict, PDF_NAME(Rect), rect);
            putText(ctx, dict, PDF_NAME(Contents), contentsText);
            putText(ctx, dict, PDF_NAME(T), authorText);
            if (time > 0)
                pdf_dict_put_date(ctx, dict, PDF_NAME(M), time);
            else
                pdf_dict_del(ctx, dict, PDF_NAME(M));
            putColor(ctx, dict, PDF_NAME(C), color);
            if (color.n && color.alpha < 1 && !isFreeText)
                pdf_dict_put_real(ctx, dict, PDF_NAME(CA), color.alpha);
            else
                pdf_dict_del(ctx, dict, PDF_NAME(CA));
            if (writesBorder || border) {
                pdf_dict_del(ctx, dict, PDF_NAME(Border));
                pdf_obj *bs = pdf_dict_put_dict(ctx, dict, PDF_NAME(BS), 3);
                pdf_dict_put_real(ctx, bs, PDF_NAME(W), borderWidth);
                pdf_dict_put(ctx, bs, PDF_NAME(S), dashed ? PDF_NAME(D) : PDF_NAME(S));
                if (dashed && dashCount > 0) {
                    pdf_obj *array = pdf_dict_put_array(ctx, bs, PDF_NAME(D), dashCount);
                    for (int i = 0; i < dashCount; ++i)
                        pdf_array_push_real(ctx, array, dashValues[i]);
                }
            }
        }))
        return false;
    return writeKind(ctx, doc, dict, annotation, bounds.topLeft(), objectForPage, error);
}

} // namespace AnnotationIO
