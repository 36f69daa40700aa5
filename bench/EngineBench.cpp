// folidoc-bench engine FILE.pdf [render]: opening, rendering, search and serialising through the
// engine, and the same rendering by plain MuPDF calls as the physical limit, cold (page loaded in
// the timer) and warm (page loaded before), with the ratios of the two. With "render", only the
// rendering comparison, short enough to run under an instruction-counting profiler where the
// machine has no hardware counter (enginePageCost against rawDraw).

#include "BenchCommand.h"

#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFEngineInfo.h>
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
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include <linux/perf_event.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr int PagesToRender = 20;
constexpr int RenderRounds = 5;

double msSince(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

// Instructions the calling thread retires in user space: on a machine others load, the work of
// the two sides compares where their wall times compare luck. -1 where the kernel refuses, or
// the machine (a virtual one, often) has no hardware counter; the reason goes to stderr once.
class InstructionCounter
{
public:
    InstructionCounter()
    {
        perf_event_attr attr {};
        attr.type = PERF_TYPE_HARDWARE;
        attr.size = sizeof attr;
        attr.config = PERF_COUNT_HW_INSTRUCTIONS;
        attr.exclude_kernel = 1; // user space only: allowed up to perf_event_paranoid 2
        attr.exclude_hv = 1;
        m_fd = static_cast<int>(syscall(SYS_perf_event_open, &attr, 0, -1, -1, 0));
        if (m_fd < 0) {
            static bool told = false;
            if (!std::exchange(told, true))
                QTextStream(stderr) << "engine: no instruction counter ("
                                    << (errno == ENOENT ? "this processor has no hardware counter"
                                                        : std::strerror(errno))
                                    << "): the instruction ratios read -1\n";
        }
    }
    ~InstructionCounter()
    {
        if (m_fd >= 0)
            close(m_fd);
    }
    InstructionCounter(const InstructionCounter &) = delete;
    InstructionCounter &operator=(const InstructionCounter &) = delete;

    double now() const
    {
        long long count = 0;
        if (m_fd < 0 || read(m_fd, &count, sizeof count) != sizeof count)
            return -1;
        return static_cast<double>(count);
    }

private:
    int m_fd = -1;
};

double threadCpuMs()
{
    timespec t {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

// Wall time, processor time of the thread and instructions of one piece of work.
struct Cost
{
    double ms = 0;
    double cpuMs = 0;
    double instructions = -1;
};

class CostTimer
{
public:
    CostTimer()
    {
        m_timer.start();
        m_cpuStart = threadCpuMs();
        m_start = counter().now();
    }
    Cost elapsed() const
    {
        const double end = counter().now();
        return { msSince(m_timer), threadCpuMs() - m_cpuStart,
            m_start >= 0 && end >= 0 ? end - m_start : -1 };
    }

private:
    static const InstructionCounter &counter()
    {
        thread_local const InstructionCounter instance;
        return instance;
    }
    QElapsedTimer m_timer;
    double m_cpuStart = 0;
    double m_start = -1;
};

// One full page rendered once through the engine: the page's render source drawn straight into
// an image, as thumbnails and printing do (the reading view records a display list instead and
// reuses it for every tile). The first call on a page of a fresh document loads the page too.
Cost enginePageCost(const PDFPage &page, double scale)
{
    const CostTimer timer;
    const auto source = page.renderSource(PDFDisplayBox::CropBox);
    if (source) {
        QImage image(
            source->geometry().viewSize(scale).toSize(), QImage::Format_ARGB32_Premultiplied);
        source->render(image, source->geometry().pageToView(scale));
    }
    return timer.elapsed();
}

// Each page through the engine, cold (the page loaded inside the timer, as MuPDF does below) and
// warm (the same page again, already loaded, its fonts and images in the store).
struct RenderTimes
{
    std::vector<double> cold;
    std::vector<double> warm;
    double coldCpu = 0; // processor time and instructions summed over the pages
    double warmCpu = 0;
    double coldInstructions = 0;
    double warmInstructions = 0;

    void add(bool warmPass, const Cost &cost)
    {
        (warmPass ? warm : cold).push_back(cost.ms);
        (warmPass ? warmCpu : coldCpu) += cost.cpuMs;
        double &sum = warmPass ? warmInstructions : coldInstructions;
        sum = cost.instructions < 0 || sum < 0 ? -1 : sum + cost.instructions;
    }
};

RenderTimes engineRenderMs(const QString &path, int pages, double scale)
{
    RenderTimes times;
    auto doc = std::make_shared<PDFDocument>();
    if (!doc->initWithURL(QUrl::fromLocalFile(path)))
        return times;
    for (int i = 0; i < pages && i < doc->pageCount(); ++i) {
        const auto page = doc->pageAtIndex(i);
        times.add(false, enginePageCost(*page, scale));
        times.add(true, enginePageCost(*page, scale));
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

// The same pages by plain MuPDF calls: load, draw into a BGRA pixmap with alpha (the engine's
// premultiplied ARGB32), cleared to white, with the same default anti-aliasing and store size;
// cold loads the page inside the timer, warm draws the loaded page a second time.
RenderTimes rawRenderMs(const QString &path, int pages, double scale)
{
    RenderTimes times;
    // A store as large as the engine's, so that both sides keep the same fonts and images.
    fz_context *ctx = fz_new_context(nullptr, nullptr, PDFEngineInfo::storeBytes());
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
            const CostTimer timer;
            rawDraw(ctx, doc, i, &page, scale);
            times.add(pass != 0, timer.elapsed());
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
    const bool renderOnly = arguments.size() == 2 && arguments.at(1) == QLatin1String("render");
    if (arguments.size() != 1 && !renderOnly) {
        err << "usage: folidoc-bench engine FILE.pdf [render]\n";
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
    std::vector<double> coldWork, warmWork; // instructions kit / plain, per round
    std::vector<double> coldCpu, warmCpu; // processor time kit / plain, per round
    for (int round = 0; round < RenderRounds; ++round) {
        const RenderTimes kit = engineRenderMs(path, pages, 1.0);
        const RenderTimes raw = rawRenderMs(path, pages, 1.0);
        kitCold.push_back(median(kit.cold));
        kitWarm.push_back(median(kit.warm));
        rawCold.push_back(median(raw.cold));
        rawWarm.push_back(median(raw.warm));
        if (raw.coldCpu > 0 && raw.warmCpu > 0) {
            coldCpu.push_back(kit.coldCpu / raw.coldCpu);
            warmCpu.push_back(kit.warmCpu / raw.warmCpu);
        }
        if (raw.coldInstructions > 0 && kit.coldInstructions >= 0)
            coldWork.push_back(kit.coldInstructions / raw.coldInstructions);
        if (raw.warmInstructions > 0 && kit.warmInstructions >= 0)
            warmWork.push_back(kit.warmInstructions / raw.warmInstructions);
    }
    for (int i = 0; i < pages && !renderOnly; ++i)
        twoX.push_back(enginePageCost(*doc->pageAtIndex(i), 2.0).ms);

    const double search = renderOnly ? 0 : searchMs(doc, searchWord(*doc));

    timer.restart();
    const QByteArray bytes = renderOnly ? QByteArray() : doc->dataRepresentation();
    const double serialise = msSince(timer);
    if (bytes.isEmpty() && !renderOnly)
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
    // The same comparison by processor time of the rendering thread, which waits for the
    // processor do not inflate.
    benchPrint(QStringLiteral("render_page_cpu_ratio_1x"), coldCpu.empty() ? -1 : median(coldCpu));
    benchPrint(
        QStringLiteral("render_page_warm_cpu_ratio_1x"), warmCpu.empty() ? -1 : median(warmCpu));
    // And by instructions, which the machine's load does not change; -1 where
    // the kernel does not count them.
    benchPrint(QStringLiteral("render_page_instructions_ratio_1x"),
        coldWork.empty() ? -1 : median(coldWork));
    benchPrint(QStringLiteral("render_page_warm_instructions_ratio_1x"),
        warmWork.empty() ? -1 : median(warmWork));
    if (renderOnly)
        return 0;
    benchPrint(QStringLiteral("render_page_ms_2x"), median(twoX));
    benchPrint(QStringLiteral("search_ms"), search);
    benchPrint(QStringLiteral("serialise_ms"), serialise);
    return bytes.isEmpty() ? 1 : 0;
}

const BenchRegistration registration(
    QStringLiteral("engine"), QStringLiteral("FILE.pdf"), runEngineBench);

} // namespace
