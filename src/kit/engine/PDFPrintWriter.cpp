#include "PDFPrintWriter.h"

#include "PDFPageRenderSource.h"
#include "PDFRenderPrivate.h"

#include <QCoreApplication>
#include <QTransform>

#include <algorithm>
#include <vector>

namespace {

// Name of the annotations' form in a page's XObject resources; a number is added when the page
// already uses it.
constexpr const char *AnnotationFormName = "FolidocAnnotations";
// Density of annotations that can only be printed as a picture.
constexpr float FallbackDpi = 300.0f;

struct SourceMap
{
    std::shared_ptr<mu::DocumentHandle> handle;
    mu::GraftMap map; // objects of handle's document already copied, so fonts are shared
};

// Where a page goes on its sheet: the sheet's box and rotation, and, when the page is laid on a
// chosen paper, the transform from page space to the sheet.
struct Placement
{
    QRectF mediaBox; // PDF user space of the new page
    int rotate = 0;
    bool transformed = false;
    QTransform pageToSheet; // when transformed
    QTransform pageToFz; // page space to the y-down space of the PDF device's page
};

QByteArray number(double value)
{
    return QByteArray::number(value, 'f', 4);
}

QByteArray cmOperator(const QTransform &t)
{
    return number(t.m11()) + ' ' + number(t.m12()) + ' ' + number(t.m21()) + ' ' + number(t.m22())
        + ' ' + number(t.dx()) + ' ' + number(t.dy()) + " cm\n";
}

QByteArray clipOperator(const QRectF &box)
{
    return number(box.left()) + ' ' + number(box.top()) + ' ' + number(box.width()) + ' '
        + number(box.height()) + " re W n\n";
}

Placement place(const PageGeometry &geometry, const QSizeF &paper, bool autoRotate)
{
    Placement placement;
    if (paper.isEmpty()) {
        placement.mediaBox = geometry.box();
        placement.rotate = geometry.rotation();
        placement.pageToFz = geometry.pageToView();
        return placement;
    }
    const QSizeF natural = geometry.viewSize();
    const bool turn
        = autoRotate && (natural.width() > natural.height()) != (paper.width() > paper.height());
    const PageGeometry laid(geometry.box(), geometry.rotation() + (turn ? 90 : 0));
    const QSizeF seen = laid.viewSize();
    const double fit = std::min(paper.width() / std::max(seen.width(), 1e-3),
        paper.height() / std::max(seen.height(), 1e-3));
    const QPointF offset(
        (paper.width() - seen.width() * fit) / 2, (paper.height() - seen.height() * fit) / 2);
    const QTransform toView
        = laid.pageToView(fit) * QTransform::fromTranslate(offset.x(), offset.y());
    placement.mediaBox = QRectF(QPointF(0, 0), paper);
    placement.transformed = true;
    placement.pageToFz = toView;
    placement.pageToSheet = toView * QTransform(1, 0, 0, -1, 0, paper.height());
    return placement;
}

bool isShown(const PDFPageRenderSourcePrivate &source, fz_context *ctx, pdf_annot *annot)
{
    if (!source.annotations)
        return true;
    const int object = pdf_to_num(ctx, pdf_annot_obj(ctx, annot));
    return std::find(source.annotations->begin(), source.annotations->end(), object)
        != source.annotations->end();
}

// The shown annotations and form fields, in page space. Plain MuPDF calls.
void runAnnotations(
    const PDFPageRenderSourcePrivate &source, fz_context *ctx, fz_device *device, fz_matrix ctm)
{
    pdf_page *const page = source.page;
    for (int pass = 0; pass < 2; ++pass) {
        for (pdf_annot *annot = pass ? pdf_first_widget(ctx, page) : pdf_first_annot(ctx, page);
             annot; annot = pass ? pdf_next_widget(ctx, annot) : pdf_next_annot(ctx, annot)) {
            if (isShown(source, ctx, annot))
                pdf_run_annot(ctx, annot, device, ctm, nullptr);
        }
    }
}

bool hasShownAnnotations(const PDFPageRenderSourcePrivate &source, fz_context *ctx)
{
    if (source.annotations && source.annotations->empty())
        return false;
    bool any = false;
    mu::runQuietly(ctx, [&] {
        for (int pass = 0; pass < 2 && !any; ++pass) {
            for (pdf_annot *annot
                 = pass ? pdf_first_widget(ctx, source.page) : pdf_first_annot(ctx, source.page);
                 annot && !any;
                 annot = pass ? pdf_next_widget(ctx, annot) : pdf_next_annot(ctx, annot))
                any = isShown(source, ctx, annot);
        }
    });
    return any;
}

fz_buffer *newBuffer(fz_context *ctx, const QByteArray &bytes)
{
    return fz_new_buffer_from_copied_data(
        ctx, reinterpret_cast<const unsigned char *>(bytes.constData()), size_t(bytes.size()));
}

} // namespace

struct PDFPrintWriterPrivate
{
    // The shown annotations as a new form in page space (null when they draw nothing): drawn
    // through the PDF device, or as one picture.
    pdf_obj *annotationForm(
        const PDFPageRenderSourcePrivate &source, fz_context *ctx, bool asImage, mu::Error &error);
    pdf_graft_map *mapFor(
        const std::shared_ptr<mu::DocumentHandle> &handle, fz_context *ctx, mu::Error &error);
    // The page's content copied, the annotations drawn over it as one form.
    bool copyPage(const PDFPageRenderSourcePrivate &source, const Placement &placement,
        pdf_graft_map *map, fz_context *ctx, mu::Error &error);
    // The whole page drawn through the PDF device: for content that cannot be copied.
    bool drawPage(const PDFPageRenderSourcePrivate &source, const Placement &placement,
        fz_context *ctx, mu::Error &error);

    std::shared_ptr<mu::DocumentHandle> out;
    std::vector<SourceMap> sources;
    QSizeF paper;
    bool autoRotate = true;
    int pages = 0;
    QString error;
};

pdf_graft_map *PDFPrintWriterPrivate::mapFor(
    const std::shared_ptr<mu::DocumentHandle> &handle, fz_context *ctx, mu::Error &failure)
{
    for (SourceMap &source : sources) {
        if (source.handle == handle)
            return source.map.p;
    }
    SourceMap added { handle, {} };
    pdf_document *const doc = out->doc();
    if (!mu::run(ctx, failure, [&] { added.map.p = pdf_new_graft_map(ctx, doc); }))
        return nullptr;
    sources.push_back(std::move(added));
    return sources.back().map.p;
}

pdf_obj *PDFPrintWriterPrivate::annotationForm(
    const PDFPageRenderSourcePrivate &source, fz_context *ctx, bool asImage, mu::Error &failure)
{
    pdf_document *const doc = out->doc();
    const fz_matrix fzToPage = mu::fzToPageSpace(ctx, source.page);
    const fz_rect box = mu::toFz(source.geometry.box());
    const float scale = FallbackDpi / 72.0f;
    mu::Object resources;
    mu::Buffer content;
    mu::Device device;
    mu::Pixmap pixmap;
    mu::Device draw;
    mu::Image image;
    pdf_obj *form = nullptr;
    mu::run(ctx, failure, [&] {
        resources.p = pdf_new_dict(ctx, doc, 4);
        content.p = fz_new_buffer(ctx, 1024);
        device.p = pdf_new_pdf_device(ctx, doc, fz_identity, resources.p, content.p);
        if (!asImage) {
            runAnnotations(source, ctx, device.p, fzToPage);
        } else {
            const fz_irect pixels = fz_round_rect(
                fz_transform_rect(pdf_bound_page(ctx, source.page), fz_scale(scale, scale)));
            pixmap.p = fz_new_pixmap_with_bbox(ctx, fz_device_rgb(ctx), pixels, nullptr, 1);
            fz_clear_pixmap(ctx, pixmap.p);
            draw.p = fz_new_draw_device(ctx, fz_identity, pixmap.p);
            runAnnotations(source, ctx, draw.p, fz_scale(scale, scale));
            fz_close_device(ctx, draw.p);
            image.p = fz_new_image_from_pixmap(ctx, pixmap.p, nullptr);
            // The image's unit square onto its pixels' place, in MuPDF's page space.
            const fz_matrix placed
                = fz_make_matrix(static_cast<float>(pixels.x1 - pixels.x0) / scale, 0, 0,
                    static_cast<float>(pixels.y1 - pixels.y0) / scale,
                    static_cast<float>(pixels.x0) / scale, static_cast<float>(pixels.y0) / scale);
            fz_fill_image(
                ctx, device.p, image.p, fz_concat(placed, fzToPage), 1.0f, fz_default_color_params);
        }
        fz_close_device(ctx, device.p);
        if (content.p->len > 0)
            form = pdf_new_xobject(ctx, doc, box, fz_identity, resources.p, content.p);
    });
    return form;
}

bool PDFPrintWriterPrivate::copyPage(const PDFPageRenderSourcePrivate &source,
    const Placement &placement, pdf_graft_map *map, fz_context *ctx, mu::Error &failure)
{
    pdf_document *const doc = out->doc();
    pdf_obj *const original = source.page->obj;
    const QRectF box = source.geometry.box();
    const bool annotated = hasShownAnnotations(source, ctx);

    // The annotations as one form in page space; as a picture when the PDF device cannot carry
    // what they draw (a font it cannot embed).
    mu::Object form;
    if (annotated) {
        form.p = annotationForm(source, ctx, false, failure);
        if (failure.failed) {
            mu::Error again;
            form.p = annotationForm(source, ctx, true, again);
            if (again.failed)
                return false;
            failure = mu::Error();
        }
    }

    // The page's resources, with the form when there is one.
    mu::Object resources;
    char formName[64] = {};
    bool ok = mu::run(ctx, failure, [&] {
        pdf_obj *const sourceResources
            = pdf_dict_get_inheritable(ctx, original, PDF_NAME(Resources));
        if (!form.p) {
            resources.p = sourceResources ? pdf_graft_mapped_object(ctx, map, sourceResources)
                                          : pdf_new_dict(ctx, doc, 1);
            return;
        }
        // The copied dictionary may be shared with other pages: this page gets its own.
        pdf_obj *const copied
            = sourceResources ? pdf_graft_mapped_object(ctx, map, sourceResources) : nullptr;
        pdf_obj *const resolved = copied ? pdf_resolve_indirect(ctx, copied) : nullptr;
        resources.p
            = pdf_is_dict(ctx, resolved) ? pdf_copy_dict(ctx, resolved) : pdf_new_dict(ctx, doc, 1);
        pdf_drop_obj(ctx, copied);
        pdf_obj *const xobjects = pdf_dict_get(ctx, resources.p, PDF_NAME(XObject));
        pdf_obj *const own
            = pdf_is_dict(ctx, xobjects) ? pdf_copy_dict(ctx, xobjects) : pdf_new_dict(ctx, doc, 1);
        pdf_dict_put_drop(ctx, resources.p, PDF_NAME(XObject), own);
        fz_snprintf(formName, sizeof formName, "%s", AnnotationFormName);
        for (int n = 1; pdf_dict_gets(ctx, own, formName); ++n)
            fz_snprintf(formName, sizeof formName, "%s%d", AnnotationFormName, n);
        pdf_dict_puts(ctx, own, formName, form.p);
    });
    if (!ok)
        return false;

    // Content: the page's own streams, bracketed when something is drawn before or after them.
    const bool wrapped = placement.transformed || form.p;
    QByteArray prefix = "q\n";
    QByteArray suffix = "\nQ\n";
    if (placement.transformed)
        prefix += cmOperator(placement.pageToSheet) + clipOperator(box);
    if (form.p) {
        suffix += "q\n";
        if (placement.transformed)
            suffix += cmOperator(placement.pageToSheet);
        suffix += '/' + QByteArray(formName) + " Do\nQ\n";
    }
    const QRectF mediaBox = placement.mediaBox;
    const int rotate = placement.rotate;
    mu::Buffer prefixBuffer;
    mu::Buffer suffixBuffer;
    mu::Object contents;
    mu::Object page;
    mu::Object pageRef;
    return mu::run(ctx, failure, [&] {
        pdf_obj *const sourceContents = pdf_dict_get(ctx, original, PDF_NAME(Contents));
        if (!wrapped) {
            if (sourceContents)
                contents.p = pdf_graft_mapped_object(ctx, map, sourceContents);
        } else {
            prefixBuffer.p = newBuffer(ctx, prefix);
            suffixBuffer.p = newBuffer(ctx, suffix);
            contents.p = pdf_new_array(ctx, doc, 4);
            pdf_array_push_drop(
                ctx, contents.p, pdf_add_stream(ctx, doc, prefixBuffer.p, nullptr, 0));
            if (pdf_is_array(ctx, sourceContents)) {
                const int count = pdf_array_len(ctx, sourceContents);
                for (int i = 0; i < count; ++i)
                    pdf_array_push_drop(ctx, contents.p,
                        pdf_graft_mapped_object(ctx, map, pdf_array_get(ctx, sourceContents, i)));
            } else if (sourceContents) {
                pdf_array_push_drop(
                    ctx, contents.p, pdf_graft_mapped_object(ctx, map, sourceContents));
            }
            pdf_array_push_drop(
                ctx, contents.p, pdf_add_stream(ctx, doc, suffixBuffer.p, nullptr, 0));
        }
        page.p = pdf_new_dict(ctx, doc, 6);
        pdf_dict_put(ctx, page.p, PDF_NAME(Type), PDF_NAME(Page));
        pdf_dict_put_rect(ctx, page.p, PDF_NAME(MediaBox), mu::toFz(mediaBox));
        if (rotate)
            pdf_dict_put_int(ctx, page.p, PDF_NAME(Rotate), rotate);
        pdf_dict_put(ctx, page.p, PDF_NAME(Resources), resources.p);
        if (contents.p)
            pdf_dict_put(ctx, page.p, PDF_NAME(Contents), contents.p);
        if (pdf_obj *group = pdf_dict_get(ctx, original, PDF_NAME(Group)))
            pdf_dict_put_drop(
                ctx, page.p, PDF_NAME(Group), pdf_graft_mapped_object(ctx, map, group));
        pageRef.p = pdf_add_object(ctx, doc, page.p);
        pdf_insert_page(ctx, doc, -1, pageRef.p);
    });
}

bool PDFPrintWriterPrivate::drawPage(const PDFPageRenderSourcePrivate &source,
    const Placement &placement, fz_context *ctx, mu::Error &failure)
{
    pdf_document *const doc = out->doc();
    const QSizeF sheet
        = placement.transformed ? placement.mediaBox.size() : source.geometry.viewSize();
    const fz_rect mediabox
        = fz_make_rect(0, 0, static_cast<float>(sheet.width()), static_cast<float>(sheet.height()));
    const fz_matrix ctm
        = fz_concat(mu::fzToPageSpace(ctx, source.page), mu::toFz(placement.pageToFz));
    pdf_page *const page = source.page;
    mu::Device device;
    mu::Buffer contents;
    mu::Object resources;
    mu::Object pageRef;
    return mu::run(ctx, failure, [&] {
        device.p = pdf_page_write(ctx, doc, mediabox, &resources.p, &contents.p);
        pdf_run_page_contents(ctx, page, device.p, ctm, nullptr);
        runAnnotations(source, ctx, device.p, ctm);
        fz_close_device(ctx, device.p);
        pageRef.p = pdf_add_page(ctx, doc, mediabox, 0, resources.p, contents.p);
        pdf_insert_page(ctx, doc, -1, pageRef.p);
    });
}

PDFPrintWriter::PDFPrintWriter()
    : d(std::make_unique<PDFPrintWriterPrivate>())
{ }

PDFPrintWriter::~PDFPrintWriter() = default;

void PDFPrintWriter::setPaper(const QSizeF &paper, bool autoRotate)
{
    d->paper = paper;
    d->autoRotate = autoRotate;
}

bool PDFPrintWriter::addPage(const PDFPageRenderSource &page)
{
    const PDFPageRenderSourcePrivate &source = *page.d;
    if (!source.page || !source.handle) {
        d->error = QCoreApplication::translate("PDFPrintWriter", "The page has nothing to print");
        return false;
    }
    if (!d->out) {
        d->out = mu::DocumentHandle::createEmpty(&d->error);
        if (!d->out)
            return false;
    }
    const Placement placement = place(source.geometry, d->paper, d->autoRotate);
    fz_context *ctx = mu::context();
    mu::Error failure;
    bool added = false;
    {
        const std::scoped_lock locks(source.handle->mutex(), d->out->mutex());
        pdf_graft_map *const map = d->mapFor(source.handle, ctx, failure);
        added = map && d->copyPage(source, placement, map, ctx, failure);
        // What cannot be copied as it stands is drawn as the screen shows it.
        if (!added && map)
            added = d->drawPage(source, placement, ctx, failure);
    }
    if (!added) {
        d->error = QCoreApplication::translate("PDFPrintWriter", "Page %1 could not be written: %2")
                       .arg(d->pages + 1)
                       .arg(failure.text());
        return false;
    }
    ++d->pages;
    return true;
}

int PDFPrintWriter::pageCount() const
{
    return d->pages;
}

QByteArray PDFPrintWriter::finish()
{
    if (!d->out || d->pages == 0) {
        d->error = QCoreApplication::translate("PDFPrintWriter", "There are no pages to print");
        return {};
    }
    const mu::Lock lock(d->out->mutex());
    fz_context *ctx = mu::context();
    pdf_document *const doc = d->out->doc();
    mu::Buffer buffer;
    mu::Output output;
    mu::Error failure;
    QByteArray bytes;
    mu::run(ctx, failure, [&] {
        pdf_write_options options;
        pdf_parse_write_options(ctx, &options, "compress");
        buffer.p = fz_new_buffer(ctx, 1 << 20);
        output.p = fz_new_output_with_buffer(ctx, buffer.p);
        pdf_write_document(ctx, doc, output.p, &options);
        fz_close_output(ctx, output.p);
    });
    if (failure.failed) {
        d->error = QCoreApplication::translate(
            "PDFPrintWriter", "The print document could not be written: %1")
                       .arg(failure.text());
        return {};
    }
    bytes = QByteArray(reinterpret_cast<const char *>(buffer.p->data), qsizetype(buffer.p->len));
    if (bytes.isEmpty())
        d->error = QCoreApplication::translate(
            "PDFPrintWriter", "Out of memory while writing the print document");
    return bytes;
}

QString PDFPrintWriter::errorString() const
{
    return d->error;
}
