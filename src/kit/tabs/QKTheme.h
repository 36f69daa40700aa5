#pragma once

// The colours of a window's frame: tab strip, toolbar area and window background. A value:
// copy it and change roles to make a variant. Any thread.

#include <QColor>
#include <QString>

#include <array>

class QKTheme
{
public:
    enum Role {
        TabStripBackground,
        TabStripBottomLine,
        ToolbarBackground,
        WindowBackground,
        // Text drawn straight on the window background.
        WindowText,
        TabText,
        SelectedTabText,
        SelectedTabBackground,
        HoveredTabBackground,
        TabSeparator,
        TabCloseButton,
        TabCloseButtonHoverBackground,
        RoleCount
    };

    // A light theme named "day"; see dayTheme() and nightTheme().
    QKTheme();

    static QKTheme dayTheme();
    static QKTheme nightTheme();

    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    bool isDark() const { return m_isDark; }
    void setIsDark(bool isDark) { m_isDark = isDark; }

    QColor color(Role role) const { return m_colors[size_t(role)]; }
    void setColor(Role role, const QColor &color) { m_colors[size_t(role)] = color; }

    QColor tabStripBottomLineColor() const { return color(TabStripBottomLine); }
    QColor toolbarBackgroundColor() const { return color(ToolbarBackground); }
    QColor windowBackgroundColor() const { return color(WindowBackground); }

    bool operator==(const QKTheme &other) const = default;

private:
    QKTheme(const QString &name, bool isDark);

    QString m_name;
    bool m_isDark = false;
    std::array<QColor, RoleCount> m_colors;
};
