#include <document/Common.h>

#include <support/TestTools.h>

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/xattr.h>

class CommonTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { FOLIDOC_REQUIRE_USER_ATTRIBUTES(); }

    void attributesLiveInTheUserNamespace()
    {
        const QString path = makeFile(QStringLiteral("attributes.pdf"));
        const QUrl url = QUrl::fromLocalFile(path);
        const QString name = QStringLiteral("com.Scrollwick.PDFView.LastPosition");
        const QByteArray payload("position\0with zero", 18);

        FDSetXAttr(url, name, payload);
        QCOMPARE(FDGetXAttr(url, name), payload);
        char raw[64] = {};
        const ssize_t length = ::getxattr(QFile::encodeName(path).constData(),
            "user.com.Scrollwick.PDFView.LastPosition", raw, sizeof raw);
        QCOMPARE(QByteArray(raw, int(length)), payload);

        QVERIFY(FDRemoveXAttr(url, name));
        QCOMPARE(FDGetXAttr(url, name), std::nullopt);
        QVERIFY(FDRemoveXAttr(url, name));
        FDSetXAttr(url, name, QByteArray());
        QCOMPARE(FDGetXAttr(url, name), std::nullopt); // an empty attribute reads as nothing
        QCOMPARE(
            FDGetXAttr(QUrl::fromLocalFile(m_dir.filePath("missing.pdf")), name), std::nullopt);
    }

    void attributeNameLengthLimit_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("nameLength");
        QTest::addColumn<bool>("survives");
        QTest::newRow("set 126") << "set-xattr" << 126 << true;
        QTest::newRow("set 127") << "set-xattr" << 127 << false;
        QTest::newRow("get 126") << "get-xattr" << 126 << true;
        QTest::newRow("get 127") << "get-xattr" << 127 << false;
    }

    void attributeNameLengthLimit()
    {
        QFETCH(QString, command);
        QFETCH(int, nameLength);
        QFETCH(bool, survives);
        QProcess helper;
        helper.start(QStringLiteral(FOLIDOC_DOCUMENT_HELPER),
            { command, makeFile(QStringLiteral("limit.pdf")), QString::number(nameLength) });
        QVERIFY(helper.waitForFinished(30000));
        QCOMPARE(helper.exitStatus() == QProcess::NormalExit && helper.exitCode() == 0, survives);
        QCOMPARE(helper.readAllStandardError().contains("XATTR_MAXNAMELEN"), !survives);
    }

    void urlWithoutQuery_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("expected");
        QTest::newRow("no query keeps all") << "file:///tmp/a%20b.pdf#4"
                                            << "file:///tmp/a%20b.pdf#4";
        QTest::newRow("query and fragment go") << "file:///tmp/a.pdf?x=1#4"
                                               << "file:///tmp/a.pdf";
        QTest::newRow("empty path becomes /") << "https://example.org?q=1"
                                              << "https://example.org/";
    }

    void urlWithoutQuery()
    {
        QFETCH(QString, url);
        QFETCH(QString, expected);
        QCOMPARE(absoluteStringWithoutQueryString(QUrl(url)), expected);
    }

    void urlListsSurviveEncoding()
    {
        const QUrl first = QUrl::fromLocalFile(makeFile(QStringLiteral("first é.pdf")));
        const QUrl second = QUrl::fromLocalFile(makeFile(QStringLiteral("second#1.pdf")));
        const QUrl gone = QUrl::fromLocalFile(makeFile(QStringLiteral("gone.pdf")));
        QUrl withQuery = second;
        withQuery.setQuery(QStringLiteral("page=3"));

        QVariantList stored = FDEncodeURLs(QVariantList { first, QStringLiteral("not a URL"),
            withQuery, gone, QUrl(QStringLiteral("https://example.org/a.pdf")) });
        QCOMPARE(stored.size(), 4);
        QVERIFY(!stored.at(1).toByteArray().contains("page=3"));
        QVERIFY(QFile::remove(gone.toLocalFile()));
        stored << QStringLiteral("a string, not data") << QByteArray("\xff\xfe not UTF-8");

        QCOMPARE(FDDecodeURLs(stored), (QList<QUrl> { first, second }));
        QVERIFY(FDDecodeURLs(QVariant()).isEmpty());
        QVERIFY(FDDecodeURLs(QByteArray("file:///tmp")).isEmpty());
    }

private:
    QString makeFile(const QString &name)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write("data") != 4)
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(CommonTest)
#include "CommonTest.moc"
