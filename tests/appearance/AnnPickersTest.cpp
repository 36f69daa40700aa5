// The annotation bar and its pickers on a real document tab: tool toggles, and picks that change
// the selected annotation (one undo step, in the saved bytes) or else the tool's default.

#include "app/support/AppWindow.h"

#include <annotation/AnnotationDefaultsKeys.h>
#include <annotation/values/NSUserDefaults+XExtensions.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <appearance/AnnColorPicker.h>
#include <appearance/AnnFontPicker.h>
#include <appearance/AnnLineAspectPicker.h>
#include <appearance/FDPopoverController.h>
#include <appearance/PDFAnnBar.h>
#include <appearance/PDFSecondaryToolbar.h>
#include <kit/base/UndoManager.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationShape.h>
#include <kit/engine/PDFBorder.h>
#include <kit/engine/PDFDocument.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>

#include <QComboBox>
#include <QLabel>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

namespace Keys = AnnotationDefaultsKeys;

class AnnPickersTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init()
    {
        AppWindow::reset();
        m_window = AppWindow::makeWindow({ 1000, 700 });
        const QString path = m_dir.filePath(QStringLiteral("pickers.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(3, 30, 0), path));
        m_tab = AppWindow::openTab(m_window, QUrl::fromLocalFile(path));
        QVERIFY(m_tab);
        m_tab->setIsAnnBarPinned(true);
        QVERIFY(bar());
    }

    void cleanup()
    {
        FDPopoverController::shared().hide();
        QVERIFY(AppWindow::closeWindow(m_window));
    }

    void toolButtonsPickTheToolAndASecondClickKeepsIt()
    {
        QCOMPARE(bar()->annButton(PDFToolModeAnnHighlight)->accessibleName(),
            QStringLiteral("Highlight (Alt+1)"));
        const auto annotation = addSelected(QStringLiteral("Square"));
        clickBarTool(PDFToolModeAnnInk);
        QCOMPARE(int(m_tab->toolMode()), int(PDFToolModeAnnInk));
        QVERIFY(bar()->annButton(PDFToolModeAnnInk)->isChecked());
        QVERIFY(!bar()->annButton(PDFToolModeAnnSquare)->isChecked());
        // Picking a tool lets go of the selection, and pins the bar.
        QVERIFY(!view()->selectedAnn());
        QVERIFY(m_tab->isAnnBarPinned());
        clickBarTool(PDFToolModeAnnInk);
        QCOMPARE(int(m_tab->toolMode()), int(PDFToolModeAnnInk));
        QVERIFY(bar()->annButton(PDFToolModeAnnInk)->isChecked());
        clickBarTool(PDFToolModeTextSelection);
        QCOMPARE(int(m_tab->toolMode()), int(PDFToolModeTextSelection));
        const int checked
            = int(std::count_if(bar()->annButtons().cbegin(), bar()->annButtons().cend(),
                [](const QToolButton *button) { return button->isChecked(); }));
        QCOMPARE(checked, 1);
        QVERIFY(!bar()->colorBtn()->isEnabled());
    }

    void selectedAnnotationDecidesTheBar_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<int>("shownTool");
        QTest::addColumn<bool>("font");
        QTest::addColumn<bool>("aspect");
        QTest::newRow("circle") << "Circle" << int(PDFToolModeAnnCircle) << false << true;
        QTest::newRow("free text") << "FreeText" << int(PDFToolModeAnnFreeText) << true << false;
        QTest::newRow("note") << "Text" << int(PDFToolModeAnnText) << false << false;
    }

    void selectedAnnotationDecidesTheBar()
    {
        QFETCH(QString, type);
        QFETCH(int, shownTool);
        QFETCH(bool, font);
        QFETCH(bool, aspect);
        QVERIFY(addSelected(type));
        // The tab's tool stays text selection; the bar shows the annotation's.
        QCOMPARE(int(m_tab->toolMode()), int(PDFToolModeTextSelection));
        QVERIFY(bar()->annButton(shownTool)->isChecked());
        QVERIFY(!bar()->selectBtn()->isChecked());
        QVERIFY(bar()->colorBtn()->isEnabled());
        QCOMPARE(bar()->fontBtn()->isEnabled(), font);
        QCOMPARE(bar()->aspectBtn()->isEnabled(), aspect);
        view()->setSelectedAnn(nullptr);
        QVERIFY(bar()->selectBtn()->isChecked());
        QVERIFY(!bar()->colorBtn()->isEnabled());
    }

    void colourPickChangesTheSelectedShapeAsOneUndoStep()
    {
        const auto annotation = addSelected(QStringLiteral("Circle"));
        auto *const shape = dynamic_cast<PDFAnnotationShape *>(annotation.get());
        QVERIFY(shape);
        const QColor before = shape->color();
        const QColor defaultBefore = colorForKey(UserDefaults::standard(), Keys::CircleColor);
        QTest::mouseClick(bar()->colorBtn(), Qt::LeftButton);
        AnnColorPicker &picker = AnnColorPicker::shared();
        QCOMPARE(FDPopoverController::shared().contentWidget(), &picker);
        QCOMPARE(picker.leftLabelTextField()->text(), QStringLiteral("STROKE"));
        QCOMPARE(picker.rightLabelTextField()->text(), QStringLiteral("FILL"));
        QTest::mouseClick(picker.swatchButton(QStringLiteral("Black"), true), Qt::LeftButton);
        QTest::mouseClick(picker.swatchButton(QStringLiteral("Pink"), false), Qt::LeftButton);
        QCOMPARE(shape->color().rgb(), QColor(0, 0, 0).rgb());
        QCOMPARE(shape->interiorColor().rgb(), QColor(252, 142, 202).rgb());
        QCOMPARE(colorForKey(UserDefaults::standard(), Keys::CircleColor), defaultBefore);
        // What was picked is in the bytes the document saves.
        auto reread = std::make_shared<PDFDocument>();
        QVERIFY(reread->initWithData(view()->document()->dataRepresentation()));
        const auto saved = reread->pageAtIndex(0)->annotations();
        QCOMPARE(int(saved.size()), 1);
        QCOMPARE(saved.front()->type(), QStringLiteral("Circle"));
        QCOMPARE(saved.front()->color().rgb(), QColor(0, 0, 0).rgb());
        QCoreApplication::processEvents();
        UndoManager *const undo = m_window->undoManager();
        undo->undo();
        QCOMPARE(shape->color().rgb(), before.rgb());
        QVERIFY(!shape->interiorColor().isValid() || shape->interiorColor().alpha() == 0);
    }

    void freeTextTakesTextColourLeftAndBackgroundRight()
    {
        const auto annotation = addSelected(QStringLiteral("FreeText"));
        auto *const text = dynamic_cast<PDFAnnotationFreeText *>(annotation.get());
        QVERIFY(text);
        view()->commitEditing();
        view()->setSelectedAnn(annotation);
        QTest::mouseClick(bar()->colorBtn(), Qt::LeftButton);
        AnnColorPicker &picker = AnnColorPicker::shared();
        QCOMPARE(picker.leftLabelTextField()->text(), QStringLiteral("TEXT"));
        QTest::mouseClick(picker.swatchButton(QStringLiteral("Green"), true), Qt::LeftButton);
        QTest::mouseClick(picker.swatchButton(QStringLiteral("Yellow"), false), Qt::LeftButton);
        QCOMPARE(text->fontColor().rgb(), QColor(188, 246, 73).rgb());
        QCOMPARE(text->color().rgb(), QColor(242, 230, 21).rgb());
        const UserDefaults &defaults = UserDefaults::standard();
        QVERIFY(colorForKey(defaults, Keys::FreeTextColor).rgb() != QColor(188, 246, 73).rgb());
        QVERIFY(AnnColorPicker::isClear(colorForKey(defaults, Keys::FreeTextBackgroundColor)));
    }

    void colourPickWithoutSelectionChangesTheToolDefault_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<bool>("left");
        QTest::addColumn<QString>("key"); // empty: nothing may change
        QTest::addColumn<int>("width");
        QTest::newRow("highlight")
            << int(PDFToolModeAnnHighlight) << true << Keys::HighlightColor << 80;
        QTest::newRow("text box background")
            << int(PDFToolModeAnnFreeText) << false << Keys::FreeTextBackgroundColor << 161;
        QTest::newRow("square fill")
            << int(PDFToolModeAnnSquare) << false << Keys::SquareInteriorColor << 161;
        QTest::newRow("pen") << int(PDFToolModeAnnInk) << true << Keys::InkColor << 80;
    }

    void colourPickWithoutSelectionChangesTheToolDefault()
    {
        QFETCH(int, tool);
        QFETCH(bool, left);
        QFETCH(QString, key);
        QFETCH(int, width);
        clickBarTool(tool);
        QTest::mouseClick(bar()->colorBtn(), Qt::LeftButton);
        AnnColorPicker &picker = AnnColorPicker::shared();
        QCOMPARE(picker.width(), width);
        QTest::mouseClick(picker.swatchButton(QStringLiteral("Puerple"), left), Qt::LeftButton);
        QCOMPARE(colorForKey(UserDefaults::standard(), key).rgb(), QColor(214, 120, 230).rgb());
        // The picker shows the pick when it opens again.
        FDPopoverController::shared().hide();
        QTest::mouseClick(bar()->colorBtn(), Qt::LeftButton);
        QCOMPARE(
            (left ? picker.leftColor() : picker.rightColor()).rgb(), QColor(214, 120, 230).rgb());
    }

    void fontPickerChangesTheBoxOrTheDefaults()
    {
        UserDefaults &defaults = UserDefaults::standard();
        clickBarTool(PDFToolModeAnnFreeText);
        QTest::mouseClick(bar()->fontBtn(), Qt::LeftButton);
        AnnFontPicker &picker = AnnFontPicker::shared();
        QComboBox *const sizes = picker.fontSizeComboBox();
        sizes->setEditText(QStringLiteral("37"));
        picker.onFontSizeEnteredWithCombo(sizes);
        QCOMPARE(defaults.integerForKey(Keys::FreeTextFontSize), 37);
        // Not a size: ignored, the field shows the size in force again.
        sizes->setEditText(QStringLiteral("huge"));
        picker.onFontSizeEnteredWithCombo(sizes);
        QCOMPARE(defaults.integerForKey(Keys::FreeTextFontSize), 37);
        QCOMPARE(sizes->currentText(), QStringLiteral("37"));
        FDPopoverController::shared().hide();

        const auto annotation = addSelected(QStringLiteral("FreeText"));
        auto *const text = dynamic_cast<PDFAnnotationFreeText *>(annotation.get());
        view()->commitEditing();
        view()->setSelectedAnn(annotation);
        QTest::mouseClick(bar()->fontBtn(), Qt::LeftButton);
        QCOMPARE(picker.fontSizeComboBox()->currentText(),
            QString::number(int(text->font().pointSizeF())));
        picker.fontSizeDidChangeWithSize(24);
        picker.fontStyleDidChangeWithStyle(FDFontStyle::bold);
        QCOMPARE(int(text->font().pointSizeF()), 24);
        QVERIFY(text->font().bold());
        QCOMPARE(defaults.integerForKey(Keys::FreeTextFontSize), 37);
    }

    void lineAspectEditsTheBorderInPlaceAndSetsBothArrowEnds()
    {
        const auto annotation = addSelected(QStringLiteral("Line"));
        auto *const line = dynamic_cast<PDFAnnotationLine *>(annotation.get());
        QVERIFY(line && line->border());
        const PDFBorder *const border = line->border().get();
        QTest::mouseClick(bar()->aspectBtn(), Qt::LeftButton);
        AnnLineAspectPicker &picker = AnnLineAspectPicker::shared();
        QVERIFY(picker.arrowButtons().at(1)->isEnabled());
        QTest::mouseClick(picker.widthButtons().at(6), Qt::LeftButton);
        QTest::mouseClick(picker.typeButtons().at(1), Qt::LeftButton);
        QTest::mouseClick(picker.arrowButtons().at(1), Qt::LeftButton);
        QCOMPARE(line->border().get(), border);
        QCOMPARE(line->border()->lineWidth(), 7.0);
        QCOMPARE(line->border()->style(), int(PDFBorder::Dashed));
        QCOMPARE(line->startLineStyle(), int(PDFAnnotationLine::OpenArrow));
        QCOMPARE(line->endLineStyle(), int(PDFAnnotationLine::OpenArrow));
        QTest::mouseClick(picker.arrowButtons().at(3), Qt::LeftButton);
        QCOMPARE(line->startLineStyle(), int(PDFAnnotationLine::OpenArrow));
        QCOMPARE(line->endLineStyle(), int(PDFAnnotationLine::None));
        // Nothing reached the defaults.
        QCOMPARE(UserDefaults::standard().integerForKey(Keys::LineLineWidth), 3);
    }

    void lineAspectWithoutSelectionWritesIntegersForTheTool()
    {
        UserDefaults &defaults = UserDefaults::standard();
        clickBarTool(PDFToolModeAnnSquare);
        QTest::mouseClick(bar()->aspectBtn(), Qt::LeftButton);
        AnnLineAspectPicker &picker = AnnLineAspectPicker::shared();
        // Arrows are for lines only.
        QVERIFY(!picker.arrowButtons().at(2)->isEnabled());
        QVERIFY(!picker.arrowLabel()->isEnabled());
        QTest::mouseClick(picker.widthButtons().at(9), Qt::LeftButton);
        QCOMPARE(defaults.objectForKey(Keys::SquareLineWidth).toString(), QStringLiteral("10"));
        QCOMPARE(defaults.floatForKey(Keys::SquareLineWidth), 10.0f);
        QCOMPARE(defaults.integerForKey(Keys::LineLineWidth), 3);
        FDPopoverController::shared().hide();
        clickBarTool(PDFToolModeAnnLine);
        QTest::mouseClick(bar()->aspectBtn(), Qt::LeftButton);
        QCOMPARE(picker.arrowIndex(), 2);
        QTest::mouseClick(picker.arrowButtons().at(3), Qt::LeftButton);
        QCOMPARE(defaults.integerForKey(Keys::LineArrowType), 3);
        // A line made now takes the arrow at its start only.
        const auto page = view()->document()->pageAtIndex(0);
        const auto made
            = view()->addAnnotationWithType(QStringLiteral("Line"), page, QRectF(50, 50, 100, 100));
        auto *const line = dynamic_cast<PDFAnnotationLine *>(made.get());
        QVERIFY(line);
        QCOMPARE(line->startLineStyle(), int(PDFAnnotationLine::OpenArrow));
        QCOMPARE(line->endLineStyle(), int(PDFAnnotationLine::None));
    }

private:
    std::shared_ptr<PDFAnnotation> addSelected(const QString &type)
    {
        const auto page = view()->document()->pageAtIndex(0);
        const auto annotation
            = view()->addAnnotationWithType(type, page, QRectF(100, 400, 120, 60));
        QCoreApplication::processEvents();
        view()->setSelectedAnn(annotation);
        return annotation;
    }
    PDFAnnBar *bar() const
    {
        auto *const row = m_tab->container()->findChild<PDFSecondaryToolbar *>();
        return row ? row->annController() : nullptr;
    }
    FDPDFView *view() const { return m_tab->selectedPDFView(); }
    void clickBarTool(int mode)
    {
        QToolButton *const button = bar()->annButton(mode);
        QVERIFY(button);
        QTest::mouseClick(button, Qt::LeftButton);
    }

    QTemporaryDir m_dir;
    QPointer<PDFWindowController> m_window;
    QPointer<PDFContents> m_tab;
};

FOLIDOC_APP_TEST_MAIN(AnnPickersTest)

#include "AnnPickersTest.moc"
