#include "support/AnnotationTestKit.h"

#include <app/support/AppTestEnvironment.h>

#include <annotation/FDAnnotationMarkup.h>
#include <annotation/FDAnnotationText.h>
#include <annotation/PDFAnnotation+XExtensions.h>
#include <app/FDDefaults.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationText.h>
#include <kit/engine/PDFBorder.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <cxxabi.h>
#include <limits>

using namespace AnnotationTestKit;

namespace {

// The name of the class an annotation really is.
QString className(const PDFAnnotation &annotation)
{
    int status = 0;
    char *name = abi::__cxa_demangle(typeid(annotation).name(), nullptr, nullptr, &status);
    const QString text = QString::fromLatin1(name ? name : "?");
    std::free(name);
    return text;
}

} // namespace

class PDFAnnotationXExtensionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppTestEnvironment::clearStore();
        FDDefaults::registerDefaults();
    }

    void viewDecidesByKind_data()
    {
        QTest::addColumn<QString>("type");
        // markup, resizable, movable, editable, literal, border, valid, overlay
        QTest::addColumn<QString>("expected");
        for (const auto &[type, expected] :
            std::initializer_list<std::pair<const char *, const char *>> {
                { "Highlight", "m---l-v-" }, { "Underline", "m---l-v-" },
                { "StrikeOut", "m---l-v-" }, { "Ink", "--M--bvo" }, { "Line", "-rM--bvo" },
                { "Circle", "-rM--bvo" }, { "Square", "-rM--bvo" }, { "FreeText", "-rMelbvo" },
                { "Text", "--Melbvo" }, { "Stamp", "-rM--bvo" }, { "Link", "-rM--b--" },
                { "Popup", "-rM--b--" }, { "Polygon", "-rM--bv-" } })
            QTest::newRow(type) << QString(type) << QString(expected);
    }
    void viewDecidesByKind()
    {
        QFETCH(QString, type);
        QFETCH(QString, expected);
        const auto annotation = engineAnnotation(type, QRectF(10, 10, 50, 50));
        QVERIFY(annotation);
        const bool answers[] = { isMarkup(*annotation), isResizable(*annotation),
            isMovable(*annotation), isEditable(*annotation), isLiteral(*annotation),
            hasBorder(*annotation), isValid(*annotation), shouldDisplayOnOverlay(*annotation) };
        QString shown;
        for (int i = 0; i < 8; ++i)
            shown += answers[i] ? QStringLiteral("mrMelbvo").at(i) : QLatin1Char('-');
        QCOMPARE(shown, expected);
    }

    void borderSettersInstallNewBorders_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<bool>("startsWithBorder");
        QTest::addColumn<QString>("steps"); // "w=<width> s=<style> d=<dash,dash>", in order
        // "border"/"none", width/style/dash, then how many borders were installed
        QTest::addColumn<QString>("expected");
        QTest::newRow("width 0 removes the border") << "Square" << true << "w=0"
                                                    << "none 0/0/ 1";
        QTest::newRow("negative width too") << "Square" << true << "w=-2"
                                            << "none 0/0/ 1";
        QTest::newRow("style 0 after width 0") << "Square" << true << "w=0 s=0"
                                               << "none 0/0/ 2";
        QTest::newRow("style 1 after width 0: default width") << "Square" << true << "w=0 s=1"
                                                              << "border 1/1/ 2";
        QTest::newRow("width keeps dash and style") << "Square" << true << "s=1 d=4,2 w=6"
                                                    << "border 6/1/4,2 3";
        QTest::newRow("style keeps width and dash") << "Square" << true << "w=5 d=3,1 s=0"
                                                    << "border 5/0/3,1 3";
        QTest::newRow("dash keeps width and style") << "Square" << true << "w=2.5 s=1 d=1,1"
                                                    << "border 2.5/1/1,1 3";
        QTest::newRow("empty dash on no border") << "Square" << false << "d="
                                                 << "none 0/0/ 1";
        QTest::newRow("dash on no border makes one") << "Square" << false << "d=2,2"
                                                     << "border 1/0/2,2 1";
        QTest::newRow("width on no border: solid") << "Square" << false << "w=4"
                                                   << "border 4/0/ 1";
        QTest::newRow("markup takes no border") << "Highlight" << false << "w=4 s=1 d=2,2"
                                                << "none 0/0/ 0";
    }
    void borderSettersInstallNewBorders()
    {
        QFETCH(QString, type);
        QFETCH(bool, startsWithBorder);
        QFETCH(QString, steps);
        QFETCH(QString, expected);
        const auto annotation = engineAnnotation(type, QRectF(0, 0, 40, 40));
        if (!startsWithBorder)
            annotation->setBorder(nullptr);
        QList<std::shared_ptr<PDFBorder>> installed;
        int otherChanges = 0;
        annotation->addObserver(this,
            [&](PDFAnnotation &, const QString &key, const QVariant &, const QVariant &value) {
                if (key == QLatin1String("border"))
                    installed.append(value.value<std::shared_ptr<PDFBorder>>());
                else
                    ++otherChanges;
            });
        for (const QString &step : steps.split(QLatin1Char(' '))) {
            const QString value = step.mid(2);
            QList<double> pattern;
            for (const QString &part : value.split(QLatin1Char(','), Qt::SkipEmptyParts))
                pattern.append(part.toDouble());
            if (step.startsWith(QLatin1Char('w')))
                setBorderLineWidth(*annotation, value.toDouble());
            else if (step.startsWith(QLatin1Char('s')))
                setBorderStyle(*annotation, value.toInt());
            else
                setBorderDashPattern(*annotation, pattern);
        }
        annotation->removeObserver(this);
        QStringList dash;
        for (const double length : borderDashPattern(*annotation))
            dash.append(QString::number(length));
        QCOMPARE(QStringLiteral("%1 %2/%3/%4 %5")
                     .arg(annotation->border() ? "border" : "none")
                     .arg(borderLineWidth(*annotation))
                     .arg(borderStyle(*annotation))
                     .arg(dash.join(QLatin1Char(',')))
                     .arg(installed.size()),
            expected);
        // Each step installs a new border, never edits the one in place.
        QCOMPARE(otherChanges, 0);
        for (int i = 1; i < installed.size(); ++i)
            QVERIFY(!installed[i] || installed[i] != installed[i - 1]);
    }

    void resizeHandles_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QRectF>("bounds");
        QTest::addColumn<double>("scale");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<int>("handle");
        const QRectF box(100, 100, 60, 40); // right edge 160, middle height 120
        for (const double scale : { 0.5, 1.0, 2.0 }) {
            const QString at = QStringLiteral(" at %1").arg(scale);
            const double s = 4.0 / scale;
            auto row = [&](const char *name) -> QTestData & {
                return QTest::newRow(qPrintable(QLatin1String(name) + at))
                    << "Square" << box << scale;
            };
            row("3.9/scale right of the right edge") << QPointF(160 + 3.9 / scale, 120) << 4;
            row("4.0/scale right of the right edge") << QPointF(160 + s, 120) << 0;
            row("4.0/scale left of the left edge") << QPointF(100 - s, 120) << 1;
            row("just inside the right handle's square from within")
                << QPointF(160 - s, 120 + s - 0.01) << 4;
            row("above the right handle's square") << QPointF(160, 120 + s) << 0;
            row("bottom-right corner") << QPointF(160, 100) << 6;
            row("top-right corner") << QPointF(160, 140) << 12;
            row("bottom-left corner") << QPointF(100, 100) << 3;
            row("top-left corner") << QPointF(100, 140) << 9;
            row("middle of the bottom") << QPointF(130, 100 - s) << 2;
            row("middle of the top") << QPointF(130, 140 + s - 0.01) << 8;
            row("middle of the box") << QPointF(130, 120) << 0;
        }
        // A handle's square has side 4 at scale 2, 16 at 0.5.
        QTest::newRow("5 from a corner at 2") << "Square" << box << 2.0 << QPointF(105, 105) << 0;
        QTest::newRow("5 from a corner at 0.5") << "Square" << box << 0.5 << QPointF(105, 105) << 3;
        // With no width, sides and corners overlap and the corners answer first.
        const QRectF thin(50, 50, 0, 30);
        QTest::newRow("zero width, top") << "Circle" << thin << 1.0 << QPointF(50, 80) << 12;
        QTest::newRow("zero width, bottom") << "Circle" << thin << 1.0 << QPointF(50, 50) << 6;
        QTest::newRow("zero width, middle") << "Circle" << thin << 1.0 << QPointF(50, 65) << 4;
        // The right and left squares are the same square: the right one answers.
        QTest::newRow("zero width, left of it") << "Circle" << thin << 1.0 << QPointF(46, 65) << 4;
        QTest::newRow("zero width, beside") << "Circle" << thin << 1.0 << QPointF(50, 72) << 0;
        QTest::newRow("stamp") << "Stamp" << box << 1.0 << QPointF(160, 140) << 12;
        QTest::newRow("ink has none") << "Ink" << box << 1.0 << QPointF(160, 140) << 0;
        QTest::newRow("note has none") << "Text" << box << 1.0 << QPointF(160, 140) << 0;
        QTest::newRow("markup has none") << "Underline" << box << 1.0 << QPointF(160, 140) << 0;
        // A line is held by its end points, not its box.
        QTest::newRow("line start") << "Line" << box << 1.0 << QPointF(101, 101) << 1;
        QTest::newRow("line end") << "Line" << box << 1.0 << QPointF(159, 139) << 4;
        QTest::newRow("line box corner") << "Line" << box << 1.0 << QPointF(160, 100) << 0;
    }
    void resizeHandles()
    {
        QFETCH(QString, type);
        QFETCH(QRectF, bounds);
        QFETCH(double, scale);
        QFETCH(QPointF, point);
        QFETCH(int, handle);
        const auto annotation = appAnnotation(type, bounds);
        QVERIFY(annotation);
        QCOMPARE(int(resizeHandleForPoint(*annotation, point, scale)), handle);
    }

    void hitTestsAnswerByClassThenKind_data()
    {
        QTest::addColumn<QString>("type"); // "engine " first: the engine's class
        QTest::addColumn<QRectF>("bounds");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<bool>("hit");
        const QRectF note(100, 100, 24, 24);
        QTest::newRow("note, 2 outside") << "Text" << note << QPointF(98, 98) << true;
        QTest::newRow("note, 2.1 outside") << "Text" << note << QPointF(97.9, 98) << false;
        QTest::newRow("note, past the far side") << "Text" << note << QPointF(125.9, 125.9) << true;
        QTest::newRow("note, on the grown far edge")
            << "Text" << note << QPointF(126, 110) << false;
        QTest::newRow("engine note keeps its bounds")
            << "engine Text" << note << QPointF(98, 98) << false;
        const QRectF box(10, 10, 100, 50); // a line runs from (10, 10) to (110, 60)
        QTest::newRow("square, lower-left edge") << "Square" << box << QPointF(10, 10) << true;
        QTest::newRow("square, upper edge") << "Square" << box << QPointF(50, 60) << false;
        QTest::newRow("square, empty middle") << "Square" << box << QPointF(60, 35) << true;
        QTest::newRow("circle, corner") << "Circle" << box << QPointF(12, 12) << false;
        QTest::newRow("engine circle, corner")
            << "engine Circle" << box << QPointF(12, 12) << false;
        QTest::newRow("circle, middle") << "Circle" << box << QPointF(60, 35) << true;
        QTest::newRow("line, on it") << "Line" << box << QPointF(60, 35) << true;
        QTest::newRow("line, box corner") << "Line" << box << QPointF(108, 12) << false;
        QTest::newRow("engine line, box corner")
            << "engine Line" << box << QPointF(108, 12) << false;
        QTest::newRow("ink without strokes") << "Ink" << box << QPointF(60, 35) << false;
        QTest::newRow("stamp") << "Stamp" << box << QPointF(60, 35) << true;
    }
    void hitTestsAnswerByClassThenKind()
    {
        QFETCH(QString, type);
        QFETCH(QRectF, bounds);
        QFETCH(QPointF, point);
        QFETCH(bool, hit);
        const auto annotation = type.startsWith(QLatin1String("engine "))
            ? engineAnnotation(type.mid(7), bounds)
            : appAnnotation(type, bounds);
        QVERIFY(annotation);
        if (auto *line = dynamic_cast<PDFAnnotationLine *>(annotation.get()))
            line->setEndPoint(QPointF(bounds.width(), bounds.height()));
        QCOMPARE(hitTest(*annotation, point), hit);
    }

    void pageIndexAndDestination()
    {
        const auto document = documentOf({ {}, {}, {} });
        QVERIFY(document);
        const auto square = appAnnotation(QStringLiteral("Square"), QRectF(30, 40, 50, 60));
        QCOMPARE(pageIndex(*square), std::numeric_limits<qint64>::max());
        QVERIFY(!destination(*square)->page());

        const auto page = document->pageAtIndex(2);
        page->addAnnotation(square);
        QCOMPARE(pageIndex(*square), qint64(2));
        const auto target = destination(*square);
        QCOMPARE(target->page(), page);
        QCOMPARE(target->point(), QPointF(30, 100));
    }

    void registerUserNameStampsAuthorAndTime()
    {
        const auto note = appAnnotation(QStringLiteral("Text"), QRectF(0, 0, 0, 0));
        UserDefaults::standard().setObject(QStringLiteral("Ada Lovelace"), FDDefaults::UserName);
        const QDateTime before = QDateTime::currentDateTime().addMSecs(-1);
        registerUserName(*note);
        QCOMPARE(note->userName(), QStringLiteral("Ada Lovelace"));
        QVERIFY(note->modificationDate() >= before);
        QVERIFY(note->modificationDate() <= QDateTime::currentDateTime().addSecs(1));

        // With no name anywhere, the author stays as it was and only the time changes.
        UserDefaults::standard().removeObjectForKey(FDDefaults::UserName);
        UserDefaults::standard().registerDefaults({ { FDDefaults::UserName, QVariant() } });
        const auto square = appAnnotation(QStringLiteral("Square"), QRectF(0, 0, 5, 5));
        square->setUserName(QStringLiteral("Earlier Author"));
        registerUserName(*square);
        FDDefaults::registerDefaults();
        QCOMPARE(square->userName(), QStringLiteral("Earlier Author"));
        QVERIFY(square->modificationDate().isValid());
    }

    void everyKindHasATintedIcon()
    {
        for (const char *kind : { "Highlight", "Underline", "StrikeOut", "Ink", "Line", "Circle",
                 "Square", "FreeText", "Text", "Stamp", "Link", "Popup" }) {
            const QString type = QLatin1String(kind);
            const QIcon icon = iconForType(type);
            QVERIFY(!icon.isNull());
            const QImage image
                = icon.pixmap(18, 18).toImage().convertToFormat(QImage::Format_ARGB32);
            QCOMPARE(image.size(), QSize(18, 18));
            // Something is drawn, in the colour of text and nothing else.
            const QColor text = QGuiApplication::palette().color(QPalette::Text);
            int drawn = 0;
            for (int i = 0; i < 18 * 18; ++i) {
                const QColor pixel = image.pixelColor(i % 18, i / 18);
                drawn += pixel.alpha() >= 128;
                QVERIFY(pixel.alpha() < 128
                    || (qAbs(pixel.red() - text.red()) <= 3
                        && qAbs(pixel.green() - text.green()) <= 3
                        && qAbs(pixel.blue() - text.blue()) <= 3));
            }
            QVERIFY2(drawn >= 10, qPrintable(QString::number(drawn)));
            // The same icon again comes from the cache.
            QCOMPARE(iconForType(type).cacheKey(), icon.cacheKey());
            const auto annotation = engineAnnotation(type, QRectF(0, 0, 10, 10));
            QCOMPARE(typeIcon(*annotation).cacheKey(), icon.cacheKey());
        }
    }

    void fiveHundredAnnotationsAreHitTestedQuickly()
    {
        // A page crowded with every kind the view hit-tests, none of them under the point.
        std::vector<std::shared_ptr<PDFAnnotation>> annotations;
        const QStringList types { "Square", "Circle", "Line", "Ink", "Text", "FreeText", "Stamp" };
        for (int i = 0; i < 500; ++i) {
            const QRectF bounds(10 + (i % 25) * 20, 10 + (i / 25) * 30, 15, 20);
            if (i % 8 == 7) {
                auto markup = std::make_shared<FDAnnotationMarkup>();
                QVERIFY(markup->initWithBounds(bounds));
                markup->setQuadrilateralPoints({ { 0, 20 }, { 15, 20 }, { 0, 0 }, { 15, 0 } });
                annotations.push_back(markup);
                continue;
            }
            auto annotation = appAnnotation(types[i % types.size()], bounds);
            if (auto *ink = dynamic_cast<PDFAnnotationInk *>(annotation.get())) {
                auto path = std::make_shared<BezierPath>();
                path->moveTo({ 0, 0 });
                path->curveTo({ 15, 20 }, { 5, 20 }, { 10, 0 });
                ink->addBezierPath(path);
            }
            annotations.push_back(annotation);
        }
        const QPointF point(600, 700);
        qint64 best = std::numeric_limits<qint64>::max();
        int hits = 0;
        for (int round = 0; round < 50; ++round) {
            QElapsedTimer timer;
            timer.start();
            for (const auto &annotation : annotations)
                hits += hitTest(*annotation, point) ? 1 : 0;
            best = std::min(best, timer.nsecsElapsed());
        }
        QCOMPARE(hits, 0);
#ifdef NDEBUG
        const qint64 limit = 50'000;
#else
        // Unoptimised code is several times slower; the limit holds for the shipped build.
        const qint64 limit = 250'000;
#endif
        QVERIFY2(best <= limit, qPrintable(QStringLiteral("%1 ns").arg(best)));
    }

    void annotationsOfASavedFileComeBackAsTheApplicationsClasses()
    {
        PdfFixtures::Page page;
        page.lines = { QStringLiteral("Marked words on the first line") };
        page.links
            = { { QRectF(72, 600, 200, 20), QStringLiteral("https://example.org/a"), -1, {} } };
        for (const char *entries :
            { "/Subtype /Highlight /Rect [70 700 300 720] /Contents (marked) "
              "/QuadPoints [72 718 290 718 72 702 290 702]",
                "/Subtype /Ink /Rect [100 100 200 200] /InkList [[110 110 150 180 190 120]]",
                "/Subtype /Line /Rect [90 290 210 360] /L [100 300 200 350] /BS << /W 2 >>",
                "/Subtype /Circle /Rect [300 100 400 160]",
                "/Subtype /Square /Rect [300 200 400 260]",
                "/Subtype /FreeText /Rect [300 300 450 330] /DA (/Helv 12 Tf 0 0 1 rg) /Contents "
                "(box)",
                "/Subtype /Text /Rect [400 400 424 424] /Name /Help /Contents (note)" })
            page.annotations.append({ entries, {}, {} });
        page.annotations.append({ "/Subtype /Stamp /Rect [50 450 150 500] /Name /Approved",
            "0 0 1 rg 0 0 100 50 re f", QRectF(0, 0, 100, 50) });
        PdfFixtures::Document description;
        description.pages = { page };
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("annotated.pdf"));
        QVERIFY(PdfFixtures::write(description, path));

        FDPDFView view;
        view.resize(600, 500);
        view.loadDocument(QUrl::fromLocalFile(path));
        view.show();
        QTRY_VERIFY(!view.isLoading());
        QVERIFY(view.fdDocument());
        const auto &annotations = view.document()->pageAtIndex(0)->annotations();
        QStringList made;
        for (const auto &annotation : annotations)
            made.append(className(*annotation));
        QCOMPARE(made,
            QStringList({ "PDFAnnotationLink", "FDAnnotationMarkup", "FDAnnotationInk",
                "FDAnnotationLine", "FDAnnotationCircle", "FDAnnotationSquare",
                "FDAnnotationFreeText", "FDAnnotationText", "PDFAnnotationStamp" }));

        // The classes' own rules are tested above; here the file's geometry and values reach them.
        QCOMPARE(static_cast<const PDFAnnotationText &>(*annotations[7]).iconType(),
            int(PDFAnnotationText::Help));
        const auto &line = *annotations[3];
        QVERIFY(hitTest(line, QPointF(150, 325)));
        QVERIFY(!hitTest(line, QPointF(200, 300)));
        QVERIFY(typesForPasteboard(*annotations[8]).isEmpty());
        QVERIFY(!keysForValuesToObserveForUndo(*annotations[8]));
        QVERIFY(isValid(*annotations[8]));
        QVERIFY(!isValid(*annotations[0]));
        // Reading a file applies no settings: the file's own values stand.
        QCOMPARE(borderLineWidth(line), 2.0);
        view.setDocument(nullptr);
    }
};

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QApplication app(argc, argv);
    // A text colour no picture has of itself, so that tinting shows.
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Text, QColor(200, 30, 90));
    QApplication::setPalette(palette);
    PDFAnnotationXExtensionsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "PDFAnnotationXExtensionsTest.moc"
