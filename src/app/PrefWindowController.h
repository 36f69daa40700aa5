#pragma once

// The preferences window: a General and an Advanced pane, switched by two tab buttons, whose
// controls are bound to preference keys: each control reads its key whenever the window is
// shown and writes it at once when changed. One shared window; closing only hides it.
// Main thread only.

#include <QPointer>
#include <QWidget>

#include <functional>
#include <vector>

class QAbstractButton;
class QFormLayout;
class QLabel;
class QToolButton;

class PrefWindowController : public QWidget
{
    Q_OBJECT

public:
    // The one window, made on first use.
    static PrefWindowController &shared();
    // The one window if it has been made, else null.
    static PrefWindowController *sharedIfMade();
    // Reads every key into its control and brings the window to the front.
    void showWindow();
    // Orders the window out; the window stays for the next showing.
    void performCloseTabAction();
    void onTabButtonClickedWithButton(QToolButton *button);
    void onThemeChanged();

    QToolButton *generalButton() const { return m_generalButton; }
    QToolButton *advancedButton() const { return m_advancedButton; }
    QToolButton *selectedTabButton() const { return m_selectedTabButton; }
    QWidget *generalContentsView() const { return m_generalContentsView; }
    QWidget *advancedContentsView() const { return m_advancedContentsView; }
    // The control bound to a key, for the window's users and tests.
    QWidget *controlForKey(const QString &key) const;

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    PrefWindowController();
    ~PrefWindowController() override;

    struct Binding
    {
        QString key;
        QPointer<QWidget> control;
        std::function<void()> read;
    };

    // The two-column form every pane lays its controls out in.
    static QFormLayout *makePaneForm(QWidget *pane);
    // A row label whose colour follows the theme.
    QLabel *label(const QString &text);
    QWidget *makeGeneralPane();
    QWidget *makeAdvancedPane();
    QToolButton *makeTabButton(const QString &title, const QString &iconName);
    void setSelectedTabButton(QToolButton *button);
    void readAllKeys();
    void bindLineEdit(QWidget *pane, const QString &key);
    void bindComboBox(QWidget *pane, const QString &key, const QStringList &choices);
    void bindCheckBox(QWidget *pane, const QString &key, const QString &text, bool inverted);

    QWidget *m_tabContentsContainer = nullptr;
    QToolButton *m_selectedTabButton = nullptr;
    QToolButton *m_generalButton = nullptr;
    QToolButton *m_advancedButton = nullptr;
    QWidget *m_generalContentsView = nullptr;
    QWidget *m_advancedContentsView = nullptr;
    QWidget *m_tabBar = nullptr;
    std::vector<Binding> m_bindings;
    std::vector<QLabel *> m_labels;
    std::vector<QLabel *> m_notes;
};
