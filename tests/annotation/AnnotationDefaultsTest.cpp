#include "support/AnnotationTestKit.h"

#include <app/support/AppTestEnvironment.h>

#include <annotation/AnnotationDefaultsKeys.h>
#include <annotation/FDAnnotationFreeText.h>
#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/PDFAnnotationFreeText+XExtensions.h>
#include <annotation/values/NSUserDefaults+XExtensions.h>
#include <app/FDDefaults.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotationCircle.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationText.h>
#include <kit/engine/PDFBorder.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QFontDatabase>
#include <QProcess>
#include <QtTest>

namespace Keys = AnnotationDefaultsKeys;
using namespace AnnotationTestKit;

namespace {

const QColor Red(255, 68, 60);

// Border width (-1 for none), style, colour, interior colour and line ends, in one line.
QString describe(const PDFAnnotation &annotation)
{
    const auto border = annotation.border();
    QString text = QStringLiteral("border %1/%2 color %3")
                       .arg(border ? border->lineWidth() : -1)
                       .arg(border ? border->style() : 0)
                       .arg(annotation.color().name(QColor::HexArgb));
    if (const auto *shape = dynamic_cast<const PDFAnnotationShape *>(&annotation)) {
        text += QStringLiteral(" fill %1")
                    .arg(shape->interiorColor().isValid()
                            ? shape->interiorColor().name(QColor::HexArgb)
                            : QStringLiteral("none"));
    }
    if (const auto *line = dynamic_cast<const PDFAnnotationLine *>(&annotation)) {
        text += QStringLiteral(" ends %1-%2 from (%3,%4) to (%5,%6)")
                    .arg(line->startLineStyle())
                    .arg(line->endLineStyle())
                    .arg(line->startPoint().x())
                    .arg(line->startPoint().y())
                    .arg(line->endPoint().x())
                    .arg(line->endPoint().y());
    }
    return text;
}

} // namespace

class AnnotationDefaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppTestEnvironment::clearStore();
        FDDefaults::registerDefaults();
        setScreenDotsPerInchOverride(std::nullopt);
    }

    void newAnnotationsTakeTheSettings_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QVariantMap>("settings"); // colours as QColor, the rest as stored
        QTest::addColumn<QString>("expected");
        const QString red = Red.name(QColor::HexArgb);
        const QString line = QStringLiteral(" from (0,0) to (60,40)");
        QTest::newRow("ink, fresh") << "Ink" << QVariantMap() << "border 3/0 color " + red;
        QTest::newRow("ink, width 0 has no border")
            << "Ink" << QVariantMap { { Keys::InkLineWidth, 0 } } << "border -1/0 color " + red;
        QTest::newRow("ink, blue 7")
            << "Ink"
            << QVariantMap { { Keys::InkColor, QColor(Qt::blue) }, { Keys::InkLineWidth, 7 } }
            << "border 7/0 color #ff0000ff";
        QTest::newRow("line, fresh: arrow at the end")
            << "Line" << QVariantMap() << "border 3/0 color " + red + " ends 0-4" + line;
        for (const auto &[arrow, ends] : std::initializer_list<std::pair<int, const char *>> {
                 { 0, "0-0" }, { 1, "4-4" }, { 2, "0-4" }, { 3, "4-0" }, { 5, "0-0" } }) {
            QTest::newRow(qPrintable(QStringLiteral("line, arrow type %1").arg(arrow)))
                << "Line" << QVariantMap { { Keys::LineArrowType, arrow } }
                << "border 3/0 color " + red + " ends " + QLatin1String(ends) + line;
        }
        QTest::newRow("line, dashed 2")
            << "Line" << QVariantMap { { Keys::LineLineType, 1 }, { Keys::LineLineWidth, 2 } }
            << "border 2/1 color " + red + " ends 0-4" + line;
        QTest::newRow("line, width 0 has no border")
            << "Line" << QVariantMap { { Keys::LineLineWidth, 0 }, { Keys::LineLineType, 1 } }
            << "border -1/0 color " + red + " ends 0-4" + line;
        QTest::newRow("circle, fresh: clear interior is no fill")
            << "Circle" << QVariantMap() << "border 3/0 color " + red + " fill none";
        QTest::newRow("circle, width 0 keeps a border of width 0")
            << "Circle" << QVariantMap { { Keys::CircleLineWidth, 0 } }
            << "border 0/0 color " + red + " fill none";
        QTest::newRow("circle, interior of alpha 0 is no fill")
            << "Circle" << QVariantMap { { Keys::CircleInteriorColor, QColor(0, 255, 0, 0) } }
            << "border 3/0 color " + red + " fill none";
        QTest::newRow("circle, half-transparent interior fills")
            << "Circle" << QVariantMap { { Keys::CircleInteriorColor, QColor(0, 255, 0, 128) } }
            << "border 3/0 color " + red + " fill #8000ff00";
        QTest::newRow("square, dashed with a fill")
            << "Square"
            << QVariantMap { { Keys::SquareLineType, 1 }, { Keys::SquareLineWidth, 5 },
                   { Keys::SquareInteriorColor, QColor(Qt::yellow) },
                   { Keys::SquareColor, QColor(Qt::black) } }
            << "border 5/1 color #ff000000 fill #ffffff00";
        QTest::newRow("square ignores the circle's settings")
            << "Square" << QVariantMap { { Keys::CircleLineWidth, 9 } }
            << "border 3/0 color " + red + " fill none";
    }
    void newAnnotationsTakeTheSettings()
    {
        QFETCH(QString, type);
        QFETCH(QVariantMap, settings);
        QFETCH(QString, expected);
        UserDefaults &defaults = UserDefaults::standard();
        for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
            if (it->typeId() == QMetaType::QColor)
                setColorForKey(defaults, it->value<QColor>(), it.key());
            else
                defaults.setInteger(it->toInt(), it.key());
        }
        const auto annotation = appAnnotation(type, QRectF(100, 100, 60, 40));
        QVERIFY(annotation);
        QCOMPARE(describe(*annotation), expected);
        // Author and time are stamped later, as the annotation goes on a page.
        QVERIFY(annotation->userName().isEmpty());
        QVERIFY(!annotation->modificationDate().isValid());
    }

    void freeTextFontAndBackground_data()
    {
        QTest::addColumn<QString>("fontName");
        QTest::addColumn<int>("fontSize");
        QTest::addColumn<QString>("family");
        QTest::addColumn<double>("pointSize");
        const QFont system = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        QTest::newRow("fresh") << QString() << 0 << "Helvetica" << 12.0;
        QTest::newRow("installed family, 20") << "DejaVu Sans" << 20 << "DejaVu Sans" << 20.0;
        QTest::newRow("unknown name: the system font at its size")
            << "No Such Font 42" << 30 << system.family() << system.pointSizeF();
    }
    void freeTextFontAndBackground()
    {
        QFETCH(QString, fontName);
        QFETCH(int, fontSize);
        QFETCH(QString, family);
        QFETCH(double, pointSize);
        if (!fontName.isEmpty() && fontName.startsWith(QLatin1String("DejaVu"))
            && !QFontDatabase::hasFamily(fontName))
            QSKIP("the DejaVu fonts are not installed");
        UserDefaults &defaults = UserDefaults::standard();
        if (!fontName.isEmpty()) {
            defaults.setObject(fontName, Keys::FreeTextFontName);
            defaults.setInteger(fontSize, Keys::FreeTextFontSize);
        }
        // The background setting is the colour picker's alone.
        setColorForKey(defaults, QColor(Qt::green), Keys::FreeTextBackgroundColor);
        setColorForKey(defaults, QColor(Qt::blue), Keys::FreeTextColor);

        const auto annotation = appAnnotation(QStringLiteral("FreeText"), QRectF(10, 10, 120, 30));
        const auto *freeText = dynamic_cast<const PDFAnnotationFreeText *>(annotation.get());
        QVERIFY(freeText);
        QCOMPARE(freeText->font().family(), family);
        QCOMPARE(freeText->font().pointSizeF(), pointSize);
        QCOMPARE(freeText->fontColor(), QColor(Qt::blue));
        QCOMPARE(freeText->color().alpha(), 0);
        QVERIFY(!freeText->border());
    }

    void noteSizeAndIcon()
    {
        const auto noteOf = [](const QRectF &asked) {
            const auto annotation = appAnnotation(QStringLiteral("Text"), asked);
            return std::dynamic_pointer_cast<PDFAnnotationText>(annotation);
        };
        // A click makes a note of 24 by 24; a box with one side kept stays as asked.
        QCOMPARE(noteOf(QRectF(50, 60, 0, 0))->bounds(), QRectF(50, 60, 24, 24));
        QCOMPARE(noteOf(QRectF(50, 60, 0, 10))->bounds(), QRectF(50, 60, 0, 10));
        QCOMPARE(noteOf(QRectF(5, 5, 30, 30))->iconType(), 0);
        UserDefaults::standard().setInteger(3, Keys::TextIconType);
        const auto note = noteOf(QRectF(5, 5, 30, 30));
        QCOMPARE(note->bounds(), QRectF(5, 5, 30, 30));
        QCOMPARE(note->iconType(), 3);
    }

    void archivedAnnotationsKeepTheirOwnValues()
    {
        // An undo entry or a copy comes back as it was, whatever the settings say meanwhile.
        const auto circle = appAnnotation(QStringLiteral("Circle"), QRectF(0, 0, 40, 40));
        QVariantMap archive;
        circle->encodeWithCoder(archive);
        setColorForKey(UserDefaults::standard(), QColor(Qt::blue), Keys::CircleInteriorColor);
        setColorForKey(UserDefaults::standard(), QColor(Qt::black), Keys::CircleColor);
        UserDefaults::standard().setInteger(8, Keys::CircleLineWidth);

        const auto back = FDPDFView::classForAnnotationClass(QStringLiteral("Circle"))();
        QVERIFY(back->initWithCoder(archive));
        QCOMPARE(describe(*back), describe(*circle));
        // While a new one takes the new settings.
        QCOMPARE(describe(*appAnnotation(QStringLiteral("Circle"), QRectF(0, 0, 40, 40))),
            QStringLiteral("border 8/0 color #ff000000 fill #ff0000ff"));
    }

    void clickedFreeTextOpensAUsableBox_data()
    {
        QTest::addColumn<QRectF>("bounds");
        QTest::addColumn<double>("pointSize");
        QTest::addColumn<double>("dpi");
        QTest::addColumn<QRectF>("expected");
        // h = size · dpi / 72 + 6, centred on the old y, 5 to the left, 100 wide.
        QTest::newRow("a click: 12 pt at 110 dpi")
            << QRectF(200, 300, 0, 0) << 12.0 << 110.0
            << QRectF(195, 300 - (12.0 * 110 / 72 + 6) / 2, 100, 12.0 * 110 / 72 + 6);
        QTest::newRow("narrow but tall: 4.9 by 200")
            << QRectF(200, 300, 4.9, 200) << 12.0 << 72.0 << QRectF(195, 291, 100, 18);
        QTest::newRow("wide but flat: 200 by 4.9")
            << QRectF(200, 300, 200, 4.9) << 24.0 << 144.0 << QRectF(195, 273, 100, 54);
        QTest::newRow("5 by 5 is dragged out")
            << QRectF(200, 300, 5, 5) << 12.0 << 110.0 << QRectF(200, 300, 5, 5);
        QTest::newRow("a real box")
            << QRectF(200, 300, 150, 40) << 12.0 << 110.0 << QRectF(200, 300, 150, 40);
    }
    void clickedFreeTextOpensAUsableBox()
    {
        QFETCH(QRectF, bounds);
        QFETCH(double, pointSize);
        QFETCH(double, dpi);
        QFETCH(QRectF, expected);
        setScreenDotsPerInchOverride(dpi);
        UserDefaults::standard().setInteger(qRound(pointSize), Keys::FreeTextFontSize);
        auto freeText = std::dynamic_pointer_cast<FDAnnotationFreeText>(
            appAnnotation(QStringLiteral("FreeText"), bounds));
        QVERIFY(freeText);
        freeText->adjustBoundsIfNeeded();
        QCOMPARE(freeText->bounds(), expected);
    }

    void unknownScreenResolutionIsNinetySix()
    {
        // The screen's own figure where there is a screen.
        QCOMPARE(screenDotsPerInch(), QGuiApplication::primaryScreen()->physicalDotsPerInchX());
        // A process with no screen at all stands in 96.
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("FOLIDOC_DPI_CHILD"), QStringLiteral("1"));
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(), {});
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(child.readAllStandardOutput().trimmed(), QByteArray("96"));
    }

    void onlyTheApplicationsTextKindsKeepEditing()
    {
        const auto plain = PDFAnnotation::classForType(QStringLiteral("FreeText"))();
        QVERIFY(plain->initWithBounds(QRectF(0, 0, 50, 20)));
        setIsEditing(*plain, true);
        QVERIFY(!isEditing(*plain));

        for (const char *type : { "FreeText", "Text" }) {
            const auto annotation = appAnnotation(QLatin1String(type), QRectF(0, 0, 50, 20));
            QVERIFY(!isEditing(*annotation));
            setIsEditing(*annotation, true);
            QVERIFY(isEditing(*annotation));
            // Made anew, it starts closed.
            QVERIFY(annotation->initWithBounds(QRectF(0, 0, 50, 20)));
            QVERIFY(!isEditing(*annotation));
        }
    }
};

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    if (qEnvironmentVariableIsSet("FOLIDOC_DPI_CHILD")) {
        const QCoreApplication app(argc, argv);
        std::printf("%g\n", screenDotsPerInch());
        return 0;
    }
    QApplication app(argc, argv);
    AnnotationDefaultsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "AnnotationDefaultsTest.moc"
