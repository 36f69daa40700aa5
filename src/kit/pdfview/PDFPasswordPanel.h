#pragma once

// The field that stands in place of the pages of a locked document: the document's name, a
// password field that answers on Return, and a plain message after a wrong password.
// Main thread only.

#include <QWidget>

class QLabel;
class QLineEdit;

class PDFPasswordPanel : public QWidget
{
    Q_OBJECT

public:
    explicit PDFPasswordPanel(QWidget *parent = nullptr);

    void setDocumentName(const QString &name);
    // Clears the field and says the password was wrong, keeping the focus in the field.
    void showWrongPassword();
    QLineEdit *passwordField() const { return m_field; }

signals:
    void passwordEntered(const QString &password);

private:
    QLabel *m_title;
    QLineEdit *m_field;
    QLabel *m_message;
};
