#include <document/AtomicFileWriter.h>

#include "support/Unprivileged.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <sys/xattr.h>

// Replacing with metadata kept and writing through a link are also covered through the saving
// service; here: existing and new files, chains of links, and failures.
class AtomicFileWriterTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void existingFileKeepsItsOwnPermissions_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("group may write") << 0664;
        QTest::newRow("executable") << 0750;
    }

    // The user's mode wins over the mask of the process that saves; the attributes stay too.
    void existingFileKeepsItsOwnPermissions()
    {
        QFETCH(int, mode);
        const QString path = write(QStringLiteral("own.pdf"), "old");
        const QByteArray native = QFile::encodeName(path);
        QCOMPARE(::chmod(native.constData(), mode_t(mode)), 0);
        const bool attributes = ::setxattr(native.constData(), "user.xdg.tags", "work", 4, 0) == 0;
        struct stat before = {};
        QCOMPARE(::stat(native.constData(), &before), 0);

        const mode_t mask = ::umask(077);
        const QString error = AtomicFileWriter::write(path, "new");
        ::umask(mask);

        QCOMPARE(error, QString());
        QCOMPARE(contents(path), QByteArray("new"));
        struct stat after = {};
        QCOMPARE(::stat(native.constData(), &after), 0);
        QCOMPARE(after.st_mode & 07777, mode_t(mode));
        QCOMPARE(after.st_uid, before.st_uid);
        QVERIFY2(after.st_ino != before.st_ino, "the file is replaced, not written in place");
        if (attributes) {
            char value[8] = {};
            QCOMPARE(
                ::getxattr(native.constData(), "user.xdg.tags", value, sizeof value), ssize_t(4));
            QCOMPARE(QByteArray(value), QByteArray("work"));
        }
        QCOMPARE(entries(), QStringList { QStringLiteral("own.pdf") });
    }

    void newFileFollowsTheUmask()
    {
        const mode_t mask = ::umask(027);
        const QString path = m_dir->filePath(QStringLiteral("fresh.pdf"));
        const QString error = AtomicFileWriter::write(path, "fresh");
        ::umask(mask);
        QCOMPARE(error, QString());
        QCOMPARE(contents(path), QByteArray("fresh"));
        struct stat status = {};
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &status), 0);
        QCOMPARE(status.st_mode & 07777, mode_t(0640));
    }

    void chainOfRelativeLinksIsWrittenThrough()
    {
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("store")));
        const QString target = write(QStringLiteral("store/real.pdf"), "old");
        QVERIFY(QFile::link(QStringLiteral("store/real.pdf"), m_dir->filePath("link.pdf")));
        QVERIFY(QFile::link(QStringLiteral("link.pdf"), m_dir->filePath("outer.pdf")));

        QCOMPARE(AtomicFileWriter::write(m_dir->filePath("outer.pdf"), "new"), QString());

        QVERIFY(QFileInfo(m_dir->filePath("outer.pdf")).isSymLink());
        QVERIFY(QFileInfo(m_dir->filePath("link.pdf")).isSymLink());
        QCOMPARE(contents(target), QByteArray("new"));
        QCOMPARE(QDir(m_dir->filePath("store")).entryList(QDir::Files | QDir::Hidden),
            QStringList { QStringLiteral("real.pdf") });
    }

    void failuresLeaveTheOriginalAndNoTemporaryFile_data()
    {
        QTest::addColumn<QString>("failure");
        QTest::newRow("folder not writable") << "read-only folder";
        QTest::newRow("target is a folder") << "folder";
        QTest::newRow("link loop") << "loop";
        QTest::newRow("folder is missing") << "missing folder";
    }

    void failuresLeaveTheOriginalAndNoTemporaryFile()
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
        QFile::setPermissions(
            m_dir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

        QVERIFY2(!error.isEmpty(), "the failure is reported");
        QCOMPARE(contents(original), QByteArray("original"));
        QCOMPARE(entries(), before);
    }

private:
    QString write(const QString &name, const QByteArray &bytes)
    {
        const QString path = m_dir->filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    static QByteArray contents(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
    }

    QStringList entries() const
    {
        return QDir(m_dir->path())
            .entryList(
                QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System, QDir::Name);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(AtomicFileWriterTest)
#include "AtomicFileWriterTest.moc"
