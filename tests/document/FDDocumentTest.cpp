#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <document/PDFDocument+XExtensions.h>
#include <document/PDFPage+XExtensions.h>

#include "support/DocumentFixtures.h"
#include "support/Unprivileged.h"
#include <support/PdfFixtures.h>

#include <app/Alert.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFAnnotation.h>

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

class FDDocumentTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        m_records.clear();
        m_alerts.clear();
        Alert::setHandlerForTesting([this](const AlertRequest &request) {
            m_alerts.append(request);
            return 1000;
        });
    }

    void cleanup()
    {
        NotificationCenter::defaultCenter().removeObserver(this);
        Alert::setHandlerForTesting({});
    }

    void titles_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("digest");
        QTest::newRow("no URL") << QUrl() << QStringLiteral("Untitled") << "(empty)";
        QTest::newRow("two dots") << QUrl::fromLocalFile("/tmp/My a.b.pdf")
                                  << QStringLiteral("My a.b") << "My a.b";
        QTest::newRow("no extension")
            << QUrl::fromLocalFile("/tmp/notes") << QStringLiteral("notes") << "notes";
    }

    void titles()
    {
        QFETCH(QUrl, url);
        QFETCH(QString, title);
        QFETCH(QString, digest);
        auto document = std::make_shared<FDDocument>();
        QVERIFY(document->init());
        setFileURL(*document, url);
        QCOMPARE(document->title(), title);
        QCOMPARE(FDDocument::digestTitleFrom(url), digest);

        // Any document can be asked; a plain one is untitled and unchanged whatever is set.
        auto plain = std::make_shared<PDFDocument>();
        QVERIFY(plain->init());
        setFileURL(*plain, url);
        setNumberOfChanges(*plain, 3);
        QCOMPARE(fileURL(*plain), QUrl());
        QCOMPARE(numberOfChanges(*plain), 0);
    }

    void bigFileStartsAt1001Pages()
    {
        const auto document = DocumentFixtures::open(fixture(QStringLiteral("big.pdf"), 1000));
        QVERIFY(!document->isBigFile());
        DocumentFixtures::appendBlankPages(*document, 1);
        QVERIFY(document->isBigFile());
    }

    void setNumberOfChangesRule_data()
    {
        QTest::addColumn<QList<int>>("before");
        QTest::addColumn<int>("value");
        QTest::addColumn<QList<int>>("after");
        QTest::newRow("5 on 1, 2, 3") << QList<int> { 1, 2, 3 } << 5 << QList<int> { 1, 2, 6 };
        QTest::newRow("clean stays clean") << QList<int> { 0, 0, 0 } << 7 << QList<int> { 0, 0, 0 };
        QTest::newRow("0 resets") << QList<int> { 4, 5, 6 } << 0 << QList<int> { 0, 0, 0 };
    }

    void setNumberOfChangesRule()
    {
        QFETCH(QList<int>, before);
        QFETCH(int, value);
        QFETCH(QList<int>, after);
        auto document = std::make_shared<FDDocument>();
        QVERIFY(document->init());
        document->setNumberOfAnnotationChanges(before[0]);
        document->setNumberOfPageChanges(before[1]);
        document->setNumberOfOtherChanges(before[2]);
        setNumberOfChanges(*document, value);
        QCOMPARE((QList<int> { document->numberOfAnnotationChanges(),
                     document->numberOfPageChanges(), document->numberOfOtherChanges() }),
            after);
    }

    void resetPostsBothNotificationsFromTheView()
    {
        ViewDelegate view;
        const auto document = DocumentFixtures::open(fixture("reset.pdf", 2), view.delegate());
        document->setNumberOfAnnotationChanges(2);
        document->setNumberOfOtherChanges(4);
        record(*document);

        document->setNumberOfChanges(0);

        // A title drawn at either notification already loses its mark.
        const void *sender = view.view();
        QCOMPARE(m_records,
            (QList<std::tuple<QString, const void *, int>> {
                { FDDocument::DocumentAnnDidChangeNotification, sender, 0 },
                { FDDocument::DocumentPageDidChangeNotification, sender, 0 } }));
        m_records.clear();
        document->setPdfView(nullptr);
        document->setNumberOfAnnotationChanges(1);
        QCOMPARE(std::get<1>(m_records.value(0)), nullptr);
    }

    void pageOperationsCountOnePageChangeEach()
    {
        const auto document = DocumentFixtures::open(fixture(QStringLiteral("pages.pdf"), 3));
        record(*document);
        const auto first = document->pageAtIndex(0);
        const auto last = document->pageAtIndex(2);

        document->exchangePageAtIndex(0, 2);
        QCOMPARE(document->pageAtIndex(0), last);
        document->removePageAtIndex(2);
        QCOMPARE(pageIndex(*first), -1);
        document->insertPage(first, 1);
        QCOMPARE(pageIndex(*first), 1);

        QCOMPARE(document->numberOfPageChanges(), 3);
        QCOMPARE(m_records.size(), 3);
        QCOMPARE(std::get<0>(m_records.last()), FDDocument::DocumentPageDidChangeNotification);
        QCOMPARE(std::get<2>(m_records.last()), 3);
    }

    void everyPageIsAnFDPageWithALastingIdentity()
    {
        const QString path = fixture(QStringLiteral("identity.pdf"), 3);
        ViewDelegate view;
        const auto withView = DocumentFixtures::open(path, view.delegate());
        const auto alone = DocumentFixtures::open(path);
        QCOMPARE(withView->pdfView(), view.view());
        QSet<QString> uuids;
        for (const auto &document : { withView, alone }) {
            for (int index = 0; index < document->pageCount(); ++index) {
                const auto page = std::dynamic_pointer_cast<FDPage>(document->pageAtIndex(index));
                QVERIFY2(page, "every page of an FDDocument is an FDPage");
                QCOMPARE(page->uuid(), page->uuid());
                uuids.insert(page->uuid());
            }
        }
        QCOMPARE(uuids.size(), 6);

        const auto moving = std::dynamic_pointer_cast<FDPage>(withView->pageAtIndex(1));
        const QString uuid = moving->uuid();
        // A page going to another document leaves its own through that document's removal, which
        // counts and is announced like any other.
        record(*withView);
        alone->insertPage(moving, 0);
        QCOMPARE(alone->pageAtIndex(0), moving);
        QCOMPARE(moving->uuid(), uuid);
        QCOMPARE(withView->pageCount(), 2);
        QCOMPARE(withView->numberOfPageChanges(), 1);
        QCOMPARE(alone->numberOfPageChanges(), 1);
        QVERIFY(!m_records.isEmpty());
        QCOMPARE(std::get<1>(m_records.first()), static_cast<const void *>(view.view()));
    }

    void validAnnotationsLeaveOutLinksAndPopups()
    {
        PdfFixtures::Page page;
        page.links = { { QRectF(72, 72, 100, 20), QStringLiteral("https://example.org"), -1, {} } };
        page.annotations = { { "/Subtype /Square /Rect [100 100 200 200]", {}, {} },
            { "/Subtype /Popup /Rect [300 300 400 400]", {}, {} },
            { "/Subtype /Circle /Rect [200 200 300 300]", {}, {} } };
        const QString path = m_dir->filePath(QStringLiteral("annotations.pdf"));
        QVERIFY(PdfFixtures::write({ { page }, {}, {} }, path));
        const auto document = DocumentFixtures::open(path);

        QStringList all, valid;
        for (const auto &annotation : document->pageAtIndex(0)->annotations())
            all.append(annotation->type());
        for (const auto &annotation : validAnnotations(*document->pageAtIndex(0)))
            valid.append(annotation->type());
        QCOMPARE(all, (QStringList { "Link", "Square", "Popup", "Circle" }));
        QCOMPARE(valid, (QStringList { "Square", "Circle" }));
    }

    void unreadableFileGivesNoDocument()
    {
        const QString path = m_dir->filePath(QStringLiteral("garbage.pdf"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("%PDF-1.7 this is not really a PDF");
        file.close();
        auto document = std::make_shared<FDDocument>();
        QVERIFY(!document->initWithURL(QUrl::fromLocalFile(path), {}));
        QVERIFY(!document->errorString().isEmpty());

        auto untitled = std::make_shared<FDDocument>();
        QVERIFY(untitled->initWithURL(QUrl(), {}));
        QCOMPARE(untitled->pageCount(), 0);
    }

    void permissionAlertOncePerDocumentAfterDelay()
    {
        const QString readOnly = fixture(QStringLiteral("locked.pdf"), 1);
        const QString writable = fixture(QStringLiteral("open.pdf"), 1);
        QVERIFY(QFile::setPermissions(readOnly, QFile::ReadOwner | QFile::ReadOther));
        for (const QString &path : { m_dir->path(), readOnly, writable })
            Unprivileged::giveAway(path);
        const Unprivileged unprivileged;

        const auto lockedDocument = DocumentFixtures::open(readOnly);
        const auto openDocument = DocumentFixtures::open(writable);
        QElapsedTimer clock;
        clock.start();
        lockedDocument->setNumberOfAnnotationChanges(1);
        openDocument->setNumberOfAnnotationChanges(1);
        QCOMPARE(lockedDocument->numberOfAnnotationChanges(), 1); // the edit itself is not refused
        QTRY_COMPARE_WITH_TIMEOUT(m_alerts.size(), 1, 5000);
        QVERIFY2(clock.elapsed() >= 550, "the alert waits for the gesture to end");
        QCOMPARE(m_alerts[0].style, AlertRequest::Critical);
        QCOMPARE(m_alerts[0].messageText,
            QStringLiteral("You don’t have permission to save the file \"%1\".").arg(readOnly));
        QCOMPARE(m_alerts[0].informativeText,
            "To view or change permissions, open the file's properties in your file manager.");

        lockedDocument->setNumberOfPageChanges(1);
        bool passed = false;
        MainQueue::asyncAfter(0.7, [&passed] { passed = true; });
        QTRY_VERIFY(passed);
        QCOMPARE(m_alerts.size(), 1);
    }

private:
    // Every change notification: its name, sender, and the document's total at that moment.
    void record(const FDDocument &document)
    {
        for (const QString &name : { FDDocument::DocumentAnnDidChangeNotification,
                 FDDocument::DocumentPageDidChangeNotification }) {
            NotificationCenter::defaultCenter().addObserver(
                this, name, nullptr, [this, &document](const Notification &notification) {
                    m_records.append(
                        { notification.name, notification.sender, document.numberOfChanges() });
                });
        }
    }

    QString fixture(const QString &name, int pages)
    {
        const QString path = m_dir->filePath(name);
        DocumentFixtures::writeBlankPDF(path, pages);
        return path;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QList<std::tuple<QString, const void *, int>> m_records;
    QList<AlertRequest> m_alerts;
};

QTEST_MAIN(FDDocumentTest)
#include "FDDocumentTest.moc"
