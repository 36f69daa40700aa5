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

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <vector>

namespace AnnotationIO {

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

bool namesAny(const QString &family, std::initializer_list<const char *> parts)
{
    return std::any_of(parts.begin(), parts.end(),
        [&](const char *part) { return family.contains(QLatin1String(part)); });
}

// The base font of readers closest to the family: fixed pitch, serif or sans serif.
const char *baseFontOf(const QFont &font)
{
    const QString family = font.family().toLower();
    if (font.styleHint() == QFont::Monospace || font.styleHint() == QFont::TypeWriter
        || namesAny(family,
            { "courier", "mono", "menlo", "monaco", "consol", "code", "fixed", "typewriter" }))
        return "Cour";
    if (font.styleHint() == QFont::Serif
        || (family.contains(QLatin1String("serif")) && !family.contains(QLatin1String("sans")))
        || namesAny(family,
            { "times", "roman", "georgia", "garamond", "palatino", "baskerville", "bookman",
                "cambria", "charter", "century", "bodoni", "caslon", "didot", "minion", "tinos",
                "merriweather", "cochin", "hoefler" }))
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
        // One still unread stands in the dictionary as the file has it; reading it would take
        // the lock held here.
        const auto destination = PDFAnnotationPrivate::of(annotation).destinationUnread
            ? nullptr
            : link->destination();
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
    // The stored text: a kind's derived contents may need the document, whose lock is held.
    const QString storedContents = annotation.PDFAnnotation::contents();
    const QByteArray contents = storedContents.toUtf8();
    const char *const contentsText = storedContents.isNull() ? nullptr : contents.constData();
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
