#include "DesktopPortal.h"

#include "TestTools.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>

namespace {

const QString connectionName = QStringLiteral("desktop-portal");

} // namespace

DesktopPortal::DesktopPortal()
{
    qRegisterMetaType<QDBusVariant>();
    const QString daemon = TestTools::findTool(QStringLiteral("dbus-daemon"));
    if (daemon.isEmpty() || !m_dir.isValid())
        return;
    // No service activation: nothing but this portal can answer on the bus.
    const QString config = m_dir.filePath(QStringLiteral("bus.conf"));
    QFile file(config);
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write("<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration "
               "1.0//EN\" \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
               "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
               "<auth>EXTERNAL</auth><policy context=\"default\">"
               "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
               "<allow own=\"*\"/></policy></busconfig>\n");
    file.close();
    m_daemon.start(daemon,
        { QStringLiteral("--config-file=") + config, QStringLiteral("--nofork"),
            QStringLiteral("--print-address=1") });
    if (!m_daemon.waitForStarted(10000))
        return;
    while (!m_daemon.canReadLine() && m_daemon.waitForReadyRead(10000)) { }
    m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
}

DesktopPortal::~DesktopPortal()
{
    if (m_thread.isRunning()) {
        // Leaves the bus and comes home in its own thread, where QtDBus expects it.
        QThread *const home = QThread::currentThread();
        QMetaObject::invokeMethod(
            this,
            [this, home] {
                QDBusConnection bus(connectionName);
                bus.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
                bus.unregisterObject(QStringLiteral("/org/freedesktop/portal/desktop"));
                moveToThread(home);
            },
            Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }
    QDBusConnection::disconnectFromBus(connectionName);
    m_daemon.terminate();
    m_daemon.waitForFinished(5000);
}

bool DesktopPortal::publish(uint colorScheme)
{
    m_scheme = colorScheme;
    // The portal answers from a thread of its own, as a separate process would, so that a
    // blocking Read from the main thread is answered.
    m_thread.start();
    moveToThread(&m_thread);
    bool published = false;
    QMetaObject::invokeMethod(
        this,
        [this, &published] {
            QDBusConnection bus = QDBusConnection::connectToBus(m_address, connectionName);
            published = bus.isConnected()
                && bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                    QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals)
                && bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
        },
        Qt::BlockingQueuedConnection);
    return published;
}

void DesktopPortal::setColorScheme(uint colorScheme)
{
    m_scheme = colorScheme;
    announce(QStringLiteral("color-scheme"), QVariant::fromValue(colorScheme));
}

void DesktopPortal::announce(const QString &key, const QVariant &value)
{
    // QtDBus relays a signal only from the thread the object lives in.
    QMetaObject::invokeMethod(
        this,
        [this, key, value] {
            emit SettingChanged(
                QStringLiteral("org.freedesktop.appearance"), key, QDBusVariant(value));
        },
        Qt::BlockingQueuedConnection);
}

QDBusVariant DesktopPortal::Read(const QString &group, const QString &key)
{
    // Read answers the value's variant inside a variant, as the portal's first version does.
    if (group != QLatin1String("org.freedesktop.appearance")
        || key != QLatin1String("color-scheme")) {
        if (calledFromDBus())
            sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                QStringLiteral("Requested setting not found"));
        return {};
    }
    return QDBusVariant(QVariant::fromValue(QDBusVariant(QVariant::fromValue(m_scheme.load()))));
}
