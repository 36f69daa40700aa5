// folidoc-bench view FILE.pdf: the reading view's first sharp paint (median of cold processes,
// against the command-line tool drawing page 1 in the same rounds), main-thread stalls while a
// scripted scroll runs through the first 200 pages at scale 2, and memory before and after
// scrolling the whole document. folidoc-bench view-memory FILE.pdf: the same pages read, memory
// alone. folidoc-bench view-first-paint FILE.pdf: one cold first paint, the file opened as the
// program opens the one it starts with.
// folidoc-bench view-fixtures DIR writes the two test documents.

#include "BenchCommand.h"

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFDocumentPrefetch.h>
#include <kit/engine/PDFEngineInfo.h>
#include <kit/engine/PDFPage.h>
#include <kit/pdfview/PDFView.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTextStream>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <malloc.h>
#include <unistd.h>

namespace {

constexpr int ScrollPages = 200;
constexpr double ScrollScale = 2.0;
constexpr int FrameMs = 16;
// A brisk flick: about a page at scale 2 every four frames.
constexpr int ScrollStep = 400;
// Cold first paints, each in a fresh process, interleaved with the command-line tool.
constexpr int FirstPaintRoundCount = 5;

double msSince(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

// How long the main thread keeps events waiting: a watcher thread posts a stamped event every
// millisecond, and the delay until the main thread runs it is the stall it was caught in.
class StallRecorder
{
public:
    StallRecorder()
        : m_watcher([this] { watch(); })
    { }
    ~StallRecorder()
    {
        m_stop = true;
        m_watcher.join();
        QCoreApplication::removePostedEvents(&m_receiver);
    }
    double max() const
    {
        return m_stalls.empty() ? 0 : *std::max_element(m_stalls.begin(), m_stalls.end());
    }
    double percentile(double p) const
    {
        if (m_stalls.empty())
            return 0;
        std::vector<double> sorted = m_stalls;
        std::sort(sorted.begin(), sorted.end());
        return sorted[std::min(
            sorted.size() - 1, size_t(std::ceil(p * double(sorted.size()))) - 1)];
    }

private:
    void watch()
    {
        while (!m_stop) {
            const auto sent = std::chrono::steady_clock::now();
            QMetaObject::invokeMethod(
                &m_receiver,
                [this, sent] {
                    const std::chrono::duration<double, std::milli> waited
                        = std::chrono::steady_clock::now() - sent;
                    m_stalls.push_back(waited.count());
                },
                Qt::QueuedConnection);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    QObject m_receiver;
    std::vector<double> m_stalls; // main thread only
    std::atomic<bool> m_stop { false };
    std::thread m_watcher;
};

// The C library's heaps as "arena:size/free" in megabytes, then the large blocks it mapped
// apart, for FOLIDOC_BENCH_TRACE: which heap holds memory that is free but not given back.
QString heapSummary()
{
    char *text = nullptr;
    size_t length = 0;
    FILE *stream = open_memstream(&text, &length);
    if (!stream)
        return {};
    malloc_info(0, stream);
    std::fclose(stream);
    const QString xml = QString::fromUtf8(text, qsizetype(length));
    std::free(text);
    const auto mb = [](qint64 bytes) { return QString::number(double(bytes) / (1 << 20), 'f', 1); };
    QString summary;
    qint64 allSize = 0;
    qint64 allFree = 0;
    for (const QString &heap : xml.split(QStringLiteral("<heap nr="))) {
        if (!heap.startsWith(u'"'))
            continue;
        const QString body = heap.section(QStringLiteral("</heap>"), 0, 0);
        qint64 free = 0;
        static const QRegularExpression total(
            QStringLiteral("<total type=\"(?:fast|rest)\" count=\"\\d+\" size=\"(\\d+)\""));
        for (auto it = total.globalMatch(body); it.hasNext();)
            free += it.next().captured(1).toLongLong();
        static const QRegularExpression current(
            QStringLiteral("<system type=\"current\" size=\"(\\d+)\""));
        const qint64 size = current.match(body).captured(1).toLongLong();
        allSize += size;
        allFree += free;
        summary += QStringLiteral(" %1:%2/%3").arg(heap.section(u'"', 1, 1), mb(size), mb(free));
    }
    static const QRegularExpression mapped(
        QStringLiteral("<total type=\"mmap\" count=\"(\\d+)\" size=\"(\\d+)\""));
    const auto match = mapped.match(xml.section(QStringLiteral("</heap>"), -1));
    return QStringLiteral("heaps %1/%2 mapped %3x%4 |%5")
        .arg(mb(allSize), mb(allFree), match.captured(1), mb(match.captured(2).toLongLong()),
            summary);
}

// For FOLIDOC_BENCH_TRACE: the highest resident memory between two screens, sampled every
// quarter millisecond, and what made it up at that moment (MuPDF's bytes, mapped files, the
// heap's size and its part in use, blocks mapped apart), with MuPDF's own highest: a passing
// peak that no screen's figures show, and which part of the process it was.
class PeakSampler
{
public:
    PeakSampler()
        : m_thread([this] { sample(); })
    { }
    ~PeakSampler()
    {
        m_stop = true;
        m_thread.join();
    }
    // "peak-rss R engine-then E engine-peak P file F heap H used U mapped M" in megabytes, since
    // the last call.
    QString take()
    {
        const auto mb
            = [](qint64 bytes) { return QString::number(double(bytes) / (1 << 20), 'f', 1); };
        const QString text
            = QStringLiteral("peak-rss %1 engine-then %2 engine-peak %3")
                  .arg(mb(m_rss.exchange(0)), mb(m_engineThen.load()), mb(m_engine.exchange(0)));
        std::lock_guard lock(m_mutex);
        return text + m_detail;
    }

private:
    void sample()
    {
        const long page = sysconf(_SC_PAGESIZE);
        while (!m_stop) {
            long size = 0;
            long resident = 0;
            long shared = 0;
            if (FILE *statm = std::fopen("/proc/self/statm", "r")) {
                if (std::fscanf(statm, "%ld %ld %ld", &size, &resident, &shared) != 3)
                    resident = 0;
                std::fclose(statm);
            }
            const qint64 engine = PDFEngineInfo::heldBytes();
            const qint64 rss = qint64(resident) * page;
            if (rss > m_rss) {
                m_rss = rss;
                m_engineThen = engine;
                const struct mallinfo2 info = mallinfo2();
                std::lock_guard lock(m_mutex);
                m_detail = QStringLiteral(" file %1 heap %2 used %3 mapped %4")
                               .arg(double(size_t(shared) * page) / (1 << 20), 0, 'f', 1)
                               .arg(double(info.arena) / (1 << 20), 0, 'f', 1)
                               .arg(double(info.uordblks) / (1 << 20), 0, 'f', 1)
                               .arg(double(info.hblkhd) / (1 << 20), 0, 'f', 1);
            }
            if (engine > m_engine)
                m_engine = engine;
            std::this_thread::sleep_for(std::chrono::microseconds(250));
        }
    }

    std::mutex m_mutex;
    QString m_detail;
    std::atomic<qint64> m_rss { 0 };
    std::atomic<qint64> m_engineThen { 0 };
    std::atomic<qint64> m_engine { 0 };
    std::atomic<bool> m_stop { false };
    std::thread m_thread;
};

// Runs the event loop until the view shows exact tiles everywhere, or the time is up.
bool waitRendered(PDFView &view, int timeoutMs)
{
    if (view.isVisibleAreaRendered())
        return true;
    QEventLoop loop;
    QObject::connect(&view, &PDFView::visibleAreaRendered, &loop, &QEventLoop::quit);
    QTimer::singleShot(timeoutMs, &loop, &QEventLoop::quit);
    loop.exec();
    return view.isVisibleAreaRendered();
}

// Wall-clock milliseconds of a child process, or -1 when it fails.
double processMs(const QString &program, const QStringList &arguments, QByteArray *output = nullptr)
{
    QElapsedTimer timer;
    timer.start();
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(120000) || process.exitCode() != 0)
        return -1;
    const double ms = msSince(timer);
    if (output)
        *output = process.readAllStandardOutput();
    return ms;
}

double median(std::vector<double> values)
{
    std::erase_if(values, [](double v) { return v < 0; });
    if (values.empty())
        return -1;
    std::sort(values.begin(), values.end());
    const size_t mid = values.size() / 2;
    return values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
}

// Opens the document as the program opens the file it starts with, and shows it until the first
// screen is sharp: the file is read ahead on a thread of its own while the view is made, and taken
// once its first page has been read. The first paint of a cold process, in milliseconds from
// before the file is opened.
double firstPaintMs(const QString &path, QString *error)
{
    QElapsedTimer timer;
    timer.start();
    const PDFDocumentPrefetch prefetch(path);
    PDFView view;
    view.resize(1024, 768);
    view.show();
    {
        QEventLoop loop;
        QObject receiver;
        if (PDFDocumentPrefetch::notifyWhenRead(path, &receiver, [&loop] { loop.quit(); }))
            loop.exec();
    }
    auto document = std::make_shared<PDFDocument>();
    if (!document->initWithURL(QUrl::fromLocalFile(path))) {
        *error = document->errorString();
        return -1;
    }
    view.setDocument(document);
    if (!waitRendered(view, 30000)) {
        *error = QStringLiteral("the first page did not render");
        return -1;
    }
    view.viewport()->repaint();
    return msSince(timer);
}

int runFirstPaint(const QStringList &arguments)
{
    QTextStream err(stderr);
    if (arguments.size() != 1) {
        err << "usage: folidoc-bench view-first-paint FILE.pdf\n";
        return 2;
    }
    QString error;
    const double ms = firstPaintMs(arguments.first(), &error);
    if (ms < 0) {
        err << "view-first-paint: " << arguments.first() << ": " << error << '\n';
        return 1;
    }
    benchPrint(QStringLiteral("first_paint_ms"), ms);
    return 0;
}

// Rounds of a cold first paint in a fresh process of this program, each followed at once by
// the command-line tool drawing page 1, so that both see the same load on the machine.
struct FirstPaintRounds
{
    double folidoc = -1;
    double mutool = -1;
};

FirstPaintRounds firstPaintRounds(const QString &path, int rounds)
{
    const QString mutool = QStandardPaths::findExecutable(QStringLiteral("mutool"));
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int i = 0; i < rounds; ++i) {
        QByteArray output;
        if (processMs(QCoreApplication::applicationFilePath(),
                { QStringLiteral("view-first-paint"), path }, &output)
            >= 0) {
            const QList<QByteArray> words = output.trimmed().split(' ');
            ours.push_back(words.size() == 2 ? words.last().toDouble() : -1);
        }
        if (!mutool.isEmpty()) {
            theirs.push_back(processMs(mutool,
                { QStringLiteral("draw"), QStringLiteral("-o"), QStringLiteral("/dev/null"), path,
                    QStringLiteral("1") }));
        }
    }
    return { median(ours), median(theirs) };
}

// timed: the cold first paints and the stalls too; else memory alone, which the load of the
// machine does not disturb.
int viewBench(const QStringList &arguments, bool timed)
{
    QTextStream err(stderr);
    if (arguments.size() != 1) {
        err << "usage: folidoc-bench " << (timed ? "view" : "view-memory") << " FILE.pdf\n";
        return 2;
    }
    const QString path = arguments.first();
    const FirstPaintRounds rounds
        = timed ? firstPaintRounds(path, FirstPaintRoundCount) : FirstPaintRounds {};

    auto document = std::make_shared<PDFDocument>();
    if (!document->initWithURL(QUrl::fromLocalFile(path))) {
        err << "view: " << path << ": " << document->errorString() << '\n';
        return 1;
    }
    PDFView view;
    view.resize(1024, 768);
    view.show();
    view.setDocument(document);
    if (!waitRendered(view, 30000)) {
        err << "view: the first page did not render\n";
        return 1;
    }
    view.setScaleFactor(ScrollScale);
    view.goToPage(document->pageAtIndex(0));
    QScrollBar *bar = view.verticalScrollBar();
    // FOLIDOC_BENCH_TRACE=1: the memory at every screen, on standard error.
    const bool trace = qEnvironmentVariableIntValue("FOLIDOC_BENCH_TRACE") != 0;
    std::unique_ptr<PeakSampler> sampler;
    if (trace)
        sampler = std::make_unique<PeakSampler>();
    // Screen by screen, each shown sharp before moving on, until the view shows the given page.
    const auto readTo = [&](int last) {
        waitRendered(view, 30000);
        while (bar->value() < bar->maximum()) {
            const auto current = view.currentPage();
            if (current && document->indexForPage(current) >= last)
                break;
            bar->setValue(bar->value() + bar->pageStep());
            waitRendered(view, 30000);
            if (trace) {
                err << "page " << (current ? document->indexForPage(current) : -1) << " rss "
                    << processMegabytes("VmRSS:") << " peak " << processMegabytes("VmHWM:")
                    << " tiles " << double(view.tileCache().pixelCount()) * 4 / (1024 * 1024)
                    << " engine " << double(PDFEngineInfo::heldBytes()) / (1 << 20) << ' '
                    << heapSummary() << " | " << sampler->take() << Qt::endl;
            }
        }
    };
    readTo(std::min(20, document->pageCount() - 1));
    const double rss20 = processMegabytes("VmHWM:");
    const double now20 = processMegabytes("VmRSS:");
    // Rendered tiles are part of both peaks: they show how much of them is the view's own cache.
    const double tiles20 = double(view.tileCache().pixelCount()) * 4 / (1024 * 1024);

    // The scripted scroll: one step per frame from the top through the first pages.
    view.goToPage(document->pageAtIndex(0));
    waitRendered(view, 30000);
    const int pages = std::min(ScrollPages, document->pageCount());
    int frames = 0;
    {
        StallRecorder stalls;
        QEventLoop loop;
        QTimer tick;
        tick.setInterval(FrameMs);
        QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
            ++frames;
            bar->setValue(bar->value() + ScrollStep);
            const auto current = view.currentPage();
            const int index = current ? document->indexForPage(current) : 0;
            if (index >= pages - 1 || bar->value() >= bar->maximum())
                loop.quit();
        });
        tick.start();
        loop.exec();
        if (timed) {
            benchPrint(QStringLiteral("first_paint_ms"), rounds.folidoc);
            if (rounds.mutool > 0) {
                benchPrint(QStringLiteral("mutool_draw_page1_ms"), rounds.mutool);
                benchPrint(
                    QStringLiteral("first_paint_ratio_mutool"), rounds.folidoc / rounds.mutool);
            }
            benchPrint(QStringLiteral("scroll_max_stall_ms"), stalls.max());
            benchPrint(QStringLiteral("scroll_p99_stall_ms"), stalls.percentile(0.99));
            benchPrint(QStringLiteral("scroll_frames"), frames);
        }
    }
    benchPrint(QStringLiteral("peak_rss_mb_20"), rss20);
    benchPrint(QStringLiteral("rss_mb_20"), now20);
    benchPrint(QStringLiteral("tile_cache_mb_20"), tiles20);

    // The rest of the document.
    readTo(document->pageCount());
    const double rssAll = processMegabytes("VmHWM:");
    benchPrint(QStringLiteral("peak_rss_mb_all"), rssAll);
    if (rss20 > 0)
        benchPrint(QStringLiteral("peak_rss_ratio_all_20"), rssAll / rss20);
    // What stays once the reader is at the end: the memory of the pages passed must be gone.
    waitRendered(view, 30000);
    benchPrint(QStringLiteral("rss_mb_at_end"), processMegabytes("VmRSS:"));
    benchPrint(QStringLiteral("tile_cache_mb_at_end"),
        double(view.tileCache().pixelCount()) * 4 / (1024 * 1024));
    return 0;
}

int runViewBench(const QStringList &arguments)
{
    return viewBench(arguments, true);
}

int runViewMemory(const QStringList &arguments)
{
    return viewBench(arguments, false);
}

// Raw PDF syntax with a correct cross-reference table.
class PdfWriter
{
public:
    int add(const QByteArray &body)
    {
        m_offsets.push_back(m_data.size());
        m_data += QByteArray::number(int(m_offsets.size())) + " 0 obj\n" + body + "\nendobj\n";
        return int(m_offsets.size());
    }
    int addStream(const QByteArray &dictionary, const QByteArray &stream)
    {
        return add("<< " + dictionary + " /Length " + QByteArray::number(stream.size())
            + " >>\nstream\n" + stream + "\nendstream");
    }
    bool write(const QString &path, int catalog)
    {
        const qint64 xref = m_data.size();
        QByteArray tail = "xref\n0 " + QByteArray::number(int(m_offsets.size()) + 1)
            + "\n0000000000 65535 f \n";
        for (const qint64 offset : m_offsets)
            tail += QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n";
        tail += "trailer\n<< /Size " + QByteArray::number(int(m_offsets.size()) + 1) + " /Root "
            + QByteArray::number(catalog) + " 0 R >>\nstartxref\n" + QByteArray::number(xref)
            + "\n%%EOF\n";
        QFile file(path);
        return file.open(QIODevice::WriteOnly)
            && file.write(m_data + tail) == m_data.size() + tail.size();
    }
    QByteArray m_data = "%PDF-1.7\n%\xe2\xe3\xcf\xd3\n";

private:
    std::vector<qint64> m_offsets;
};

// The pages first, then the page tree and the catalog; readers find pages from the tree.
bool writePages(
    const QString &path, int count, const std::function<QByteArray(PdfWriter &, int)> &page)
{
    PdfWriter writer;
    QByteArray kids;
    for (int i = 0; i < count; ++i)
        kids += QByteArray::number(writer.add(page(writer, i))) + " 0 R ";
    const int tree = writer.add(
        "<< /Type /Pages /Kids [" + kids + "] /Count " + QByteArray::number(count) + " >>");
    const int catalog
        = writer.add("<< /Type /Catalog /Pages " + QByteArray::number(tree) + " 0 R >>");
    return writer.write(path, catalog);
}

QByteArray textPage(PdfWriter &writer, int index, int font)
{
    static const char *const words[] = { "lorem", "ipsum", "dolor", "sit", "amet", "consectetur",
        "adipiscing", "elit", "sed", "eiusmod", "tempor", "incididunt" };
    QByteArray content = "BT /F1 10 Tf 56 760 Td 14 TL\n";
    for (int line = 0; line < 50; ++line) {
        QByteArray text
            = "Page " + QByteArray::number(index + 1) + " line " + QByteArray::number(line + 1);
        for (int k = 0; k < 10; ++k)
            text += ' ' + QByteArray(words[(index * 7 + line * 3 + k) % 12]);
        content += "(" + text + ") '\n";
    }
    content += "ET";
    const int stream = writer.addStream({}, content);
    return "<< /Type /Page /MediaBox [0 0 612 792] /Resources << /Font << /F1 "
        + QByteArray::number(font) + " 0 R >> >> /Contents " + QByteArray::number(stream)
        + " 0 R >>";
}

QByteArray photoPage(PdfWriter &writer, int index)
{
    // Smooth colour fields with grain, different on every page, stored as JPEG.
    QImage image(1600, 1200, QImage::Format_RGB32);
    QRandomGenerator random(quint32(index + 1));
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, 1600, 1200);
    gradient.setColorAt(0, QColor::fromHsv(int(random.bounded(360)), 160, 220));
    gradient.setColorAt(1, QColor::fromHsv(int(random.bounded(360)), 200, 90));
    painter.fillRect(image.rect(), gradient);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int i = 0; i < 40; ++i) {
        painter.setBrush(QColor::fromHsv(int(random.bounded(360)), 120, 200, 90));
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(QPointF(random.bounded(1600), random.bounded(1200)),
            random.bounded(300), random.bounded(300));
    }
    painter.end();
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int grain = int(random.bounded(25)) - 12;
            const QRgb c = line[x];
            line[x] = qRgb(std::clamp(qRed(c) + grain, 0, 255),
                std::clamp(qGreen(c) + grain, 0, 255), std::clamp(qBlue(c) + grain, 0, 255));
        }
    }
    QBuffer jpeg;
    jpeg.open(QIODevice::WriteOnly);
    image.save(&jpeg, "JPG", 85);
    const int picture
        = writer.addStream("/Type /XObject /Subtype /Image /Width 1600 /Height 1200 "
                           "/ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /DCTDecode",
            jpeg.data());
    const int stream = writer.addStream({}, "q 612 0 0 459 0 166 cm /Im0 Do Q");
    return "<< /Type /Page /MediaBox [0 0 612 792] /Resources << /XObject << /Im0 "
        + QByteArray::number(picture) + " 0 R >> >> /Contents " + QByteArray::number(stream)
        + " 0 R >>";
}

int runFixtures(const QStringList &arguments)
{
    QTextStream err(stderr);
    if (arguments.size() != 1) {
        err << "usage: folidoc-bench view-fixtures DIR\n";
        return 2;
    }
    const QDir dir(arguments.first());
    if (!dir.mkpath(QStringLiteral(".")))
        return 1;
    int font = 0;
    const bool text
        = writePages(dir.filePath(QStringLiteral("text-2000.pdf")), 2000, [&](PdfWriter &w, int i) {
              if (font == 0)
                  font = w.add("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>");
              return textPage(w, i, font);
          });
    const bool photos = writePages(dir.filePath(QStringLiteral("photos-200.pdf")), 200, photoPage);
    if (!text || !photos) {
        err << "view-fixtures: could not write into " << dir.path() << '\n';
        return 1;
    }
    QTextStream(stdout) << dir.filePath(QStringLiteral("text-2000.pdf")) << '\n'
                        << dir.filePath(QStringLiteral("photos-200.pdf")) << '\n';
    return 0;
}

const BenchRegistration registration(
    QStringLiteral("view"), QStringLiteral("FILE.pdf"), runViewBench);
const BenchRegistration memory(
    QStringLiteral("view-memory"), QStringLiteral("FILE.pdf"), runViewMemory);
const BenchRegistration firstPaint(
    QStringLiteral("view-first-paint"), QStringLiteral("FILE.pdf"), runFirstPaint);
const BenchRegistration fixtures(
    QStringLiteral("view-fixtures"), QStringLiteral("DIR"), runFixtures);

} // namespace
