#pragma once

// The five colour themes, the system theme that follows the desktop's light or dark scheme, and
// the current one. The current theme is chosen at its first reading
// from the preferences and changed only on the main thread, announced by "Global_ThemeWillChange"
// and "Global_ThemeDidChange" on the tab kit's notification centre. Readable from any thread.

#include <QString>

class FDTheme;

class FDThemeProvider
{
public:
    FDThemeProvider() = delete;

    static inline const QString ThemeWillChangeNotification
        = QStringLiteral("Global_ThemeWillChange");
    static inline const QString ThemeDidChangeNotification
        = QStringLiteral("Global_ThemeDidChange");

    // Always a theme. The first reading of a run applies the remembered theme (or system).
    static const FDTheme *current();
    // A null theme does nothing.
    static void setCurrent(const FDTheme *theme);
    // The theme of that id, or null. The first call builds them all.
    static const FDTheme *themeFor(qint64 id);

    static const FDTheme *red();
    static const FDTheme *green();
    static const FDTheme *blue();
    static const FDTheme *sunset();
    static const FDTheme *night();
    // The variant that matches the desktop now; a change of the desktop while it is current
    // applies the other variant.
    static const FDTheme *system();

    // Forgets the current theme, so that the next reading chooses again as at launch.
    static void resetCurrentForTesting();
};
