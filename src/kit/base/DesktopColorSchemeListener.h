#pragma once

// Receives the settings portal's SettingChanged signal for DesktopColorScheme: QtDBus delivers
// signals to slots only, and its types stay out of the public header.

#include <QDBusVariant>
#include <QObject>

#include <functional>

class DesktopColorSchemeListener : public QObject
{
    Q_OBJECT

public:
    // Calls onColorScheme with the new color-scheme value.
    DesktopColorSchemeListener(QObject *parent, std::function<void(const QVariant &)> onColorScheme)
        : QObject(parent)
        , m_onColorScheme(std::move(onColorScheme))
    { }

public slots:
    void onSettingChanged(const QString &group, const QString &key, const QDBusVariant &value)
    {
        if (group == QLatin1String("org.freedesktop.appearance")
            && key == QLatin1String("color-scheme"))
            m_onColorScheme(QVariant::fromValue(value));
    }

private:
    std::function<void(const QVariant &)> m_onColorScheme;
};
