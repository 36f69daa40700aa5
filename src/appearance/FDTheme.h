#pragma once

// One colour theme of the application's chrome: its id, the frame theme of the tab kit that the
// window and tab strip follow, and the twenty-five colour roles. The system theme has a light and
// a dark variant of one id. A theme never changes after the
// provider has made it, so its roles can be read from any thread.

#include <QColor>

#include <array>

class QKTheme;

class FDTheme
{
public:
    enum Role : int {
        primaryColor,
        secondaryColor,
        primaryButtonBackgroundColor,
        secondaryButtonBackgroundColor,
        pageBackgroundColor,
        borderColor,
        secondaryBorderColor,
        selectedBackgroundColor,
        secondarySelectedBackgroundColor,
        selectedBackgroundTintColor,
        selectedTextColor,
        secondarySelectedTextColor,
        disabledControlColor,
        contentViewBackgroundColor,
        textFieldBackgroundColor,
        tableViewBackgroundColor,
        tableRowViewBackgroundColor,
        tableViewGroupBackgroundColor,
        toolbarBackgroundColor,
        labelColor,
        secondaryLabelColor,
        tertiaryLabelColor,
        quaternaryLabelColor,
        paneDividerPrimaryColor,
        paneDividerSecondaryColor,
        RoleCount
    };

    static constexpr int red = 0;
    static constexpr int green = 1;
    static constexpr int blue = 2;
    static constexpr int sunset = 3;
    static constexpr int night = 4;
    // Follows the desktop: blue's colours on a light desktop, night's on a dark one.
    static constexpr int system = 5;

    // Sets the base values from the frame theme; the night id, and a dark variant, take the
    // night column.
    FDTheme(int id, const QKTheme *windowTheme, bool darkVariant = false);

    int id() const { return m_id; }
    const QKTheme *windowTheme() const { return m_windowTheme; }
    bool isDark() const { return m_isDark; }

    QColor color(Role role) const { return m_colors.at(role); }
    // Changes one role while the provider builds the theme. A role that was made the same as
    // this one earlier keeps the value it took then.
    void setColor(Role role, const QColor &color) { m_colors.at(role) = color; }

    // One device pixel of the main window, in logical units; 1.0 without a main window.
    double lineWidth() const;

    // A calibrated grey of level w, opaque.
    static QColor white(double w, double alpha = 1.0);
    static QColor rgb(int r, int g, int b) { return QColor(r, g, b); }

private:
    void applyNightColumn();

    int m_id;
    const QKTheme *m_windowTheme;
    bool m_isDark = false;
    std::array<QColor, RoleCount> m_colors;
};
