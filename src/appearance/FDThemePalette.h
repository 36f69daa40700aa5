#pragma once

// The application palette of a theme, so that menus, dialogs and popups drawn by the style read as
// one surface with the window the theme paints.

#include <QPalette>

class FDTheme;

class FDThemePalette
{
public:
    FDThemePalette() = delete;

    static QPalette paletteFor(const FDTheme *theme);
};
