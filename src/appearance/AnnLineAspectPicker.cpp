#include "AnnLineAspectPicker.h"

#include "FDTheme.h"
#include "FDThemeProvider.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <app/PDFContents.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFBorder.h>
#include <view/FDPDFView.h>

#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QToolButton>

namespace {

constexpr QSizeF SampleSize(70.0, 14.0);
constexpr double RowGap = 8.0;
constexpr double NarrowGroupX = 60.0;
constexpr double ArrowGroupX = 228.0;
constexpr double Top = 8.0;
constexpr int WidthCount = 10;
constexpr int TypeCount = 2;
constexpr int ArrowCount = 4;
// Arrow values in the order of their buttons: none, both, end, start.
constexpr int ArrowNone = 0;
constexpr int ArrowBoth = 1;
constexpr int ArrowEnd = 2;
constexpr int ArrowStart = 3;

QColor inkColor()
{
    return FDThemeProvider::current()->isDark() ? FDTheme::white(0.85) : FDTheme::white(0.25);
}

QPainterPath arrowShape(int arrow, double lineHeight)
{
    constexpr double width = 50.0;
    constexpr double head = 12.0;
    constexpr double mid = 7.0;
    const double half = lineHeight / 2;
    const bool left = arrow == ArrowBoth || arrow == ArrowStart;
    const bool right = arrow == ArrowBoth || arrow == ArrowEnd;
    const double barStart = left ? head : 0.0;
    const double barEnd = right ? width - head : width;
    QPainterPath path;
    path.addRect(QRectF(barStart, mid - half, barEnd - barStart, lineHeight));
    if (left) {
        QPainterPath tip;
        tip.moveTo(0, mid);
        tip.lineTo(head, mid - head / 2);
        tip.lineTo(head, mid + head / 2);
        tip.closeSubpath();
        path = path.united(tip);
    }
    if (right) {
        QPainterPath tip;
        tip.moveTo(width, mid);
        tip.lineTo(width - head, mid - head / 2);
        tip.lineTo(width - head, mid + head / 2);
        tip.closeSubpath();
        path = path.united(tip);
    }
    return path;
}

int arrowOf(const PDFAnnotationLine &line)
{
    const bool start = line.startLineStyle() != PDFAnnotationLine::None;
    const bool end = line.endLineStyle() != PDFAnnotationLine::None;
    if (start && end)
        return ArrowBoth;
    if (end)
        return ArrowEnd;
    return start ? ArrowStart : ArrowNone;
}

} // namespace

QImage FDCreateLineAspectSampleImage(const QString &name, int lineType, int arrowType, bool tick,
    double lineHeight, const QColor &color, double devicePixelRatio)
{
    QImage image(qCeil(SampleSize.width() * devicePixelRatio),
        qCeil(SampleSize.height() * devicePixelRatio), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    image.setText(QStringLiteral("Name"), name);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    if (lineType == PDFBorder::Dashed || arrowType == ArrowNone) {
        QPen pen(color, lineHeight, Qt::SolidLine, Qt::FlatCap);
        if (lineType == PDFBorder::Dashed)
            pen.setDashPattern({ 12.0 / lineHeight, 8.0 / lineHeight });
        painter.setPen(pen);
        painter.drawLine(QPointF(0, 7), QPointF(50, 7));
    } else {
        if (int(lineHeight) % 2 != 0)
            qFatal(
                "A line aspect sample with an arrow needs an even line height, not %g", lineHeight);
        painter.fillPath(arrowShape(arrowType, lineHeight), color);
    }
    if (tick) {
        painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const QPointF points[] = { { 55, 8 }, { 58, 4 }, { 65, 12 } };
        // The tick reads top-down here: y runs downwards in this image.
        const QPointF flipped[] = { { points[0].x(), 14 - points[0].y() },
            { points[1].x(), 14 - points[1].y() }, { points[2].x(), 14 - points[2].y() } };
        painter.drawPolyline(flipped, 3);
    }
    return image;
}

AnnLineAspectPicker &AnnLineAspectPicker::shared()
{
    static AnnLineAspectPicker *const picker = new AnnLineAspectPicker;
    return *picker;
}

AnnLineAspectPicker::AnnLineAspectPicker()
{
    setObjectName(QStringLiteral("AnnLineAspectPicker"));
    const double pitch = SampleSize.height() + RowGap;
    const double typeTop = Top + WidthCount * pitch + 2 * RowGap;
    const auto label = [this](const QString &text, double x, double y) {
        auto *const field = new QLabel(text, this);
        field->move(int(x), int(y) - 2);
        m_labels.append(field);
        return field;
    };
    label(tr("Width"), 8, Top);
    label(tr("Style"), 8, typeTop);
    m_arrowLabel = label(tr("Arrows"), ArrowGroupX - 68, Top);
    placeGroup(m_widthButtons, WidthCount, NarrowGroupX, Top,
        [this](int index) { lineWidthDidChangeWithWidth(index + 1); });
    placeGroup(m_typeButtons, TypeCount, NarrowGroupX, typeTop,
        [this](int index) { lineTypeDidChangeWithType(index); });
    placeGroup(m_arrowButtons, ArrowCount, ArrowGroupX, Top,
        [this](int index) { arrowTypeDidChangeWithArrow(index); });
    const QStringList arrowNames
        = { tr("No Arrows"), tr("Arrows at Both Ends"), tr("Arrow at End"), tr("Arrow at Start") };
    for (int index = 0; index < ArrowCount; ++index) {
        m_arrowButtons.at(index)->setAccessibleName(arrowNames.at(index));
        m_arrowButtons.at(index)->setToolTip(arrowNames.at(index));
    }
    for (int index = 0; index < WidthCount; ++index) {
        const QString name = tr("Width %1").arg(index + 1);
        m_widthButtons.at(index)->setAccessibleName(name);
        m_widthButtons.at(index)->setToolTip(name);
    }
    m_typeButtons.at(0)->setAccessibleName(tr("Solid"));
    m_typeButtons.at(0)->setToolTip(tr("Solid"));
    m_typeButtons.at(1)->setAccessibleName(tr("Dashed"));
    m_typeButtons.at(1)->setToolTip(tr("Dashed"));
    setFixedSize(
        int(ArrowGroupX + SampleSize.width() + 8), int(typeTop + TypeCount * pitch + RowGap));
}

void AnnLineAspectPicker::placeGroup(QList<QToolButton *> &buttons, int count, double x, double top,
    const std::function<void(int)> &pick)
{
    const double pitch = SampleSize.height() + RowGap;
    for (int index = 0; index < count; ++index) {
        auto *const button = new QToolButton(this);
        button->setAutoRaise(true);
        button->setIconSize(SampleSize.toSize());
        button->setFixedSize(SampleSize.toSize() + QSize(6, 6));
        button->move(int(x) - 3, int(top + index * pitch) - 3);
        connect(button, &QToolButton::clicked, this, [pick, index] { pick(index); });
        buttons.append(button);
    }
}

void AnnLineAspectPicker::onWillShow()
{
    const UserDefaults &defaults = UserDefaults::standard();
    bool isLineTarget = false;
    if (const auto annotation = m_target.selectedAnn()) {
        m_widthIndex = qBound(0, int(borderLineWidth(*annotation)) - 1, WidthCount - 1);
        m_typeIndex = borderStyle(*annotation) == PDFBorder::Dashed ? 1 : 0;
        const auto *const line = dynamic_cast<const PDFAnnotationLine *>(annotation.get());
        isLineTarget = line != nullptr;
        m_arrowIndex = line ? arrowOf(*line) : ArrowNone;
    } else {
        const int mode = m_target.toolMode();
        const QString widthKey = AnnPickerTarget::lineWidthKey(mode);
        const QString typeKey = AnnPickerTarget::lineTypeKey(mode);
        const QString arrowKey = AnnPickerTarget::arrowTypeKey(mode);
        m_widthIndex = widthKey.isEmpty()
            ? 0
            : qBound(0, int(defaults.floatForKey(widthKey)) - 1, WidthCount - 1);
        m_typeIndex = !typeKey.isEmpty() && int(defaults.floatForKey(typeKey)) == 1 ? 1 : 0;
        m_arrowIndex = arrowKey.isEmpty()
            ? ArrowNone
            : qBound(0, int(defaults.integerForKey(arrowKey)), ArrowCount - 1);
        isLineTarget = mode == PDFToolModeAnnLine;
    }
    for (QToolButton *const button : std::as_const(m_arrowButtons))
        button->setEnabled(isLineTarget);
    m_arrowLabel->setEnabled(isLineTarget);
    refreshImages();
}

void AnnLineAspectPicker::refreshImages()
{
    const QColor ink = inkColor();
    const auto icon = [&](int type, int arrow, bool tick, double height) {
        QIcon made;
        for (const double ratio : { 1.0, 2.0 })
            made.addPixmap(QPixmap::fromImage(
                FDCreateLineAspectSampleImage(QString(), type, arrow, tick, height, ink, ratio)));
        return made;
    };
    for (int index = 0; index < WidthCount; ++index)
        m_widthButtons.at(index)->setIcon(
            icon(PDFBorder::Solid, ArrowNone, index == m_widthIndex, index + 1));
    for (int index = 0; index < TypeCount; ++index)
        m_typeButtons.at(index)->setIcon(icon(index, ArrowNone, index == m_typeIndex, 2));
    for (int index = 0; index < ArrowCount; ++index) {
        // "No arrows" shows as a bare line; the others as arrow shapes of height 2.
        m_arrowButtons.at(index)->setIcon(
            icon(PDFBorder::Solid, index, index == m_arrowIndex, 2.0));
    }
}

void AnnLineAspectPicker::lineWidthDidChangeWithWidth(int width)
{
    FDPDFView *const pdfView = m_target.view();
    if (!pdfView)
        return;
    if (const auto annotation = pdfView->selectedAnn()) {
        if (!hasBorder(*annotation))
            return;
        std::shared_ptr<PDFBorder> border = annotation->border();
        if (!border) {
            border = std::make_shared<PDFBorder>();
            border->setStyle(m_typeIndex);
            annotation->setBorder(border);
        }
        border->setLineWidth(width);
        pdfView->setNeedsDisplayForAnnotation(annotation);
    } else {
        const QString key = AnnPickerTarget::lineWidthKey(m_target.toolMode());
        if (key.isEmpty())
            return;
        UserDefaults::standard().setInteger(width, key);
        UserDefaults::standard().synchronize();
    }
    m_widthIndex = qBound(0, width - 1, WidthCount - 1);
    refreshImages();
}

void AnnLineAspectPicker::lineTypeDidChangeWithType(int type)
{
    FDPDFView *const pdfView = m_target.view();
    if (!pdfView)
        return;
    if (const auto annotation = pdfView->selectedAnn()) {
        const std::shared_ptr<PDFBorder> border = annotation->border();
        if (!border)
            return;
        border->setStyle(type);
        pdfView->setNeedsDisplayForAnnotation(annotation);
    } else {
        const QString key = AnnPickerTarget::lineTypeKey(m_target.toolMode());
        if (key.isEmpty())
            return;
        UserDefaults::standard().setInteger(type, key);
        UserDefaults::standard().synchronize();
    }
    m_typeIndex = type;
    refreshImages();
}

void AnnLineAspectPicker::arrowTypeDidChangeWithArrow(int arrow)
{
    FDPDFView *const pdfView = m_target.view();
    if (!pdfView)
        return;
    if (const auto annotation = pdfView->selectedAnn()) {
        auto *const line = dynamic_cast<PDFAnnotationLine *>(annotation.get());
        if (!line)
            return;
        const bool start = arrow == ArrowBoth || arrow == ArrowStart;
        const bool end = arrow == ArrowBoth || arrow == ArrowEnd;
        line->setStartLineStyle(start ? PDFAnnotationLine::OpenArrow : PDFAnnotationLine::None);
        line->setEndLineStyle(end ? PDFAnnotationLine::OpenArrow : PDFAnnotationLine::None);
        pdfView->setNeedsDisplayForAnnotation(annotation);
    } else {
        const QString key = AnnPickerTarget::arrowTypeKey(m_target.toolMode());
        if (key.isEmpty())
            return;
        UserDefaults::standard().setInteger(arrow, key);
        UserDefaults::standard().synchronize();
    }
    m_arrowIndex = arrow;
    refreshImages();
}
