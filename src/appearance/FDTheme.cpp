#include "FDTheme.h"

#include <kit/tabs/QKDrawing.h>
#include <kit/tabs/QKTheme.h>
#include <kit/tabs/TabWindowController.h>

namespace {

// The platform's named colours, as they look on a light desktop.
const QColor systemSecondarySelectedControlColor = FDTheme::white(0.8627);
const QColor systemLabelColor = FDTheme::white(0.0, 0.85);
const QColor systemTertiaryLabelColor = FDTheme::white(0.0, 0.26);
const QColor systemQuaternaryLabelColor = FDTheme::white(0.0, 0.10);

} // namespace

QColor FDTheme::white(double w, double alpha)
{
    return QColor::fromRgbF(float(w), float(w), float(w), float(alpha));
}

FDTheme::FDTheme(int id, const QKTheme *windowTheme, bool darkVariant)
    : m_id(id)
    , m_windowTheme(windowTheme)
{
    auto &c = m_colors;
    // In table order: a role that is "the same as" another copies its value as it is now.
    c[primaryColor] = rgb(58, 123, 226);
    c[secondaryColor] = rgb(64, 166, 255);
    c[primaryButtonBackgroundColor] = white(0.5);
    c[secondaryButtonBackgroundColor] = white(0.6);
    c[pageBackgroundColor] = white(1.0);
    c[borderColor] = windowTheme->tabStripBottomLineColor();
    c[secondaryBorderColor] = white(0.8);
    c[selectedBackgroundColor] = c[primaryColor];
    c[secondarySelectedBackgroundColor] = systemSecondarySelectedControlColor;
    c[selectedBackgroundTintColor] = c[secondaryColor];
    c[selectedTextColor] = white(1.0);
    c[secondarySelectedTextColor] = systemSecondarySelectedControlColor;
    c[disabledControlColor] = rgb(192, 192, 192);
    c[contentViewBackgroundColor] = white(0.9294117647058824);
    c[textFieldBackgroundColor] = white(1.0);
    c[tableViewBackgroundColor] = c[contentViewBackgroundColor];
    c[tableRowViewBackgroundColor] = white(1.0);
    c[tableViewGroupBackgroundColor] = c[tableViewBackgroundColor];
    c[toolbarBackgroundColor] = windowTheme->toolbarBackgroundColor();
    c[labelColor] = systemLabelColor;
    c[secondaryLabelColor] = white(0.25882352941176473);
    c[tertiaryLabelColor] = systemTertiaryLabelColor;
    c[quaternaryLabelColor] = systemQuaternaryLabelColor;
    c[paneDividerPrimaryColor] = c[tableViewBackgroundColor];
    c[paneDividerSecondaryColor] = windowTheme->windowBackgroundColor();
    if (id == night || darkVariant)
        applyNightColumn();
}

void FDTheme::applyNightColumn()
{
    m_isDark = true;
    auto &c = m_colors;
    const QColor frameToolbar = m_windowTheme->toolbarBackgroundColor();
    c[secondaryColor] = white(0.46);
    c[primaryButtonBackgroundColor] = white(0.3);
    c[secondaryButtonBackgroundColor] = white(0.4);
    c[pageBackgroundColor] = white(0.13);
    c[secondaryBorderColor] = white(0.2);
    c[selectedBackgroundColor] = m_windowTheme->windowBackgroundColor();
    c[secondarySelectedBackgroundColor] = white(0.4);
    c[selectedBackgroundTintColor] = c[secondaryColor];
    c[selectedTextColor] = white(1.0);
    c[secondarySelectedTextColor] = white(0.6);
    c[disabledControlColor] = white(0.4);
    c[contentViewBackgroundColor] = frameToolbar;
    c[textFieldBackgroundColor] = rgb(78, 78, 78);
    c[tableViewBackgroundColor] = frameToolbar;
    c[tableRowViewBackgroundColor] = c[tableViewBackgroundColor];
    c[tableViewGroupBackgroundColor] = white(0.3);
    c[toolbarBackgroundColor] = frameToolbar;
    c[labelColor] = white(1.0);
    c[secondaryLabelColor] = white(0.8);
    c[tertiaryLabelColor] = white(0.45);
    c[quaternaryLabelColor] = white(0.2);
    c[paneDividerPrimaryColor] = c[tableViewBackgroundColor];
    c[paneDividerSecondaryColor] = m_windowTheme->windowBackgroundColor();
}

double FDTheme::lineWidth() const
{
    TabWindowController *const main = TabWindowController::main();
    if (!main || !main->centralWidget())
        return 1.0;
    return qk_lineWidth(main->centralWidget());
}
