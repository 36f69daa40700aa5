// folidoc-bench edit FILE.pdf: the editing view's responsiveness. On the first page of a copy of
// FILE (a text page), it drags a rectangle in 300 steps, resizes it by a corner handle, draws an
// ink stroke of 500 points and makes 100 highlights, through the view's own model calls, while a
// second view of the same document keeps rendering 200 photo pages appended to it. Each step is
// timed with the event-loop turn that shows it.

#include "BenchCommand.h"

#include <annotation/FDAnnotationSquare.h>
#include <app/FDDefaults.h>
#include <document/FDDocument.h>
#include <kit/base/BezierPath.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>
#include <kit/pdfview/PDFRenderScheduler.h>
#include <kit/pdfview/PDFView.h>
#include <view/FDPDFView.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

namespace {

constexpr int DragSteps = 300;
constexpr int ResizeSteps = 100;
constexpr int InkPoints = 500;
constexpr int Highlights = 100;
constexpr int PhotoPages = 200;

// The view as the ink gesture drives it: the stroke grows point by point.
class BenchView : public FDPDFView
{
public:
    void beginInk(const std::shared_ptr<PDFPage> &page, QPointF point)
    {
        m_pendingInkPath = std::make_shared<BezierPath>();
        m_pendingInkPath->setLineWidth(2);
        m_pendingInkPath->setLineCap(BezierPath::RoundCap);
        m_pendingInkPath->setLineJoin(BezierPath::RoundJoin);
        m_pendingInkPath->moveTo(point);
        m_pendingInkPage = page;
        postInk();
    }
    void appendInk(QPointF point)
    {
        m_pendingInkPath->lineTo(point);
        postInk();
    }
    void endInk() { m_pendingInkPath.reset(); }

private:
    void postInk()
    {
        NotificationCenter::defaultCenter().post(PendingAnnInkDidChangeNotification, this,
            { { QStringLiteral("Page"), QVariant::fromValue(m_pendingInkPage.lock()) } });
    }
};

QByteArray photo(int index)
{
    QImage image(1200, 900, QImage::Format_RGB32);
    QRandomGenerator random(quint32(index + 1));
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, 1200, 900);
    gradient.setColorAt(0, QColor::fromHsv(int(random.bounded(360)), 160, 220));
    gradient.setColorAt(1, QColor::fromHsv(int(random.bounded(360)), 200, 90));
    painter.fillRect(image.rect(), gradient);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < 200; ++i) {
        painter.setBrush(QColor::fromHsv(int(random.bounded(360)), 120, 200, 90));
        painter.drawEllipse(QPointF(random.bounded(1200), random.bounded(900)), random.bounded(200),
            random.bounded(200));
    }
    painter.end();
    QBuffer jpeg;
    jpeg.open(QIODevice::WriteOnly);
    image.save(&jpeg, "JPG", 85);
    return jpeg.data();
}

double msSince(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

// Runs the step and the event-loop turn that shows it; answers the milliseconds taken.
template <typename Step> double timed(const Step &step)
{
    QElapsedTimer timer;
    timer.start();
    step();
    QCoreApplication::processEvents();
    return msSince(timer);
}

// The background load: the other view runs down the photo pages a screen per frame, from the
// top again at the end.
void keepScrolling(PDFView &background, QTimer &timer, int firstPhoto)
{
    timer.setInterval(16);
    QObject::connect(&timer, &QTimer::timeout, &background, [&background, firstPhoto] {
        QScrollBar *bar = background.verticalScrollBar();
        if (bar->value() >= bar->maximum())
            background.goToPage(background.document()->pageAtIndex(firstPhoto));
        else
            bar->setValue(bar->value() + bar->pageStep() / 2);
    });
    timer.start();
}

int runEditBench(const QStringList &arguments)
{
    QTextStream err(stderr);
    if (arguments.size() != 1) {
        err << "usage: folidoc-bench edit FILE.pdf\n";
        return 2;
    }
    // The file is never changed: the bench edits a copy.
    QTemporaryDir dir;
    const QString copy = dir.filePath(QStringLiteral("edit.pdf"));
    if (!dir.isValid() || !QFile::copy(arguments.first(), copy)) {
        err << "edit: cannot copy " << arguments.first() << '\n';
        return 1;
    }
    FDDefaults::registerDefaults();
    UndoManager undo;
    BenchView view;
    view.setUndoManager(&undo);
    view.resize(900, 1000);
    view.loadDocument(QUrl::fromLocalFile(copy));
    view.show();
    while (view.isLoading())
        QCoreApplication::processEvents();
    const auto document = view.fdDocument();
    if (!document || document->pageCount() < 1) {
        err << "edit: cannot read " << arguments.first() << '\n';
        return 1;
    }
    const int firstPhoto = document->pageCount();
    std::vector<QByteArray> photos;
    for (int i = 0; i < 8; ++i)
        photos.push_back(photo(i));
    for (int i = 0; i < PhotoPages; ++i) {
        auto page = std::make_shared<PDFPage>();
        if (page->initWithImageData(photos[size_t(i) % photos.size()]))
            document->insertPage(page, document->pageCount());
    }
    view.setScaleMode(PDFViewScaleMode::none);
    view.setScaleFactor(1.0);
    const auto page = document->pageAtIndex(0);
    view.goToPage(page);

    PDFView background;
    background.resize(1024, 768);
    background.show();
    background.setDocument(document);
    background.setScaleFactor(1.5);
    background.goToPage(document->pageAtIndex(firstPhoto));
    QTimer scrolling;
    keepScrolling(background, scrolling, firstPhoto);
    QElapsedTimer settle;
    settle.start();
    while (msSince(settle) < 1500 || !view.isVisibleAreaRendered())
        QCoreApplication::processEvents();

    // Renders of the edited page, told apart by revision.
    std::set<std::pair<quint64, int>> pageRenders;
    bool counting = false;
    QObject::connect(view.renderScheduler(), &PDFRenderScheduler::tileFinished, &view,
        [&](const PDFTileKey &key, const QImage &) {
            if (counting && key.page == page.get())
                pageRenders.insert({ key.revision, key.scale });
        });

    const QRectF box = page->boundsForBox(view.displayBox());
    const QRectF start(box.left() + 60, box.top() + 80, 120, 80);
    const auto square = view.addAnnotationWithType(QStringLiteral("Square"), page, start);
    if (!square) {
        err << "edit: no rectangle could be made\n";
        return 1;
    }
    for (int i = 0; i < 10; ++i)
        QCoreApplication::processEvents();

    // Paints of the edited view while timing: each step must have been shown.
    int paints = 0;
    struct PaintCounter : QObject
    {
        int *count;
        bool eventFilter(QObject *, QEvent *event) override
        {
            *count += event->type() == QEvent::Paint;
            return false;
        }
    } counter;
    counter.count = &paints;
    view.viewport()->installEventFilter(&counter);
    // The drag: one undo group, a step per pointer move.
    counting = true;
    std::vector<double> drag;
    undo.beginUndoGrouping();
    for (int step = 0; step < DragSteps; ++step) {
        const double t = double(step) / DragSteps;
        const QPointF at(start.left() + (box.width() - 240) * t,
            start.top() + (box.height() - 200) * (0.5 + 0.5 * std::sin(t * 6.28)));
        drag.push_back(timed([&] { square->setBounds(QRectF(at, start.size())); }));
    }
    undo.endUndoGrouping();
    // By the bottom-right handle: the top-left corner stays.
    std::vector<double> resize;
    undo.beginUndoGrouping();
    const QRectF before = square->bounds();
    for (int step = 1; step <= ResizeSteps; ++step) {
        const QRectF bounds(
            before.left(), before.top() - step, before.width() + step, before.height() + step);
        resize.push_back(timed([&] { square->setBounds(bounds.toAlignedRect()); }));
    }
    undo.endUndoGrouping();
    QElapsedTimer late;
    late.start();
    while (msSince(late) < 500)
        QCoreApplication::processEvents();
    counting = false;

    // The ink stroke, then the annotation it makes.
    std::vector<double> ink;
    const QPointF inkStart(box.left() + 100, box.top() + 300);
    view.beginInk(page, inkStart);
    for (int point = 1; point < InkPoints; ++point) {
        const double t = double(point) / InkPoints;
        const QPointF at(inkStart.x() + 350 * t, inkStart.y() + 60 * std::sin(t * 40));
        ink.push_back(timed([&] { view.appendInk(at); }));
    }
    view.addAnnotationWithType(QStringLiteral("Ink"), page, QRectF());
    view.endInk();

    // Highlights of the page's text, line by line.
    std::vector<double> highlights;
    std::vector<double> highlightCalls; // the model call alone, without the turn that shows it
    const auto whole = page->selectionForRect(box);
    for (int made = 0; made < Highlights; ++made) {
        const QRectF band(box.left(), box.bottom() - 30 - (made % 40) * 18, box.width(), 16);
        auto selection = page->selectionForRect(band);
        if (!selection || selection->string().isEmpty())
            selection = whole;
        if (!selection) {
            err << "edit: the first page has no text to highlight\n";
            return 1;
        }
        view.setCurrentSelection(selection);
        QElapsedTimer call;
        highlights.push_back(timed([&] {
            call.start();
            view.addAnnotationWithType(QStringLiteral("Highlight"), nullptr, QRectF());
            highlightCalls.push_back(msSince(call));
        }));
    }
    scrolling.stop();

    drag.insert(drag.end(), resize.begin(), resize.end());
    benchPrint(QStringLiteral("drag_step_ms_p50"), median(drag));
    benchPrint(QStringLiteral("drag_step_ms_max"), *std::max_element(drag.begin(), drag.end()));
    benchPrint(QStringLiteral("resize_step_ms_p50"), median(resize));
    benchPrint(QStringLiteral("ink_step_ms_p50"), median(ink));
    benchPrint(QStringLiteral("ink_step_ms_max"), *std::max_element(ink.begin(), ink.end()));
    benchPrint(QStringLiteral("page_renders_during_drag"), double(pageRenders.size()));
    benchPrint(QStringLiteral("highlight_ms_p50"), median(highlights));
    benchPrint(QStringLiteral("highlight_call_ms_p50"), median(highlightCalls));
    benchPrint(QStringLiteral("highlight_ms_max"),
        *std::max_element(highlights.begin(), highlights.end()));
    benchPrint(QStringLiteral("edit_view_paints"), paints);
    benchPrint(QStringLiteral("background_display_lists"),
        double(background.renderScheduler()->displayListsBuilt()));
    document->setNumberOfChanges(0);
    return 0;
}

const BenchRegistration registration(
    QStringLiteral("edit"), QStringLiteral("FILE.pdf"), runEditBench);

} // namespace
