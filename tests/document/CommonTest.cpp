#include <document/Common.h>
#include <document/FDError.h>
#include <document/Logger.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/xattr.h>
#include <unistd.h>

class CommonTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void attributesRoundTripUnderTheUserNamespace();
    void emptyOrMissingAttributeReadsAsNothing();
    void attributeNameLengthLimit_data();
    void attributeNameLengthLimit();
    void urlWithoutQuery_data();
    void urlWithoutQuery();
    void urlListsSurviveEncoding();
    void decodingDropsWhatCannotBeOpened();
    void chewableFoldersAreFreshAndEmpty();
    void applicationSupportEndsInTheApplicationName();
    void errorConstructors_data();
    void errorConstructors();
    void userCancelledErrorIsRecognisedByDomainAndCode();
    void loggerWritesInfoAndWarnLinesOnly();

private:
    QString makeFile(const QString &name, const QByteArray &contents = "data");
    QTemporaryDir m_dir;
};

void CommonTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QVERIFY(QDir(m_dir.path()).mkdir(QStringLiteral("tmp")));
    qputenv("TMPDIR", QFile::encodeName(m_dir.filePath(QStringLiteral("tmp"))));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_dir.filePath(QStringLiteral("data"))));
    const QByteArray probe = QFile::encodeName(makeFile(QStringLiteral("probe")));
    if (::setxattr(probe.constData(), "user.probe", "1", 1, 0) != 0)
        QSKIP("this file system refuses extended attributes in the user namespace");
}

QString CommonTest::makeFile(const QString &name, const QByteArray &contents)
{
    const QString path = m_dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

void CommonTest::attributesRoundTripUnderTheUserNamespace()
{
    const QString path = makeFile(QStringLiteral("roundtrip.pdf"));
    const QUrl url = QUrl::fromLocalFile(path);
    const QByteArray payload("position\0with zero", 18);

    FDSetXAttr(url, QStringLiteral("com.Scrollwick.PDFView.LastPosition"), payload);
    QCOMPARE(FDGetXAttr(url, QStringLiteral("com.Scrollwick.PDFView.LastPosition")), payload);

    // Other programs see it under the Linux name.
    char raw[64] = {};
    const ssize_t length = ::getxattr(QFile::encodeName(path).constData(),
        "user.com.Scrollwick.PDFView.LastPosition", raw, sizeof raw);
    QCOMPARE(QByteArray(raw, int(length)), payload);

    QVERIFY(FDRemoveXAttr(url, QStringLiteral("com.Scrollwick.PDFView.LastPosition")));
    QCOMPARE(FDGetXAttr(url, QStringLiteral("com.Scrollwick.PDFView.LastPosition")), std::nullopt);
    QVERIFY(FDRemoveXAttr(url, QStringLiteral("com.Scrollwick.PDFView.LastPosition")));
}

void CommonTest::emptyOrMissingAttributeReadsAsNothing()
{
    const QUrl url = QUrl::fromLocalFile(makeFile(QStringLiteral("empty.pdf")));
    FDSetXAttr(url, QStringLiteral("com.brimbook.bookmarks"), QByteArray());
    QCOMPARE(FDGetXAttr(url, QStringLiteral("com.brimbook.bookmarks")), std::nullopt);
    QCOMPARE(FDGetXAttr(url, QStringLiteral("never.set")), std::nullopt);
    QCOMPARE(FDGetXAttr(QUrl::fromLocalFile(m_dir.filePath(QStringLiteral("missing.pdf"))),
                 QStringLiteral("never.set")),
        std::nullopt);
}

void CommonTest::attributeNameLengthLimit_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("nameLength");
    QTest::addColumn<bool>("survives");
    QTest::newRow("set 126") << "set-xattr" << 126 << true;
    QTest::newRow("set 127") << "set-xattr" << 127 << false;
    QTest::newRow("get 126") << "get-xattr" << 126 << true;
    QTest::newRow("get 127") << "get-xattr" << 127 << false;
}

void CommonTest::attributeNameLengthLimit()
{
    QFETCH(QString, command);
    QFETCH(int, nameLength);
    QFETCH(bool, survives);
    const QString path = makeFile(QStringLiteral("limit.pdf"));

    QProcess helper;
    helper.start(
        QStringLiteral(FOLIDOC_DOCUMENT_HELPER), { command, path, QString::number(nameLength) });
    QVERIFY(helper.waitForFinished(30000));
    QCOMPARE(helper.exitStatus() == QProcess::NormalExit && helper.exitCode() == 0, survives);
    if (!survives)
        QVERIFY2(helper.readAllStandardError().contains("XATTR_MAXNAMELEN"),
            "the process stops with the assertion's text");
}

void CommonTest::urlWithoutQuery_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QString>("expected");
    QTest::newRow("file, no query")
        << QUrl::fromLocalFile(QStringLiteral("/tmp/a b.pdf")) << "file:///tmp/a%20b.pdf";
    QTest::newRow("file with query and fragment")
        << QUrl(QStringLiteral("file:///tmp/a.pdf?x=1#4")) << "file:///tmp/a.pdf";
    QTest::newRow("no query keeps the fragment")
        << QUrl(QStringLiteral("file:///tmp/a.pdf#4")) << "file:///tmp/a.pdf#4";
    QTest::newRow("empty path becomes a slash")
        << QUrl(QStringLiteral("https://example.org?q=1")) << "https://example.org/";
    QTest::newRow("host and path kept")
        << QUrl(QStringLiteral("https://example.org/feedback?source=x"))
        << "https://example.org/feedback";
}

void CommonTest::urlWithoutQuery()
{
    QFETCH(QUrl, url);
    QFETCH(QString, expected);
    QCOMPARE(absoluteStringWithoutQueryString(url), expected);
}

void CommonTest::urlListsSurviveEncoding()
{
    const QUrl first = QUrl::fromLocalFile(makeFile(QStringLiteral("first é.pdf")));
    const QUrl second = QUrl::fromLocalFile(makeFile(QStringLiteral("second#1.pdf")));
    QUrl withQuery = second;
    withQuery.setQuery(QStringLiteral("page=3"));

    const QVariantList encoded
        = FDEncodeURLs(QVariantList { first, QStringLiteral("not a URL"), withQuery, 42 });
    QCOMPARE(encoded.size(), 2);
    QCOMPARE(encoded.at(0).metaType(), QMetaType::fromType<QByteArray>());
    QVERIFY(!encoded.at(1).toByteArray().contains("page=3"));
    QCOMPARE(FDDecodeURLs(encoded), (QList<QUrl> { first, second }));
}

void CommonTest::decodingDropsWhatCannotBeOpened()
{
    const QUrl kept = QUrl::fromLocalFile(makeFile(QStringLiteral("kept.pdf")));
    const QUrl gone = QUrl::fromLocalFile(makeFile(QStringLiteral("gone.pdf")));
    const QVariantList encoded = FDEncodeURLs(
        QList<QUrl> { gone, QUrl(QStringLiteral("https://example.org/a.pdf")), kept });
    QVERIFY(QFile::remove(gone.toLocalFile()));
    QVariantList stored = encoded;
    stored.append(QStringLiteral("a string, not data"));
    stored.append(QByteArray("\xff\xfe not UTF-8"));

    QCOMPARE(FDDecodeURLs(stored), QList<QUrl> { kept });
    QVERIFY(FDDecodeURLs(QVariant()).isEmpty());
    QVERIFY(FDDecodeURLs(QVariantList()).isEmpty());
    QVERIFY(FDDecodeURLs(QByteArray("file:///tmp")).isEmpty());
}

void CommonTest::chewableFoldersAreFreshAndEmpty()
{
    const QUrl one = uniqueChewableItemsDirectoryURL();
    const QUrl two = uniqueChewableItemsDirectoryURL();
    QVERIFY(one != two);
    for (const QUrl &url : { one, two }) {
        const QDir folder(url.toLocalFile());
        QVERIFY(folder.exists());
        QVERIFY(folder.isEmpty());
        QCOMPARE(QFileInfo(url.toLocalFile()).absolutePath(),
            m_dir.filePath(QStringLiteral("tmp/Folidoc")));
    }
}

void CommonTest::applicationSupportEndsInTheApplicationName()
{
    const QList<QUrl> urls = applicationSupportDirectoryURLs();
    QCOMPARE(urls.size(), 1);
    QCOMPARE(urls.first().toLocalFile(),
        m_dir.filePath(QStringLiteral("data/")) + QCoreApplication::applicationName());
}

void CommonTest::errorConstructors_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("code");
    QTest::newRow("write") << 0 << 1;
    QTest::newRow("read") << 1 << 2;
    QTest::newRow("pasteboard") << 2 << 3;
    QTest::newRow("print") << 3 << 4;
}

void CommonTest::errorConstructors()
{
    QFETCH(int, kind);
    QFETCH(int, code);
    using Constructor = FDError (*)(const QString &);
    const Constructor constructors[] = { &FDError::writeFileErrorWithLocalizedDescription,
        &FDError::readFileErrorWithLocalizedDescription,
        &FDError::readPasteboardErrorWithLocalizedDescription,
        &FDError::printDocumentErrorWithLocalizedDescription };
    const FDError error = constructors[kind](QStringLiteral("The file is gone."));
    QCOMPARE(error.domain(), QStringLiteral("XDocumentErrorDomain"));
    QCOMPARE(error.code(), code);
    QCOMPARE(error.localizedDescription(), QStringLiteral("The file is gone."));
    QVERIFY(!error.underlyingError());
    QVERIFY(!error.isUserCancelledError());
}

void CommonTest::userCancelledErrorIsRecognisedByDomainAndCode()
{
    const FDError cause = FDError::readFileErrorWithLocalizedDescription(QStringLiteral("cause"));
    const FDError cancelled = FDError::userCancelledErrorWithUnderlyingError(cause);
    QVERIFY(cancelled.isUserCancelledError());
    QCOMPARE(cancelled.code(), 3072);
    QVERIFY(cancelled.underlyingError());
    QCOMPARE(cancelled.underlyingError()->localizedDescription(), QStringLiteral("cause"));
    QVERIFY(!FDError(FDError::XDocumentErrorDomain, 3072).isUserCancelledError());
    QVERIFY(!FDError(FDError::NSCocoaErrorDomain, 3071).isUserCancelledError());
}

void CommonTest::loggerWritesInfoAndWarnLinesOnly()
{
    const QString capturePath = m_dir.filePath(QStringLiteral("stdout.txt"));
    std::fflush(stdout);
    const int saved = ::dup(STDOUT_FILENO);
    {
        QFile capture(capturePath);
        QVERIFY(capture.open(QIODevice::WriteOnly));
        ::dup2(capture.handle(), STDOUT_FILENO);
        Logger::debug(QStringLiteral("hidden"));
        Logger::info(QStringLiteral("opened"));
        Logger::warn(QStringLiteral("careful"));
        std::fflush(stdout);
        ::dup2(saved, STDOUT_FILENO);
        ::close(saved);
    }
    QFile capture(capturePath);
    QVERIFY(capture.open(QIODevice::ReadOnly));
    QCOMPARE(capture.readAll(), QByteArray("[INFO] opened\n[WARN] careful\n"));
}

QTEST_GUILESS_MAIN(CommonTest)
#include "CommonTest.moc"
