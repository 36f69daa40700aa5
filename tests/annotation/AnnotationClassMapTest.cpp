#include <app/support/AppTestEnvironment.h>

#include <annotation/FDAnnotationCircle.h>
#include <annotation/FDAnnotationFreeText.h>
#include <annotation/FDAnnotationInk.h>
#include <annotation/FDAnnotationLine.h>
#include <annotation/FDAnnotationMarkup.h>
#include <annotation/FDAnnotationSquare.h>
#include <annotation/FDAnnotationStamp.h>
#include <annotation/FDAnnotationText.h>
#include <annotation/PDFAnnotation+XExtensions.h>
#include <app/FDDefaults.h>
#include <document/FDDocument.h>
#include <kit/engine/PDFAnnotationLink.h>
#include <kit/engine/PDFAnnotationStamp.h>
#include <kit/engine/PDFPage.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// The name of the class an annotation really is.
QString className(const PDFAnnotation &annotation)
{
    const PDFAnnotation *a = &annotation;
    if (dynamic_cast<const FDAnnotationMarkup *>(a))
        return QStringLiteral("FDAnnotationMarkup");
    if (dynamic_cast<const FDAnnotationInk *>(a))
        return QStringLiteral("FDAnnotationInk");
    if (dynamic_cast<const FDAnnotationLine *>(a))
        return QStringLiteral("FDAnnotationLine");
    if (dynamic_cast<const FDAnnotationCircle *>(a))
        return QStringLiteral("FDAnnotationCircle");
    if (dynamic_cast<const FDAnnotationSquare *>(a))
        return QStringLiteral("FDAnnotationSquare");
    if (dynamic_cast<const FDAnnotationFreeText *>(a))
        return QStringLiteral("FDAnnotationFreeText");
    if (dynamic_cast<const FDAnnotationText *>(a))
        return QStringLiteral("FDAnnotationText");
    if (dynamic_cast<const FDAnnotationStamp *>(a))
        return QStringLiteral("FDAnnotationStamp");
    if (dynamic_cast<const PDFAnnotationStamp *>(a))
        return QStringLiteral("PDFAnnotationStamp");
    if (dynamic_cast<const PDFAnnotationLink *>(a))
        return QStringLiteral("PDFAnnotationLink");
    return QStringLiteral("other");
}

} // namespace

class AnnotationClassMapTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        AppTestEnvironment::clearStore();
        FDDefaults::registerDefaults();
    }

    void subtypesMapToTheApplicationsClasses_data();
    void subtypesMapToTheApplicationsClasses();
    void pasteboardTypesMakeTheApplicationsClasses();
    void annotationsOfASavedFileComeBackAsTheApplicationsClasses();

private:
    QTemporaryDir m_dir;
};

void AnnotationClassMapTest::subtypesMapToTheApplicationsClasses_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("made");
    QTest::newRow("highlight") << "Highlight"
                               << "FDAnnotationMarkup";
    QTest::newRow("underline") << "Underline"
                               << "FDAnnotationMarkup";
    QTest::newRow("strike-out") << "StrikeOut"
                                << "FDAnnotationMarkup";
    QTest::newRow("ink") << "Ink"
                         << "FDAnnotationInk";
    QTest::newRow("line") << "Line"
                          << "FDAnnotationLine";
    QTest::newRow("circle") << "Circle"
                            << "FDAnnotationCircle";
    QTest::newRow("square") << "Square"
                            << "FDAnnotationSquare";
    QTest::newRow("free text") << "FreeText"
                               << "FDAnnotationFreeText";
    QTest::newRow("note") << "Text"
                          << "FDAnnotationText";
    // Nothing maps to the application's stamp class.
    QTest::newRow("stamp") << "Stamp"
                           << "PDFAnnotationStamp";
    QTest::newRow("link") << "Link"
                          << "PDFAnnotationLink";
    QTest::newRow("unknown") << "Polygon"
                             << "other";
}

void AnnotationClassMapTest::subtypesMapToTheApplicationsClasses()
{
    QFETCH(QString, type);
    QFETCH(QString, made);
    const PDFAnnotationFactory factory = FDPDFView::classForAnnotationClass(type);
    QVERIFY(factory);
    QCOMPARE(className(*factory()), made);
}

void AnnotationClassMapTest::pasteboardTypesMakeTheApplicationsClasses()
{
    const QList<std::pair<const char *, const char *>> rows {
        { "Folidoc.Pasteboard.Annotation.Markup", "FDAnnotationMarkup" },
        { "Folidoc.Pasteboard.Annotation.Ink", "FDAnnotationInk" },
        { "Folidoc.Pasteboard.Annotation.Line", "FDAnnotationLine" },
        { "Folidoc.Pasteboard.Annotation.Circle", "FDAnnotationCircle" },
        { "Folidoc.Pasteboard.Annotation.Square", "FDAnnotationSquare" },
        { "Folidoc.Pasteboard.Annotation.FreeText", "FDAnnotationFreeText" },
        { "Folidoc.Pasteboard.Annotation.Text", "FDAnnotationText" },
    };
    for (const auto &[type, made] : rows)
        QCOMPARE(className(*FDPDFView::classForPasteboardType(QLatin1String(type))()),
            QLatin1String(made));
    for (const char *other :
        { "Folidoc.Pasteboard.Annotation.Stamp", "Folidoc.Pasteboard.PDFPage", "Ink", "" })
        QVERIFY(!FDPDFView::classForPasteboardType(QLatin1String(other)));
}

void AnnotationClassMapTest::annotationsOfASavedFileComeBackAsTheApplicationsClasses()
{
    PdfFixtures::Page page;
    page.lines = { QStringLiteral("Marked words on the first line") };
    page.links = { { QRectF(72, 600, 200, 20), QStringLiteral("https://example.org/a"), -1, {} } };
    page.annotations = {
        { "/Subtype /Highlight /Rect [70 700 300 720] /QuadPoints [72 718 290 718 72 702 290 702] "
          "/Contents (marked)",
            {}, {} },
        { "/Subtype /Ink /Rect [100 100 200 200] /InkList [[110 110 150 180 190 120]]", {}, {} },
        { "/Subtype /Line /Rect [90 290 210 360] /L [100 300 200 350] /BS << /W 2 >>", {}, {} },
        { "/Subtype /Circle /Rect [300 100 400 160]", {}, {} },
        { "/Subtype /Square /Rect [300 200 400 260]", {}, {} },
        { "/Subtype /FreeText /Rect [300 300 450 330] /DA (/Helv 12 Tf 0 0 1 rg) /Contents (box)",
            {}, {} },
        { "/Subtype /Text /Rect [400 400 424 424] /Name /Help /Contents (note)", {}, {} },
        { "/Subtype /Stamp /Rect [50 450 150 500] /Name /Approved", "0 0 1 rg 0 0 100 50 re f",
            QRectF(0, 0, 100, 50) },
    };
    PdfFixtures::Document description;
    description.pages = { page };
    const QString path = m_dir.filePath(QStringLiteral("annotated.pdf"));
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
            "FDAnnotationLine", "FDAnnotationCircle", "FDAnnotationSquare", "FDAnnotationFreeText",
            "FDAnnotationText", "PDFAnnotationStamp" }));

    // Read from the file, they answer by the application's rules: the note by its grown area,
    // the line by its stroke, each kind with its pasteboard type.
    const auto &note = *annotations[7];
    QVERIFY(hitTest(note, QPointF(398, 398)));
    QVERIFY(!hitTest(note, QPointF(397.9, 398)));
    QCOMPARE(static_cast<const PDFAnnotationText &>(note).iconType(), int(PDFAnnotationText::Help));
    const auto &line = *annotations[3];
    QVERIFY(hitTest(line, QPointF(150, 325)));
    QVERIFY(!hitTest(line, QPointF(200, 300)));
    QCOMPARE(typesForPasteboard(*annotations[1]),
        QStringList { QStringLiteral("Folidoc.Pasteboard.Annotation.Markup") });
    QVERIFY(typesForPasteboard(*annotations[8]).isEmpty());
    QVERIFY(!keysForValuesToObserveForUndo(*annotations[8]));
    QVERIFY(isValid(*annotations[8]));
    QVERIFY(!isValid(*annotations[0]));
    // Reading a file applies no settings: the file's own values stand.
    QCOMPARE(borderLineWidth(line), 2.0);
    view.setDocument(nullptr);
}

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QApplication app(argc, argv);
    AnnotationClassMapTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "AnnotationClassMapTest.moc"
