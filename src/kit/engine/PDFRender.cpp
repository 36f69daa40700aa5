#include "PDFCancellation.h"
#include "PDFDisplayList.h"
#include "PDFPageRenderSource.h"
#include "PDFRenderPrivate.h"
#include "PDFWorkLimits.h"

#include <algorithm>

namespace mu {

fz_matrix toFz(const QTransform &t)
{
    return fz_make_matrix(static_cast<float>(t.m11()), static_cast<float>(t.m12()),
        static_cast<float>(t.m21()), static_cast<float>(t.m22()), static_cast<float>(t.dx()),
        static_cast<float>(t.dy()));
}

QTransform fromFz(const fz_matrix &m)
{
    return QTransform(m.a, m.b, m.c, m.d, m.e, m.f);
}

QRectF fromFz(const fz_rect &r)
{
    return QRectF(QPointF(r.x0, r.y0), QPointF(r.x1, r.y1));
}

fz_rect toFz(const QRectF &r)
{
    return fz_make_rect(static_cast<float>(r.left()), static_cast<float>(r.top()),
        static_cast<float>(r.right()), static_cast<float>(r.bottom()));
}

fz_matrix pageSpaceToFz(fz_context *ctx, pdf_page *page)
{
    fz_rect mediabox;
    fz_matrix ctm;
    pdf_page_transform(ctx, page, &mediabox, &ctm);
    return ctm;
}

fz_matrix fzToPageSpace(fz_context *ctx, pdf_page *page)
{
    return fz_invert_matrix(pageSpaceToFz(ctx, page));
}

CookieScope::CookieScope(PDFCancellation *cancel)
    : m_cancel(cancel)
{
    const PDFWorkLimits limits = PDFWorkLimits::current();
    m_contentLimit = limits.contentBytes;
    m_budget.emplace(&m_cookie.abort, limits.memoryBytes, limits.milliseconds);
    if (m_cancel)
        m_cancel->attach(&m_cookie.abort);
}

CookieScope::~CookieScope()
{
    if (m_cancel)
        m_cancel->detach(&m_cookie.abort);
    m_budget.reset();
}

bool CookieScope::aborted() const
{
    return std::atomic_ref<const int>(m_cookie.abort).load() != 0;
}

} // namespace mu

namespace {

// The shown annotations and form fields (unfiltered: all of them; an empty filter shows none).
// Plain MuPDF calls: runs inside a guarded block.
void runAnnotations(fz_context *ctx, pdf_page *page, fz_device *device, fz_matrix ctm,
    bool filtered, const int *shown, size_t shownCount, fz_cookie *cookie)
{
    for (int pass = 0; pass < 2; ++pass) {
        for (pdf_annot *annot = pass ? pdf_first_widget(ctx, page) : pdf_first_annot(ctx, page);
             annot; annot = pass ? pdf_next_widget(ctx, annot) : pdf_next_annot(ctx, annot)) {
            if (filtered) {
                const int number = pdf_to_num(ctx, pdf_annot_obj(ctx, annot));
                if (std::find(shown, shown + shownCount, number) == shown + shownCount)
                    continue;
            }
            pdf_run_annot(ctx, annot, device, ctm, cookie);
        }
    }
}

// Page contents, then the shown annotations and form fields. Plain MuPDF calls: runs inside a
// guarded block.
void runShown(fz_context *ctx, pdf_page *page, fz_device *device, fz_matrix ctm, bool filtered,
    const int *shown, size_t shownCount, fz_cookie *cookie, qint64 contentLimit,
    std::atomic<qint64> *contentWithin)
{
    // Content found within a limit is within any larger one.
    const qint64 within = contentWithin ? contentWithin->load() : 0;
    if (within <= 0 || within > contentLimit) {
        mu::checkContentLength(ctx, page, cookie, contentLimit);
        if (contentWithin && contentLimit > 0 && !std::atomic_ref<int>(cookie->abort).load())
            contentWithin->store(contentLimit);
    }
    pdf_run_page_contents(ctx, page, device, ctm, cookie);
    runAnnotations(ctx, page, device, ctm, filtered, shown, shownCount, cookie);
}

// Wraps a QImage's pixels (premultiplied ARGB32 is B, G, R, A in memory: MuPDF's BGR with
// alpha), clears them to white and runs draw() with a draw device over them.
template <class Draw> bool drawInto(QImage &target, fz_cookie *cookie, Draw &&draw)
{
    if (target.isNull() || target.format() != QImage::Format_ARGB32_Premultiplied)
        return false;
    fz_context *ctx = mu::context();
    const int width = target.width();
    const int height = target.height();
    const int stride = static_cast<int>(target.bytesPerLine());
    unsigned char *const samples = target.bits();
    mu::Pixmap pixmap;
    mu::Device device;
    mu::Error error;
    mu::run(ctx, error, [&] {
        pixmap.p = fz_new_pixmap_with_data(
            ctx, fz_device_bgr(ctx), width, height, nullptr, 1, stride, samples);
        fz_clear_pixmap_with_value(ctx, pixmap.p, 255);
        device.p = fz_new_draw_device(ctx, fz_identity, pixmap.p);
        draw(ctx, device.p,
            fz_make_rect(0, 0, static_cast<float>(width), static_cast<float>(height)), cookie);
        fz_close_device(ctx, device.p);
    });
    return !error.failed;
}

// Runs work(scope) under the document's lock, as the main thread's lock waits allow: a main
// thread asking for the lock stops the work through its cookie, and the work starts over once
// the main thread is through (sixteen times at most, then it runs through). True when the work
// succeeded and was neither cancelled nor stopped by a limit.
template <class Work>
bool giveWayToMainThread(mu::DocumentHandle &handle, PDFCancellation *cancel, Work &&work)
{
    constexpr int MaxGiveWays = 16;
    mu::DocumentMutex &mutex = handle.mutex();
    for (int attempt = 0;; ++attempt) {
        mutex.waitForMainThread();
        const bool mayGiveWay = attempt < MaxGiveWays && !mu::isMainThread();
        mu::CookieScope scope(cancel);
        bool done = false;
        bool asked = false;
        {
            const mu::Lock lock(mutex);
            if (mayGiveWay)
                mutex.offerToGiveWay(&scope.cookie()->abort);
            done = work(scope);
            asked = mayGiveWay && mutex.offerToGiveWay(nullptr);
        }
        if (!scope.aborted())
            return done;
        if (!asked || (cancel && cancel->isCancelled()))
            return false;
    }
}

} // namespace

PDFPageRenderSourcePrivate::~PDFPageRenderSourcePrivate()
{
    if (!page || !handle)
        return;
    const mu::Lock lock(handle->mutex());
    fz_context *ctx = mu::context();
    pdf_page *const dropped = page;
    mu::runQuietly(ctx, [&] { fz_drop_page(ctx, &dropped->super); });
}

PDFPageRenderSource::PDFPageRenderSource(std::unique_ptr<PDFPageRenderSourcePrivate> data)
    : d(std::move(data))
{ }

PDFPageRenderSource::~PDFPageRenderSource() = default;

PDFDisplayBox PDFPageRenderSource::displayBox() const
{
    return d->displayBox;
}

PageGeometry PDFPageRenderSource::geometry() const
{
    return d->geometry;
}

quint64 PDFPageRenderSource::revision() const
{
    return d->revision;
}

std::shared_ptr<PDFDisplayList> PDFPageRenderSource::buildDisplayList(PDFCancellation *cancel) const
{
    if (!d->page || (cancel && cancel->isCancelled()))
        return nullptr;
    const bool filtered = d->annotations.has_value();
    const int *const shown = d->annotations ? d->annotations->data() : nullptr;
    const size_t shownCount = d->annotations ? d->annotations->size() : 0;
    pdf_page *const page = d->page;
    const bool recordedAhead = bool(d->contents);
    mu::DisplayList list;
    const bool recorded = giveWayToMainThread(*d->handle, cancel, [&](mu::CookieScope &scope) {
        fz_context *ctx = mu::context();
        mu::Device device;
        mu::Error error;
        list.reset();
        mu::run(ctx, error, [&] {
            const fz_matrix toPage = mu::fzToPageSpace(ctx, page);
            const fz_rect bounds = fz_transform_rect(pdf_bound_page(ctx, page), toPage);
            list.p = fz_new_display_list(ctx, bounds);
            device.p = fz_new_list_device(ctx, list.p);
            if (recordedAhead) {
                runAnnotations(
                    ctx, page, device.p, toPage, filtered, shown, shownCount, scope.cookie());
            } else {
                runShown(ctx, page, device.p, toPage, filtered, shown, shownCount, scope.cookie(),
                    scope.contentLimit(), d->contentWithin.get());
            }
            fz_close_device(ctx, device.p);
        });
        device.reset();
        return !error.failed;
    });
    if (!recorded)
        return nullptr;
    auto data = std::make_unique<PDFDisplayListPrivate>();
    if (recordedAhead) {
        fz_context *ctx = mu::context();
        mu::runQuietly(ctx, [&] { data->contents.p = fz_keep_display_list(ctx, d->contents.p); });
    }
    data->geometry = d->geometry;
    data->revision = d->revision;
    data->list = std::move(list);
    return std::make_shared<PDFDisplayList>(std::move(data));
}

bool PDFPageRenderSource::render(
    QImage &target, const QTransform &pageToDevice, PDFCancellation *cancel) const
{
    if (!d->page || (cancel && cancel->isCancelled()))
        return false;
    const bool filtered = d->annotations.has_value();
    const int *const shown = d->annotations ? d->annotations->data() : nullptr;
    const size_t shownCount = d->annotations ? d->annotations->size() : 0;
    pdf_page *const page = d->page;
    fz_display_list *const contents = d->contents.p;
    const fz_matrix ctm = mu::toFz(pageToDevice);
    return giveWayToMainThread(*d->handle, cancel, [&](mu::CookieScope &scope) {
        const qint64 contentLimit = scope.contentLimit();
        return drawInto(target, scope.cookie(),
            [&](fz_context *ctx, fz_device *device, fz_rect area, fz_cookie *cookie) {
                const fz_matrix toDevice = fz_concat(mu::fzToPageSpace(ctx, page), ctm);
                if (contents) {
                    fz_run_display_list(ctx, contents, device, ctm, area, cookie);
                    runAnnotations(
                        ctx, page, device, toDevice, filtered, shown, shownCount, cookie);
                } else {
                    runShown(ctx, page, device, toDevice, filtered, shown, shownCount, cookie,
                        contentLimit, d->contentWithin.get());
                }
            });
    });
}

PDFDisplayList::PDFDisplayList(std::unique_ptr<PDFDisplayListPrivate> data)
    : d(std::move(data))
{ }

PDFDisplayList::~PDFDisplayList() = default;

PageGeometry PDFDisplayList::geometry() const
{
    return d->geometry;
}

quint64 PDFDisplayList::revision() const
{
    return d->revision;
}

bool PDFDisplayList::render(
    QImage &target, const QTransform &pageToDevice, PDFCancellation *cancel) const
{
    if (cancel && cancel->isCancelled())
        return false;
    mu::CookieScope cookieScope(cancel);
    fz_display_list *const contents = d->contents.p;
    fz_display_list *const list = d->list.p;
    const fz_matrix ctm = mu::toFz(pageToDevice);
    const bool drawn = drawInto(target, cookieScope.cookie(),
        [&](fz_context *ctx, fz_device *device, fz_rect area, fz_cookie *cookie) {
            if (contents)
                fz_run_display_list(ctx, contents, device, ctm, area, cookie);
            fz_run_display_list(ctx, list, device, ctm, area, cookie);
        });
    return drawn && !cookieScope.aborted();
}

QImage PDFDisplayList::renderTile(const QRect &tile, double scale, PDFCancellation *cancel) const
{
    QImage image(tile.size(), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return {};
    const QTransform toTile
        = d->geometry.pageToView(scale) * QTransform::fromTranslate(-tile.left(), -tile.top());
    if (!render(image, toTile, cancel))
        return {};
    return image;
}
