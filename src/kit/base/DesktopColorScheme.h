#pragma once

// Whether the desktop asks for light or dark windows, and when that changes. Reads the
// freedesktop settings portal ("org.freedesktop.appearance" "color-scheme") over D-Bus and
// follows its SettingChanged signal; without an answer, the lightness of the desktop's palette
// decides. Main thread only.

#include <QObject>
#include <QPalette>

class QVariant;

class DesktopColorScheme : public QObject
{
    Q_OBJECT

public:
    enum Scheme { NoPreference = 0, PreferDark = 1, PreferLight = 2 };

    // The instance of the session bus, made on first use from the application's palette as it is
    // then (before the application paints its own).
    static DesktopColorScheme &shared();

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
    void readPortal();
    void setScheme(Scheme scheme);

    QString m_connectionName;
    QPalette m_desktopPalette;
    Scheme m_scheme = NoPreference;
};
