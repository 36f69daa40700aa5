// folidoc-bench engine FILE.pdf: opening, rendering, search and serialising through the engine,
// and the same rendering by plain MuPDF calls as the physical limit, cold (page loaded in the
// timer) and warm (page loaded before), with the ratios of the two.

#include "BenchCommand.h"

#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QRegularExpression>
#include <QTextStream>

extern "C" {
#include <mupdf/fitz.h>
}

#include <algorithm>
#include <vector>

namespace {

constexpr int PagesToRender = 20;
constexpr int RenderRounds = 5;

double msSince(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

// One full page rendered once through the engine: the page's render source drawn straight into
// an image, as thumbnails and printing do (the reading view records a display list instead and
// reuses it for every tile). The first call on a page of a fresh document loads the page too.
double enginePageMs(const PDFPage &page, double scale)
{
    QElapsedTimer timer;
    timer.start();
    const auto source = page.renderSource(PDFDisplayBox::CropBox);
    if (source) {
        QImage image(
            source->geometry().viewSize(scale).toSize(), QImage::Format_ARGB32_Premultiplied);
        source->render(image, source->geometry().pageToView(scale));
    }
    return msSince(timer);
}

// Each page through the engine, cold (the page loaded inside the timer, as MuPDF does below) and
// warm (the same page again, already loaded, its fonts and images in the store).
struct RenderTimes
{
    std::vector<double> cold;
    std::vector<double> warm;
};

RenderTimes engineRenderMs(const QString &path, int pages, double scale)
{
    RenderTimes times;
    auto doc = std::make_shared<PDFDocument>();
    if (!doc->initWithURL(QUrl::fromLocalFile(path)))
        return times;
    for (int i = 0; i < pages && i < doc->pageCount(); ++i) {
        const auto page = doc->pageAtIndex(i);
        times.cold.push_back(enginePageMs(*page, scale));
        times.warm.push_back(enginePageMs(*page, scale));
    }
    return times;
}

// Draws page index of doc by plain MuPDF calls into a BGRA pixmap, loading it first when *page
// is null; the loaded page is left in *page.
void rawDraw(fz_context *ctx, fz_document *doc, int index, fz_page **page, double scale)
{
    fz_pixmap *pixmap = nullptr;
    fz_device *device = nullptr;
    fz_var(pixmap);
    fz_var(device);
    fz_try(ctx)
    {
        if (!*page)
            *page = fz_load_page(ctx, doc, index);
        const fz_matrix ctm = fz_scale(static_cast<float>(scale), static_cast<float>(scale));
        const fz_irect box = fz_round_rect(fz_transform_rect(fz_bound_page(ctx, *page), ctm));
        pixmap = fz_new_pixmap_with_bbox(ctx, fz_device_bgr(ctx), box, nullptr, 1);
        fz_clear_pixmap_with_value(ctx, pixmap, 255);
        device = fz_new_draw_device(ctx, fz_identity, pixmap);
        fz_run_page(ctx, *page, device, ctm, nullptr);
        fz_close_device(ctx, device);
    }
    fz_always(ctx)
    {
        fz_drop_device(ctx, device);
        fz_drop_pixmap(ctx, pixmap);
    }
    fz_catch(ctx)
    { }
}

fz_document *rawOpen(fz_context *ctx, const QByteArray &name)
{
    fz_document *doc = nullptr;
    fz_var(doc);
    fz_try(ctx) doc = fz_open_document(ctx, name.constData());
    fz_catch(ctx) doc = nullptr;
    return doc;
}

// The same pages by plain MuPDF calls: load, draw into a BGRA pixmap, drop; cold loads the page
// inside the timer, warm draws the loaded page a second time.
RenderTimes rawRenderMs(const QString &path, int pages, double scale)
{
    RenderTimes times;
    fz_context *ctx = fz_new_context(nullptr, nullptr, FZ_STORE_DEFAULT);
    if (!ctx)
        return times;
    fz_set_warning_callback(
        ctx, [](void *, const char *) {}, nullptr);
    fz_set_error_callback(
        ctx, [](void *, const char *) {}, nullptr);
    fz_register_document_handlers(ctx);
    fz_document *doc = rawOpen(ctx, path.toLocal8Bit());
    for (int i = 0; doc && i < pages; ++i) {
        fz_page *page = nullptr;
        for (int pass = 0; pass < 2; ++pass) {
            QElapsedTimer timer;
            timer.start();
            rawDraw(ctx, doc, i, &page, scale);
            (pass ? times.warm : times.cold).push_back(msSince(timer));
        }
        fz_drop_page(ctx, page);
    }
    fz_drop_document(ctx, doc);
    fz_drop_context(ctx);
    return times;
}

// The first word of four letters or more on page 1.
QString searchWord(const PDFDocument &doc)
{
    const QString text = doc.pageCount() ? doc.pageAtIndex(0)->string() : QString();
    const auto match = QRegularExpression(QStringLiteral("\\b\\p{L}{4,}\\b")).match(text);
    return match.hasMatch() ? match.captured() : QStringLiteral("the");
}

double searchMs(const std::shared_ptr<PDFDocument> &doc, const QString &word)
{
    QEventLoop loop;
    int token = 0;
    NotificationCenter::defaultCenter().addObserver(&token, PDFDocument::DidEndFindNotification,
        doc.get(), [&](const Notification &) { loop.quit(); });
    QElapsedTimer timer;
    timer.start();
    doc->beginFindString(word, PDFDocument::CaseInsensitiveSearch);
    if (doc->isFinding())
        loop.exec();
    const double ms = msSince(timer);
    NotificationCenter::defaultCenter().removeObserver(&token);
    return ms;
}

int runEngineBench(const QStringList &arguments)
{
    QTextStream err(stderr);
    if (arguments.size() != 1) {
        err << "usage: folidoc-bench engine FILE.pdf\n";
        return 2;
    }
    const QString path = arguments.first();

    QElapsedTimer timer;
    timer.start();
    auto doc = std::make_shared<PDFDocument>();
    const bool opened = doc->initWithURL(QUrl::fromLocalFile(path));
    const double openMs = msSince(timer);
    if (!opened || doc->isLocked()) {
        err << "engine: cannot open " << path << ": "
            << (opened ? QStringLiteral("the document is locked") : doc->errorString()) << '\n';
        return 1;
    }
    const int pages = std::min(PagesToRender, doc->pageCount());

    // Kit and plain MuPDF in turns, each on a document of its own, so that both meet the same
    // load on the machine; medians over the rounds' medians.
    std::vector<double> kitCold, kitWarm, rawCold, rawWarm, twoX;
    for (int round = 0; round < RenderRounds; ++round) {
        const RenderTimes kit = engineRenderMs(path, pages, 1.0);
        const RenderTimes raw = rawRenderMs(path, pages, 1.0);
        kitCold.push_back(median(kit.cold));
        kitWarm.push_back(median(kit.warm));
        rawCold.push_back(median(raw.cold));
        rawWarm.push_back(median(raw.warm));
    }
    for (int i = 0; i < pages; ++i)
        twoX.push_back(enginePageMs(*doc->pageAtIndex(i), 2.0));

    const double search = searchMs(doc, searchWord(*doc));

    timer.restart();
    const QByteArray bytes = doc->dataRepresentation();
    const double serialise = msSince(timer);
    if (bytes.isEmpty())
        err << "engine: serialising failed: " << doc->errorString() << '\n';

    benchPrint(QStringLiteral("open_ms"), openMs);
    const double cold = median(kitCold);
    const double warm = median(kitWarm);
    const double plainCold = median(rawCold);
    const double plainWarm = median(rawWarm);
    benchPrint(QStringLiteral("render_page_ms_1x"), cold);
    benchPrint(QStringLiteral("render_page_raw_mupdf_ms_1x"), plainCold);
    benchPrint(QStringLiteral("render_page_ratio_1x"), plainCold > 0 ? cold / plainCold : 0);
    benchPrint(QStringLiteral("render_page_warm_ms_1x"), warm);
    benchPrint(QStringLiteral("render_page_raw_mupdf_warm_ms_1x"), plainWarm);
    benchPrint(QStringLiteral("render_page_warm_ratio_1x"), plainWarm > 0 ? warm / plainWarm : 0);
    benchPrint(QStringLiteral("render_page_ms_2x"), median(twoX));
    benchPrint(QStringLiteral("search_ms"), search);
    benchPrint(QStringLiteral("serialise_ms"), serialise);
    return bytes.isEmpty() ? 1 : 0;
}

const BenchRegistration registration(
    QStringLiteral("engine"), QStringLiteral("FILE.pdf"), runEngineBench);

} // namespace
