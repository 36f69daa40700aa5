// PDFPage's annotation pictures: making them fresh (AnnotationIO) before the page
// is drawn or written, choosing what engine drawing shows, and drawing one annotation's picture.

#include "PDFPage.h"

#include "AnnotationIO.h"
#include "PDFAnnotation.h"
#include "PDFAnnotationPrivate.h"
#include "PDFAnnotationText.h"
#include "PDFPagePrivate.h"
#include "PDFRenderPrivate.h"

#include <QPainter>

#include <algorithm>
#include <optional>
#include <unordered_map>

namespace {

// MuPDF's annotations and widgets of a loaded page by their dictionaries: a page with many
// changed annotations finds each without walking the list again.
class AnnotsByObject
{
public:
    AnnotsByObject(fz_context *ctx, pdf_page *loaded)
    {
        mu::Error error;
        mu::run(ctx, error, [&] {
            for (pdf_annot *a = pdf_first_annot(ctx, loaded); a; a = pdf_next_annot(ctx, a))
                m_annots.emplace(pdf_resolve_indirect(ctx, pdf_annot_obj(ctx, a)), a);
            for (pdf_annot *w = pdf_first_widget(ctx, loaded); w; w = pdf_next_widget(ctx, w))
                m_annots.emplace(pdf_resolve_indirect(ctx, pdf_annot_obj(ctx, w)), w);
        });
    }

    pdf_annot *find(fz_context *ctx, pdf_obj *object) const
    {
        pdf_obj *resolved = nullptr;
        mu::Error error;
        mu::run(ctx, error, [&] { resolved = pdf_resolve_indirect(ctx, object); });
        const auto found = resolved ? m_annots.find(resolved) : m_annots.end();
        return found == m_annots.end() ? nullptr : found->second;
    }

private:
    std::unordered_map<pdf_obj *, pdf_annot *> m_annots;
};

} // namespace

namespace PDFPageInternals {

bool hasAppearance(const PDFAnnotation &annotation)
{
    const PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(annotation);
    if (!ad.handle || !ad.object)
        return false;
    const mu::Lock lock(ad.handle->mutex());
    fz_context *ctx = mu::context();
    pdf_obj *const object = ad.object;
    bool found = false;
    mu::Error error;
    mu::run(ctx, error, [&] { found = pdf_dict_getp(ctx, object, "AP/N") != nullptr; });
    return found;
}

void requestNewAppearance(PDFAnnotation &annotation)
{
    PDFAnnotationPrivate::of(annotation).appearanceDirty = true;
    if (const auto page = annotation.page()) {
        PDFPagePrivate &pd = PDFPagePrivate::of(*page);
        pd.appearancesStale = true;
        ++pd.revision;
    }
}

void prepareAnnotationsLocked(const PDFPage &page, fz_context *ctx, pdf_page *loaded)
{
    PDFPagePrivate &pd = PDFPagePrivate::of(page);
    resolveMovedLocked(pd, ctx);
    writePendingLocked(pd, ctx);
    // Any edit of the file (a page taken out, turned or added, an annotation written) throws
    // away the pictures MuPDF made up for the fields and annotations of every open page that
    // have none of their own; they are made again before the page draws, or it would draw
    // without them.
    if (loaded && pd.handle->doc()->resynth_required)
        mu::runQuietly(ctx, [&] { pdf_update_page(ctx, loaded); });
    if (!pd.appearancesStale || !loaded)
        return;
    pdf_document *const doc = pd.handle->doc();
    std::optional<AnnotsByObject> annots;
    std::vector<const PDFAnnotation *> remade;
    for (const auto &annotation : pd.annotations) {
        PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(*annotation);
        if (!ad.appearanceDirty || !onPageInFile(pd, ad))
            continue;
        ad.appearanceDirty = false;
        if (!annots)
            annots.emplace(ctx, loaded);
        pdf_obj *const object = ad.object;
        pdf_annot *const annot = annots->find(ctx, object);
        // The kinds the kit draws get their picture straight away; MuPDF, which would draw one
        // only to have it replaced, is told the picture is fresh.
        if (AnnotationIO::writeOwnAppearance(ctx, doc, object, *annotation)) {
            if (annot)
                mu::runQuietly(ctx, [&] { pdf_set_annot_resynthesised(ctx, annot); });
            continue;
        }
        remade.push_back(annotation.get());
        // MuPDF keeps a picture that came with the file even when told it is dirty; without
        // one it always makes a new one.
        if (annot) {
            mu::runQuietly(ctx, [&] {
                pdf_dict_del(ctx, object, PDF_NAME(AP));
                pdf_dirty_annot(ctx, annot);
            });
        }
    }
    mu::Error error;
    mu::run(ctx, error, [&] {
        for (pdf_annot *a = pdf_first_annot(ctx, loaded); a; a = pdf_next_annot(ctx, a)) {
            // One annotation MuPDF cannot draw must not keep the others stale.
            fz_try(ctx)
            {
                pdf_update_annot(ctx, a);
            }
            fz_catch(ctx)
            { }
        }
    });
    for (const PDFAnnotation *annotation : remade) {
        const PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(*annotation);
        AnnotationIO::adjustEngineAppearance(ctx, doc, ad.object, *annotation);
        // MuPDF makes every note icon 18 by 18; the note keeps its own size and the icon scales.
        if (dynamic_cast<const PDFAnnotationText *>(annotation)) {
            pdf_obj *const object = ad.object;
            const fz_rect rect = mu::toFz(annotation->bounds().normalized());
            mu::runQuietly(ctx, [&] { pdf_dict_put_rect(ctx, object, PDF_NAME(Rect), rect); });
        }
    }
    pd.appearancesStale = false;
}

void prepareForOutputLocked(const PDFPage &page, fz_context *ctx, int index)
{
    PDFPagePrivate &pd = PDFPagePrivate::of(page);
    if (!pd.annotationsLoaded
        || (!pd.appearancesStale && !pd.annotationsMoved && !pd.writesPending))
        return;
    mu::Error error;
    pdf_page *const loaded = pd.pageLocked(ctx, index, error);
    prepareAnnotationsLocked(page, ctx, loaded);
}

std::optional<std::vector<int>> shownAnnotationsLocked(
    const PDFPage &page, fz_context *ctx, const PDFRenderOptions &options)
{
    const PDFPagePrivate &pd = PDFPagePrivate::of(page);
    if (!pd.annotationsLoaded)
        return std::nullopt;
    const auto &included = options.includedAnnotations;
    std::vector<int> shown;
    for (const auto &annotation : pd.annotations) {
        const PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(*annotation);
        const bool displayed = ad.shouldDisplay
            || std::find(included.begin(), included.end(), annotation) != included.end();
        if (!onPageInFile(pd, ad) || !displayed || (options.forPrinting && !ad.shouldPrint))
            continue;
        shown.push_back(pdf_to_num(ctx, ad.object));
    }
    return shown;
}

void drawAppearance(const PDFAnnotation &annotation, QPainter &painter, PDFDisplayBox box)
{
    const auto page = annotation.page();
    const QRectF bounds = annotation.bounds();
    if (!page || bounds.isEmpty())
        return;
    PDFPagePrivate &pd = PDFPagePrivate::of(*page);
    const PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(annotation);
    if (!onPageInFile(pd, ad) || !painter.device())
        return;
    painter.save();
    page->transformContextForBox(painter, box);
    const QTransform toDevice = painter.deviceTransform();
    const QRect area = toDevice.mapRect(bounds).toAlignedRect().intersected(
        QRect(0, 0, painter.device()->width(), painter.device()->height()));
    if (area.isEmpty()) {
        painter.restore();
        return;
    }
    QImage image(area.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const int index = treeIndex(*page);
    bool drawn = false;
    {
        const mu::Lock lock(pd.handle->mutex());
        fz_context *ctx = mu::context();
        mu::Error error;
        pdf_page *const loaded = pd.pageLocked(ctx, index, error);
        if (loaded) {
            prepareAnnotationsLocked(*page, ctx, loaded);
            pdf_annot *const annot = findAnnot(ctx, loaded, ad.object);
            const QTransform toImage
                = toDevice * QTransform::fromTranslate(-area.left(), -area.top());
            const int width = image.width();
            const int height = image.height();
            const int stride = static_cast<int>(image.bytesPerLine());
            unsigned char *const samples = image.bits();
            mu::Pixmap pixmap;
            mu::Device device;
            drawn = annot && mu::run(ctx, error, [&] {
                const fz_matrix ctm = fz_concat(mu::fzToPageSpace(ctx, loaded), mu::toFz(toImage));
                pixmap.p = fz_new_pixmap_with_data(
                    ctx, fz_device_bgr(ctx), width, height, nullptr, 1, stride, samples);
                device.p = fz_new_draw_device(ctx, fz_identity, pixmap.p);
                pdf_run_annot(ctx, annot, device.p, ctm, nullptr);
                fz_close_device(ctx, device.p);
            });
        }
    }
    if (drawn) {
        painter.resetTransform();
        painter.drawImage(area.topLeft(), image);
    }
    painter.restore();
}

} // namespace PDFPageInternals
