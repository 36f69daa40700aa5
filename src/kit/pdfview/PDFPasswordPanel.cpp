#include "PDFPasswordPanel.h"

#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

PDFPasswordPanel::PDFPasswordPanel(QWidget *parent)
    : QWidget(parent)
    , m_title(new QLabel(this))
    , m_field(new QLineEdit(this))
    , m_message(new QLabel(this))
{
    setObjectName(QStringLiteral("PDFPasswordPanel"));
    setAutoFillBackground(true);
    m_title->setWordWrap(true);
    m_title->setAlignment(Qt::AlignCenter);
    QFont titleFont = m_title->font();
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    auto *const hint = new QLabel(tr("Enter the password to open it."), this);
    hint->setAlignment(Qt::AlignCenter);
    m_field->setEchoMode(QLineEdit::Password);
    m_field->setPlaceholderText(tr("Password"));
    m_field->setAccessibleName(tr("Password"));
    m_field->setMinimumWidth(240);
    m_message->setAlignment(Qt::AlignCenter);
    m_message->hide();

    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->addWidget(m_title);
    layout->addWidget(hint);
    layout->addWidget(m_field);
    layout->addWidget(m_message);
    setFocusProxy(m_field);

    connect(m_field, &QLineEdit::returnPressed, this, [this] {
        // An empty field is a password too: some files are locked with one.
        emit passwordEntered(m_field->text());
    });
    connect(m_field, &QLineEdit::textEdited, m_message, &QWidget::hide);
}

void PDFPasswordPanel::setDocumentName(const QString &name)
{
    m_title->setText(tr("\u201C%1\u201D is locked.").arg(name));
}

void PDFPasswordPanel::showWrongPassword()
{
    m_field->clear();
    m_message->setText(tr("The password is not correct. Try again."));
    m_message->show();
    m_field->setFocus();
}
