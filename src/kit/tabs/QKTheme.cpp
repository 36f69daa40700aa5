#include "QKTheme.h"

#include "QKColor.h"

QKTheme::QKTheme()
    : QKTheme(dayTheme())
{ }

QKTheme::QKTheme(const QString &name, bool isDark)
    : m_name(name)
    , m_isDark(isDark)
{ }

// The selected tab takes the toolbar's colour, so that it and the toolbar below read as one
// surface standing out of the strip.
QKTheme QKTheme::dayTheme()
{
    QKTheme theme(QStringLiteral("day"), false);
    theme.setColor(TabStripBackground, QKColor(222, 225, 230));
    theme.setColor(TabStripBottomLine, QKColor(197, 199, 203));
    theme.setColor(ToolbarBackground, QKColor(248, 249, 250));
    theme.setColor(WindowBackground, QKColor(237, 237, 237));
    theme.setColor(WindowText, QKColor(32, 33, 36));
    theme.setColor(TabText, QKColor(72, 76, 82));
    theme.setColor(SelectedTabText, QKColor(32, 33, 36));
    theme.setColor(SelectedTabBackground, QKColor(248, 249, 250));
    theme.setColor(HoveredTabBackground, QKColor(235, 237, 240));
    theme.setColor(TabSeparator, QKColor(168, 172, 178));
    theme.setColor(TabCloseButton, QKColor(95, 99, 104));
    theme.setColor(TabCloseButtonHoverBackground, QKColor(0, 0, 0, 26));
    return theme;
}

QKTheme QKTheme::nightTheme()
{
    QKTheme theme(QStringLiteral("night"), true);
    theme.setColor(TabStripBackground, QKColor(30, 31, 34));
    theme.setColor(TabStripBottomLine, QKColor(16, 16, 18));
    theme.setColor(ToolbarBackground, QKColor(53, 54, 58));
    theme.setColor(WindowBackground, QKColor(40, 41, 44));
    theme.setColor(WindowText, QKColor(232, 234, 237));
    theme.setColor(TabText, QKColor(174, 177, 182));
    theme.setColor(SelectedTabText, QKColor(241, 243, 244));
    theme.setColor(SelectedTabBackground, QKColor(53, 54, 58));
    theme.setColor(HoveredTabBackground, QKColor(42, 43, 47));
    theme.setColor(TabSeparator, QKColor(84, 86, 91));
    theme.setColor(TabCloseButton, QKColor(189, 193, 198));
    theme.setColor(TabCloseButtonHoverBackground, QKColor(255, 255, 255, 36));
    return theme;
}
