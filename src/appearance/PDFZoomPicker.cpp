#include "PDFZoomPicker.h"

#include "FDTheme.h"
#include "FDThemeProvider.h"
#include "FDToolbarIcons.h"

#include <app/PDFContents.h>
#include <kit/base/NotificationCenter.h>
#include <view/FDPDFView.h>

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace {

// A percentage as the person's language writes it ("125%", "125 %").
QString percentText(qint64 percent)
{
    return PDFZoomPicker::tr("%1%").arg(QLocale().toString(percent));
}

constexpr double Steps[] = { 0.5, 0.75, 1.0, 1.5, 2.0 };

QColor ink()
{
    return FDThemeProvider::current()->isDark() ? FDTheme::white(0.9) : FDTheme::white(0.25);
}

QIcon picture(const QSizeF &size, const std::function<void(QPainter &)> &draw)
{
    return FDToolbarIcons::drawnIcon(size, draw);
}

QFont systemFont(double size)
{
    QFont font;
    font.setPixelSize(int(size));
    return font;
}

QIcon stepPicture(double step)
{
    return picture({ 54, 32 }, [step](QPainter &painter) {
        painter.setPen(QPen(ink(), 2.0));
        painter.drawRoundedRect(QRectF(1, 1, 52, 30), 6, 6);
        painter.setFont(systemFont(14));
        painter.drawText(
            QRectF(0, 0, 54, 32), Qt::AlignCenter, percentText(std::lround(step * 100)));
    });
}

QIcon fitPicture(bool width)
{
    return picture({ 64, 72 }, [width](QPainter &painter) {
        painter.setPen(QPen(ink(), 2.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawRoundedRect(QRectF(8, 4, 48, 64), 4, 4);
        // Arrows at the margins point outwards: sideways for the width, all four ways for a page.
        const auto arrow = [&painter](QPointF from, QPointF to) {
            painter.drawLine(from, to);
            const QPointF direction
                = (to - from) / std::hypot(to.x() - from.x(), to.y() - from.y());
            const QPointF normal(-direction.y(), direction.x());
            painter.drawLine(to, to - direction * 3 + normal * 3);
            painter.drawLine(to, to - direction * 3 - normal * 3);
        };
        // Above the words, so that the two never meet.
        arrow({ 24, 22 }, { 13, 22 });
        arrow({ 40, 22 }, { 51, 22 });
        if (!width)
            arrow({ 32, 18 }, { 32, 8 });
        painter.setFont(systemFont(14));
        painter.drawText(
            QRectF(0, 72 - 27.0 - 16, 64, 16), Qt::AlignCenter, PDFZoomPicker::tr("FIT"));
        painter.setFont(systemFont(width ? 11 : 13));
        painter.drawText(QRectF(0, 72 - 20.0, 64, 16), Qt::AlignHCenter | Qt::AlignTop,
            width ? PDFZoomPicker::tr("WIDTH") : PDFZoomPicker::tr("PAGE"));
    });
}

QPixmap markPicture(bool marked)
{
    QPixmap pixmap(24, 24);
    pixmap.setDevicePixelRatio(2.0);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ink(), 1.2));
    painter.setBrush(marked ? QBrush(FDThemeProvider::current()->color(FDTheme::primaryColor))
                            : QBrush(Qt::NoBrush));
    painter.drawEllipse(QPointF(6, 6), 4, 4);
    return pixmap;
}

QIcon signPicture(bool plus)
{
    return picture({ 24, 24 }, [plus](QPainter &painter) {
        painter.setPen(QPen(ink(), 2.0, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(6, 12), QPointF(18, 12));
        if (plus)
            painter.drawLine(QPointF(12, 6), QPointF(12, 18));
    });
}

QToolButton *pictureButton(const QString &title, const QSize &size, QWidget *parent)
{
    auto *const button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setToolTip(title);
    button->setAccessibleName(title);
    button->setIconSize(size);
    return button;
}

} // namespace

PDFZoomPicker &PDFZoomPicker::shared()
{
    static PDFZoomPicker *const picker = new PDFZoomPicker;
    return *picker;
}

QString PDFZoomPicker::zoomText(double scaleFactor)
{
    return percentText(qint64(std::trunc(scaleFactor * 100.0)));
}

PDFZoomPicker::PDFZoomPicker()
{
    setObjectName(QStringLiteral("PDFZoomPicker"));
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->setSpacing(8);

    auto *const top = new QHBoxLayout;
    m_zoomOutButton = pictureButton(tr("Zoom Out"), { 24, 24 }, this);
    m_zoomInButton = pictureButton(tr("Zoom In"), { 24, 24 }, this);
    m_zoomTextField = new QLabel(this);
    m_zoomTextField->setAlignment(Qt::AlignCenter);
    m_zoomTextField->setAccessibleName(tr("Zoom"));
    QFont large = m_zoomTextField->font();
    large.setPixelSize(18);
    m_zoomTextField->setFont(large);
    top->addWidget(m_zoomOutButton);
    top->addWidget(m_zoomTextField, 1);
    top->addWidget(m_zoomInButton);
    column->addLayout(top);
    connect(m_zoomInButton, &QToolButton::clicked, this, [this] { onZoomInButton(); });
    connect(m_zoomOutButton, &QToolButton::clicked, this, [this] { onZoomOutWithButton(); });

    auto *const steps = new QHBoxLayout;
    steps->setSpacing(4);
    for (const double step : Steps) {
        QToolButton *const button
            = pictureButton(percentText(std::lround(step * 100)), { 54, 32 }, this);
        button->setCheckable(true);
        connect(button, &QToolButton::clicked, this, [this, step] { zoomTo(step); });
        m_stepButtons.append(button);
        steps->addWidget(button);
    }
    column->addLayout(steps);

    auto *const fits = new QGridLayout;
    m_zoomFitWidthButton = pictureButton(tr("Fit Width"), { 64, 72 }, this);
    m_zoomFitPageButton = pictureButton(tr("Fit Page"), { 64, 72 }, this);
    m_zoomFitWidthIndicatorImgView = new QLabel(this);
    m_zoomFitPageIndicatorImgView = new QLabel(this);
    fits->addWidget(m_zoomFitWidthButton, 0, 0, Qt::AlignCenter);
    fits->addWidget(m_zoomFitPageButton, 0, 1, Qt::AlignCenter);
    fits->addWidget(m_zoomFitWidthIndicatorImgView, 1, 0, Qt::AlignCenter);
    fits->addWidget(m_zoomFitPageIndicatorImgView, 1, 1, Qt::AlignCenter);
    column->addLayout(fits);
    connect(
        m_zoomFitWidthButton, &QToolButton::clicked, this, [this] { onZoomFitWidthWithButton(); });
    connect(
        m_zoomFitPageButton, &QToolButton::clicked, this, [this] { onZoomFitPageWithButton(); });
}

FDPDFView *PDFZoomPicker::view() const
{
    return m_contents ? m_contents->selectedPDFView() : nullptr;
}

void PDFZoomPicker::onWillShow()
{
    onWillClose();
    m_listenedView = view();
    if (m_listenedView) {
        NotificationCenter::defaultCenter().addObserver(this, PDFView::ScaleChangedNotification,
            m_listenedView.data(), [this](const Notification &) { onPDFViewScaleChanged(); });
    }
    refreshPictures();
    onPDFViewScaleChanged();
}

void PDFZoomPicker::onWillClose()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    m_listenedView.clear();
}

void PDFZoomPicker::refreshPictures()
{
    for (int index = 0; index < m_stepButtons.size(); ++index)
        m_stepButtons.at(index)->setIcon(stepPicture(Steps[index]));
    m_zoomFitWidthButton->setIcon(fitPicture(true));
    m_zoomFitPageButton->setIcon(fitPicture(false));
    m_zoomInButton->setIcon(signPicture(true));
    m_zoomOutButton->setIcon(signPicture(false));
}

bool PDFZoomPicker::isMarked(const QLabel *indicator)
{
    return indicator->property("marked").toBool();
}

void PDFZoomPicker::onPDFViewScaleChanged()
{
    const FDPDFView *const pdfView = view();
    if (!pdfView)
        return;
    const double scale = pdfView->scaleFactor();
    m_zoomTextField->setText(zoomText(scale));
    for (int index = 0; index < m_stepButtons.size(); ++index)
        m_stepButtons.at(index)->setChecked(std::abs(scale - Steps[index]) < 1e-9);
    const PDFViewScaleMode mode = pdfView->scaleMode();
    const auto mark = [](QLabel *indicator, bool marked) {
        indicator->setProperty("marked", marked);
        indicator->setPixmap(markPicture(marked));
    };
    mark(m_zoomFitWidthIndicatorImgView, mode == PDFViewScaleMode::fitWidth);
    mark(m_zoomFitPageIndicatorImgView, mode == PDFViewScaleMode::fitPage);
}

void PDFZoomPicker::zoomTo(double step)
{
    if (FDPDFView *const pdfView = view()) {
        pdfView->setScaleMode(PDFViewScaleMode::none);
        pdfView->setScaleFactor(step);
        onPDFViewScaleChanged();
    }
}

void PDFZoomPicker::onZoomInButton()
{
    if (FDPDFView *const pdfView = view()) {
        pdfView->zoomIn();
        onPDFViewScaleChanged();
    }
}

void PDFZoomPicker::onZoomOutWithButton()
{
    if (FDPDFView *const pdfView = view()) {
        pdfView->zoomOut();
        onPDFViewScaleChanged();
    }
}

void PDFZoomPicker::onZoomFitWidthWithButton()
{
    if (FDPDFView *const pdfView = view()) {
        pdfView->setScaleMode(PDFViewScaleMode::fitWidth);
        onPDFViewScaleChanged();
    }
}

void PDFZoomPicker::onZoomFitPageWithButton()
{
    if (FDPDFView *const pdfView = view()) {
        pdfView->setScaleMode(PDFViewScaleMode::fitPage);
        onPDFViewScaleChanged();
    }
}
