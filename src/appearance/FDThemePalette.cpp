#include "FDThemePalette.h"

#include "FDTheme.h"

#include <kit/tabs/QKTheme.h>

QPalette FDThemePalette::paletteFor(const FDTheme *theme)
{
    const QKTheme &frame = *theme->windowTheme();
    const QColor window = frame.windowBackgroundColor();
    const QColor text = frame.color(QKTheme::WindowText);
    const QColor button = theme->color(FDTheme::toolbarBackgroundColor);
    const bool dark = theme->isDark();

    QPalette palette(button, window);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, theme->color(FDTheme::textFieldBackgroundColor));
    palette.setColor(QPalette::AlternateBase, theme->color(FDTheme::tableViewGroupBackgroundColor));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, dark ? QColor(Qt::white) : QColor(Qt::black));
    // The selection colour is the theme's accent; night's own selected background is its window
    // colour, which would hide a highlighted menu item.
    palette.setColor(QPalette::Highlight, theme->color(FDTheme::primaryColor));
    palette.setColor(QPalette::HighlightedText, theme->color(FDTheme::selectedTextColor));
    palette.setColor(QPalette::Link, theme->color(FDTheme::primaryColor));
    palette.setColor(QPalette::LinkVisited, theme->color(FDTheme::secondaryColor));
    palette.setColor(QPalette::ToolTipBase, dark ? window.lighter(130) : QColor(255, 255, 240));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, theme->color(FDTheme::tertiaryLabelColor));
    palette.setColor(QPalette::Light, button.lighter(dark ? 140 : 115));
    palette.setColor(QPalette::Midlight, button.lighter(dark ? 120 : 105));
    palette.setColor(QPalette::Mid, button.darker(dark ? 120 : 130));
    palette.setColor(QPalette::Dark, button.darker(dark ? 150 : 160));
    palette.setColor(QPalette::Shadow, QColor(0, 0, 0, dark ? 160 : 90));
    const QColor disabled = theme->color(FDTheme::disabledControlColor);
    for (const QPalette::ColorRole role :
        { QPalette::WindowText, QPalette::Text, QPalette::ButtonText })
        palette.setColor(QPalette::Disabled, role, disabled);
    palette.setColor(QPalette::Disabled, QPalette::Highlight,
        theme->color(FDTheme::secondarySelectedBackgroundColor));
    return palette;
}
