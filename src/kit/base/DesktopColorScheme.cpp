#include "DesktopColorScheme.h"

#include "DesktopColorSchemeListener.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QGuiApplication>

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorSchemeKey = QStringLiteral("color-scheme");
// A running portal answers at once; a missing or hung one must not hold the launch.
constexpr int readTimeoutMs = 500;

} // namespace

DesktopColorScheme &DesktopColorScheme::shared()
{
    static DesktopColorScheme *const instance = new DesktopColorScheme(
        QString(), QGuiApplication::palette(), QGuiApplication::instance());
    return *instance;
}

DesktopColorScheme::DesktopColorScheme(
    const QString &busAddress, const QPalette &desktopPalette, QObject *parent)
    : QObject(parent)
    , m_desktopPalette(desktopPalette)
{
    qRegisterMetaType<QDBusVariant>();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!busAddress.isEmpty()) {
        m_connectionName = QStringLiteral("DesktopColorScheme-%1").arg(quintptr(this), 0, 16);
        bus = QDBusConnection::connectToBus(busAddress, m_connectionName);
    }
    if (!bus.isConnected())
        return;
    bus.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"),
        new DesktopColorSchemeListener(
            this, [this](const QVariant &value) { setScheme(schemeFrom(value)); }),
        SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    readPortal();
}

DesktopColorScheme::~DesktopColorScheme()
{
    if (!m_connectionName.isEmpty())
        QDBusConnection::disconnectFromBus(m_connectionName);
}

bool DesktopColorScheme::isDark() const
{
    switch (m_scheme) {
    case PreferDark:
        return true;
    case PreferLight:
        return false;
    case NoPreference:
        break;
    }
    const QPalette &palette = m_desktopPalette;
    return palette.color(QPalette::Window).lightness()
        < palette.color(QPalette::WindowText).lightness();
}

void DesktopColorScheme::setDesktopPalette(const QPalette &palette)
{
    const bool wasDark = isDark();
    m_desktopPalette = palette;
    if (isDark() != wasDark)
        emit darkChanged(isDark());
}

void DesktopColorScheme::readPortal()
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        portalService, portalPath, settingsInterface, QStringLiteral("Read"));
    call << appearanceGroup << colorSchemeKey;
    QDBusConnection bus = m_connectionName.isEmpty() ? QDBusConnection::sessionBus()
                                                     : QDBusConnection(m_connectionName);
    QDBusConnectionInterface *const names = bus.interface();
    if (names && names->isServiceRegistered(portalService)) {
        const QDBusMessage answer = bus.call(call, QDBus::Block, readTimeoutMs);
        if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty())
            m_scheme = schemeFrom(answer.arguments().constFirst());
        return;
    }
    // Not running yet: the call may start it, and the answer comes when it does.
    auto *const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
        [this](QDBusPendingCallWatcher *answered) {
            answered->deleteLater();
            const QDBusMessage reply = answered->reply();
            if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
                setScheme(schemeFrom(reply.arguments().constFirst()));
        });
}

void DesktopColorScheme::setScheme(Scheme scheme)
{
    const bool wasDark = isDark();
    m_scheme = scheme;
    if (isDark() != wasDark)
        emit darkChanged(isDark());
}

DesktopColorScheme::Scheme DesktopColorScheme::schemeFrom(const QVariant &answer)
{
    // Read answers a variant holding the value's variant; SettingChanged carries one level.
    QVariant value = answer;
    for (int depth = 0; depth < 4 && value.canConvert<QDBusVariant>()
         && value.metaType() == QMetaType::fromType<QDBusVariant>();
         ++depth)
        value = value.value<QDBusVariant>().variant();
    bool ok = false;
    const uint number = value.toUInt(&ok);
    if (!ok || number > PreferLight)
        return NoPreference;
    return Scheme(number);
}
