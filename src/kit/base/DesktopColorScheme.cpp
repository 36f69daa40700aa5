#include "DesktopColorScheme.h"

#include "DesktopColorSchemeListener.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QGuiApplication>

#include <condition_variable>
#include <mutex>

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorSchemeKey = QStringLiteral("color-scheme");
// A running portal answers at once; a missing or hung one must not hold the launch.
constexpr int readTimeoutMs = 500;

// What a thread read ahead for the next instance on its bus.
struct ReadAhead
{
    std::mutex mutex;
    std::condition_variable finished;
    bool running = false;
    bool done = false;
    QString busAddress;
    bool connected = false;
    std::optional<DesktopColorScheme::Scheme> scheme;
};

ReadAhead &readAhead()
{
    static ReadAhead state;
    return state;
}

} // namespace

std::thread DesktopColorScheme::readAheadOnThread(const QString &busAddress)
{
    qRegisterMetaType<QDBusVariant>();
    ReadAhead &state = readAhead();
    {
        const std::lock_guard lock(state.mutex);
        state.running = true;
        state.done = false;
        state.busAddress = busAddress;
    }
    return std::thread([busAddress] {
        const QString name = QStringLiteral("DesktopColorScheme-readAhead");
        QDBusConnection bus = busAddress.isEmpty()
            ? QDBusConnection::sessionBus()
            : QDBusConnection::connectToBus(busAddress, name);
        const bool connected = bus.isConnected();
        const std::optional<Scheme> scheme
            = connected ? readRunningPortal(bus) : std::optional<Scheme>();
        if (!busAddress.isEmpty())
            QDBusConnection::disconnectFromBus(name);
        ReadAhead &finished = readAhead();
        {
            const std::lock_guard lock(finished.mutex);
            finished.connected = connected;
            finished.scheme = scheme;
            finished.done = true;
        }
        finished.finished.notify_all();
    });
}

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
    // The answer of a thread that read ahead on this bus, if one did.
    std::optional<std::optional<Scheme>> readAheadScheme;
    bool readAheadConnected = true;
    {
        ReadAhead &state = readAhead();
        std::unique_lock lock(state.mutex);
        if (state.running && state.busAddress == busAddress) {
            state.finished.wait(lock, [&state] { return state.done; });
            state.running = false;
            readAheadScheme = state.scheme;
            readAheadConnected = state.connected;
        }
    }
    if (!readAheadConnected || !bus.isConnected())
        return;
    bus.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"),
        new DesktopColorSchemeListener(
            this, [this](const QVariant &value) { setScheme(schemeFrom(value)); }),
        SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    const std::optional<Scheme> running
        = readAheadScheme ? *readAheadScheme : readRunningPortal(bus);
    if (running)
        m_scheme = *running;
    else
        readPortalWhenStarted(bus);
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

std::optional<DesktopColorScheme::Scheme> DesktopColorScheme::readRunningPortal(
    const QDBusConnection &bus)
{
    QDBusConnectionInterface *const names = bus.interface();
    if (!names || !names->isServiceRegistered(portalService))
        return std::nullopt;
    QDBusMessage call = QDBusMessage::createMethodCall(
        portalService, portalPath, settingsInterface, QStringLiteral("Read"));
    call << appearanceGroup << colorSchemeKey;
    const QDBusMessage answer = bus.call(call, QDBus::Block, readTimeoutMs);
    if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty())
        return schemeFrom(answer.arguments().constFirst());
    return NoPreference;
}

void DesktopColorScheme::readPortalWhenStarted(const QDBusConnection &bus)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        portalService, portalPath, settingsInterface, QStringLiteral("Read"));
    call << appearanceGroup << colorSchemeKey;
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
