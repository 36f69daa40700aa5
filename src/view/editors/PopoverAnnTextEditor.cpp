#include "PopoverAnnTextEditor.h"

#include "FDAnnTextEditor.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int PopoverWidth = 240;
constexpr int PopoverHeight = 160;
constexpr int Gap = 6;

} // namespace

PopoverAnnTextEditor::PopoverAnnTextEditor(QWidget *parent)
    : QFrame(parent)
{
    setObjectName(QStringLiteral("PopoverAnnTextEditor"));
    setFrameStyle(QFrame::Box | QFrame::Plain);
    setAutoFillBackground(true);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, backgroundColor());
    palette.setColor(QPalette::Base, backgroundColor());
    palette.setColor(QPalette::Text, Qt::black);
    palette.setColor(QPalette::WindowText, QColor(120, 110, 60));
    setPalette(palette);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 4);
    layout->setSpacing(2);
    m_textView = new QPlainTextEdit;
    m_textView->setObjectName(QStringLiteral("textView"));
    m_textView->setFrameStyle(QFrame::NoFrame);
    m_textView->setPalette(palette);
    m_textView->installEventFilter(this);
    layout->addWidget(m_textView, 1);
    m_removeButton = new QToolButton;
    m_removeButton->setObjectName(QStringLiteral("removeButton"));
    m_removeButton->setAutoRaise(true);
    m_removeButton->setIcon(style()->standardIcon(QStyle::SP_TrashIcon));
    m_removeButton->setToolTip(tr("Delete"));
    m_removeButton->setFocusPolicy(Qt::NoFocus);
    layout->addWidget(m_removeButton, 0, Qt::AlignRight);
    connect(m_removeButton, &QToolButton::clicked, this, [this] { onRemoveAnn(); });
    connect(m_textView, &QPlainTextEdit::textChanged, this, [this] {
        if (m_delegate && m_isShown)
            m_delegate->textDidChange();
    });
    resize(PopoverWidth, PopoverHeight);
    hide();
}

PopoverAnnTextEditor::~PopoverAnnTextEditor()
{
    if (m_isMonitoring)
        qApp->removeEventFilter(this);
}

void PopoverAnnTextEditor::showRelativeToRect(const QRect &rect)
{
    if (m_isShown)
        close();
    onWillShow();
    QWidget *const area = parentWidget();
    const QSize size(PopoverWidth, PopoverHeight);
    QPoint origin(rect.right() + Gap, rect.center().y() - size.height() / 2);
    if (area) {
        if (origin.x() + size.width() > area->width())
            origin.setX(rect.left() - Gap - size.width());
        origin.setX(std::clamp(origin.x(), 0, std::max(0, area->width() - size.width())));
        origin.setY(std::clamp(origin.y(), 0, std::max(0, area->height() - size.height())));
    }
    setGeometry(QRect(origin, size));
    m_isShown = true;
    show();
    raise();
    m_textView->setFocus(Qt::OtherFocusReason);
    m_textView->moveCursor(QTextCursor::End);
    if (!m_isMonitoring) {
        m_isMonitoring = true;
        qApp->installEventFilter(this);
    }
}

void PopoverAnnTextEditor::close()
{
    if (!m_isShown)
        return;
    m_isShown = false;
    if (m_isMonitoring) {
        m_isMonitoring = false;
        qApp->removeEventFilter(this);
    }
    onWillClose();
    hide();
}

void PopoverAnnTextEditor::onWillShow()
{
    // Nothing is read before the editor filled the text view; the hook keeps the order of the
    // popover's life visible in one place.
}

void PopoverAnnTextEditor::onWillClose()
{
    if (m_delegate)
        m_delegate->popoverWillClose();
}

void PopoverAnnTextEditor::onRemoveAnn()
{
    if (m_delegate)
        m_delegate->removeAnn();
}

bool PopoverAnnTextEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_textView && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        close();
        return true;
    }
    if (event->type() == QEvent::MouseButtonPress && m_isShown) {
        auto *const press = static_cast<QMouseEvent *>(event);
        const QPoint inside = mapFromGlobal(press->globalPosition().toPoint());
        if (!rect().contains(inside))
            close();
    }
    return false;
}
