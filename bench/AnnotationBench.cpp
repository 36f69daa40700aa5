// folidoc-bench annotations FILE.pdf: the annotation model under load. Hit testing a page that
// holds 500 annotations of mixed kinds (as the application's page answers a click), smoothing
// one long ink stroke point by point, and saving the file with those annotations against saving
// it without them.

#include "BenchCommand.h"

#include <annotation/FDAnnotationCircle.h>
#include <annotation/FDAnnotationFreeText.h>
#include <annotation/FDAnnotationInk.h>
#include <annotation/FDAnnotationLine.h>
#include <annotation/FDAnnotationMarkup.h>
#include <annotation/FDAnnotationSquare.h>
#include <annotation/FDAnnotationText.h>
#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/PDFAnnotationInk+XExtensions.h>
#include <app/FDDefaults.h>
#include <document/FDDocument.h>
#include <document/FDDocumentDelegate.h>
#include <document/FDPage.h>
#include <kit/base/BezierPath.h>
#include <kit/engine/PDFSelection.h>
#include <view/FDPDFView.h>

#include <QElapsedTimer>
#include <QFile>
#include <QFont>
#include <QFontMetricsF>
#include <QRandomGenerator>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <vector>

namespace {

constexpr int AnnotationCount = 500;
constexpr int HitTestCount = 2000;
constexpr int StrokeLength = 2000;
constexpr int SaveRuns = 5;

// Answers the application's classes, as the view's delegate does.
class BenchDelegate : public FDDocumentDelegate
{
public:
    QObject *pdfView() const override { return nullptr; }
    PDFAnnotationFactory classForAnnotationClass(const QString &type) const override
    {
        return FDPDFView::classForAnnotationClass(type);
    }
};

std::shared_ptr<FDDocument> openDocument(
    const QString &path, const std::shared_ptr<BenchDelegate> &delegate)
{
    auto doc = std::make_shared<FDDocument>();
    if (!doc->initWithURL(QUrl::fromLocalFile(path), delegate) || doc->isLocked())
        return nullptr;
    return doc;
}

// A stroke that wanders over the rectangle, in page space.
std::shared_ptr<BezierPath> strokeIn(QRectF rect, QRandomGenerator &random, int points)
{
    auto path = std::make_shared<BezierPath>();
    for (int i = 0; i < points; ++i)
        addPointToPath(QPointF(rect.left() + random.bounded(rect.width()),
                           rect.top() + random.bounded(rect.height())),
            *path);
    return path;
}

// One annotation of the i-th kind in the rectangle. Markup needs text, and comes from the page's
// own words when it has any.
std::shared_ptr<PDFAnnotation> makeAnnotation(
    int i, const std::shared_ptr<PDFPage> &page, QRectF rect, QRandomGenerator &random)
{
    switch (i % 7) {
    case 0: {
        auto ink = std::make_shared<FDAnnotationInk>();
        initWithPaths(*ink, { strokeIn(rect, random, 12) });
        return ink;
    }
    case 1: {
        auto line = std::make_shared<FDAnnotationLine>();
        line->initWithBounds(rect);
        return line;
    }
    case 2: {
        auto circle = std::make_shared<FDAnnotationCircle>();
        circle->initWithBounds(rect);
        return circle;
    }
    case 3: {
        auto square = std::make_shared<FDAnnotationSquare>();
        square->initWithBounds(rect);
        return square;
    }
    case 4: {
        auto text = std::make_shared<FDAnnotationFreeText>();
        text->initWithBounds(rect);
        text->setContents(QStringLiteral("Free text %1").arg(i));
        return text;
    }
    case 5: {
        auto note = std::make_shared<FDAnnotationText>();
        note->initWithBounds(QRectF(rect.topLeft(), QSizeF(0, 0)));
        note->setContents(QStringLiteral("Note %1").arg(i));
        return note;
    }
    default: {
        const auto selection = page->selectionForRect(rect);
        if (selection) {
            if (auto markup = FDAnnotationMarkup::annotationWith(selection, i % 3))
                return markup;
        }
        auto square = std::make_shared<FDAnnotationSquare>();
        square->initWithBounds(rect);
        return square;
    }
    }
}

// Puts count annotations on the page, as the editing view would: the ones the view draws itself
// are hidden from the engine.
void populate(const std::shared_ptr<PDFPage> &page, int count, QRandomGenerator &random)
{
    const QRectF box = page->boundsForBox(PDFDisplayBox::CropBox);
    for (int i = 0; i < count; ++i) {
        const double w = 20 + random.bounded(80.0);
        const double h = 10 + random.bounded(60.0);
        const QRectF rect(box.left() + random.bounded(std::max(1.0, box.width() - w)),
            box.top() + random.bounded(std::max(1.0, box.height() - h)), w, h);
        const auto annotation = makeAnnotation(i, page, rect, random);
        registerUserName(*annotation);
        page->addAnnotation(annotation);
        if (shouldDisplayOnOverlay(*annotation))
            annotation->setShouldDisplay(false);
    }
}

double hitTestMicroseconds(const std::shared_ptr<PDFPage> &page, QRandomGenerator &random)
{
    const QRectF box = page->boundsForBox(PDFDisplayBox::CropBox);
    std::vector<double> times;
    times.reserve(HitTestCount);
    int found = 0;
    for (int i = 0; i < HitTestCount; ++i) {
        const QPointF point(
            box.left() + random.bounded(box.width()), box.top() + random.bounded(box.height()));
        QElapsedTimer timer;
        timer.start();
        found += page->annotationAtPoint(point) ? 1 : 0;
        times.push_back(double(timer.nsecsElapsed()) / 1e3);
    }
    QTextStream(stderr) << "annotations: " << found << " of " << HitTestCount
                        << " clicks found an annotation\n";
    return median(times);
}

// Median microseconds of addPointToPath over the first and the last hundred of a long stroke.
std::pair<double, double> addPointMicroseconds(QRandomGenerator &random)
{
    BezierPath path;
    std::vector<double> times;
    times.reserve(StrokeLength);
    QPointF point(100, 100);
    for (int i = 0; i < StrokeLength; ++i) {
        point += QPointF(random.bounded(6.0) - 2.0, random.bounded(6.0) - 2.0);
        QElapsedTimer timer;
        timer.start();
        addPointToPath(point, path);
        times.push_back(double(timer.nsecsElapsed()) / 1e3);
    }
    return { median(times),
        median(std::vector<double>(times.end() - std::min<int>(100, StrokeLength), times.end())) };
}

// Saving is timed in the thread's processor time, so that other work on the machine does not
// count: the figure compares two saves of the same process.
double threadMs()
{
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

double serialiseMs(const PDFDocument &doc)
{
    std::vector<double> times;
    for (int i = 0; i < SaveRuns; ++i) {
        const double start = threadMs();
        const QByteArray bytes = doc.dataRepresentation();
        times.push_back(threadMs() - start);
        if (bytes.isEmpty())
            return -1;
    }
    return median(times);
}

int runAnnotationBench(const QStringList &arguments)
{
    QTextStream err(stderr);
    if (arguments.size() != 1) {
        err << "usage: folidoc-bench annotations FILE.pdf\n";
        return 2;
    }
    // New annotations take their colours and widths from the registered first values, as in the
    // program.
    FDDefaults::registerDefaults();
    const auto delegate = std::make_shared<BenchDelegate>();
    const auto doc = openDocument(arguments.first(), delegate);
    if (!doc || doc->pageCount() == 0) {
        err << "annotations: cannot open " << arguments.first() << '\n';
        return 1;
    }
    QRandomGenerator random(20261125);

    const double plain = serialiseMs(*doc);
    const qsizetype plainBytes = doc->dataRepresentation().size();

    const auto page = doc->pageAtIndex(0);
    populate(page, AnnotationCount, random);
    const double hit = hitTestMicroseconds(page, random);
    const auto [addPoint, addPointLate] = addPointMicroseconds(random);

    // The first save after the edits makes every annotation's picture: that is the save a person
    // waits for. Later saves of the same state are timed too, for comparison. The program has
    // measured text long before it saves, so the font system starts here, outside the timing.
    QFontMetricsF(QFont(QStringLiteral("Helvetica"), 12)).ascent();
    const double start = threadMs();
    const QByteArray first = doc->dataRepresentation();
    const double firstSave = threadMs() - start;
    const double withAnnotations = serialiseMs(*doc);
    if (plain < 0 || withAnnotations < 0 || first.isEmpty()) {
        err << "annotations: serialising failed: " << doc->errorString() << '\n';
        return 1;
    }

    err << "annotations: " << plainBytes << " bytes without, " << first.size() << " with\n";
    // FOLIDOC_BENCH_SAVE names a file for the saved bytes, to look at them with other tools.
    if (const QString out = qEnvironmentVariable("FOLIDOC_BENCH_SAVE"); !out.isEmpty()) {
        QFile file(out);
        if (file.open(QIODevice::WriteOnly))
            file.write(first);
    }
    benchPrint(QStringLiteral("hit_test_us"), hit);
    benchPrint(QStringLiteral("ink_add_point_us"), addPoint);
    benchPrint(QStringLiteral("ink_add_point_us_last_100"), addPointLate);
    benchPrint(QStringLiteral("serialise_ms"), plain);
    benchPrint(QStringLiteral("save_with_annotations_ms"), firstSave);
    benchPrint(QStringLiteral("save_with_annotations_again_ms"), withAnnotations);
    return 0;
}

const BenchRegistration registration(
    QStringLiteral("annotations"), QStringLiteral("FILE.pdf"), runAnnotationBench);

} // namespace
