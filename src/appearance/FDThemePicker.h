#pragma once

// Five round buttons, one per theme; a click makes that theme the current one. The shared
// instance is a popup shown at a button; the preferences window embeds one of its own.
// Main thread only.

#include <QWidget>

class FDThemeButton;

class FDThemePicker : public QWidget
{
    Q_OBJECT

public:
    explicit FDThemePicker(QWidget *parent = nullptr);

    // The popup, made on first use.
    static FDThemePicker &shared();
    // Shows the popup below the anchor widget, centred on it.
    void showRelativeTo(QWidget *anchor);

    FDThemeButton *systemButton() const { return m_systemButton; }
    FDThemeButton *redButton() const { return m_redButton; }
    FDThemeButton *greenButton() const { return m_greenButton; }
    FDThemeButton *blueButton() const { return m_blueButton; }
    FDThemeButton *sunsetButton() const { return m_sunsetButton; }
    FDThemeButton *nightButton() const { return m_nightButton; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void onThemeChanged();

    FDThemeButton *m_systemButton;
    FDThemeButton *m_redButton;
    FDThemeButton *m_greenButton;
    FDThemeButton *m_blueButton;
    FDThemeButton *m_sunsetButton;
    FDThemeButton *m_nightButton;
};
