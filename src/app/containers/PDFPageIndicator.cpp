#include "PDFPageIndicator.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDocument.h>
#include <view/FDPDFView.h>

#include <QFontDatabase>
#include <QGraphicsOpacityEffect>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>

PDFPageIndicator::PDFPageIndicator(QWidget *parent)
    : QWidget(parent)
    , m_opacity(new QGraphicsOpacityEffect(this))
{
    setObjectName(QStringLiteral("PDFPageIndicator"));
    setAttribute(Qt::WA_TranslucentBackground);
    setCursor(Qt::PointingHandCursor);
    m_opacity->setOpacity(0);
    setGraphicsEffect(m_opacity);
    m_timer.setSingleShot(true);
    m_timer.setInterval(ShowSeconds * 1000);
    connect(&m_timer, &QTimer::timeout, this, [this] { onTimeOut(); });
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(14);
    setFont(font);
}

PDFPageIndicator::~PDFPageIndicator()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

void PDFPageIndicator::setPDFView(FDPDFView *view)
{
    if (view == m_pdfView)
        return;
    NotificationCenter::defaultCenter().removeObserver(this);
    m_pdfView = view;
    m_timer.stop();
    if (m_animation)
        m_animation->stop();
    m_opacity->setOpacity(0);
    if (view) {
        NotificationCenter::defaultCenter().addObserver(this, PDFView::PageChangedNotification,
            view, [this](const Notification &) { onPageChanged(); });
    }
    updateGeometry();
    update();
}

QString PDFPageIndicator::text() const
{
    const auto document = m_pdfView ? m_pdfView->document() : nullptr;
    const auto page = m_pdfView ? m_pdfView->currentPage() : nullptr;
    if (!document || !page)
        return {};
    return QStringLiteral("%1 / %2")
        .arg(document->indexForPage(page) + 1)
        .arg(document->pageCount());
}

double PDFPageIndicator::alphaValue() const
{
    return m_opacity->opacity();
}

QSize PDFPageIndicator::sizeHint() const
{
    const QFontMetrics metrics(font());
    const QString shown = text().isEmpty() ? QStringLiteral("0 / 0") : text();
    return QSize(metrics.horizontalAdvance(shown) + 24, metrics.height() + 10);
}

void PDFPageIndicator::onPageChanged()
{
    if (!m_pdfView || !window() || m_pdfView->isLoading())
        return;
    updateGeometry();
    update();
    animateAlpha(1.0, 150);
    m_timer.start();
}

void PDFPageIndicator::onTimeOut()
{
    if (!m_isMouseInside)
        animateAlpha(0.0, FadeMilliseconds);
}

void PDFPageIndicator::animateAlpha(double alpha, int milliseconds)
{
    if (m_animation)
        m_animation->stop();
    auto *const animation = new QPropertyAnimation(m_opacity, "opacity", this);
    animation->setDuration(milliseconds);
    animation->setStartValue(m_opacity->opacity());
    animation->setEndValue(alpha);
    m_animation = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void PDFPageIndicator::mousePressEvent(QMouseEvent *event)
{
    event->accept();
    if (m_pdfView)
        m_pdfView->setIsPageNavigatorHidden(false);
}

void PDFPageIndicator::enterEvent(QEnterEvent *event)
{
    QWidget::enterEvent(event);
    m_isMouseInside = true;
    onPageChanged();
}

void PDFPageIndicator::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    m_isMouseInside = false;
    animateAlpha(0.0, FadeMilliseconds);
}

void PDFPageIndicator::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath rounded;
    rounded.addRoundedRect(QRectF(rect()), 6, 6);
    painter.setClipPath(rounded);
    painter.fillRect(rect(), QColor(0, 0, 0, 128));
    painter.setPen(FDThemeProvider::current()->color(FDTheme::selectedTextColor));
    painter.setFont(font());
    painter.drawText(rect(), Qt::AlignCenter, text());
}
