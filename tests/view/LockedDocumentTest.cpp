// A password-protected file in a real view: the password field stands in for the pages, a wrong
// password changes nothing, the right one finishes the load; a saved edit keeps the encryption.

#include "app/support/AppWindow.h"

#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/pdfview/PDFPasswordPanel.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>
#include <view/FDPDFView.h>

#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString UserPassword = QStringLiteral("geheim");
const QString OwnerPassword = QStringLiteral("eigner");

void typeInto(PDFPasswordPanel *panel, const QString &text)
{
    QLineEdit *const field = panel->passwordField();
    field->clear();
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
}

bool saysWrongPassword(const PDFPasswordPanel *panel)
{
    const auto labels = panel->findChildren<QLabel *>();
    return std::any_of(labels.begin(), labels.end(), [](const QLabel *label) {
        return label->isVisible() && label->text().contains(QLatin1String("not correct"));
    });
}

} // namespace

class LockedDocumentTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        AppWindow::reset();
        m_qpdf = TestTools::findTool(QStringLiteral("qpdf"));
        if (m_qpdf.isEmpty())
            QSKIP("qpdf is not installed");
    }
    void cleanup()
    {
        m_view.reset();
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    }

    void passwordFieldUnlocksAndFinishesTheLoad_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<int>("expectedPage");
        QTest::newRow("user password") << UserPassword << QString() << 0;
        QTest::newRow("owner password") << OwnerPassword << QString() << 0;
        // The page a link asked for waits for the password.
        QTest::newRow("page fragment") << UserPassword << QStringLiteral("2") << 2;
    }
    void passwordFieldUnlocksAndFinishesTheLoad()
    {
        QFETCH(QString, password);
        QFETCH(QString, fragment);
        QFETCH(int, expectedPage);
        openLocked(fragment);
        PDFPasswordPanel *const panel = m_view->passwordPanel();
        QVERIFY(panel);
        QTRY_VERIFY(panel->isVisible());
        QVERIFY(
            panel->findChildren<QLabel *>().first()->text().contains(QFileInfo(m_path).fileName()));
        QVERIFY(!m_view->currentPage());

        typeInto(panel, QStringLiteral("wrong"));
        QVERIFY(m_view->document()->isLocked());
        QVERIFY(saysWrongPassword(panel));
        QVERIFY(panel->passwordField()->text().isEmpty());
        QVERIFY(!m_view->currentPage());

        typeInto(panel, password);
        QVERIFY(!m_view->document()->isLocked());
        QTRY_VERIFY(!m_view->passwordPanel());
        QCOMPARE(m_view->document()->pageCount(), 4);
        QTRY_VERIFY(m_view->currentPage());
        QTRY_COMPARE(m_view->document()->indexForPage(m_view->currentPage()), expectedPage);
        QTRY_VERIFY(m_view->isVisibleAreaRendered());
    }

    void savedEditKeepsEncryptionAndPermissions()
    {
        FOLIDOC_REQUIRE_TOOL(pdfinfo, "pdfinfo");
        FOLIDOC_REQUIRE_TOOL(python, "python3");
        openLocked(QString());
        typeInto(m_view->passwordPanel(), UserPassword);
        QVERIFY(!m_view->document()->isLocked());
        const auto page = m_view->document()->pageAtIndex(1);
        QVERIFY(m_view->addAnnotationWithType(
            QStringLiteral("Square"), page, QRectF(100, 100, 80, 60)));
        m_view->fdDocument()->save();
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);

        // Still locked for everyone, with printing still refused.
        QCOMPARE(TestTools::run(m_qpdf, { "--requires-password", m_path }).exitCode, 0);
        const auto info = TestTools::run(pdfinfo, { "-upw", UserPassword, m_path });
        QVERIFY2(info.exitCode == 0, info.err.constData());
        QVERIFY2(QRegularExpression("Pages:\\s+4\\n").match(QString(info.out)).hasMatch(),
            info.out.constData());
        QVERIFY2(
            QRegularExpression("Encrypted:\\s+yes.*print:no").match(QString(info.out)).hasMatch(),
            info.out.constData());
        const char *const script = R"(
import sys, pikepdf
pdf = pikepdf.open(sys.argv[1], password=sys.argv[2])
print(' '.join(str(a.Subtype) for a in pdf.pages[1].obj.get('/Annots', [])))
)";
        const auto annots = TestTools::run(python, { "-c", script, m_path, UserPassword });
        QVERIFY2(annots.out.contains("/Square"), annots.err.constData());
    }

private:
    void openLocked(const QString &fragment)
    {
        static int files = 0;
        const QString plain = m_dir.filePath(QStringLiteral("plain%1.pdf").arg(++files));
        m_path = m_dir.filePath(QStringLiteral("locked%1.pdf").arg(files));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(4, 10, 0), plain));
        QString error;
        QVERIFY2(PdfFixtures::encryptWithQpdf(
                     m_qpdf, plain, m_path, UserPassword, OwnerPassword, false, true, &error),
            qPrintable(error));
        m_view = std::make_unique<FDPDFView>();
        m_view->resize(600, 500);
        QUrl url = QUrl::fromLocalFile(m_path);
        if (!fragment.isEmpty())
            url.setFragment(fragment);
        m_view->loadDocument(url);
        m_view->show();
        QTRY_VERIFY(!m_view->isLoading());
    }

    QTemporaryDir m_dir;
    QString m_path;
    QString m_qpdf;
    std::unique_ptr<FDPDFView> m_view;
};

FOLIDOC_APP_TEST_MAIN(LockedDocumentTest)

#include "LockedDocumentTest.moc"
