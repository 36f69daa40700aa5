// Lying or damaged files open with what they really hold, in bounded time, and save soundly.

#include "support/RawPdf.h"
#include <support/PdfFixtures.h>
#include <support/TestTools.h>

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFDocumentPrefetch.h>
#include <kit/engine/PDFPage.h>

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using Objects = QList<QByteArray>;

const QByteArray Catalog = "<< /Type /Catalog /Pages 2 0 R >>";

QStringList words(const PDFDocument &doc)
{
    QStringList list;
    for (int i = 0; i < doc.pageCount(); ++i)
        list.append(doc.pageAtIndex(i)->string().trimmed());
    return list;
}

// Three pages "One", "Two", "Three" under one node; padded so that its sections and those of two
// small updates all lie at four-digit offsets.
QByteArray threePages()
{
    return RawPdf::build(
        { Catalog, "<< /Type /Pages /Kids [3 0 R 5 0 R 7 0 R] /Count 3 >>", RawPdf::page(2, 4),
            RawPdf::textContent("One"), RawPdf::page(2, 6), RawPdf::textContent("Two"),
            RawPdf::page(2, 8), RawPdf::textContent("Three"), "(" + QByteArray(300, 'x') + ")" });
}

QString fileNameFor(const char *tag)
{
    QString name = QString::fromLatin1(tag);
    for (QChar &c : name)
        if (!c.isLetterOrNumber())
            c = u'-';
    return name + ".pdf";
}

int qpdfPageCount(const QString &qpdf, const QString &path)
{
    const auto result = TestTools::run(qpdf, { QStringLiteral("--show-npages"), path });
    return result.exitCode == 0 || result.exitCode == 3 ? result.out.trimmed().toInt() : -1;
}

// What qpdf, else pdfinfo, counts; -1 when neither reads the file.
int independentPageCount(const QString &qpdf, const QString &path)
{
    const int count = qpdfPageCount(qpdf, path);
    const QString pdfinfo = TestTools::findTool(QStringLiteral("pdfinfo"));
    if (count >= 0 || pdfinfo.isEmpty())
        return count;
    const auto result = TestTools::run(pdfinfo, { path });
    for (const QByteArray &line : result.out.split('\n'))
        if (line.startsWith("Pages:"))
            return line.mid(6).trimmed().toInt();
    return -1;
}

// One page whose object carries the given number, in a sound file: the table has a section for
// objects 0-2 and one for that number alone.
QByteArray pageNumbered(int number)
{
    const QList<QByteArray> objects { Catalog,
        "<< /Type /Pages /Kids [" + QByteArray::number(number) + " 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 300] >>" };
    QByteArray pdf = "%PDF-1.7\n";
    QList<qsizetype> offsets;
    for (int i = 0; i < objects.size(); ++i) {
        offsets.append(pdf.size());
        pdf += QByteArray::number(i < 2 ? i + 1 : number) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const qsizetype table = pdf.size();
    const auto entry = [](qsizetype offset) {
        return QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n";
    };
    pdf += "xref\n0 3\n0000000000 65535 f \n" + entry(offsets[0]) + entry(offsets[1]);
    pdf += QByteArray::number(number) + " 1\n" + entry(offsets[2]);
    pdf += "trailer\n<< /Size " + QByteArray::number(number + 1) + " /Root 1 0 R >>\nstartxref\n"
        + QByteArray::number(table) + "\n%%EOF\n";
    return pdf;
}

// A sound-looking table whose second object is three bytes off, and past the objects it lists
// one more, numbered 8000000: MuPDF meets the damage, and the number, only when it repairs.
QByteArray misplacedBesideHighNumber()
{
    QByteArray pdf = RawPdf::build({ Catalog, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 300] >>" });
    const qint64 table = RawPdf::lastXrefOffset(pdf);
    const QByteArray extra = "8000000 0 obj\nnull\nendobj\n";
    pdf.insert(table, extra);
    const qsizetype start = pdf.lastIndexOf("startxref\n") + 10;
    pdf.replace(start, pdf.indexOf('\n', start) - start, QByteArray::number(table + extra.size()));
    const qsizetype second = pdf.indexOf(" 00000 n \n", table) + 20 - 10;
    pdf.replace(second, 10,
        QByteArray::number(pdf.mid(second, 10).toLongLong() + 3).rightJustified(10, '0'));
    return pdf;
}
} // namespace

class HostileDocumentTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    // The rows with save set are also saved, and must pass qpdf's check with the same pages.
    void opensWhatTheTreeReallyHolds_data()
    {
        QTest::addColumn<Objects>("objects");
        QTest::addColumn<QStringList>("pages");
        QTest::addColumn<QString>("firstLabel");
        QTest::addColumn<bool>("save");
        const QByteArray page = RawPdf::page(2, 4);
        const QByteArray hello = RawPdf::textContent("Hello");
        const QStringList justHello { "Hello" };
        QTest::newRow("root claims a negative count")
            << Objects { Catalog, "<< /Type /Pages /Kids [3 0 R] /Count -7 >>", page, hello }
            << justHello << "1" << false;
        QTest::newRow("inner node claims 2,147,483,647 pages") << Objects {
            Catalog, "<< /Type /Pages /Kids [3 0 R 6 0 R] /Count 2 >>",
            "<< /Type /Pages /Parent 2 0 R /Kids [4 0 R] /Count 2147483647 >>", RawPdf::page(3, 5),
            RawPdf::textContent("One"), RawPdf::page(2, 7), RawPdf::textContent("Two")
        } << QStringList { "One", "Two" } << "1" << false;
        QTest::newRow("inner node is its own kid, twice")
            << Objects { Catalog, "<< /Type /Pages /Kids [5 0 R] /Count 1 >>", RawPdf::page(5, 4),
                   hello, "<< /Type /Pages /Parent 2 0 R /Kids [3 0 R 5 0 R 5 0 R] /Count 3 >>" }
            << justHello << "1" << false;
        QTest::newRow("page labels count from two billion")
            << Objects { "<< /Type /Catalog /Pages 2 0 R /PageLabels << /Nums [0 << /S /a /St "
                         "2000000000 >>] >> >>",
                   "<< /Type /Pages /Kids [3 0 R] /Count 1 >>", page, hello }
            << justHello << "2000000000" << false;
        QTest::newRow("page label tree loops")
            << Objects { "<< /Type /Catalog /Pages 2 0 R /PageLabels 5 0 R >>",
                   "<< /Type /Pages /Kids [3 0 R] /Count 1 >>", page, hello,
                   "<< /Kids [5 0 R 5 0 R] /Nums [0 << /S /R >>] >>" }
            << justHello << "I" << false;
        QTest::newRow("root claims 9,999,999,999 pages") << Objects { Catalog,
            "<< /Type /Pages /Kids [3 0 R] /Count 9999999999 >>", page, hello }
                                                         << justHello << "1" << true;
        QTest::newRow("kids loop back to the root")
            << Objects { Catalog, "<< /Type /Pages /Kids [3 0 R 2 0 R] /Count 2 >>", page, hello }
            << justHello << "1" << true;
        const QByteArray withOutline = "<< /Type /Catalog /Pages 2 0 R /Outlines 5 0 R >>";
        const QByteArray pages = "<< /Type /Pages /Kids [3 0 R] /Count 1 >>";
        const QByteArray outlines = "<< /Type /Outlines /First 6 0 R /Last 6 0 R /Count 1 >>";
        QTest::newRow("outline item is its own next") << Objects { withOutline, pages, page, hello,
            outlines, "<< /Title (A) /Parent 5 0 R /Next 6 0 R /Dest [3 0 R /Fit] >>" }
                                                      << justHello << "1" << true;
        QTest::newRow("outline item is its own child") << Objects { withOutline, pages, page, hello,
            outlines,
            "<< /Title (A) /Parent 5 0 R /First 6 0 R /Last 6 0 R /Count 1 /Dest [3 0 R "
            "/Fit] >>" } << justHello << "1" << true;
    }

    void opensWhatTheTreeReallyHolds()
    {
        QFETCH(Objects, objects);
        QFETCH(QStringList, pages);
        QFETCH(QString, firstLabel);
        QFETCH(bool, save);
        QElapsedTimer clock;
        clock.start();
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY2(doc->initWithData(RawPdf::build(objects)), qPrintable(doc->errorString()));
        QCOMPARE(words(*doc), pages);
        QCOMPARE(doc->pageAtIndex(0)->label(), firstLabel);
        QVERIFY2(clock.elapsed() < 5000, "opening took too long");
        if (!save)
            return;
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        // Saved as opened, before any page is asked for.
        auto fresh = std::make_shared<PDFDocument>();
        QVERIFY(fresh->initWithData(RawPdf::build(objects)));
        const QString path = dir.filePath(fileNameFor(QTest::currentDataTag()));
        QVERIFY2(fresh->writeToURL(QUrl::fromLocalFile(path)), qPrintable(fresh->errorString()));
        const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), path });
        QVERIFY2(check.exitCode == 0, check.out.right(400) + check.err.right(400));
        QCOMPARE(qpdfPageCount(qpdf, path), pages.size());
        auto again = std::make_shared<PDFDocument>();
        QVERIFY(again->initWithURL(QUrl::fromLocalFile(path)));
        QCOMPARE(words(*again), pages);
    }

    void damagedFilesOpenLikeOtherReaders_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray base = threePages();
        const qint64 first = RawPdf::lastXrefOffset(base);
        QTest::newRow("/Prev names its own section") << RawPdf::withUpdate(base, -1);
        // Two updates whose /Prev entries name each other.
        const QByteArray once = RawPdf::withUpdate(base, first);
        const qint64 second = RawPdf::lastXrefOffset(once);
        QByteArray twice = RawPdf::withUpdate(once, second);
        const QByteArray from = "/Prev " + QByteArray::number(first) + " >>";
        const QByteArray to = "/Prev " + QByteArray::number(RawPdf::lastXrefOffset(twice)) + " >>";
        QCOMPARE(from.size(), to.size());
        twice.replace(twice.indexOf(from), from.size(), to);
        QTest::newRow("/Prev chain loops through two sections") << twice;
        // Every offset points a few bytes past its object.
        QByteArray shifted = base;
        for (qsizetype at = shifted.indexOf(" 00000 n \n"); at >= 0;
             at = shifted.indexOf(" 00000 n \n", at + 1)) {
            const qint64 offset = shifted.mid(at - 10, 10).toLongLong() + 3;
            shifted.replace(at - 10, 10, QByteArray::number(offset).rightJustified(10, '0'));
        }
        QTest::newRow("offsets off by three") << shifted;
        QTest::newRow("cut short") << PdfFixtures::truncated(base, 0.8);
        const QString qpdf = TestTools::findTool(QStringLiteral("qpdf"));
        if (qpdf.isEmpty())
            return;
        // Linearized by qpdf, then its cross-reference entries broken.
        const QString in = dir.filePath(QStringLiteral("twelve.pdf"));
        const QString out = dir.filePath(QStringLiteral("twelve-linear.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(12, 4, 0), in));
        QVERIFY(TestTools::run(qpdf, { QStringLiteral("--linearize"), in, out }).exitCode == 0);
        QFile file(out);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray linear = file.readAll();
        const auto breakEntries = [](QByteArray bytes, qsizetype section, int offset) {
            const qsizetype start = bytes.indexOf('\n', bytes.indexOf('\n', section) + 1) + 1;
            for (qsizetype at = start; bytes.mid(at + 17, 3) == " n "; at += 20)
                bytes.replace(at, 10, QByteArray::number(offset + at % 97).rightJustified(10, '0'));
            return bytes;
        };
        const qsizetype firstSection = linear.indexOf("\nxref\n") + 1;
        const qsizetype mainSection = linear.lastIndexOf("\nxref\n") + 1;
        QTest::newRow("linearized, first-page entries broken")
            << breakEntries(linear, firstSection, 900000);
        QTest::newRow("linearized, main entries broken") << breakEntries(linear, mainSection, 7);
        QTest::newRow("linearized, all entries broken")
            << breakEntries(breakEntries(linear, firstSection, 900000), mainSection, 7);
    }

    void damagedFilesOpenLikeOtherReaders()
    {
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        QFETCH(QByteArray, bytes);
        const QString path = written(bytes);
        QVERIFY(!path.isEmpty());
        const int expected = independentPageCount(qpdf, path);
        auto doc = std::make_shared<PDFDocument>();
        const bool opened = doc->initWithURL(QUrl::fromLocalFile(path));
        // What other readers refuse may be refused, with a message, or opened as well.
        if (expected > 0) {
            QVERIFY2(opened, qPrintable(doc->errorString()));
            QCOMPARE(doc->pageCount(), expected);
        } else if (!opened) {
            QVERIFY(!doc->errorString().isEmpty());
            return;
        }
        QVERIFY(!doc->pageAtIndex(0)->string().trimmed().isEmpty());
        const QString saved = path + ".saved.pdf";
        QVERIFY2(doc->writeToURL(QUrl::fromLocalFile(saved)), qPrintable(doc->errorString()));
        QCOMPARE(TestTools::run(qpdf, { QStringLiteral("--check"), saved }).exitCode, 0);
        QCOMPARE(qpdfPageCount(qpdf, saved), doc->pageCount());
    }

    // A tiny file naming one object near MuPDF's highest number took 350 MB to open: refused.
    void objectNumbersFarBeyondTheFileAreRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("opens");
        QTest::newRow("sound, object 8000000") << pageNumbered(8000000) << false;
        QTest::newRow("damaged, object 8000000")
            << PdfFixtures::withoutXref(pageNumbered(8000000)) << false;
        QTest::newRow("misplaced object, object 8000000 met by the repair")
            << misplacedBesideHighNumber() << false;
        QTest::newRow("sound, object 100000") << pageNumbered(100000) << true;
        QTest::newRow("damaged, object 100000")
            << PdfFixtures::withoutXref(pageNumbered(100000)) << true;
    }

    void objectNumbersFarBeyondTheFileAreRefused()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, opens);
        const QString path = written(bytes);
        QVERIFY(!path.isEmpty());
        const auto check = [&](PDFDocument &doc, bool opened) {
            if (opens) {
                QVERIFY2(opened, qPrintable(doc.errorString()));
                QCOMPARE(doc.pageCount(), 1);
                QCOMPARE(doc.pageAtIndex(0)->boundsForBox(PDFDisplayBox::MediaBox).height(), 300);
            } else {
                QVERIFY(!opened);
                QVERIFY2(doc.errorString().contains(u"numbered far beyond"),
                    qPrintable(doc.errorString()));
            }
        };
        auto fromData = std::make_shared<PDFDocument>();
        check(*fromData, fromData->initWithData(bytes));
        auto fromFile = std::make_shared<PDFDocument>();
        check(*fromFile, fromFile->initWithURL(QUrl::fromLocalFile(path)));
        // As at start-up, when the file is read ahead on another thread, which meets the
        // damage as it reads the first page when the window takes its time.
        const PDFDocumentPrefetch prefetch(path);
        bool read = false;
        if (PDFDocumentPrefetch::notifyWhenRead(path, this, [&read] { read = true; }))
            QTRY_VERIFY(read);
        auto readAhead = std::make_shared<PDFDocument>();
        check(*readAhead, readAhead->initWithURL(QUrl::fromLocalFile(path)));
    }

    void passwordsArePreparedBeforeTrying_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("opens");
        QTest::newRow("ligature") << "finance" << QString::fromUtf8("\uFB01nance") << true;
        QTest::newRow("full-width letters") << "pass" << QString::fromUtf8("ｐａｓｓ") << true;
        QTest::newRow("no-break space")
            << "open sesame" << QString::fromUtf8("open\u00A0sesame") << true;
        QTest::newRow("soft hyphen") << "password" << QString::fromUtf8("pass\u00ADword") << true;
        QTest::newRow("decomposed accent")
            << QString::fromUtf8("M\u00FCller") << QString::fromUtf8("Mu\u0308ller") << true;
        QTest::newRow("typed as stored") << "plain" << QString("plain") << true;
        QTest::newRow("wrong password") << "finance" << QString("fiance") << false;
    }

    void passwordsArePreparedBeforeTrying()
    {
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        QFETCH(QString, stored);
        QFETCH(QString, typed);
        QFETCH(bool, opens);
        const QString plain = dir.filePath(QStringLiteral("plain.pdf"));
        const QString locked = dir.filePath(QStringLiteral("locked.pdf"));
        QVERIFY(PdfFixtures::write(PdfFixtures::textPages(1, 2, 0), plain));
        QString error;
        QVERIFY2(PdfFixtures::encryptWithQpdf(qpdf, plain, locked, stored,
                     QStringLiteral("owner-secret"), true, true, &error),
            qPrintable(error));
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->initWithURL(QUrl::fromLocalFile(locked)));
        QVERIFY(doc->isLocked());
        QCOMPARE(doc->unlockWithPassword(typed), opens);
        QCOMPARE(doc->pageCount(), opens ? 1 : 0);
    }

private:
    // The bytes in a file named after the data row; empty if they could not be written.
    QString written(const QByteArray &bytes)
    {
        const QString path = dir.filePath(fileNameFor(QTest::currentDataTag()));
        return RawPdf::writeFile(path, bytes) ? path : QString();
    }

    QTemporaryDir dir;
};

QTEST_MAIN(HostileDocumentTest)
#include "HostileDocumentTest.moc"
