#pragma once

// The desktop's settings portal on a private session bus of its own (a real dbus-daemon): answers
// Read for the colour scheme and emits SettingChanged when a test changes it, as a desktop does
// when the person switches between light and dark.

#include <QDBusContext>
#include <QDBusVariant>
#include <QObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <atomic>

class DesktopPortal : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    // Starts the bus; busAddress() stays empty when dbus-daemon is missing or fails.
    DesktopPortal();
    ~DesktopPortal() override;

    QString busAddress() const { return m_address; }
    // Registers the portal with that color-scheme (0 none, 1 dark, 2 light).
    bool publish(uint colorScheme);
    void setColorScheme(uint colorScheme);
    // Announces another appearance setting.
    void announce(const QString &key, const QVariant &value);

public slots:
    QDBusVariant Read(const QString &group, const QString &key);

signals:
    void SettingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    QTemporaryDir m_dir;
    QProcess m_daemon;
    QString m_address;
    QThread m_thread;
    std::atomic<uint> m_scheme = 0;
};
