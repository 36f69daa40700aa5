#include "AnnColorPicker.h"

#include "FDPopoverController.h"
#include "FDTheme.h"
#include "FDThemeProvider.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/values/NSUserDefaults+XExtensions.h>
#include <app/PDFContents.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFAnnotationShape.h>
#include <view/FDPDFView.h>

#include <QColorDialog>
#include <QCoreApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHash>
#include <QLabel>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr double SwatchSide = 20.0;
constexpr int ColumnWidth = 80;
constexpr int Columns = 3;

QPixmap swatchPixmap(const QColor &color, bool picked, double ratio)
{
    QPixmap pixmap(qRound(SwatchSide * ratio), qRound(SwatchSide * ratio));
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF oval(1, 1, 18, 18);
    if (AnnColorPicker::isClear(color)) {
        painter.setPen(QPen(FDTheme::white(0.5), 1.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(oval.adjusted(0.5, 0.5, -0.5, -0.5));
        painter.drawLine(QPointF(5, 3), QPointF(16, 17));
    } else {
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawEllipse(oval);
    }
    if (picked) {
        // A tick that stands out on light and dark fills alike.
        const bool darkFill = !AnnColorPicker::isClear(color) && color.lightnessF() < 0.55;
        painter.setPen(QPen(darkFill ? Qt::white : FDTheme::white(0.15), 1.8, Qt::SolidLine,
            Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        const QPointF tick[] = { { 6, 10 }, { 9, 13 }, { 14.5, 6.5 } };
        painter.drawPolyline(tick, 3);
    }
    return pixmap;
}

QIcon moreColorsIcon()
{
    QIcon icon;
    for (const double ratio : { 1.0, 2.0 }) {
        QPixmap pixmap(qRound(SwatchSide * ratio), qRound(SwatchSide * ratio));
        pixmap.setDevicePixelRatio(ratio);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(
            FDThemeProvider::current()->isDark() ? FDTheme::white(0.85) : FDTheme::white(0.35));
        for (const double x : { 5.0, 10.0, 15.0 })
            painter.drawEllipse(QPointF(x, 10), 1.6, 1.6);
        icon.addPixmap(pixmap);
    }
    return icon;
}

QToolButton *makeSwatchButton(const QString &name, QWidget *parent)
{
    auto *const button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setIconSize(QSize(20, 20));
    button->setFixedSize(22, 22);
    // The object name stays the colour's own; people see it in their language.
    const QString shown = QCoreApplication::translate("AnnColorPicker", qUtf8Printable(name));
    button->setToolTip(shown);
    button->setAccessibleName(shown);
    button->setObjectName(name);
    return button;
}

bool sameColor(const QColor &a, const QColor &b)
{
    if (AnnColorPicker::isClear(a) || AnnColorPicker::isClear(b))
        return AnnColorPicker::isClear(a) && AnnColorPicker::isClear(b);
    return a.rgba() == b.rgba();
}

struct ColorCase
{
    QString left;
    QColor leftColor;
    QString right; // empty: one column
    QColor rightColor;
};

ColorCase caseFor(const AnnPickerTarget &target)
{
    if (const auto annotation = target.selectedAnn()) {
        if (isCircle(*annotation) || isSquare(*annotation)) {
            const auto *const shape = dynamic_cast<const PDFAnnotationShape *>(annotation.get());
            return { AnnColorPicker::tr("STROKE"), annotation->color(), AnnColorPicker::tr("FILL"),
                shape ? shape->interiorColor() : QColor() };
        }
        if (isFreeText(*annotation)) {
            const auto *const text = dynamic_cast<const PDFAnnotationFreeText *>(annotation.get());
            return { AnnColorPicker::tr("TEXT"), text ? text->fontColor() : QColor(),
                AnnColorPicker::tr("BACK"), annotation->color() };
        }
        return { AnnColorPicker::tr("COLOR"), annotation->color(), {}, {} };
    }
    const UserDefaults &defaults = UserDefaults::standard();
    const int mode = target.toolMode();
    switch (mode) {
    case PDFToolModeAnnHighlight:
    case PDFToolModeAnnUnderline:
    case PDFToolModeAnnStrikeOut:
    case PDFToolModeAnnLine:
    case PDFToolModeAnnInk:
        return { AnnColorPicker::tr("COLOR"),
            colorForKey(defaults, AnnPickerTarget::leftColorKey(mode)), {}, {} };
    case PDFToolModeAnnFreeText:
        return { AnnColorPicker::tr("TEXT"),
            colorForKey(defaults, AnnPickerTarget::leftColorKey(mode)), AnnColorPicker::tr("BACK"),
            colorForKey(defaults, AnnPickerTarget::rightColorKey(mode)) };
    case PDFToolModeAnnCircle:
    case PDFToolModeAnnSquare:
        return { AnnColorPicker::tr("STROKE"),
            colorForKey(defaults, AnnPickerTarget::leftColorKey(mode)), AnnColorPicker::tr("FILL"),
            colorForKey(defaults, AnnPickerTarget::rightColorKey(mode)) };
    default:
        return { AnnColorPicker::tr("COLOR"), QColor(Qt::red), {}, {} };
    }
}

} // namespace

const QList<QPair<QString, QColor>> &AnnColorPicker::namedColors()
{
    static const QList<QPair<QString, QColor>> colors = {
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Clear")), QColor(Qt::transparent) },
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Red")), QColor(255, 68, 60) },
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Orange")), QColor(255, 179, 0) },
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Yellow")), QColor(242, 230, 21) },
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Green")), QColor(188, 246, 73) },
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Blue")),
            FDThemeProvider::current()->color(FDTheme::secondaryColor) },
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Blue2")), QColor(163, 186, 248) },
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Pink")), QColor(252, 142, 202) },
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Puerple")), QColor(214, 120, 230) },
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Gray")), QColor(192, 192, 192) },
        { QStringLiteral(QT_TRANSLATE_NOOP("AnnColorPicker", "Black")), QColor(0, 0, 0) },
    };
    return colors;
}

QIcon AnnColorPicker::swatchImage(const QColor &color, bool picked)
{
    // The named swatches are made once and kept; other colours are drawn when asked.
    static QHash<QString, QIcon> made;
    const QString key = (isClear(color) ? QStringLiteral("clear") : color.name(QColor::HexArgb))
        + (picked ? QStringLiteral("+") : QString());
    if (const auto found = made.constFind(key); found != made.constEnd())
        return *found;
    QIcon icon;
    for (const double ratio : { 1.0, 2.0 })
        icon.addPixmap(swatchPixmap(color, picked, ratio));
    made.insert(key, icon);
    return icon;
}

AnnColorPicker &AnnColorPicker::shared()
{
    static AnnColorPicker *const picker = new AnnColorPicker;
    return *picker;
}

QColorDialog &AnnColorPicker::colorPanel()
{
    static QColorDialog *const panel = [] {
        auto *const dialog = new QColorDialog;
        dialog->setObjectName(QStringLiteral("colorPanel"));
        dialog->setWindowTitle(QObject::tr("Colors"));
        dialog->setOption(QColorDialog::NoButtons);
        dialog->setModal(false);
        return dialog;
    }();
    return *panel;
}

AnnColorPicker::AnnColorPicker()
{
    setObjectName(QStringLiteral("AnnColorPicker"));
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(makeColumn(true));
    m_divider = new QWidget(this);
    m_divider->setFixedWidth(1);
    m_divider->setAutoFillBackground(true);
    row->addWidget(m_divider);
    m_rightColumn = makeColumn(false);
    row->addWidget(m_rightColumn);
}

QWidget *AnnColorPicker::makeColumn(bool isLeft)
{
    auto *const column = new QWidget(this);
    column->setFixedWidth(ColumnWidth);
    auto *const layout = new QVBoxLayout(column);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(4);
    auto *const header = new QHBoxLayout;
    auto *const label = new QLabel(column);
    QFont small = label->font();
    small.setPointSizeF(qMax(7.0, small.pointSizeF() - 1.5));
    small.setBold(true);
    label->setFont(small);
    auto *const picked = makeSwatchButton(QString(), column);
    header->addWidget(label, 1);
    header->addWidget(picked);
    layout->addLayout(header);
    auto *const grid = new QGridLayout;
    grid->setSpacing(1);
    grid->setContentsMargins(0, 0, 0, 0);
    QList<QToolButton *> &swatches = isLeft ? m_leftSwatches : m_rightSwatches;
    int index = 0;
    for (const auto &[name, color] : namedColors()) {
        QToolButton *const button = makeSwatchButton(name, column);
        connect(button, &QToolButton::clicked, this,
            [this, isLeft, pick = color] { updateColor(pick, isLeft); });
        grid->addWidget(button, index / Columns, index % Columns);
        swatches.append(button);
        ++index;
    }
    QToolButton *const more = makeSwatchButton(tr("More Colors…"), column);
    more->setObjectName(QStringLiteral("ic_more_horiz_18pt"));
    connect(more, &QToolButton::clicked, this, [this, isLeft] { openColorPanel(isLeft); });
    grid->addWidget(more, index / Columns, index % Columns);
    layout->addLayout(grid);
    if (isLeft) {
        m_leftLabelTextField = label;
        m_leftPickedColorButton = picked;
        m_leftMoreButton = more;
    } else {
        m_rightLabelTextField = label;
        m_rightPickedColorButton = picked;
        m_rightMoreButton = more;
    }
    return column;
}

QToolButton *AnnColorPicker::swatchButton(const QString &name, bool isLeft) const
{
    for (QToolButton *const button : isLeft ? m_leftSwatches : m_rightSwatches) {
        if (button->objectName() == name)
            return button;
    }
    return nullptr;
}

QToolButton *AnnColorPicker::moreColorsButton(bool isLeft) const
{
    return isLeft ? m_leftMoreButton : m_rightMoreButton;
}

void AnnColorPicker::onWillShow()
{
    const ColorCase shown = caseFor(m_target);
    m_hasRight = !shown.right.isEmpty();
    m_leftLabelTextField->setText(shown.left);
    m_rightLabelTextField->setText(shown.right);
    m_leftColor = shown.leftColor;
    // No right colour shows as clear.
    m_rightColor = shown.rightColor.isValid() ? shown.rightColor : QColor(Qt::transparent);
    m_rightColumn->setVisible(m_hasRight);
    m_divider->setVisible(m_hasRight);
    const int width = m_hasRight ? 161 : 80;
    setFixedWidth(width);
    QPalette palette = m_divider->palette();
    palette.setColor(QPalette::Window,
        FDThemeProvider::current()->isDark() ? FDTheme::white(0.3) : FDTheme::white(0.8));
    m_divider->setPalette(palette);
    m_leftMoreButton->setIcon(moreColorsIcon());
    m_rightMoreButton->setIcon(moreColorsIcon());
    refreshSwatches();
    adjustSize();
}

void AnnColorPicker::refreshSwatches()
{
    m_leftPickedColorButton->setIcon(swatchImage(m_leftColor, false));
    m_leftPickedColorButton->setAccessibleName(m_leftLabelTextField->text());
    m_leftPickedColorButton->setToolTip(m_leftLabelTextField->text());
    m_rightPickedColorButton->setIcon(swatchImage(m_rightColor, false));
    m_rightPickedColorButton->setAccessibleName(m_rightLabelTextField->text());
    m_rightPickedColorButton->setToolTip(m_rightLabelTextField->text());
    for (int index = 0; index < namedColors().size(); ++index) {
        const QColor color = namedColors().at(index).second;
        m_leftSwatches.at(index)->setIcon(swatchImage(color, sameColor(color, m_leftColor)));
        m_rightSwatches.at(index)->setIcon(swatchImage(color, sameColor(color, m_rightColor)));
    }
}

void AnnColorPicker::updateColor(const QColor &color, bool isLeft)
{
    FDPDFView *const pdfView = m_target.view();
    if (!pdfView)
        return;
    if (const auto annotation = pdfView->selectedAnn()) {
        if (isLeft) {
            if (auto *const text = dynamic_cast<PDFAnnotationFreeText *>(annotation.get()))
                text->setFontColor(color);
            else
                annotation->setColor(color);
        } else if (isFreeText(*annotation)) {
            annotation->setColor(color);
        } else if (auto *const shape = dynamic_cast<PDFAnnotationShape *>(annotation.get())) {
            shape->setInteriorColor(color);
        } else {
            return;
        }
        pdfView->setNeedsDisplayForAnnotation(annotation);
    } else {
        const int mode = m_target.toolMode();
        const QString key
            = isLeft ? AnnPickerTarget::leftColorKey(mode) : AnnPickerTarget::rightColorKey(mode);
        if (key.isEmpty())
            return;
        setColorForKey(UserDefaults::standard(), color, key);
    }
    (isLeft ? m_leftColor : m_rightColor) = color;
    refreshSwatches();
}

void AnnColorPicker::openColorPanel(bool isLeft)
{
    const AnnPickerTarget target = m_target;
    QColorDialog &panel = colorPanel();
    panel.disconnect(this);
    panel.setCurrentColor(isLeft ? m_leftColor : m_rightColor);
    // The panel outlives the popover: its updates go to the tab the popover was opened for.
    connect(&panel, &QColorDialog::currentColorChanged, this, [this, target, isLeft] {
        m_target = target;
        if (isLeft)
            onColorPanelUpdateLeftWithPanel(&colorPanel());
        else
            onColorPanelUpdateRightWithPanel(&colorPanel());
    });
    FDPopoverController::shared().hide();
    panel.show();
    panel.raise();
    panel.activateWindow();
}

void AnnColorPicker::onColorPanelUpdateLeftWithPanel(QColorDialog *panel)
{
    updateColor(panel->currentColor(), true);
}

void AnnColorPicker::onColorPanelUpdateRightWithPanel(QColorDialog *panel)
{
    updateColor(panel->currentColor(), false);
}
