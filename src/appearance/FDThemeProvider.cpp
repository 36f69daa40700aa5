#include "FDThemeProvider.h"

#include "FDTheme.h"
#include "FDThemePalette.h"

#include <app/FDDefaults.h>
#include <kit/base/DesktopColorScheme.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UserDefaults.h>
#include <kit/tabs/QKThemeProvider.h>

#include <QApplication>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>

namespace {

// The five page-tinting themes by id, then the system theme's light and dark variants.
constexpr size_t systemLight = 5;
constexpr size_t systemDark = 6;
using Themes = std::array<std::unique_ptr<FDTheme>, 7>;

const Themes &themes()
{
    static Themes all;
    static std::once_flag built;
    std::call_once(built, [] {
        QKThemeProvider &frames = QKThemeProvider::sharedInstance();
        const auto make = [&](int id, const QKTheme *frame) {
            all[id] = std::make_unique<FDTheme>(id, frame);
            return all[id].get();
        };
        // Roles that follow primary and secondary are re-set after those two change.
        const auto recolour = [](FDTheme *theme, const QColor &primary, const QColor &secondary) {
            theme->setColor(FDTheme::primaryColor, primary);
            theme->setColor(FDTheme::secondaryColor, secondary);
            theme->setColor(FDTheme::selectedBackgroundColor, primary);
            theme->setColor(FDTheme::selectedBackgroundTintColor, secondary);
        };
        recolour(make(FDTheme::red, &frames.day()), FDTheme::rgb(255, 68, 60),
            FDTheme::rgb(183, 20, 31));
        recolour(make(FDTheme::green, &frames.day()), FDTheme::rgb(64, 163, 63),
            FDTheme::rgb(17, 111, 26));
        make(FDTheme::blue, &frames.day());
        FDTheme *const sunset = make(FDTheme::sunset, &frames.day());
        recolour(sunset, FDTheme::rgb(249, 180, 35), FDTheme::rgb(182, 126, 6));
        const QColor paper = FDTheme::rgb(230, 222, 207);
        sunset->setColor(FDTheme::contentViewBackgroundColor, paper);
        sunset->setColor(FDTheme::tableViewBackgroundColor, paper);
        sunset->setColor(FDTheme::tableRowViewBackgroundColor, paper);
        sunset->setColor(FDTheme::tableViewGroupBackgroundColor, FDTheme::rgb(242, 236, 212));
        sunset->setColor(FDTheme::pageBackgroundColor, FDTheme::rgb(237, 232, 205));
        make(FDTheme::night, &frames.night());
        all[systemLight] = std::make_unique<FDTheme>(FDTheme::system, &frames.day());
        all[systemDark] = std::make_unique<FDTheme>(FDTheme::system, &frames.night(), true);
    });
    return all;
}

std::atomic<const FDTheme *> currentTheme { nullptr };
// The theme being applied while its "will change" observers run, so that they read a theme.
const FDTheme *applyingTheme = nullptr;
// Whether the system theme shows its dark variant; set on the main thread from the desktop.
std::atomic<bool> desktopIsDark { false };

void apply(const FDTheme *theme)
{
    NotificationCenter &center = NotificationCenter::qkCenter();
    applyingTheme = theme;
    center.post(FDThemeProvider::ThemeWillChangeNotification);
    currentTheme.store(theme);
    applyingTheme = nullptr;
    // Written only when it changes: the write waits for the disk, and the theme applied at start
    // is most often the one stored.
    UserDefaults &defaults = UserDefaults::standard();
    const QVariant stored = defaults.objectForKey(FDDefaults::CurrentTheme);
    if (!stored.isValid() || defaults.integerForKey(FDDefaults::CurrentTheme) != theme->id())
        defaults.setInteger(theme->id(), FDDefaults::CurrentTheme);
    // Menus, dialogs and popups take the application's palette: one palette for the window.
    if (qobject_cast<QApplication *>(QCoreApplication::instance()))
        QApplication::setPalette(FDThemePalette::paletteFor(theme));
    QKThemeProvider::sharedInstance().setCurrent(*theme->windowTheme());
    center.post(FDThemeProvider::ThemeDidChangeNotification);
}

// Reads the desktop once, before the first palette of ours replaces the desktop's, and follows
// it from then on.
void followDesktop()
{
    static bool following = false;
    if (following || !QCoreApplication::instance())
        return;
    following = true;
    DesktopColorScheme &desktop = DesktopColorScheme::shared();
    desktopIsDark.store(desktop.isDark());
    QObject::connect(&desktop, &DesktopColorScheme::darkChanged, &desktop, [](bool dark) {
        desktopIsDark.store(dark);
        const FDTheme *const current = currentTheme.load();
        if (current && current->id() == FDTheme::system)
            apply(FDThemeProvider::system());
    });
}

} // namespace

const FDTheme *FDThemeProvider::current()
{
    if (const FDTheme *theme = currentTheme.load())
        return theme;
    MainQueue::sync([] {
        if (currentTheme.load())
            return;
        if (applyingTheme)
            return;
        followDesktop();
        const FDTheme *chosen = system();
        if (FDDefaults::rememberCurrentTheme() == 1) {
            if (const FDTheme *stored
                = themeFor(UserDefaults::standard().integerForKey(FDDefaults::CurrentTheme)))
                chosen = stored;
        }
        apply(chosen);
    });
    if (const FDTheme *theme = currentTheme.load())
        return theme;
    return applyingTheme ? applyingTheme : system();
}

void FDThemeProvider::setCurrent(const FDTheme *theme)
{
    if (!theme)
        return;
    MainQueue::sync([theme] {
        followDesktop();
        // The system theme is asked for by id; the desktop picks the variant.
        apply(theme->id() == FDTheme::system ? system() : theme);
    });
}

const FDTheme *FDThemeProvider::themeFor(qint64 id)
{
    if (id == FDTheme::system)
        return system();
    if (id < 0 || id > FDTheme::night)
        return nullptr;
    return themes()[size_t(id)].get();
}

const FDTheme *FDThemeProvider::red()
{
    return themeFor(FDTheme::red);
}
const FDTheme *FDThemeProvider::green()
{
    return themeFor(FDTheme::green);
}
const FDTheme *FDThemeProvider::blue()
{
    return themeFor(FDTheme::blue);
}
const FDTheme *FDThemeProvider::sunset()
{
    return themeFor(FDTheme::sunset);
}
const FDTheme *FDThemeProvider::night()
{
    return themeFor(FDTheme::night);
}
const FDTheme *FDThemeProvider::system()
{
    return themes()[desktopIsDark.load() ? systemDark : systemLight].get();
}

void FDThemeProvider::resetCurrentForTesting()
{
    currentTheme.store(nullptr);
}
