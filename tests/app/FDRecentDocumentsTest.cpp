#include "support/AppTestEnvironment.h"

#include <app/FDRecentDocuments.h>

#include <QDomDocument>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class FDRecentDocumentsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppTestEnvironment::clearStore();
        QFile::remove(FDRecentDocuments::desktopRecentFilePath());
    }

    void newestFirstWithoutRepeatsAndBounded()
    {
        const auto url = [this](int n) {
            return QUrl::fromLocalFile(m_files.filePath(QStringLiteral("file %1.pdf").arg(n)));
        };
        FDRecentDocuments::noteNewRecentDocumentURL(url(1));
        FDRecentDocuments::noteNewRecentDocumentURL(url(2));
        FDRecentDocuments::noteNewRecentDocumentURL(url(1));
        QCOMPARE(FDRecentDocuments::recentDocumentURLs(), (QList<QUrl> { url(1), url(2) }));
        for (int n = 3; n <= 30; ++n)
            FDRecentDocuments::noteNewRecentDocumentURL(url(n));
        const QList<QUrl> recents = FDRecentDocuments::recentDocumentURLs();
        QCOMPARE(recents.size(), FDRecentDocuments::maximumRecentDocumentCount);
        QCOMPARE(recents.first(), url(30));
        QCOMPARE(recents.last(), url(11));
        FDRecentDocuments::clearRecentDocuments();
        QVERIFY(FDRecentDocuments::recentDocumentURLs().isEmpty());
    }

    void theDesktopRecordKeepsOtherProgramsEntries()
    {
        QDir().mkpath(QFileInfo(FDRecentDocuments::desktopRecentFilePath()).absolutePath());
        QFile existing(FDRecentDocuments::desktopRecentFilePath());
        QVERIFY(existing.open(QIODevice::WriteOnly));
        existing.write(R"(<?xml version="1.0" encoding="UTF-8"?>
    <xbel version="1.0" xmlns:bookmark="http://www.freedesktop.org/standards/desktop-bookmarks"
          xmlns:mime="http://www.freedesktop.org/standards/shared-mime-info">
      <bookmark href="file:///home/someone/photo.png" added="2020-01-01T00:00:00Z"
                modified="2020-01-01T00:00:00Z" visited="2020-01-01T00:00:00Z"/>
    </xbel>
    )");
        existing.close();

        const QUrl paper = QUrl::fromLocalFile(m_files.filePath(QStringLiteral("My Paper.pdf")));
        FDRecentDocuments::noteNewRecentDocumentURL(paper);
        FDRecentDocuments::noteNewRecentDocumentURL(paper);
        const QDomDocument record = desktopRecord();
        const QDomNodeList bookmarks = record.elementsByTagName(QStringLiteral("bookmark"));
        QCOMPARE(bookmarks.size(), 2);
        QCOMPARE(bookmarks.at(0).toElement().attribute(QStringLiteral("href")),
            QStringLiteral("file:///home/someone/photo.png"));
        const QDomElement ours = bookmarks.at(1).toElement();
        QCOMPARE(ours.attribute(QStringLiteral("href")), paper.toString(QUrl::FullyEncoded));
        const QDomNodeList applications
            = ours.elementsByTagName(QStringLiteral("bookmark:application"));
        QCOMPARE(applications.size(), 1);
        QCOMPARE(applications.at(0).toElement().attribute(QStringLiteral("name")),
            QStringLiteral("Folidoc"));
        QCOMPARE(
            applications.at(0).toElement().attribute(QStringLiteral("count")), QStringLiteral("2"));
    }

private:
    static QDomDocument desktopRecord()
    {
        QFile file(FDRecentDocuments::desktopRecentFilePath());
        QDomDocument document;
        if (file.open(QIODevice::ReadOnly))
            document.setContent(&file);
        return document;
    }
    QTemporaryDir m_files;
};

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QCoreApplication app(argc, argv);
    FDRecentDocumentsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "FDRecentDocumentsTest.moc"
