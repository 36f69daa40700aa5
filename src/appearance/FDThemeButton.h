#pragma once

// A round swatch that stands for one theme: filled with the theme's colour, ringed while that
// theme is the current one. Main thread only.

#include <QAbstractButton>

class FDTheme;

class FDThemeButton : public QAbstractButton
{
public:
    FDThemeButton(const FDTheme *theme, const QString &name, QWidget *parent = nullptr);

    const FDTheme *theme() const { return m_theme; }
    // The colour the swatch shows for its theme.
    QColor swatchColor() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    const FDTheme *m_theme;
    bool m_hovered = false;
};
