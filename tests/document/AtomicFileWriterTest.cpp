#include <document/AtomicFileWriter.h>

#include "support/Unprivileged.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <sys/xattr.h>

class AtomicFileWriterTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void replacingKeepsPermissionsAndUserAttributes();
    void newFileGetsTheUsualPermissions();
    void symbolicLinksAreWrittenThrough_data();
    void symbolicLinksAreWrittenThrough();
    void failuresLeaveTheOriginalAndNoTemporaryFile_data();
    void failuresLeaveTheOriginalAndNoTemporaryFile();

private:
    QString write(const QString &name, const QByteArray &contents);
    static QByteArray contents(const QString &path);
    QStringList entries() const;

    std::unique_ptr<QTemporaryDir> m_dir;
};

void AtomicFileWriterTest::initTestCase()
{
    QTemporaryDir probeDir;
    const QByteArray probe = QFile::encodeName(probeDir.filePath(QStringLiteral("probe")));
    QFile(QFile::decodeName(probe)).open(QIODevice::WriteOnly);
    if (::setxattr(probe.constData(), "user.probe", "1", 1, 0) != 0)
        QSKIP("this file system refuses extended attributes in the user namespace");
}

void AtomicFileWriterTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

QString AtomicFileWriterTest::write(const QString &name, const QByteArray &bytes)
{
    const QString path = m_dir->filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QByteArray AtomicFileWriterTest::contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

QStringList AtomicFileWriterTest::entries() const
{
    return QDir(m_dir->path())
        .entryList(
            QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System, QDir::Name);
}

void AtomicFileWriterTest::replacingKeepsPermissionsAndUserAttributes()
{
    const QString path = write(QStringLiteral("paper.pdf"), "old");
    const QByteArray native = QFile::encodeName(path);
    QCOMPARE(::chmod(native.constData(), 0640), 0);
    QCOMPARE(::setxattr(native.constData(), "user.other.program", "tag", 3, 0), 0);
    QCOMPARE(::setxattr(native.constData(), "user.com.brimbook.bookmarks", "", 0, 0), 0);

    QCOMPARE(AtomicFileWriter::write(path, "new bytes"), QString());

    QCOMPARE(contents(path), QByteArray("new bytes"));
    struct stat status
    {
    };
    QCOMPARE(::stat(native.constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0640));
    char value[8] = {};
    QCOMPARE(::getxattr(native.constData(), "user.other.program", value, sizeof value), ssize_t(3));
    QCOMPARE(QByteArray(value), QByteArray("tag"));
    QCOMPARE(::getxattr(native.constData(), "user.com.brimbook.bookmarks", value, sizeof value),
        ssize_t(0));
    QCOMPARE(entries(), QStringList { QStringLiteral("paper.pdf") });
}

void AtomicFileWriterTest::newFileGetsTheUsualPermissions()
{
    const mode_t mask = ::umask(027);
    const QString path = m_dir->filePath(QStringLiteral("fresh.pdf"));
    const QString error = AtomicFileWriter::write(path, "fresh");
    ::umask(mask);
    QCOMPARE(error, QString());
    QCOMPARE(contents(path), QByteArray("fresh"));
    struct stat status
    {
    };
    QCOMPARE(::stat(QFile::encodeName(path).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0640));
}

void AtomicFileWriterTest::symbolicLinksAreWrittenThrough_data()
{
    QTest::addColumn<bool>("relative");
    QTest::addColumn<bool>("chained");
    QTest::newRow("absolute link") << false << false;
    QTest::newRow("relative link") << true << false;
    QTest::newRow("link to a link") << true << true;
}

void AtomicFileWriterTest::symbolicLinksAreWrittenThrough()
{
    QFETCH(bool, relative);
    QFETCH(bool, chained);
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("store")));
    const QString target = write(QStringLiteral("store/real.pdf"), "old");
    QString link = m_dir->filePath(QStringLiteral("link.pdf"));
    QVERIFY(QFile::link(relative ? QStringLiteral("store/real.pdf") : target, link));
    if (chained) {
        const QString outer = m_dir->filePath(QStringLiteral("outer.pdf"));
        QVERIFY(QFile::link(QStringLiteral("link.pdf"), outer));
        link = outer;
    }

    QCOMPARE(AtomicFileWriter::write(link, "new"), QString());

    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(contents(target), QByteArray("new"));
    QCOMPARE(QDir(m_dir->filePath(QStringLiteral("store"))).entryList(QDir::Files | QDir::Hidden),
        QStringList { QStringLiteral("real.pdf") });
}

void AtomicFileWriterTest::failuresLeaveTheOriginalAndNoTemporaryFile_data()
{
    QTest::addColumn<QString>("failure");
    QTest::newRow("folder not writable") << "read-only folder";
    QTest::newRow("target is a folder") << "folder";
    QTest::newRow("link loop") << "loop";
    QTest::newRow("folder is missing") << "missing folder";
}

void AtomicFileWriterTest::failuresLeaveTheOriginalAndNoTemporaryFile()
{
    QFETCH(QString, failure);
    const QString original = write(QStringLiteral("keep.pdf"), "original");
    QString path = original;
    std::unique_ptr<Unprivileged> unprivileged;
    if (failure == QLatin1String("read-only folder")) {
        Unprivileged::giveAway(m_dir->path());
        Unprivileged::giveAway(original);
        QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::ExeOwner);
        unprivileged = std::make_unique<Unprivileged>();
    } else if (failure == QLatin1String("folder")) {
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder.pdf")));
        path = m_dir->filePath(QStringLiteral("folder.pdf"));
    } else if (failure == QLatin1String("loop")) {
        path = m_dir->filePath(QStringLiteral("a.pdf"));
        QVERIFY(QFile::link(QStringLiteral("b.pdf"), path));
        QVERIFY(QFile::link(QStringLiteral("a.pdf"), m_dir->filePath(QStringLiteral("b.pdf"))));
    } else {
        path = m_dir->filePath(QStringLiteral("nowhere/keep.pdf"));
    }
    const QStringList before = entries();

    const QString error = AtomicFileWriter::write(path, "replacement");
    unprivileged.reset();
    QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    QVERIFY2(!error.isEmpty(), "the failure is reported");
    QCOMPARE(contents(original), QByteArray("original"));
    QCOMPARE(entries(), before);
}

QTEST_GUILESS_MAIN(AtomicFileWriterTest)
#include "AtomicFileWriterTest.moc"
