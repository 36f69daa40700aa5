// How annotations look, drawn on their own and in the engine's rendering of their page.

#include "support/AnnotationFixtures.h"

#include <support/PdfFixtures.h>

#include <kit/base/BezierPath.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationCircle.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationMarkup.h>
#include <kit/engine/PDFAnnotationSquare.h>
#include <kit/engine/PDFAnnotationText.h>
#include <kit/engine/PDFBorder.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>
#include <kit/engine/PDFRenderOptions.h>
#include <kit/engine/PageGeometry.h>

#include <QPainter>
#include <QtTest>

#include <thread>

using namespace AnnotationFixtures;

namespace {

// A blank 200 × 200 page, with a stamp whose picture is a green box when withStamp is set.
std::shared_ptr<PDFDocument> blankDocument(bool withStamp = false)
{
    PdfFixtures::Page page;
    page.mediaBox = QRectF(0, 0, 200, 200);
    if (withStamp) {
        page.annotations = {
            { "/Subtype /Stamp /Name /Approved /Rect [20 120 80 180]", "0 0.8 0 rg 0 0 60 60 re f",
                QRectF(0, 0, 60, 60) },
            // A square whose stored picture (a blue fill) disagrees with its properties.
            { "/Subtype /Square /Rect [120 20 180 80] /C [1 0 0] /BS << /W 4 >>",
                "0 0 1 rg 0 0 60 60 re f", QRectF(0, 0, 60, 60) },
        };
    }
    PdfFixtures::Document description;
    description.pages = { page };
    return open(PdfFixtures::build(description));
}

// The colour at a page point of an image showing the whole 200 × 200 page at scale 1.
QColor at(const QImage &image, QPointF pagePoint)
{
    return image.pixelColor(QPoint(int(pagePoint.x()), int(199 - pagePoint.y())));
}

bool near(const QColor &a, const QColor &b)
{
    return std::abs(a.red() - b.red()) < 60 && std::abs(a.green() - b.green()) < 60
        && std::abs(a.blue() - b.blue()) < 60;
}

QImage drawn(const PDFAnnotation &annotation)
{
    QImage image(200, 200, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    annotation.drawWithBox(painter, PDFDisplayBox::MediaBox);
    return image;
}

QImage rendered(const PDFPage &page, bool forPrinting = false)
{
    return page.imageForBox(PDFDisplayBox::MediaBox, QSize(200, 200), forPrinting);
}

std::shared_ptr<PDFAnnotation> annotationOfKind(const QString &kind)
{
    if (kind == QLatin1String("line") || kind == QLatin1String("empty line")) {
        auto line = std::make_shared<PDFAnnotationLine>();
        line->initWithBounds(QRectF(10, 90, 180, 20));
        line->setStartPoint(QPointF(0, 10));
        line->setEndPoint(kind == QLatin1String("line") ? QPointF(180, 10) : QPointF(0, 10));
        line->setEndLineStyle(PDFAnnotationLine::ClosedArrow);
        line->border()->setLineWidth(4);
        line->setColor(Qt::red);
        return line;
    }
    if (kind == QLatin1String("circle") || kind == QLatin1String("empty circle")) {
        auto circle = std::make_shared<PDFAnnotationCircle>();
        circle->initWithBounds(
            kind == QLatin1String("circle") ? QRectF(50, 50, 100, 100) : QRectF(50, 50, 0, 100));
        circle->setInteriorColor(Qt::green);
        circle->border()->setLineWidth(4);
        circle->setColor(Qt::red);
        return circle;
    }
    if (kind == QLatin1String("ink")) {
        auto ink = std::make_shared<PDFAnnotationInk>();
        ink->initWithBounds(QRectF(50, 50, 100, 100));
        auto path = std::make_shared<BezierPath>();
        path->moveTo({ 10, 10 });
        path->lineTo({ 90, 10 });
        ink->addBezierPath(path);
        ink->border()->setLineWidth(4);
        ink->setColor(Qt::blue);
        return ink;
    }
    if (kind == QLatin1String("free text")) {
        auto text = std::make_shared<PDFAnnotationFreeText>();
        text->initWithBounds(QRectF(20, 20, 160, 60));
        text->setColor(Qt::yellow);
        QFont font(QStringLiteral("Helvetica"));
        font.setPointSizeF(24);
        text->setFont(font);
        text->setFontColor(Qt::red);
        text->setAlignment(PDFAnnotationFreeText::Right);
        text->setContents(QStringLiteral("WWW"));
        return text;
    }
    if (kind == QLatin1String("note")) {
        auto note = std::make_shared<PDFAnnotationText>();
        note->initWithBounds(QRectF(100, 100, 24, 24));
        note->setColor(QColor(255, 200, 0));
        return note;
    }
    auto highlight = std::make_shared<PDFAnnotationMarkup>();
    highlight->initWithBounds(QRectF(40, 40, 120, 20), QStringLiteral("Highlight"), {});
    highlight->setQuadrilateralPoints({ { 0, 20 }, { 120, 20 }, { 0, 0 }, { 120, 0 } });
    highlight->setColor(Qt::yellow);
    return highlight;
}

} // namespace

class AnnotationDrawingTest : public QObject
{
    Q_OBJECT

private slots:
    void eachKindDrawsItself_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<QColor>("expected");
        QTest::addColumn<QPointF>("clearPoint"); // stays white
        QTest::newRow("line") << "line" << QPointF(100, 100) << QColor(Qt::red)
                              << QPointF(100, 110);
        QTest::newRow("line's closed arrow")
            << "line" << QPointF(184, 103) << QColor(Qt::red) << QPointF(184, 108);
        QTest::newRow("empty line")
            << "empty line" << QPointF(10, 100) << QColor(Qt::white) << QPointF(100, 100);
        QTest::newRow("circle fill")
            << "circle" << QPointF(100, 100) << QColor(Qt::green) << QPointF(53, 53);
        QTest::newRow("circle stroke")
            << "circle" << QPointF(100, 148) << QColor(Qt::red) << QPointF(146, 146);
        QTest::newRow("empty circle")
            << "empty circle" << QPointF(50, 100) << QColor(Qt::white) << QPointF(100, 100);
        QTest::newRow("ink") << "ink" << QPointF(100, 60) << QColor(Qt::blue) << QPointF(100, 70);
        QTest::newRow("free text background")
            << "free text" << QPointF(25, 25) << QColor(Qt::yellow) << QPointF(10, 10);
        QTest::newRow("note") << "note" << QPointF(103, 103) << QColor(255, 200, 0)
                              << QPointF(130, 130);
        QTest::newRow("highlight")
            << "highlight" << QPointF(100, 50) << QColor(Qt::yellow) << QPointF(100, 65);
    }
    void eachKindDrawsItself()
    {
        QFETCH(QString, kind);
        QFETCH(QPointF, point);
        QFETCH(QColor, expected);
        QFETCH(QPointF, clearPoint);
        auto doc = blankDocument();
        const auto annotation = annotationOfKind(kind);
        doc->pageAtIndex(0)->addAnnotation(annotation);
        const QImage image = drawn(*annotation);
        QVERIFY2(near(at(image, point), expected), qPrintable(at(image, point).name()));
        QVERIFY2(near(at(image, clearPoint), Qt::white), qPrintable(at(image, clearPoint).name()));
        // The file's picture, which other readers and engine rendering show, agrees; MuPDF
        // draws its own note icon.
        if (kind == QLatin1String("note"))
            return;
        const QImage page = rendered(*doc->pageAtIndex(0));
        QVERIFY2(near(at(page, point), expected), qPrintable(at(page, point).name()));
        QVERIFY2(near(at(page, clearPoint), Qt::white), qPrintable(at(page, clearPoint).name()));
    }

    void freeTextWritesInItsFontColourAtItsAlignment()
    {
        const auto text = annotationOfKind(QStringLiteral("free text"));
        // Without a page the painter is page space: flip it the way a page would.
        QImage image(200, 200, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setTransform(QTransform(1, 0, 0, -1, 0, 200));
        text->drawWithBox(painter, PDFDisplayBox::MediaBox);
        painter.end();
        int redLeft = 0;
        int redRight = 0;
        for (int y = 120; y < 180; ++y) {
            for (int x = 20; x < 180; ++x) {
                if (near(image.pixelColor(x, y), Qt::red))
                    (x < 100 ? redLeft : redRight)++;
            }
        }
        QVERIFY(redRight > 20);
        QCOMPARE(redLeft, 0);
    }

    void annotationsStayInPageSpaceOnTurnedAndCroppedPages_data()
    {
        QTest::addColumn<int>("rotation");
        for (const int rotation : { 0, 90, 180, 270 })
            QTest::newRow(qPrintable(QString::number(rotation))) << rotation;
    }
    void annotationsStayInPageSpaceOnTurnedAndCroppedPages()
    {
        QFETCH(int, rotation);
        PdfFixtures::Page turned;
        turned.mediaBox = QRectF(0, 0, 200, 200);
        turned.cropBox = QRectF(QPointF(10, 20), QPointF(190, 190));
        turned.rotate = rotation;
        PdfFixtures::Document document;
        document.pages = { turned };
        const auto doc = open(PdfFixtures::build(document));
        const auto page = doc->pageAtIndex(0);
        auto square = std::make_shared<PDFAnnotationSquare>();
        square->initWithBounds(QRectF(40, 50, 30, 20));
        square->setInteriorColor(Qt::green);
        square->setBorder(nullptr);
        page->addAnnotation(square);

        const PageGeometry geometry(page->boundsForBox(PDFDisplayBox::CropBox), rotation);
        const QSize size = geometry.viewSize().toSize();
        const QPoint inside = geometry.viewPoint(QPointF(55, 60)).toPoint();
        const QPoint outside = geometry.viewPoint(QPointF(80, 60)).toPoint();
        const QImage image = page->imageForBox(PDFDisplayBox::CropBox, size);
        QVERIFY(near(image.pixelColor(inside), Qt::green));
        QVERIFY(near(image.pixelColor(outside), Qt::white));
        QImage overlay(size, QImage::Format_ARGB32_Premultiplied);
        overlay.fill(Qt::white);
        QPainter painter(&overlay);
        square->drawWithBox(painter, PDFDisplayBox::CropBox);
        painter.end();
        QVERIFY(near(overlay.pixelColor(inside), Qt::green));
        QVERIFY(near(overlay.pixelColor(outside), Qt::white));
        QCOMPARE(reopen(*doc)->pageAtIndex(0)->annotations()[0]->bounds(), square->bounds());
    }

    void renderingShowsOnlyDisplayedAnnotationsUnlessAsked()
    {
        auto doc = blankDocument();
        const auto page = doc->pageAtIndex(0);
        const auto circle = annotationOfKind(QStringLiteral("circle"));
        page->addAnnotation(circle);
        QVERIFY(near(at(rendered(*page), QPointF(100, 100)), Qt::green));
        QCOMPARE(page->annotationAtPoint(QPointF(100, 100)), circle);

        const quint64 revision = page->revision();
        circle->setShouldDisplay(false);
        QVERIFY(page->revision() > revision);
        QVERIFY(near(at(rendered(*page), QPointF(100, 100)), Qt::white));
        QVERIFY(!page->annotationAtPoint(QPointF(100, 100)));
        // Edits of a hidden annotation change no rendered page, but reach the next rendering.
        const quint64 hidden = page->revision();
        circle->setColor(Qt::blue);
        QCOMPARE(page->revision(), hidden);

        circle->setShouldDisplay(true);
        QVERIFY(near(at(rendered(*page), QPointF(100, 148)), Qt::blue));
        circle->setShouldPrint(false);
        QVERIFY(near(at(rendered(*page), QPointF(100, 100)), Qt::green));
        QVERIFY(near(at(rendered(*page, true), QPointF(100, 100)), Qt::white));
        // Nothing of this is written into the file.
        const auto read = reopen(*doc)->pageAtIndex(0)->annotations();
        QCOMPARE(read.size(), size_t(1));
        QVERIFY(read[0]->shouldDisplay());

        // A render can include a hidden annotation, and leaves it hidden.
        circle->setShouldPrint(true);
        circle->setShouldDisplay(false);
        const quint64 unchanged = page->revision();
        PDFRenderOptions options;
        options.includedAnnotations = { circle };
        const auto source = page->renderSource(PDFDisplayBox::MediaBox, options);
        QVERIFY(source);
        // Taken on this thread, rasterised on another one.
        QImage image(200, 200, QImage::Format_ARGB32_Premultiplied);
        bool rendered = false;
        std::thread worker(
            [&] { rendered = source->render(image, source->geometry().pageToView()); });
        worker.join();
        QVERIFY(rendered);
        QVERIFY(near(at(image, QPointF(100, 100)), Qt::green));
        QCOMPARE(page->revision(), unchanged);
        QVERIFY(!circle->shouldDisplay());
        QVERIFY(near(at(::rendered(*page), QPointF(100, 100)), Qt::white));

        // An annotation of another page is not this page's to show.
        auto other = blankDocument();
        const auto square = std::make_shared<PDFAnnotationSquare>();
        square->initWithBounds(QRectF(20, 20, 40, 40));
        square->setInteriorColor(Qt::red);
        other->pageAtIndex(0)->addAnnotation(square);
        square->setShouldDisplay(false);
        options.includedAnnotations = { square };
        const QImage foreign = page->imageForBox(PDFDisplayBox::MediaBox, QSize(200, 200), options);
        QVERIFY(near(at(foreign, QPointF(40, 40)), Qt::white));
        // Printing still leaves out what is not printed.
        circle->setShouldPrint(false);
        options.includedAnnotations = { circle };
        options.forPrinting = true;
        const QImage printed = page->imageForBox(PDFDisplayBox::MediaBox, QSize(200, 200), options);
        QVERIFY(near(at(printed, QPointF(100, 100)), Qt::white));
    }

    void aPageCarriesItsFileAnnotationsIntoAnotherDocument()
    {
        auto source = blankDocument(true);
        const auto page = source->pageAtIndex(0);
        auto target = std::make_shared<PDFDocument>();
        QVERIFY(target->init());
        target->insertPage(page, 0); // before anything asked for the annotations
        QCOMPARE(page->annotations().size(), size_t(2));
        QCOMPARE(page->annotations()[0]->type(), QStringLiteral("Stamp"));
        const QImage image = rendered(*page);
        QVERIFY(near(at(image, QPointF(50, 150)), QColor(0, 204, 0)));
        QVERIFY(near(at(image, QPointF(150, 50)), Qt::blue));
        const auto read = reopen(*target)->pageAtIndex(0);
        QCOMPARE(read->annotations().size(), size_t(2));
        QVERIFY(near(at(rendered(*read), QPointF(50, 150)), QColor(0, 204, 0)));
    }

    void sanitisingRedrawsWhatItCanAndKeepsStamps()
    {
        auto doc = blankDocument(true);
        const auto page = doc->pageAtIndex(0);
        const auto &annotations = page->annotations();
        QCOMPARE(annotations.size(), size_t(2));
        QVERIFY(near(at(rendered(*page), QPointF(150, 50)), Qt::blue));
        for (const auto &annotation : annotations) {
            QVERIFY(annotation->hasAppearanceStream());
            annotation->removeAllAppearanceStreams();
        }
        QVERIFY(annotations[0]->hasAppearanceStream()); // the stamp's picture is its own
        QVERIFY(!annotations[1]->hasAppearanceStream());
        const QImage image = rendered(*page);
        QVERIFY(near(at(image, QPointF(50, 150)), QColor(0, 204, 0)));
        QVERIFY(near(at(image, QPointF(150, 50)), Qt::white));
        QVERIFY(near(at(image, QPointF(122, 50)), Qt::red));
        // The stamp draws its picture on its own, and keeps it when it moves on the page.
        QVERIFY(near(at(drawn(*annotations[0]), QPointF(50, 150)), QColor(0, 204, 0)));
        const auto stamp = annotations[0];
        page->removeAnnotation(stamp);
        page->addAnnotation(stamp);
        stamp->setBounds(QRectF(20, 20, 60, 60));
        QVERIFY(near(at(rendered(*page), QPointF(50, 50)), QColor(0, 204, 0)));
        QVERIFY(
            near(at(rendered(*reopen(*doc)->pageAtIndex(0)), QPointF(50, 50)), QColor(0, 204, 0)));
        // In another document, too.
        auto other = blankDocument();
        page->removeAnnotation(stamp);
        other->pageAtIndex(0)->addAnnotation(stamp);
        QVERIFY(near(at(rendered(*other->pageAtIndex(0)), QPointF(50, 50)), QColor(0, 204, 0)));
        QVERIFY(near(at(rendered(*page), QPointF(50, 50)), Qt::white));
    }
};

QTEST_MAIN(AnnotationDrawingTest)
#include "AnnotationDrawingTest.moc"
