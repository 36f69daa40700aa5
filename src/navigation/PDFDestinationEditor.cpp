#include "PDFDestinationEditor.h"

#include "OnlyIntegerValueFormatter.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>

PDFDestinationEditor &PDFDestinationEditor::shared()
{
    // Lives to the end of the application; deleted with it.
    static QPointer<PDFDestinationEditor> editor;
    if (!editor) {
        editor = new PDFDestinationEditor;
        QObject::connect(
            qApp, &QCoreApplication::aboutToQuit, editor.data(), &QObject::deleteLater);
    }
    return *editor;
}

PDFDestinationEditor::PDFDestinationEditor()
    : QFrame(nullptr, Qt::Popup)
{
    setObjectName(QStringLiteral("DestinationEditor"));
    setFrameShape(QFrame::StyledPanel);
    auto *const grid = new QGridLayout(this);
    grid->setContentsMargins(12, 10, 12, 10);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(6);
    m_labelField = new QLineEdit(this);
    m_labelField->setObjectName(QStringLiteral("labelField"));
    m_labelField->setMinimumWidth(220);
    m_pageIndexField = new QLineEdit(this);
    m_pageIndexField->setObjectName(QStringLiteral("pageIndexField"));
    m_pageIndexField->setValidator(new OnlyIntegerValueFormatter(m_pageIndexField));
    m_pageIndexField->setMaximumWidth(70);
    m_numberOfPagesField = new QLabel(this);
    grid->addWidget(new QLabel(tr("Label:"), this), 0, 0);
    grid->addWidget(m_labelField, 0, 1, 1, 2);
    grid->addWidget(new QLabel(tr("Page:"), this), 1, 0);
    grid->addWidget(m_pageIndexField, 1, 1);
    grid->addWidget(m_numberOfPagesField, 1, 2);
    for (QLineEdit *const field : { m_labelField, m_pageIndexField })
        connect(field, &QLineEdit::returnPressed, this, &PDFDestinationEditor::onFieldEnter);
}

void PDFDestinationEditor::showOf(QWidget *view, const QRect &area, int preferredEdge,
    const QString &label, int numberOfPages, int pageIndex,
    const std::weak_ptr<void> &reprentedObject, CompletionHandler completionHandler)
{
    // One editor: a showing for another item first finishes the one before.
    if (isVisible())
        hide();
    onWillClose();
    m_labelField->setText(label);
    m_pageIndexField->setText(QString::number(pageIndex + 1));
    m_numberOfPagesField->setText(tr("of %1").arg(numberOfPages));
    m_reprentedObject = reprentedObject;
    m_completionHandler = std::move(completionHandler);
    applyTheme();
    adjustSize();

    const QRect local = area.isEmpty() && view ? view->rect() : area;
    const QRect anchor = view ? QRect(view->mapToGlobal(local.topLeft()), local.size()) : local;
    QPoint origin;
    switch (preferredEdge) {
    case 0:
        origin = QPoint(anchor.left() - width(), anchor.center().y() - height() / 2);
        break;
    case 1:
        origin = QPoint(anchor.center().x() - width() / 2, anchor.bottom());
        break;
    case 3:
        origin = QPoint(anchor.center().x() - width() / 2, anchor.top() - height());
        break;
    default:
        origin = QPoint(anchor.right(), anchor.center().y() - height() / 2);
        break;
    }
    // Kept on the screen of the view.
    if (const QScreen *const screen = view ? view->screen() : QApplication::primaryScreen()) {
        const QRect room = screen->availableGeometry();
        origin.setX(
            std::clamp(origin.x(), room.left(), std::max(room.left(), room.right() - width())));
        origin.setY(
            std::clamp(origin.y(), room.top(), std::max(room.top(), room.bottom() - height())));
    }
    move(origin);
    show();
    m_labelField->setFocus(Qt::PopupFocusReason);
    m_labelField->selectAll();
}

QString PDFDestinationEditor::label() const
{
    return m_labelField->text();
}

int PDFDestinationEditor::pageIndex() const
{
    bool ok = false;
    const int number = m_pageIndexField->text().toInt(&ok);
    return ok ? number : 0;
}

QString PDFDestinationEditor::numberOfPages() const
{
    return m_numberOfPagesField->text();
}

void PDFDestinationEditor::close()
{
    hide();
}

void PDFDestinationEditor::onFieldEnter()
{
    close();
}

void PDFDestinationEditor::hideEvent(QHideEvent *event)
{
    QFrame::hideEvent(event);
    onWillClose();
}

void PDFDestinationEditor::onWillClose()
{
    CompletionHandler handler = std::move(m_completionHandler);
    m_completionHandler = nullptr;
    const std::shared_ptr<void> object = m_reprentedObject.lock();
    m_reprentedObject.reset();
    if (handler && object)
        handler(label(), pageIndex() - 1, object);
}

void PDFDestinationEditor::applyTheme()
{
    const FDTheme *const theme = FDThemeProvider::current();
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, theme->color(FDTheme::contentViewBackgroundColor));
    palette.setColor(QPalette::WindowText, theme->color(FDTheme::labelColor));
    palette.setColor(QPalette::Base, theme->color(FDTheme::textFieldBackgroundColor));
    palette.setColor(QPalette::Text, theme->color(FDTheme::labelColor));
    setPalette(palette);
    setAutoFillBackground(true);
}
