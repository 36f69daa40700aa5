#include "PDFPage.h"

#include "PDFDisplayList.h"
#include "PDFDocument.h"
#include "PDFDocumentPrivate.h"
#include "PDFPagePrivate.h"
#include "PDFPageRenderSource.h"
#include "PDFRenderPrivate.h"
#include "PageGeometry.h"
#include "TiffWriter.h"

#include <kit/base/NotificationCenter.h>

#include <QBuffer>
#include <QPainter>

#include <cmath>

namespace {

QRectF rectOf(fz_context *ctx, pdf_obj *array)
{
    return mu::fromFz(pdf_to_rect(ctx, array)).normalized();
}

// A page made from scratch lives alone in a document of its own until it joins another one.
bool bindToNewPage(PDFPagePrivate &d, fz_rect mediabox, QString *errorText,
    const std::function<void(fz_context *, pdf_document *, pdf_obj **resources, fz_buffer **)>
        &fill)
{
    auto handle = mu::DocumentHandle::createEmpty(errorText);
    if (!handle)
        return false;
    const mu::Lock lock(handle->mutex());
    fz_context *ctx = mu::context();
    pdf_document *const doc = handle->doc();
    mu::Object resources;
    mu::Buffer contents;
    fill(ctx, doc, &resources.p, &contents.p);
    pdf_obj *page = nullptr;
    mu::Error error;
    mu::run(ctx, error, [&] {
        if (!resources.p)
            resources.p = pdf_new_dict(ctx, doc, 1);
        if (!contents.p)
            contents.p = fz_new_buffer(ctx, 1);
        page = pdf_add_page(ctx, doc, mediabox, 0, resources.p, contents.p);
        pdf_insert_page(ctx, doc, 0, page);
    });
    if (error.failed) {
        if (page)
            mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, page); });
        if (errorText)
            *errorText = error.text();
        return false;
    }
    d.bind(handle, page, true);
    return true;
}

} // namespace

PDFPagePrivate &PDFPagePrivate::of(const PDFPage &page)
{
    return *page.d;
}

PDFPagePrivate::~PDFPagePrivate()
{
    if (!handle)
        return;
    const mu::Lock lock(handle->mutex());
    dropReferencesLocked();
}

void PDFPagePrivate::dropReferencesLocked()
{
    fz_context *ctx = mu::context();
    pdf_page *const oldPage = std::exchange(page, nullptr);
    pdf_obj *const oldObject = std::exchange(object, nullptr);
    mu::runQuietly(ctx, [&] {
        fz_drop_page(ctx, oldPage ? &oldPage->super : nullptr);
        pdf_drop_obj(ctx, oldObject);
    });
}

void PDFPagePrivate::bind(
    const std::shared_ptr<mu::DocumentHandle> &newHandle, pdf_obj *obj, bool lockHeld)
{
    if (handle) {
        // Annotations move with the page: each remembers where its copy will be.
        const bool moving = newHandle != handle && !annotations.empty();
        if (lockHeld) {
            if (moving)
                PDFPageInternals::detachAnnotationsLocked(*this, mu::context());
            dropReferencesLocked();
        } else {
            const mu::Lock lock(handle->mutex());
            if (moving)
                PDFPageInternals::detachAnnotationsLocked(*this, mu::context());
            dropReferencesLocked();
        }
    }
    handle = newHandle;
    object = obj;
    boxesValid = false;
    text.reset();
    ++revision;
    ++contentRevision;
    contentWithin.reset();
}

void PDFPagePrivate::didLoadAnnotations(PDFPage &page)
{
    page.didLoadAnnotations();
}

pdf_page *PDFPagePrivate::pageLocked(fz_context *ctx, int index, mu::Error &error)
{
    if (page || !handle || !object)
        return page;
    pdf_document *const doc = handle->doc();
    pdf_obj *const wanted = object;
    pdf_page *loaded = nullptr;
    mu::run(ctx, error, [&] {
        loaded = pdf_load_page(ctx, doc, index);
        if (pdf_to_num(ctx, loaded->obj) != pdf_to_num(ctx, wanted))
            fz_throw(ctx, FZ_ERROR_GENERIC, "page tree and page list disagree");
    });
    if (error.failed) {
        if (loaded)
            mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &loaded->super); });
        return nullptr;
    }
    page = loaded;
    return page;
}

namespace PDFPageInternals {

int treeIndex(const PDFPage &page)
{
    if (const auto document = page.document())
        return document->indexForPage(std::const_pointer_cast<PDFPage>(page.shared_from_this()));
    return 0;
}

void loadBoxes(const PDFPage &page)
{
    const PDFPagePrivate &d = PDFPagePrivate::of(page);
    if (d.boxesValid || !d.handle)
        return;
    const mu::Lock lock(d.handle->mutex());
    loadBoxesLocked(page);
}

void loadBoxesLocked(const PDFPage &page)
{
    PDFPagePrivate &d = PDFPagePrivate::of(page);
    if (d.boxesValid || !d.handle)
        return;
    fz_context *ctx = mu::context();
    pdf_obj *const obj = d.object;
    fz_rect media = fz_make_rect(0, 0, 612, 792);
    fz_rect crop = fz_make_rect(0, 0, 0, 0);
    int rotate = 0;
    mu::Error error;
    mu::run(ctx, error, [&] {
        pdf_obj *mediaObj = pdf_dict_get_inheritable(ctx, obj, PDF_NAME(MediaBox));
        if (pdf_is_array(ctx, mediaObj))
            media = pdf_to_rect(ctx, mediaObj);
        pdf_obj *cropObj = pdf_dict_get_inheritable(ctx, obj, PDF_NAME(CropBox));
        if (pdf_is_array(ctx, cropObj))
            crop = pdf_to_rect(ctx, cropObj);
        rotate = pdf_to_int(ctx, pdf_dict_get_inheritable(ctx, obj, PDF_NAME(Rotate)));
    });
    d.mediaBox = mu::fromFz(media).normalized();
    if (d.mediaBox.isEmpty())
        d.mediaBox = QRectF(0, 0, 612, 792);
    const QRectF cropRect = mu::fromFz(crop).normalized();
    d.cropBox = cropRect.isEmpty() ? d.mediaBox : cropRect.intersected(d.mediaBox);
    if (d.cropBox.isEmpty())
        d.cropBox = d.mediaBox;
    d.rotation = PageGeometry::normalizedRotation(rotate);
    d.boxesValid = true;
}

std::shared_ptr<const TextLayout> textLayout(const PDFPage &page)
{
    PDFPagePrivate &d = PDFPagePrivate::of(page);
    if (d.text && d.textRevision == d.contentRevision)
        return d.text;
    if (!d.handle)
        return std::make_shared<TextLayout>();
    const int index = treeIndex(page);
    const mu::Lock lock(d.handle->mutex());
    fz_context *ctx = mu::context();
    mu::Error error;
    pdf_page *loaded = d.pageLocked(ctx, index, error);
    std::shared_ptr<const TextLayout> layout;
    if (loaded)
        layout = TextLayout::build(ctx, loaded, nullptr, error);
    d.text = layout ? layout : std::make_shared<TextLayout>();
    d.textRevision = d.contentRevision;
    return d.text;
}

QString pageText(const PDFPage &page)
{
    const PDFPagePrivate &d = PDFPagePrivate::of(page);
    if (!(d.text && d.textRevision == d.contentRevision) && !d.foundText.isNull()
        && d.foundTextRevision == d.contentRevision)
        return d.foundText;
    return textLayout(page)->text;
}

void setFoundText(const PDFPage &page, quint64 contentRevision, const QString &text)
{
    PDFPagePrivate &d = PDFPagePrivate::of(page);
    if (contentRevision != d.contentRevision || (d.text && d.textRevision == d.contentRevision))
        return;
    d.foundText = text;
    d.foundTextRevision = contentRevision;
}

pdf_obj *graftPage(
    fz_context *ctx, pdf_document *target, pdf_document *source, pdf_obj *page, mu::Error &error)
{
    Q_UNUSED(source);
    static pdf_obj *const inheritable[]
        = { PDF_NAME(Resources), PDF_NAME(MediaBox), PDF_NAME(CropBox), PDF_NAME(Rotate) };
    static pdf_obj *const plain[] = { PDF_NAME(Contents), PDF_NAME(BleedBox), PDF_NAME(TrimBox),
        PDF_NAME(ArtBox), PDF_NAME(UserUnit), PDF_NAME(Group) };
    mu::GraftMap map;
    mu::Object dict;
    pdf_obj *result = nullptr;
    mu::run(ctx, error, [&] {
        map.p = pdf_new_graft_map(ctx, target);
        dict.p = pdf_new_dict(ctx, target, 8);
        pdf_dict_put(ctx, dict.p, PDF_NAME(Type), PDF_NAME(Page));
        for (pdf_obj *key : inheritable) {
            pdf_obj *value = pdf_dict_get_inheritable(ctx, page, key);
            if (value)
                pdf_dict_put_drop(ctx, dict.p, key, pdf_graft_mapped_object(ctx, map.p, value));
        }
        for (pdf_obj *key : plain) {
            pdf_obj *value = pdf_dict_get(ctx, page, key);
            if (value)
                pdf_dict_put_drop(ctx, dict.p, key, pdf_graft_mapped_object(ctx, map.p, value));
        }
        result = pdf_add_object(ctx, target, dict.p);
        PDFPageInternals::graftAnnotations(ctx, target, map.p, page, result);
    });
    return error.failed ? nullptr : result;
}

} // namespace PDFPageInternals

PDFPage::PDFPage()
    : d(std::make_unique<PDFPagePrivate>())
{ }

PDFPage::~PDFPage() = default;

bool PDFPage::init()
{
    return bindToNewPage(*d, fz_make_rect(0, 0, 612, 792), nullptr,
        [](fz_context *, pdf_document *, pdf_obj **, fz_buffer **) {});
}

bool PDFPage::initWithImage(const QImage &image)
{
    if (image.isNull())
        return false;
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG"))
        return false;
    return initWithImageData(png);
}

bool PDFPage::initWithImageData(const QByteArray &encoded)
{
    if (encoded.isEmpty())
        return false;
    fz_context *ctx = mu::context();
    mu::Image image;
    mu::Buffer data;
    int xres = 72;
    int yres = 72;
    int width = 0;
    int height = 0;
    mu::Error error;
    const auto *bytes = reinterpret_cast<const unsigned char *>(encoded.constData());
    const size_t size = static_cast<size_t>(encoded.size());
    mu::run(ctx, error, [&] {
        data.p = fz_new_buffer_from_copied_data(ctx, bytes, size);
        image.p = fz_new_image_from_buffer(ctx, data.p);
        fz_image_resolution(image.p, &xres, &yres);
        width = image.p->w;
        height = image.p->h;
    });
    if (error.failed || width <= 0 || height <= 0) {
        // Formats MuPDF does not decode go through Qt.
        const QImage decoded = QImage::fromData(encoded);
        return !decoded.isNull() && initWithImage(decoded);
    }
    const float w = width * 72.0f / static_cast<float>(xres > 0 ? xres : 72);
    const float h = height * 72.0f / static_cast<float>(yres > 0 ? yres : 72);
    fz_image *const picture = image.p;
    return bindToNewPage(*d, fz_make_rect(0, 0, w, h), nullptr,
        [&](fz_context *c, pdf_document *doc, pdf_obj **resources, fz_buffer **contents) {
            mu::Error ignored;
            mu::run(c, ignored, [&] {
                pdf_obj *ref = pdf_add_image(c, doc, picture);
                *resources = pdf_new_dict(c, doc, 1);
                pdf_obj *xobjects = pdf_dict_put_dict(c, *resources, PDF_NAME(XObject), 1);
                pdf_dict_puts_drop(c, xobjects, "Im0", ref);
                *contents = fz_new_buffer(c, 64);
                fz_append_printf(c, *contents, "q %g 0 0 %g 0 0 cm /Im0 Do Q", w, h);
            });
        });
}

std::shared_ptr<PDFDocument> PDFPage::document() const
{
    return d->document.lock();
}

QRectF PDFPage::boundsForBox(PDFDisplayBox box) const
{
    PDFPageInternals::loadBoxes(*this);
    if (!d->handle)
        return QRectF(0, 0, 612, 792);
    switch (box) {
    case PDFDisplayBox::MediaBox:
        return d->mediaBox;
    case PDFDisplayBox::CropBox:
        return d->cropBox;
    default:
        break;
    }
    pdf_obj *key = box == PDFDisplayBox::BleedBox ? PDF_NAME(BleedBox)
        : box == PDFDisplayBox::TrimBox           ? PDF_NAME(TrimBox)
                                                  : PDF_NAME(ArtBox);
    const mu::Lock lock(d->handle->mutex());
    fz_context *ctx = mu::context();
    pdf_obj *const obj = d->object;
    QRectF result;
    mu::Error error;
    mu::run(ctx, error, [&] {
        pdf_obj *value = pdf_dict_get(ctx, obj, key);
        if (pdf_is_array(ctx, value))
            result = rectOf(ctx, value);
    });
    result = result.intersected(d->mediaBox);
    return result.isEmpty() ? d->cropBox : result;
}

void PDFPage::setBoundsForBox(const QRectF &bounds, PDFDisplayBox box)
{
    if (!d->handle || bounds.isEmpty())
        return;
    pdf_obj *key = box == PDFDisplayBox::MediaBox ? PDF_NAME(MediaBox)
        : box == PDFDisplayBox::CropBox           ? PDF_NAME(CropBox)
        : box == PDFDisplayBox::BleedBox          ? PDF_NAME(BleedBox)
        : box == PDFDisplayBox::TrimBox           ? PDF_NAME(TrimBox)
                                                  : PDF_NAME(ArtBox);
    {
        const mu::Lock lock(d->handle->mutex());
        fz_context *ctx = mu::context();
        pdf_obj *const obj = d->object;
        const fz_rect rect = mu::toFz(bounds.normalized());
        mu::runQuietly(ctx, [&] { pdf_dict_put_rect(ctx, obj, key, rect); });
    }
    noteContentChanged();
}

int PDFPage::rotation() const
{
    PDFPageInternals::loadBoxes(*this);
    return d->rotation;
}

void PDFPage::setRotation(int degrees)
{
    if (!d->handle)
        return;
    const int rotation = PageGeometry::normalizedRotation(degrees);
    {
        const mu::Lock lock(d->handle->mutex());
        fz_context *ctx = mu::context();
        pdf_obj *const obj = d->object;
        mu::runQuietly(ctx, [&] { pdf_dict_put_int(ctx, obj, PDF_NAME(Rotate), rotation); });
    }
    noteContentChanged();
    if (const auto owner = document())
        NotificationCenter::defaultCenter().post(
            PDFDocument::PagesDidChangeNotification, owner.get());
}

QString PDFPage::label() const
{
    const auto doc = document();
    if (!doc)
        return {};
    return doc->d->labelForIndex(
        doc->indexForPage(std::const_pointer_cast<PDFPage>(shared_from_this())));
}

void PDFPage::drawWithBox(QPainter &painter, PDFDisplayBox box) const
{
    const auto source = renderSource(box);
    if (!source)
        return;
    const PageGeometry geometry = source->geometry();
    const QRectF target(QPointF(0, 0), geometry.viewSize());
    if (target.isEmpty())
        return;
    const QRectF device = painter.deviceTransform().mapRect(target);
    const QSize pixels(std::max(1, static_cast<int>(std::ceil(device.width()))),
        std::max(1, static_cast<int>(std::ceil(device.height()))));
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    const QTransform toImage = geometry.pageToView()
        * QTransform::fromScale(pixels.width() / target.width(), pixels.height() / target.height());
    if (source->render(image, toImage))
        painter.drawImage(target, image);
}

void PDFPage::transformContextForBox(QPainter &painter, PDFDisplayBox box) const
{
    painter.setTransform(PageGeometry(boundsForBox(box), rotation()).pageToView(), true);
}

QImage PDFPage::imageForBox(PDFDisplayBox box, const QSize &pixels, bool forPrinting) const
{
    PDFRenderOptions options;
    options.forPrinting = forPrinting;
    return imageForBox(box, pixels, options);
}

QImage PDFPage::imageForBox(
    PDFDisplayBox box, const QSize &pixels, const PDFRenderOptions &options) const
{
    if (pixels.isEmpty())
        return {};
    const auto source = renderSource(box, options);
    if (!source)
        return {};
    const QSizeF size = source->geometry().viewSize();
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    const QTransform toImage = source->geometry().pageToView()
        * QTransform::fromScale(pixels.width() / size.width(), pixels.height() / size.height());
    return source->render(image, toImage) ? image : QImage();
}

std::shared_ptr<PDFPage> PDFPage::newPageOfSameClass() const
{
    std::shared_ptr<PDFPage> page = d->factory ? d->factory() : nullptr;
    if (!page)
        page = std::make_shared<PDFPage>();
    page->d->factory = d->factory;
    return page;
}

std::shared_ptr<PDFPage> PDFPage::copy() const
{
    if (!d->handle)
        return nullptr;
    QString failure;
    auto scratch = mu::DocumentHandle::createEmpty(&failure);
    if (!scratch)
        return nullptr;
    auto page = newPageOfSameClass();
    const auto owner = document();
    page->d->delegate = owner ? owner->delegate() : d->delegate.lock();
    const int index = PDFPageInternals::treeIndex(*this);
    {
        const std::scoped_lock locks(d->handle->mutex(), scratch->mutex());
        fz_context *ctx = mu::context();
        // The copy takes the annotations' current pictures.
        PDFPageInternals::prepareForOutputLocked(*this, ctx, index);
        mu::Error error;
        pdf_obj *grafted
            = PDFPageInternals::graftPage(ctx, scratch->doc(), d->handle->doc(), d->object, error);
        if (!grafted)
            return nullptr;
        pdf_document *const doc = scratch->doc();
        mu::run(ctx, error, [&] { pdf_insert_page(ctx, doc, 0, grafted); });
        page->d->bind(scratch, grafted, true);
        if (error.failed)
            return nullptr;
    }
    return page;
}

QByteArray PDFPage::PDFDataForRect(const QRectF &rect) const
{
    const auto single = copy();
    if (!single || rect.isEmpty())
        return {};
    single->setBoundsForBox(
        rect.intersected(single->boundsForBox(PDFDisplayBox::MediaBox)), PDFDisplayBox::CropBox);
    QString error;
    return PDFDocumentPrivate::write(*single->d->handle, &error);
}

QByteArray PDFPage::TIFFDataForRect(const QRectF &rect) const
{
    const QImage image = imageForRect(rect);
    return image.isNull() ? QByteArray() : TiffWriter::encode(image);
}

QImage PDFPage::imageForRect(const QRectF &rect) const
{
    const auto source = renderSource(PDFDisplayBox::MediaBox);
    const auto list = source ? source->buildDisplayList() : nullptr;
    const QRectF area = PageGeometry(rect, rotation()).viewRect(rect);
    if (!list || area.isEmpty())
        return {};
    const QTransform toArea = PageGeometry(rect, rotation()).pageToView();
    QImage image(QSize(static_cast<int>(std::ceil(area.width())),
                     static_cast<int>(std::ceil(area.height()))),
        QImage::Format_ARGB32_Premultiplied);
    if (!list->render(image, toArea))
        return {};
    return image;
}

std::shared_ptr<PDFPageRenderSource> PDFPage::renderSource(
    PDFDisplayBox box, bool forPrinting) const
{
    PDFRenderOptions options;
    options.forPrinting = forPrinting;
    return renderSource(box, options);
}

std::shared_ptr<PDFPageRenderSource> PDFPage::renderSource(
    PDFDisplayBox box, const PDFRenderOptions &options) const
{
    if (!d->handle)
        return nullptr;
    auto data = std::make_unique<PDFPageRenderSourcePrivate>();
    data->handle = d->handle;
    data->displayBox = box;
    data->geometry = PageGeometry(boundsForBox(box), rotation());
    data->revision = d->revision;
    if (!d->contentWithin)
        d->contentWithin = std::make_shared<std::atomic<qint64>>(0);
    data->contentWithin = d->contentWithin;
    const int index = PDFPageInternals::treeIndex(*this);
    {
        const mu::Lock lock(d->handle->mutex());
        fz_context *ctx = mu::context();
        mu::Error error;
        pdf_page *loaded = d->pageLocked(ctx, index, error);
        if (!loaded)
            return nullptr;
        PDFPageInternals::prepareAnnotationsLocked(*this, ctx, loaded);
        data->annotations = PDFPageInternals::shownAnnotationsLocked(*this, ctx, options);
        data->page
            = static_cast<pdf_page *>(static_cast<void *>(fz_keep_page(ctx, &loaded->super)));
        // The contents read ahead with the file stand for the page as the file holds it.
        const auto document = d->document.lock();
        if (document && d->contentRevision == 1) {
            int number = 0;
            mu::runQuietly(ctx, [&] { number = pdf_to_num(ctx, loaded->obj); });
            data->contents = PDFDocumentPrivate::of(*document).takeFirstPageContents(number);
        }
    }
    return std::make_shared<PDFPageRenderSource>(std::move(data));
}

quint64 PDFPage::revision() const
{
    return d->revision;
}

void PDFPage::noteContentChanged()
{
    ++d->revision;
    ++d->contentRevision;
    d->contentWithin.reset();
    d->boxesValid = false;
}
