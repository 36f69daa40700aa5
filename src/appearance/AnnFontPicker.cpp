#include "AnnFontPicker.h"

#include <annotation/AnnotationDefaultsKeys.h>
#include <annotation/PDFAnnotation+XExtensions.h>
#include <app/PDFContents.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <view/FDPDFView.h>

#include <QComboBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QIntValidator>
#include <QLineEdit>

namespace Keys = AnnotationDefaultsKeys;

namespace {

// A typed size beyond this is taken for a slip of the keyboard.
constexpr int LargestTypedSize = 1000;

FDFontStyle styleOf(const QFont &font)
{
    if (font.bold() && font.italic())
        return FDFontStyle::boldAndItalic;
    if (font.bold())
        return FDFontStyle::bold;
    return font.italic() ? FDFontStyle::italic : FDFontStyle::regular;
}

PDFAnnotationFreeText *selectedFreeText(const AnnPickerTarget &target, FDPDFView **view)
{
    *view = target.view();
    const auto annotation = target.selectedAnn();
    if (!annotation || !isFreeText(*annotation))
        return nullptr;
    return dynamic_cast<PDFAnnotationFreeText *>(annotation.get());
}

} // namespace

const QList<int> &AnnFontPicker::fontSizes()
{
    static const QList<int> sizes
        = { 6, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 20, 24, 36, 48, 64, 72, 96, 144, 288 };
    return sizes;
}

AnnFontPicker &AnnFontPicker::shared()
{
    static AnnFontPicker *const picker = new AnnFontPicker;
    return *picker;
}

AnnFontPicker::AnnFontPicker()
{
    setObjectName(QStringLiteral("AnnFontPicker"));
    auto *const form = new QFormLayout(this);
    form->setContentsMargins(4, 4, 4, 4);
    m_fontNamePopupButton = new QComboBox(this);
    m_fontNamePopupButton->setAccessibleName(tr("Font"));
    m_fontNamePopupButton->addItem(tr("Default"), QString());
    m_fontNamePopupButton->insertSeparator(1);
    for (const QString &family : QFontDatabase::families()) {
        if (!QFontDatabase::isPrivateFamily(family))
            m_fontNamePopupButton->addItem(family, family);
    }
    m_fontNamePopupButton->setMaxVisibleItems(20);
    m_fontNamePopupButton->setMinimumContentsLength(16);
    m_fontNamePopupButton->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_fontStylePopupButton = new QComboBox(this);
    m_fontStylePopupButton->setAccessibleName(tr("Typeface"));
    m_fontStylePopupButton->addItem(tr("Regular"), int(FDFontStyle::regular));
    m_fontStylePopupButton->addItem(tr("Bold"), int(FDFontStyle::bold));
    m_fontStylePopupButton->addItem(tr("Italic"), int(FDFontStyle::italic));
    m_fontStylePopupButton->addItem(tr("Bold Italic"), int(FDFontStyle::boldAndItalic));
    m_fontSizeComboBox = new QComboBox(this);
    m_fontSizeComboBox->setAccessibleName(tr("Size"));
    m_fontSizeComboBox->setEditable(true);
    m_fontSizeComboBox->setInsertPolicy(QComboBox::NoInsert);
    m_fontSizeComboBox->setValidator(new QIntValidator(1, LargestTypedSize, m_fontSizeComboBox));
    for (const int size : fontSizes())
        m_fontSizeComboBox->addItem(QString::number(size), size);
    form->addRow(tr("Font"), m_fontNamePopupButton);
    form->addRow(tr("Typeface"), m_fontStylePopupButton);
    form->addRow(tr("Size"), m_fontSizeComboBox);

    connect(m_fontNamePopupButton, &QComboBox::activated, this, [this](int index) {
        fontNameDidChangeWithName(m_fontNamePopupButton->itemData(index).toString());
    });
    connect(m_fontStylePopupButton, &QComboBox::activated, this, [this](int index) {
        fontStyleDidChangeWithStyle(FDFontStyle(m_fontStylePopupButton->itemData(index).toInt()));
    });
    connect(m_fontSizeComboBox, &QComboBox::activated, this, [this](int index) {
        const QVariant listed = m_fontSizeComboBox->itemData(index);
        if (listed.isValid())
            fontSizeDidChangeWithSize(listed.toInt());
    });
    connect(m_fontSizeComboBox->lineEdit(), &QLineEdit::returnPressed, this,
        [this] { onFontSizeEnteredWithCombo(m_fontSizeComboBox); });
}

void AnnFontPicker::onWillShow()
{
    FDPDFView *pdfView = nullptr;
    if (const PDFAnnotationFreeText *const text = selectedFreeText(m_target, &pdfView)) {
        const QFont font = text->font();
        m_family = font.family();
        m_size = int(font.pointSizeF());
        m_style = styleOf(font);
    } else {
        const UserDefaults &defaults = UserDefaults::standard();
        m_family = defaults.stringForKey(Keys::FreeTextFontName);
        if (m_family.isEmpty())
            m_family = QStringLiteral("Helvetica");
        m_size = int(defaults.floatForKey(Keys::FreeTextFontSize));
        m_style = FDFontStyle::regular;
    }
    m_refreshing = true;
    // A family this system doesn't have shows as "Default", which is what a new box gets.
    const int nameIndex = m_fontNamePopupButton->findData(m_family);
    m_fontNamePopupButton->setCurrentIndex(nameIndex >= 0 ? nameIndex : 0);
    m_fontStylePopupButton->setCurrentIndex(int(m_style));
    const int sizeIndex = m_fontSizeComboBox->findData(m_size);
    if (sizeIndex >= 0)
        m_fontSizeComboBox->setCurrentIndex(sizeIndex);
    else
        m_fontSizeComboBox->setEditText(QString::number(m_size));
    m_refreshing = false;
}

QFont AnnFontPicker::presentFont() const
{
    QFont font = m_family.isEmpty() ? QFontDatabase::systemFont(QFontDatabase::GeneralFont)
                                    : QFont(m_family);
    font.setPointSizeF(m_size > 0 ? m_size : 12);
    font.setBold(m_style == FDFontStyle::bold || m_style == FDFontStyle::boldAndItalic);
    font.setItalic(m_style == FDFontStyle::italic || m_style == FDFontStyle::boldAndItalic);
    return font;
}

void AnnFontPicker::applyFont(const QFont &font)
{
    FDPDFView *pdfView = nullptr;
    PDFAnnotationFreeText *const text = selectedFreeText(m_target, &pdfView);
    if (!text)
        return;
    text->setFont(font);
    pdfView->setNeedsDisplayForAnnotation(pdfView->selectedAnn());
}

void AnnFontPicker::fontNameDidChangeWithName(const QString &name)
{
    if (m_refreshing || !m_target.view())
        return;
    FDPDFView *pdfView = nullptr;
    const bool hasText = selectedFreeText(m_target, &pdfView) != nullptr;
    if (!hasText && m_target.selectedAnn())
        return;
    m_family = name;
    if (hasText)
        applyFont(presentFont());
    else
        UserDefaults::standard().setObject(name, Keys::FreeTextFontName);
}

void AnnFontPicker::fontStyleDidChangeWithStyle(FDFontStyle style)
{
    if (m_refreshing || !m_target.view())
        return;
    m_style = style;
    // The defaults keep no style: only a selected box takes it.
    applyFont(presentFont());
}

void AnnFontPicker::fontSizeDidChangeWithSize(int size)
{
    if (m_refreshing || size <= 0 || !m_target.view())
        return;
    FDPDFView *pdfView = nullptr;
    const bool hasText = selectedFreeText(m_target, &pdfView) != nullptr;
    if (!hasText && m_target.selectedAnn())
        return;
    m_size = size;
    if (hasText)
        applyFont(presentFont());
    else
        UserDefaults::standard().setInteger(size, Keys::FreeTextFontSize);
}

void AnnFontPicker::onFontSizeEnteredWithCombo(QComboBox *combo)
{
    bool isNumber = false;
    const int size = combo->currentText().trimmed().toInt(&isNumber);
    if (!isNumber || size <= 0 || size > LargestTypedSize) {
        combo->setEditText(QString::number(m_size));
        return;
    }
    fontSizeDidChangeWithSize(size);
}
