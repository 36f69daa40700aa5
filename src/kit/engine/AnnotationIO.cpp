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
        float point[2] = { 0, 0 };
        mu::run(ctx, error, [&] {
            pdf_obj *action = pdf_dict_get(ctx, dict, PDF_NAME(A));
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
            }
        });
        if (uri)
            link->setURL(QUrl(text(uri)));
        if (remoteFile)
            link->setAction(std::make_shared<PDFActionRemoteGoTo>(
                std::max(remotePage, 0), QPointF(point[0], point[1]), QUrl(text(remoteFile))));
        // A destination in this file is read when first asked for: a named one is looked up in
        // the document's name tree, and its page may need the whole page tree walked, which a
        // page of contents with hundreds of links would pay for on every load.
        PDFAnnotationPrivate::of(annotation).destinationUnread
            = pageForObject && !uri && !remoteFile;
    }
}

} // namespace

std::shared_ptr<PDFDestination> readDestination(
    fz_context *ctx, pdf_obj *dict, const PageForObject &pageForObject)
{
    int pageObject = 0;
    float point[2] = { 0, 0 };
    mu::Error error;
    mu::run(ctx, error, [&] {
        pdf_obj *action = pdf_dict_get(ctx, dict, PDF_NAME(A));
        pdf_obj *dest = pdf_dict_get(ctx, dict, PDF_NAME(Dest));
        if (!dest && pdf_name_eq(ctx, pdf_dict_get(ctx, action, PDF_NAME(S)), PDF_NAME(GoTo)))
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
    const auto target = pageObject > 0 && pageForObject ? pageForObject(pageObject) : nullptr;
    return target ? std::make_shared<PDFDestination>(target, QPointF(point[0], point[1])) : nullptr;
}

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

} // namespace AnnotationIO
