// Highlights, underlines and strike-outs made from real text selections: their rectangles and
// quadrilaterals (on turned pages too), the hit area round the marked lines, refusal of a
// selection with nothing to mark, and contents that fill in from the text without an edit.

#include "support/AnnotationTestKit.h"

#include <annotation/AnnotationDefaultsKeys.h>
#include <annotation/FDAnnotationMarkup.h>
#include <annotation/PDFSelection+XExtensions.h>
#include <annotation/values/NSUserDefaults+XExtensions.h>

#include <support/PdfFixtures.h>

#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QTemporaryDir>
#include <QtTest>

namespace {

using namespace AnnotationTestKit;
using Points = QList<QPointF>;

// Builds markup annotations of the application's class, as the application's documents do.
class MarkupDelegate : public PDFDocumentDelegate
{
public:
    PDFAnnotationFactory classForAnnotationClass(const QString &type) const override
    {
        if (type == QLatin1String("Highlight") || type == QLatin1String("Underline")
            || type == QLatin1String("StrikeOut"))
            return [] { return std::make_shared<FDAnnotationMarkup>(); };
        return {};
    }
};

PdfFixtures::Page textPage(int rotation = 0)
{
    PdfFixtures::Page page;
    page.rotate = rotation;
    page.lines = { QStringLiteral("Alpha beta gamma"), QStringLiteral("          "),
        QStringLiteral("Delta epsilon zeta") };
    return page;
}

// A markup over the given rects, as a file would hold it.
std::shared_ptr<FDAnnotationMarkup> markupOver(const QList<QRectF> &rects, int type)
{
    QRectF bounds;
    for (const QRectF &rect : rects)
        bounds = bounds.isNull() ? rect : bounds.united(rect);
    auto markup = std::make_shared<FDAnnotationMarkup>();
    markup->initWithBounds(bounds);
    markup->setMarkupType(type);
    Points points;
    for (const QRectF &rect : rects)
        points += quadrilateralPointsForRect(0, rect, bounds.topLeft());
    markup->setQuadrilateralPoints(points);
    return markup;
}

} // namespace

class FDAnnotationMarkupTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_config.isValid());
        qputenv("XDG_CONFIG_HOME", m_config.path().toUtf8());
        setColorForKey(
            UserDefaults::standard(), Qt::yellow, AnnotationDefaultsKeys::HighlightColor);
        setColorForKey(UserDefaults::standard(), Qt::green, AnnotationDefaultsKeys::UnderlineColor);
        setColorForKey(UserDefaults::standard(), Qt::red, AnnotationDefaultsKeys::StrikeOutColor);
    }

    void marksTheLinesThatHoldText_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QColor>("color");
        QTest::newRow("highlight") << 0 << QColor(Qt::yellow);
        QTest::newRow("strike-out") << 1 << QColor(Qt::red);
        QTest::newRow("underline") << 2 << QColor(Qt::green);
    }
    void marksTheLinesThatHoldText()
    {
        QFETCH(int, type);
        QFETCH(QColor, color);
        const auto document = documentOf({ textPage() });
        const auto page = document->pageAtIndex(0);
        const auto selection = page->selectionForRect(QRectF(60, 660, 400, 80));
        QVERIFY(selection);
        QCOMPARE(selection->selectionsByLine().size(), size_t(3)); // the middle one all spaces
        const auto markup = FDAnnotationMarkup::annotationWith(selection, type);
        QVERIFY(markup);
        QCOMPARE(markup->markupType(), type);
        QCOMPARE(markup->color(), color);
        QCOMPARE(markup->contents(), selection->string());
        QCOMPARE(markup->quadrilateralPoints().size(), 8);
        const QList<QRectF> rects = markup->rectsInPageCoordinate();
        QCOMPARE(rects.size(), 2);
        const auto alpha = page->selectionForRect(QRectF(60, 712, 400, 20));
        const auto delta = page->selectionForRect(QRectF(60, 680, 400, 20));
        QCOMPARE(rects[0], alpha->boundsForPage(page));
        QCOMPARE(rects[1], delta->boundsForPage(page));
        QCOMPARE(markup->bounds(), rects[0].united(rects[1]));

        // On the page, the text under it is the two marked lines again.
        page->addAnnotation(markup);
        const QString marked = markup->selection()->string();
        QVERIFY2(marked.contains("Alpha beta gamma") && marked.contains("Delta epsilon zeta"),
            qPrintable(marked));
    }

    void nothingToMarkIsRefused()
    {
        const auto document = documentOf({ textPage() });
        const auto page = document->pageAtIndex(0);
        const QString text = page->string();
        const int space = int(text.indexOf(QStringLiteral("Alpha ")) + 5);
        const auto blank = page->selectionForRange({ space, 1 });
        QVERIFY(blank && blank->string().trimmed().isEmpty() && !blank->string().isEmpty());
        QVERIFY(!FDAnnotationMarkup::annotationWith(blank, PDFAnnotationMarkup::Highlight));
        QVERIFY(!FDAnnotationMarkup::annotationWith(
            std::make_shared<PDFSelection>(document), PDFAnnotationMarkup::Highlight));
        QVERIFY(!FDAnnotationMarkup::annotationWith(nullptr, PDFAnnotationMarkup::Highlight));
        QVERIFY(!hasCharacters(PDFSelection(document)));
        QCOMPARE(safeIndexOfFirstCharacterOnPage(PDFSelection(document), page), SelectionNotFound);
    }

    void quadrilateralsFollowThePageRotation_data()
    {
        QTest::addColumn<int>("rotation");
        // corners: 0 top-left, 1 top-right, 2 bottom-left, 3 bottom-right
        QTest::addColumn<QList<int>>("order");
        QTest::newRow("upright") << 0 << QList<int> { 0, 1, 2, 3 };
        QTest::newRow("quarter turn") << 90 << QList<int> { 2, 0, 3, 1 };
        QTest::newRow("half turn") << 180 << QList<int> { 3, 2, 1, 0 };
        QTest::newRow("three quarters") << 270 << QList<int> { 1, 3, 0, 2 };
    }
    void quadrilateralsFollowThePageRotation()
    {
        QFETCH(int, rotation);
        QFETCH(QList<int>, order);
        const auto document = documentOf({ textPage(rotation) });
        const auto page = document->pageAtIndex(0);
        QCOMPARE(page->rotation(), rotation);
        const auto markup = FDAnnotationMarkup::annotationWith(
            page->selectionForRect(QRectF(60, 712, 400, 20)), PDFAnnotationMarkup::Highlight);
        QVERIFY(markup);
        const QRectF r(QPointF(0, 0), markup->bounds().size());
        const Points corners { { r.left(), r.bottom() }, { r.right(), r.bottom() },
            { r.left(), r.top() }, { r.right(), r.top() } };
        const Points points = markup->quadrilateralPoints();
        QCOMPARE(points.size(), 4);
        for (int i = 0; i < 4; ++i)
            QCOMPARE(points[i], corners[order[i]]);
        QCOMPARE(markup->rectsInPageCoordinate(), QList<QRectF> { markup->bounds() });
        QVERIFY(markup->hitTest(markup->bounds().center()));
    }

    void leftoverPointsAreDropped_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("rects");
        QTest::newRow("three") << 3 << 0;
        QTest::newRow("four") << 4 << 1;
        QTest::newRow("nine") << 9 << 2;
    }
    void leftoverPointsAreDropped()
    {
        QFETCH(int, count);
        QFETCH(int, rects);
        auto markup = std::make_shared<FDAnnotationMarkup>();
        markup->initWithBounds(QRectF(100, 200, 50, 20));
        const Points quad
            = quadrilateralPointsForRect(90, QRectF(100, 200, 50, 10), QPointF(100, 200));
        markup->setQuadrilateralPoints((quad + quad + quad).mid(0, count));
        QCOMPARE(markup->rectsInPageCoordinate().size(), rects);
        if (rects > 0)
            QCOMPARE(markup->rectsInPageCoordinate().first(), QRectF(100, 200, 50, 10));
        QCOMPARE(markup->hitTest(QPointF(120, 205)), rects > 0);
    }

    void hitArea_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<bool>("hit");
        // A line of 100 wide from (100, 200), 10 high; below it, after a gap of 4, one 50 wide.
        QTest::newRow("highlight, 1.5 above") << 0 << QPointF(150, 211.5) << false;
        QTest::newRow("highlight, 0.5 above") << 0 << QPointF(150, 210.5) << true;
        QTest::newRow("strike-out, 0.5 above") << 1 << QPointF(150, 210.5) << false;
        QTest::newRow("underline, 0.5 above") << 2 << QPointF(150, 210.5) << false;
        QTest::newRow("underline, 0.5 below the last line") << 2 << QPointF(120, 185.5) << true;
        QTest::newRow("strike-out, 0.5 below the last line") << 1 << QPointF(120, 185.5) << false;
        QTest::newRow("1.5 left of the first character") << 1 << QPointF(98.5, 205) << true;
        QTest::newRow("gap, under the short line") << 1 << QPointF(120, 197) << true;
        QTest::newRow("gap, beside the short line, below the step")
            << 1 << QPointF(180, 197) << false;
        QTest::newRow("gap, beside the short line, above the step")
            << 1 << QPointF(180, 199) << true;
    }
    void hitArea()
    {
        QFETCH(int, type);
        QFETCH(QPointF, point);
        QFETCH(bool, hit);
        const auto markup
            = markupOver({ QRectF(100, 200, 100, 10), QRectF(100, 186, 50, 10) }, type);
        QCOMPARE(markup->hitTest(point), hit);
    }

    void contentsFillInFromTheTextWithoutAnEdit_data()
    {
        QTest::addColumn<QByteArray>("contentsEntry");
        QTest::addColumn<QString>("expected");
        QTest::newRow("none") << QByteArray() << QStringLiteral("Alpha beta gamma");
        QTest::newRow("empty") << QByteArray(" /Contents ()") << QStringLiteral("Alpha beta gamma");
        QTest::newRow("a note of its own")
            << QByteArray(" /Contents (Mine)") << QStringLiteral("Mine");
    }
    void contentsFillInFromTheTextWithoutAnEdit()
    {
        QFETCH(QByteArray, contentsEntry);
        QFETCH(QString, expected);
        PdfFixtures::Page description = textPage();
        description.annotations = { { "/Subtype /Highlight /Rect [70 714 200 732] /C [1 1 0] "
                                      "/QuadPoints [70 732 200 732 70 714 200 714]"
                + contentsEntry,
            {}, {} } };
        const auto delegate = std::make_shared<MarkupDelegate>();
        const auto document = documentOf({ description }, delegate);
        const auto page = document->pageAtIndex(0);
        QCOMPARE(page->annotations().size(), size_t(1));
        const auto markup
            = std::dynamic_pointer_cast<FDAnnotationMarkup>(page->annotations().front());
        QVERIFY(markup);
        int told = 0;
        markup->addObserver(this,
            [&](PDFAnnotation &, const QString &, const QVariant &, const QVariant &) { ++told; });
        const quint64 revision = page->revision();

        QCOMPARE(markup->contents().trimmed(), expected);
        QCOMPARE(markup->contents().trimmed(), expected);
        QCOMPARE(told, 0);
        QCOMPARE(page->revision(), revision);
        // The text reached the file all the same.
        auto reread = std::make_shared<PDFDocument>();
        QVERIFY(reread->initWithData(document->dataRepresentation()));
        QCOMPARE(reread->pageAtIndex(0)->annotations().front()->contents().trimmed(), expected);
        markup->removeObserver(this);
    }

private:
    QTemporaryDir m_config;
};

QTEST_MAIN(FDAnnotationMarkupTest)
#include "FDAnnotationMarkupTest.moc"
