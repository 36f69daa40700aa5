#include "support/AnnotationTestKit.h"

#include <app/support/AppWindow.h>

#include <annotation/FDAnnotationMarkup.h>
#include <annotation/FDAnnotationText.h>
#include <annotation/PDFAnnotation+XExtensions.h>
#include <kit/base/Archiver.h>
#include <kit/engine/PDFAnnotationCircle.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationText.h>
#include <kit/engine/PDFBorder.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <view/FDPDFView.h>

#include <QtTest>

using namespace AnnotationTestKit;

namespace {

std::shared_ptr<BezierPath> stroke(QPointF from, QPointF to)
{
    auto path = std::make_shared<BezierPath>();
    path->moveTo(from);
    path->curveTo(to, from + QPointF(5, 10), to - QPointF(5, 10));
    return path;
}

// An annotation of the kind with everything the user can set set to something unusual.
std::shared_ptr<PDFAnnotation> rich(const QString &type)
{
    std::shared_ptr<PDFAnnotation> annotation;
    if (type == QLatin1String("Underline")) {
        auto markup = std::make_shared<FDAnnotationMarkup>();
        markup->initWithBounds(QRectF(72, 700, 200, 14));
        markup->setMarkupType(PDFAnnotationMarkup::Underline);
        markup->setQuadrilateralPoints({ { 0, 14 }, { 200, 14 }, { 0, 0 }, { 200, 0 } });
        annotation = markup;
    } else {
        annotation = appAnnotation(type, QRectF(40.25, 50.5, 120, 80));
    }
    annotation->setContents(QStringLiteral("Ünïcode contents"));
    annotation->setColor(QColor(10, 20, 30, 200));
    if (annotation->border()) {
        auto border = std::make_shared<PDFBorder>();
        border->setLineWidth(2.1); // not a 32-bit float
        border->setStyle(PDFBorder::Dashed);
        border->setDashPattern({ 3, 1.5 });
        annotation->setBorder(border);
    }
    if (auto *shape = dynamic_cast<PDFAnnotationShape *>(annotation.get()))
        shape->setInteriorColor(QColor(Qt::cyan));
    if (auto *line = dynamic_cast<PDFAnnotationLine *>(annotation.get())) {
        line->setStartPoint(QPointF(120, 0.5));
        line->setEndPoint(QPointF(0.25, 80));
        line->setStartLineStyle(PDFAnnotationLine::Diamond);
        line->setEndLineStyle(PDFAnnotationLine::ClosedArrow);
    }
    if (auto *ink = dynamic_cast<PDFAnnotationInk *>(annotation.get())) {
        ink->addBezierPath(stroke(QPointF(1, 2), QPointF(60, 70)));
        ink->addBezierPath(stroke(QPointF(90, 10), QPointF(100, 60)));
    }
    if (auto *freeText = dynamic_cast<PDFAnnotationFreeText *>(annotation.get())) {
        QFont font(QStringLiteral("Courier"));
        font.setPointSizeF(17.5);
        freeText->setFont(font);
        freeText->setFontColor(QColor(Qt::darkGreen));
        freeText->setAlignment(PDFAnnotationFreeText::Center);
    }
    if (auto *note = dynamic_cast<PDFAnnotationText *>(annotation.get()))
        note->setIconType(PDFAnnotationText::Help);
    return annotation;
}

// What a paste reads: the form as bytes and back, into the class the pasteboard type names.
std::shared_ptr<PDFAnnotation> pasted(const PDFAnnotation &annotation)
{
    const QStringList types = writableTypesForPasteboard(annotation);
    if (types.size() != 1)
        return nullptr;
    const QByteArray bytes
        = Archiver::archivedData(pasteboardPropertyListForType(annotation, types.first()));
    const QVariantMap form = Archiver::unarchive(bytes).toMap();
    const auto copy = FDPDFView::classForPasteboardType(types.first())();
    if (!initWithPasteboardPropertyList(*copy, form, types.first()))
        return nullptr;
    return copy;
}

QString borderText(const PDFAnnotation &annotation)
{
    const auto border = annotation.border();
    if (!border)
        return QStringLiteral("none");
    QStringList dash;
    for (const double length : border->dashPattern())
        dash.append(QString::number(length));
    return QStringLiteral("%1/%2/%3")
        .arg(border->lineWidth(), 0, 'g', 17)
        .arg(border->style())
        .arg(dash.join(QLatin1Char(',')));
}

} // namespace

class AnnotationPasteboardTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { AppWindow::reset(); }

    void pasteKeepsAllButTheDesignedLosses_data()
    {
        QTest::addColumn<QString>("type");
        // The border after a paste: the width went through a 32-bit float.
        QTest::addColumn<QString>("border");
        QTest::addColumn<QString>("pasteboardType"); // after "Folidoc.Pasteboard.Annotation."
        const QString dashed = QStringLiteral("%1/1/3,1.5").arg(double(2.1f), 0, 'g', 17);
        const QString none = QStringLiteral("none");
        QTest::newRow("markup") << "Underline" << none << "Markup";
        QTest::newRow("ink") << "Ink" << dashed << "Ink";
        QTest::newRow("line") << "Line" << dashed << "Line";
        QTest::newRow("circle") << "Circle" << dashed << "Circle";
        QTest::newRow("square") << "Square" << dashed << "Square";
        QTest::newRow("free text") << "FreeText" << none << "FreeText";
        QTest::newRow("note") << "Text" << none << "Text";
    }
    void pasteKeepsAllButTheDesignedLosses()
    {
        QFETCH(QString, type);
        QFETCH(QString, pasteboardType);
        QFETCH(QString, border);
        pasteboardType.prepend(QStringLiteral("Folidoc.Pasteboard.Annotation."));
        const auto original = rich(type);
        QCOMPARE(writableTypesForPasteboard(*original), QStringList { pasteboardType });
        QCOMPARE(readingOptionsForType(pasteboardType), 2);

        const auto copy = pasted(*original);
        QVERIFY(copy);
        QCOMPARE(typeid(*copy).name(), typeid(*original).name());
        QVERIFY(!copy->page());
        QCOMPARE(copy->bounds(), original->bounds());
        QCOMPARE(copy->contents(), original->contents());
        QCOMPARE(copy->color(), original->color());
        QCOMPARE(borderText(*copy), border);
        // No author or time travels.
        QVERIFY(copy->userName().isEmpty());

        // The losses by design.
        if (auto *shape = dynamic_cast<PDFAnnotationShape *>(copy.get()))
            QVERIFY(!shape->interiorColor().isValid());
        if (auto *ink = dynamic_cast<PDFAnnotationInk *>(copy.get())) {
            QCOMPARE(ink->paths().size(), 1);
            const auto first = static_cast<PDFAnnotationInk &>(*original).paths().first();
            QCOMPARE(ink->paths().first()->elementCount(), first->elementCount());
            QCOMPARE(ink->paths().first()->bounds(), first->bounds());
        }
        if (auto *markup = dynamic_cast<FDAnnotationMarkup *>(copy.get())) {
            QVERIFY(markup->quadrilateralPoints().isEmpty());
            QCOMPARE(markup->type(), QStringLiteral("Highlight"));
        }
        if (auto *note = dynamic_cast<PDFAnnotationText *>(copy.get()))
            QCOMPARE(note->iconType(), int(PDFAnnotationText::Note));
        // Lines and free text travel whole.
        if (auto *line = dynamic_cast<PDFAnnotationLine *>(copy.get())) {
            QCOMPARE(line->startPoint(), QPointF(120, 0.5));
            QCOMPARE(line->endPoint(), QPointF(0.25, 80));
            QCOMPARE(line->startLineStyle(), int(PDFAnnotationLine::Diamond));
            QCOMPARE(line->endLineStyle(), int(PDFAnnotationLine::ClosedArrow));
        }
        if (auto *text = dynamic_cast<PDFAnnotationFreeText *>(copy.get())) {
            QCOMPARE(text->font().family(), QStringLiteral("Courier"));
            QCOMPARE(text->font().pointSizeF(), 17.5);
            QCOMPARE(text->fontColor(), QColor(Qt::darkGreen));
            QCOMPARE(text->alignment(), int(PDFAnnotationFreeText::Center));
            // A border that a free text somehow had does not come with it.
            original->setBorder(std::make_shared<PDFBorder>());
            QVERIFY(!pasted(*original)->border());
        }
    }

    void foreignFormsFallBackKeyByKey_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QVariantMap>("form");
        QTest::addColumn<QRectF>("bounds");
        QTest::addColumn<QString>("expected"); // border, then colour
        QTest::newRow("empty line: zero bounds, no border")
            << "Line" << QVariantMap() << QRectF() << "none none";
        QTest::newRow("bounds as a number, colour as text")
            << "Square"
            << QVariantMap { { "bounds", 12 }, { "color", "red" }, { "border.style", 1 } }
            << QRectF() << "1/1/ none";
        QTest::newRow("width as text, style as a float")
            << "Circle"
            << QVariantMap { { "bounds", "{{1, 2}, {3, 4}}" }, { "border.lineWidth", "4.5" },
                   { "border.style", 1.0 }, { "type", "Square" } }
            << QRectF(1, 2, 3, 4) << "4.5/1/ none";
        QTest::newRow("archive of the wrong kind for a colour")
            << "Ink"
            << QVariantMap { { "color", Archiver::archivedData(QStringLiteral("blue")) },
                   { "pointLists", QByteArray("garbage") },
                   { "border.dashPattern", QVariantList() } }
            << QRectF() << "1/0/ none";
        // Found by fuzzing: numbers no int holds keep the default instead of a wrapped value.
        QTest::newRow("style beyond an int")
            << "Square" << QVariantMap { { "border.style", 4009754606u } } << QRectF()
            << "1/0/ none";
        QTest::newRow("style as text that is not a number")
            << "Circle" << QVariantMap { { "border.style", "nan" }, { "border.lineWidth", 2 } }
            << QRectF() << "2/0/ none";
        QTest::newRow("bounds text of another shape")
            << "FreeText"
            << QVariantMap { { "bounds", "{1, 2}" }, { "border.lineWidth", 7 },
                   { "color", Archiver::archivedData(QColor(Qt::red)) } }
            << QRectF() << "none #ffff0000";
    }
    void foreignFormsFallBackKeyByKey()
    {
        QFETCH(QString, type);
        QFETCH(QVariantMap, form);
        QFETCH(QRectF, bounds);
        QFETCH(QString, expected);
        const auto annotation = FDPDFView::classForAnnotationClass(type)();
        QVERIFY(initWithPasteboardPropertyList(*annotation, form, QString()));
        QCOMPARE(annotation->bounds(), bounds);
        const QColor color = annotation->color();
        QCOMPARE(borderText(*annotation) + QLatin1Char(' ')
                + (color.isValid() ? color.name(QColor::HexArgb) : QStringLiteral("none")),
            expected);
        // "type" is never read: the class decides.
        QCOMPARE(annotation->type(), type);
        if (auto *line = dynamic_cast<PDFAnnotationLine *>(annotation.get())) {
            QCOMPARE(line->startPoint(), QPointF());
            QCOMPARE(line->endPoint(), QPointF());
            QVERIFY(isEmptyLine(*line));
        }
        if (auto *ink = dynamic_cast<PDFAnnotationInk *>(annotation.get()))
            QVERIFY(ink->paths().isEmpty());
    }

    void clonesAndCopies()
    {
        // A clone of two strokes has the first alone, on no page, and shares nothing.
        const auto ink = rich(QStringLiteral("Ink"));
        const auto document = documentOf();
        QVERIFY(document);
        document->pageAtIndex(0)->addAnnotation(ink);
        const auto copy = std::dynamic_pointer_cast<PDFAnnotationInk>(clone(*ink));
        QVERIFY(copy);
        QCOMPARE(copy->paths().size(), 1);
        QVERIFY(!copy->page());
        QCOMPARE(pageIndex(*copy), std::numeric_limits<qint64>::max());
        copy->paths().first()->lineTo(QPointF(500, 500));
        QCOMPARE(static_cast<PDFAnnotationInk &>(*ink).paths().size(), 2);
        QVERIFY(static_cast<PDFAnnotationInk &>(*ink).paths().first()->bounds().right() < 200);

        // A square without a border loses the one its making gave it.
        const auto square = appAnnotation(QStringLiteral("Square"), QRectF(0, 0, 30, 30));
        square->setBorder(nullptr);
        for (const QString &key : properties(*square).keys())
            QVERIFY2(!key.startsWith(QLatin1String("border.")), qPrintable(key));
        QVERIFY(!clone(*square)->border());
        QCOMPARE(borderLineWidth(*clone(*square)), 0.0);

        // A note's copy keeps its text, takes the plain icon and is not in the editor.
        auto note = std::dynamic_pointer_cast<FDAnnotationText>(rich(QStringLiteral("Text")));
        QVERIFY(note);
        setIsEditing(*note, true);
        const auto noteCopy = note->copy();
        QVERIFY(std::dynamic_pointer_cast<FDAnnotationText>(noteCopy));
        QCOMPARE(noteCopy->contents(), note->contents());
        QCOMPARE(
            static_cast<PDFAnnotationText &>(*noteCopy).iconType(), int(PDFAnnotationText::Note));
        QVERIFY(!isEditing(*noteCopy));
    }
};

FOLIDOC_APP_TEST_MAIN(AnnotationPasteboardTest)

#include "AnnotationPasteboardTest.moc"
