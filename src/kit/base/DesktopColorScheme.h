#pragma once

// Whether the desktop asks for light or dark windows, and when that changes. Reads the
// freedesktop settings portal ("org.freedesktop.appearance" "color-scheme") over D-Bus and
// follows its SettingChanged signal; without an answer, the lightness of the desktop's palette
// decides. Main thread only.

#include <QObject>
#include <QPalette>

#include <optional>
#include <thread>

class QDBusConnection;
class QVariant;

class DesktopColorScheme : public QObject
{
    Q_OBJECT

public:
    enum Scheme { NoPreference = 0, PreferDark = 1, PreferLight = 2 };

    // The instance of the session bus, made on first use from the application's palette as it is
    // then (before the application paints its own).
    static DesktopColorScheme &shared();

    // Connects to the bus at that address (the session bus when empty) and asks the portal on a
    // thread of its own, for the next instance made for that bus, which waits for the answer
    // instead of asking itself: the round trips are over by the time the first window needs the
    // scheme. Call after the QApplication is made; join the thread before the program ends.
    static std::thread readAheadOnThread(const QString &busAddress = QString());

    // Asks the portal on the bus at that address (the session bus when empty); the palette is
    // the desktop's, used while the portal has no preference or does not answer.
    DesktopColorScheme(
        const QString &busAddress, const QPalette &desktopPalette, QObject *parent = nullptr);
    ~DesktopColorScheme() override;

    bool isDark() const;
    Scheme portalScheme() const { return m_scheme; }

    // A desktop palette that changed while running (a platform theme change).
    void setDesktopPalette(const QPalette &palette);

    // A value of the portal's color-scheme, as Read or SettingChanged carry it.
    static Scheme schemeFrom(const QVariant &answer);

signals:
    // Emitted only when isDark() changes.
    void darkChanged(bool dark);

private:
    // The portal's scheme when it runs and answers; nothing when it does not run.
    static std::optional<Scheme> readRunningPortal(const QDBusConnection &bus);
    // A portal that does not run yet may be started by the call; its answer comes when it does.
    void readPortalWhenStarted(const QDBusConnection &bus);
    void setScheme(Scheme scheme);

    QString m_connectionName;
    QPalette m_desktopPalette;
    Scheme m_scheme = NoPreference;
};
