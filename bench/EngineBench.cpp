// folidoc-bench engine FILE.pdf: opening, rendering, search and serialising through the engine,
// and the same rendering by plain MuPDF calls as the physical limit.

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

double msSince(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

// One full page rendered once through the engine: the page's render source drawn straight into
// an image, as thumbnails and printing do (the reading view records a display list instead and
// reuses it for every tile).
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

// The same pages by plain MuPDF calls: load, draw into a BGRA pixmap, drop.
std::vector<double> rawPageMs(const QString &path, int pages, double scale)
{
    std::vector<double> times;
    fz_context *ctx = fz_new_context(nullptr, nullptr, FZ_STORE_DEFAULT);
    if (!ctx)
        return times;
    fz_set_warning_callback(
        ctx, [](void *, const char *) {}, nullptr);
    fz_set_error_callback(
        ctx, [](void *, const char *) {}, nullptr);
    fz_register_document_handlers(ctx);
    const QByteArray name = path.toLocal8Bit();
    fz_document *doc = nullptr;
    fz_try(ctx) doc = fz_open_document(ctx, name.constData());
    fz_catch(ctx) doc = nullptr;
    for (int i = 0; doc && i < pages; ++i) {
        QElapsedTimer timer;
        timer.start();
        fz_page *page = nullptr;
        fz_pixmap *pixmap = nullptr;
        fz_device *device = nullptr;
        fz_var(page);
        fz_var(pixmap);
        fz_var(device);
        fz_try(ctx)
        {
            page = fz_load_page(ctx, doc, i);
            const fz_matrix ctm = fz_scale(static_cast<float>(scale), static_cast<float>(scale));
            const fz_irect box = fz_round_rect(fz_transform_rect(fz_bound_page(ctx, page), ctm));
            pixmap = fz_new_pixmap_with_bbox(ctx, fz_device_bgr(ctx), box, nullptr, 1);
            fz_clear_pixmap_with_value(ctx, pixmap, 255);
            device = fz_new_draw_device(ctx, fz_identity, pixmap);
            fz_run_page(ctx, page, device, ctm, nullptr);
            fz_close_device(ctx, device);
        }
        fz_always(ctx)
        {
            fz_drop_device(ctx, device);
            fz_drop_pixmap(ctx, pixmap);
            fz_drop_page(ctx, page);
        }
        fz_catch(ctx)
        { }
        times.push_back(msSince(timer));
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

    std::vector<double> oneX;
    std::vector<double> twoX;
    for (int i = 0; i < pages; ++i) {
        oneX.push_back(enginePageMs(*doc->pageAtIndex(i), 1.0));
        twoX.push_back(enginePageMs(*doc->pageAtIndex(i), 2.0));
    }
    const double rawOneX = median(rawPageMs(path, pages, 1.0));

    const double search = searchMs(doc, searchWord(*doc));

    timer.restart();
    const QByteArray bytes = doc->dataRepresentation();
    const double serialise = msSince(timer);
    if (bytes.isEmpty())
        err << "engine: serialising failed: " << doc->errorString() << '\n';

    benchPrint(QStringLiteral("open_ms"), openMs);
    benchPrint(QStringLiteral("render_page_ms_1x"), median(oneX));
    benchPrint(QStringLiteral("render_page_ms_2x"), median(twoX));
    benchPrint(QStringLiteral("render_page_raw_mupdf_ms_1x"), rawOneX);
    benchPrint(QStringLiteral("search_ms"), search);
    benchPrint(QStringLiteral("serialise_ms"), serialise);
    return bytes.isEmpty() ? 1 : 0;
}

const BenchRegistration registration(
    QStringLiteral("engine"), QStringLiteral("FILE.pdf"), runEngineBench);

} // namespace
