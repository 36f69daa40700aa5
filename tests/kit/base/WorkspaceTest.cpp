#include <kit/base/Workspace.h>

#include <support/DesktopPortal.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>

#include <QBuffer>
#include <QDBusConnection>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray minimalPdf()
{
    return PdfFixtures::build(PdfFixtures::textPages(1, 1, 0));
}

} // namespace

// Records the URLs the desktop services would have opened.
class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl &url) { opened.append(url); }
};

// Plays the desktop's file manager on the private bus: it receives the real D-Bus call.
class FileManagerService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    QStringList shown;
public slots:
    void ShowItems(const QStringList &uris, const QString &) { shown += uris; }
};

class WorkspaceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &m_recorder, "open");
        // A bus of our own, without service activation, so no real file manager can start; the
        // portal's bus is one such, and the portal is not published on it.
        m_busAddress = m_bus.busAddress();
        if (m_busAddress.isEmpty()) {
            qunsetenv("DBUS_SESSION_BUS_ADDRESS");
            return;
        }
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_busAddress.toUtf8());
        QVERIFY(QDBusConnection::sessionBus().isConnected());
    }

    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    void init() { m_recorder.opened.clear(); }

    void fileTypesGoByContentThenName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("mimeType");
        QTest::addColumn<bool>("pdf");
        QTest::addColumn<bool>("image");
        const QByteArray pdf = minimalPdf();
        const QByteArray png = pngBytes();
        const QByteArray text("Plain words on a line.\nAnother line.\n");
        QTest::newRow("pdf") << "doc.pdf" << pdf << "application/pdf" << true << false;
        QTest::newRow("pdf named as text")
            << "doc.txt" << pdf << "application/pdf" << true << false;
        QTest::newRow("png") << "pic.png" << png << "image/png" << false << true;
        QTest::newRow("png named pdf") << "pic.pdf" << png << "image/png" << false << true;
        QTest::newRow("text") << "notes.txt" << text << "text/plain" << false << false;
        QTest::newRow("text named pdf") << "notes.pdf" << text << "text/plain" << false << false;
    }
    void fileTypesGoByContentThenName()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, mimeType);
        QFETCH(bool, pdf);
        QFETCH(bool, image);
        const QString path = writeFile(name, bytes);
        QCOMPARE(Workspace::mimeTypeOf(path), mimeType);
        QCOMPARE(Workspace::isPDF(path), pdf);
        QCOMPARE(Workspace::conformsToImage(path), image);
    }

    void revealWithoutFileManagerOpensEachFolderOnce()
    {
        const QString a = writeFile(QStringLiteral("one/a.pdf"), minimalPdf());
        const QString b = writeFile(QStringLiteral("one/b.pdf"), minimalPdf());
        const QString c = writeFile(QStringLiteral("two/c.pdf"), minimalPdf());
        if (QDBusConnection::sessionBus().isConnected())
            QTest::ignoreMessage(QtInfoMsg, QRegularExpression(QStringLiteral("ServiceUnknown")));
        Workspace::activateFileViewerSelectingURLs(
            { QUrl::fromLocalFile(a), QUrl::fromLocalFile(b), QUrl::fromLocalFile(c) });
        const QList<QUrl> folders { QUrl::fromLocalFile(m_dir.filePath(QStringLiteral("one"))),
            QUrl::fromLocalFile(m_dir.filePath(QStringLiteral("two"))) };
        QTRY_COMPARE_WITH_TIMEOUT(m_recorder.opened, folders, 10000);
    }

    void revealAsksTheFileManagerOverDBus()
    {
        if (m_busAddress.isEmpty())
            QSKIP("dbus-daemon is not installed; the D-Bus path cannot be exercised");
        // The file manager is a second connection, so the call really crosses the bus.
        QDBusConnection fileManagerBus
            = QDBusConnection::connectToBus(m_busAddress, QStringLiteral("file-manager"));
        QVERIFY(fileManagerBus.isConnected());
        FileManagerService service;
        QVERIFY(fileManagerBus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"),
            &service, QDBusConnection::ExportAllSlots));
        QVERIFY(fileManagerBus.registerService(QStringLiteral("org.freedesktop.FileManager1")));

        const QString path = writeFile(QStringLiteral("with space/ü.pdf"), minimalPdf());
        Workspace::activateFileViewerSelectingURLs({ QUrl::fromLocalFile(path) });
        const QString uri = QString::fromUtf8(QUrl::fromLocalFile(path).toEncoded());
        QVERIFY(uri.endsWith(QLatin1String("/with%20space/%C3%BC.pdf")));
        QTRY_COMPARE_WITH_TIMEOUT(service.shown, QStringList { uri }, 10000);

        // Once the file manager has gone, a reveal opens the folder, and only that one: the
        // answered call above did not fall back as well.
        QVERIFY(fileManagerBus.unregisterService(QStringLiteral("org.freedesktop.FileManager1")));
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression(QStringLiteral("ServiceUnknown")));
        const QString later = writeFile(QStringLiteral("later/x.pdf"), minimalPdf());
        Workspace::activateFileViewerSelectingURLs({ QUrl::fromLocalFile(later) });
        const QList<QUrl> expected { QUrl::fromLocalFile(QFileInfo(later).absolutePath()) };
        QTRY_COMPARE_WITH_TIMEOUT(m_recorder.opened, expected, 10000);
        QCOMPARE(service.shown.size(), 1);
        QDBusConnection::disconnectFromBus(QStringLiteral("file-manager"));
    }

private:
    QString writeFile(const QString &relativePath, const QByteArray &bytes)
    {
        const QString path = m_dir.filePath(relativePath);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    static QByteArray pngBytes()
    {
        QImage image(4, 3, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        return bytes;
    }

    QTemporaryDir m_dir;
    UrlRecorder m_recorder;
    DesktopPortal m_bus;
    QString m_busAddress;
};

QTEST_MAIN(WorkspaceTest)
#include "WorkspaceTest.moc"
