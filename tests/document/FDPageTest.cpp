// Pages as a user sees them: thumbnails of the right size and orientation, with the bookmark
// ribbon and the theme's frame, showing the annotations the view's overlay draws without
// disturbing the reading view; the ribbon's geometry; and clicks that reach overlay annotations.

#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <document/PDFPage+XExtensions.h>

#include "support/DocumentFixtures.h"

#include <annotation/FDAnnotationCircle.h>
#include <annotation/FDAnnotationInk.h>
#include <annotation/FDAnnotationMarkup.h>
#include <annotation/FDAnnotationSquare.h>
#include <annotation/PDFAnnotation+XExtensions.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/BezierPath.h>
#include <kit/base/Geometry.h>
#include <kit/engine/PDFPage.h>
#include <support/PdfFixtures.h>

#include <QTemporaryDir>
#include <QtTest>

namespace {

// The only page of a document (kept open for the whole run) of the given box and rotation.
std::shared_ptr<FDPage> pageOf(QRectF mediaBox, int rotation = 0)
{
    static QTemporaryDir folder;
    static std::vector<std::shared_ptr<FDDocument>> open;
    PdfFixtures::Page page;
    page.mediaBox = mediaBox;
    page.rotate = rotation;
    PdfFixtures::Document description;
    description.pages = { page };
    const QString path = folder.filePath(QString::number(open.size()) + QStringLiteral(".pdf"));
    if (!PdfFixtures::write(description, path))
        qFatal("cannot write %s", qPrintable(path));
    open.push_back(DocumentFixtures::open(path));
    return std::dynamic_pointer_cast<FDPage>(open.back()->pageAtIndex(0));
}

bool near(const QColor &a, const QColor &b)
{
    return std::abs(a.red() - b.red()) < 40 && std::abs(a.green() - b.green()) < 40
        && std::abs(a.blue() - b.blue()) < 40;
}

// The kinds the tests put on a 200 × 200 page, all over its middle, in green.
std::shared_ptr<PDFAnnotation> annotationOfKind(const QString &kind)
{
    const QRectF bounds(50, 50, 100, 100);
    std::shared_ptr<PDFAnnotation> made;
    if (kind == QLatin1String("circle") || kind == QLatin1String("square")) {
        std::shared_ptr<PDFAnnotationShape> shape;
        if (kind == QLatin1String("circle"))
            shape = std::make_shared<FDAnnotationCircle>();
        else
            shape = std::make_shared<FDAnnotationSquare>();
        shape->initWithBounds(bounds);
        shape->setInteriorColor(Qt::green);
        made = shape;
    } else if (kind == QLatin1String("ink")) {
        auto ink = std::make_shared<FDAnnotationInk>();
        ink->initWithBounds(bounds);
        auto path = std::make_shared<BezierPath>();
        path->moveTo({ 0, 50 });
        path->lineTo({ 100, 50 });
        ink->addBezierPath(path);
        setBorderLineWidth(*ink, 12);
        made = ink;
    } else {
        auto highlight = std::make_shared<FDAnnotationMarkup>();
        highlight->initWithBounds(bounds, QStringLiteral("Highlight"), {});
        highlight->setQuadrilateralPoints({ { 0, 100 }, { 100, 100 }, { 0, 0 }, { 100, 0 } });
        made = highlight;
    }
    made->setColor(Qt::green);
    return made;
}

} // namespace

class FDPageTest : public QObject
{
    Q_OBJECT

private slots:

    void initTestCase()
    {
        // The theme is remembered in the preferences: keep them out of the user's.
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(QStringLiteral("config"))));
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.filePath(QStringLiteral("data"))));
    }

    void thumbnailSizeFollowsTheTurnedPage_data()
    {
        QTest::addColumn<QRectF>("mediaBox");
        QTest::addColumn<int>("rotation");
        QTest::addColumn<QSizeF>("asked");
        QTest::addColumn<QSize>("expected");
        const QRectF letter(0, 0, 612, 792);
        QTest::newRow("letter") << letter << 0 << QSizeF(100, 100) << QSize(77, 100);
        QTest::newRow("letter turned 90") << letter << 90 << QSizeF(100, 100) << QSize(100, 77);
        QTest::newRow("letter turned 180") << letter << 180 << QSizeF(100, 100) << QSize(77, 100);
        QTest::newRow("letter turned 270") << letter << 270 << QSizeF(40, 100) << QSize(100, 77);
        QTest::newRow("landscape")
            << QRectF(0, 0, 792, 612) << 0 << QSizeF(100, 30) << QSize(100, 77);
        QTest::newRow("square") << QRectF(0, 0, 300, 300) << 0 << QSizeF(64, 64) << QSize(64, 64);
        QTest::newRow("box off the origin")
            << QRectF(100, 200, 612, 792) << 0 << QSizeF(200, 10) << QSize(155, 200);
    }
    void thumbnailSizeFollowsTheTurnedPage()
    {
        QFETCH(QRectF, mediaBox);
        QFETCH(int, rotation);
        QFETCH(QSizeF, asked);
        QFETCH(QSize, expected);
        const auto page = pageOf(mediaBox, rotation);
        QCOMPARE(thumbnailWithSize(*page, asked, PDFDisplayBox::MediaBox).size(), expected);
        QCOMPARE(page->thumbnailWith(asked, PDFDisplayBox::MediaBox).size(), expected);
    }

    void ribbonHangsFromTheTopRightCorner_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<QSizeF>("pageSize");
        QTest::addColumn<QRectF>("ribbon");
        QTest::addColumn<QRectF>("hotArea");
        QTest::newRow("letter at 1")
            << 1.0 << QSizeF(612, 792) << QRectF(582, 752, 20, 40) << QRectF(542, 732, 70, 60);
        QTest::newRow("letter at 2")
            << 2.0 << QSizeF(612, 792) << QRectF(562, 712, 40, 80) << QRectF(522, 692, 90, 100);
        // The offset from the right edge stays 10 at any scale.
        QTest::newRow("thumbnail at 0.25")
            << 0.25 << QSizeF(77, 100) << QRectF(62, 90, 5, 10) << QRectF(22, 70, 55, 30);
    }
    void ribbonHangsFromTheTopRightCorner()
    {
        QFETCH(double, scale);
        QFETCH(QSizeF, pageSize);
        QFETCH(QRectF, ribbon);
        QFETCH(QRectF, hotArea);
        const BezierPath path = FDPage::createBookmarkIndicatorPathWithScale(scale, pageSize);
        QCOMPARE(path.bounds(), ribbon);
        QCOMPARE(FDPage::bookmarkIndicatorHotAreaWithScale(scale, pageSize), hotArea);
        // The notch at the lower end is not part of the ribbon; its tails and its body are.
        const double w = ribbon.width();
        const double h = ribbon.height();
        QVERIFY(!path.containsPoint(ribbon.topLeft() + QPointF(w / 2, h / 8)));
        QVERIFY(path.containsPoint(ribbon.topLeft() + QPointF(w / 2, h / 2)));
        QVERIFY(path.containsPoint(ribbon.topLeft() + QPointF(w * 0.95, h / 8)));
        QVERIFY(!path.containsPoint(ribbon.topLeft() - QPointF(1, -h / 2)));
    }

    void thumbnailShowsRibbonAndFrameInTheThemeColours_data()
    {
        QTest::addColumn<int>("theme");
        QTest::addColumn<int>("rotation");
        QTest::addColumn<bool>("bookmarked");
        QTest::newRow("blue, bookmarked") << FDTheme::blue << 0 << true;
        QTest::newRow("night, bookmarked") << FDTheme::night << 0 << true;
        QTest::newRow("night, bookmarked, turned") << FDTheme::night << 90 << true;
        QTest::newRow("red, no bookmark") << FDTheme::red << 0 << false;
    }
    void thumbnailShowsRibbonAndFrameInTheThemeColours()
    {
        QFETCH(int, theme);
        QFETCH(int, rotation);
        QFETCH(bool, bookmarked);
        FDThemeProvider::setCurrent(FDThemeProvider::themeFor(theme));
        const FDTheme &colours = *FDThemeProvider::current();
        const auto page = pageOf(QRectF(0, 0, 612, 792), rotation);
        page->setIsBookmarked(bookmarked);

        const QImage image = page->thumbnailWith(QSizeF(400, 400), PDFDisplayBox::MediaBox);
        // Ribbon at the thumbnail's scale, 10 pixels from its right edge, hanging from its top.
        const double ratio = image.width() / (rotation ? 792.0 : 612.0);
        const QPoint inRibbon(int(image.width() - 10 - 10 * ratio), int(10 * ratio));
        const QColor ribbon = image.pixelColor(inRibbon);
        if (bookmarked)
            QVERIFY2(
                near(ribbon, colours.color(FDTheme::secondaryColor)), qPrintable(ribbon.name()));
        else
            QVERIFY2(near(ribbon, Qt::white), qPrintable(ribbon.name()));
        // Left of the ribbon the page shows; the frame goes round the whole image.
        QVERIFY(near(image.pixelColor(inRibbon - QPoint(int(20 * ratio), 0)), Qt::white));
        QVERIFY(near(
            image.pixelColor(image.width() / 2, 0), colours.color(FDTheme::secondaryBorderColor)));
        QVERIFY(near(
            image.pixelColor(0, image.height() / 2), colours.color(FDTheme::secondaryBorderColor)));
        QVERIFY(near(image.pixelColor(image.width() / 2, image.height() / 2), Qt::white));
        // The plain thumbnail has neither.
        const QImage plain = thumbnailWithMaxLength(*page, 400, PDFDisplayBox::MediaBox);
        QVERIFY(near(plain.pixelColor(inRibbon), Qt::white));
        QVERIFY(near(plain.pixelColor(plain.width() / 2, 0), Qt::white));
    }

    void overlayAnnotationsShowInThumbnailsOnly_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("shown");
        QTest::newRow("circle") << "circle" << true;
        QTest::newRow("square") << "square" << true;
        QTest::newRow("ink") << "ink" << true;
        // The engine draws markup itself; hidden from it, it is hidden everywhere.
        QTest::newRow("highlight") << "highlight" << false;
    }
    void overlayAnnotationsShowInThumbnailsOnly()
    {
        QFETCH(QString, kind);
        QFETCH(bool, shown);
        const auto page = pageOf(QRectF(0, 0, 200, 200));
        const auto annotation = annotationOfKind(kind);
        page->addAnnotation(annotation);
        annotation->setShouldDisplay(false);
        const quint64 revision = page->revision();

        const QImage thumbnail = page->thumbnailWith(QSizeF(200, 200), PDFDisplayBox::MediaBox);
        QCOMPARE(near(thumbnail.pixelColor(100, 100), Qt::green), shown);
        QCOMPARE(
            near(thumbnailWithMaxLength(*page, 200, PDFDisplayBox::MediaBox).pixelColor(100, 100),
                Qt::green),
            shown);
        // The reading view is left as it was: nothing to re-render, nothing drawn twice.
        QCOMPARE(page->revision(), revision);
        QVERIFY(!annotation->shouldDisplay());
        const QImage engine = page->imageForBox(PDFDisplayBox::MediaBox, QSize(200, 200));
        QVERIFY(near(engine.pixelColor(100, 100), Qt::white));
    }

    void clicksFindOverlayAnnotations_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("displayed");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<bool>("found");
        QTest::newRow("hidden circle, inside") << "circle" << false << QPointF(100, 100) << true;
        QTest::newRow("hidden circle, corner of its box")
            << "circle" << false << QPointF(53, 53) << false;
        QTest::newRow("hidden ink, on the stroke") << "ink" << false << QPointF(100, 100) << true;
        QTest::newRow("hidden ink, off the stroke") << "ink" << false << QPointF(100, 140) << false;
        QTest::newRow("hidden square") << "square" << false << QPointF(60, 140) << true;
        QTest::newRow("hidden highlight") << "highlight" << false << QPointF(100, 100) << false;
        QTest::newRow("displayed highlight") << "highlight" << true << QPointF(100, 100) << true;
        QTest::newRow("displayed ink, box") << "ink" << true << QPointF(100, 140) << true;
    }
    void clicksFindOverlayAnnotations()
    {
        QFETCH(QString, kind);
        QFETCH(bool, displayed);
        QFETCH(QPointF, point);
        QFETCH(bool, found);
        const auto page = pageOf(QRectF(0, 0, 200, 200));
        const auto annotation = annotationOfKind(kind);
        page->addAnnotation(annotation);
        annotation->setShouldDisplay(displayed);

        const std::shared_ptr<PDFPage> asEngineSees = page;
        QCOMPARE(asEngineSees->annotationAtPoint(point), found ? annotation : nullptr);
        // The engine's own test passes over the hidden ones.
        QCOMPARE(page->PDFPage::annotationAtPoint(point) != nullptr,
            displayed && Geometry::pointInRect(point, annotation->bounds()));
    }

private:
    QTemporaryDir m_home;
};

QTEST_MAIN(FDPageTest)
#include "FDPageTest.moc"
