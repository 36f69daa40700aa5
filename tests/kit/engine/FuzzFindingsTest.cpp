// Minimised inputs the fuzz targets found faults with: each opens, and saves small and sound.

#include "support/RawPdf.h"
#include <support/TestTools.h>

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QTemporaryDir>
#include <QtTest>

namespace {

// Each page as a reader sees it: its shown size and rotation.
QStringList pagesOf(const PDFDocument &doc)
{
    QStringList pages;
    for (int i = 0; i < doc.pageCount(); ++i) {
        const auto page = doc.pageAtIndex(i);
        const QRectF box = page->boundsForBox(PDFDisplayBox::MediaBox);
        pages.append(
            QStringLiteral("%1x%2@%3").arg(box.width()).arg(box.height()).arg(page->rotation()));
    }
    return pages;
}

// The bytes of a literal that may hold NULs.
template <size_t N> QByteArray bytes(const char (&literal)[N])
{
    return QByteArray(literal, N - 1);
}

} // namespace

class FuzzFindingsTest : public QObject
{
    Q_OBJECT

private slots:
    void savedDocumentReadsBackWithItsPages_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QStringList>("pages");

        // The catalog is itself the only page, and has an empty name for a key: the compact
        // writer ran the name into the next token and the saved file had no pages.
        QTest::newRow("page as catalog, empty key")
            << QByteArray("1 0 obj<</>/Type/Page>>9<</Root 1 0 R>>")
            << QStringList { QStringLiteral("612x792@0") };
        // The tree's root is a page without kids: it was found by the scan, but the saved file
        // kept the empty tree.
        QTest::newRow("lone page as tree root")
            << QByteArray("%PDF-1.7\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj 2 0 obj<</Type/Page"
                          "/MediaBox[0 0 200 300]>>endobj trailer<</Root 1 0 R>>")
            << QStringList { QStringLiteral("200x300@0") };
        QTest::newRow("empty key before a number") << QByteArray(
            "%PDF-1.7\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj 2 0 obj<</Type/Pages"
            "/Kids[3 0 R]/Count 1>>endobj 3 0 obj<</Type/Page/Parent 2 0 R/ 5"
            "/Rotate 90/MediaBox[0 0 200 300]>>endobj trailer<</Root 1 0 R>>")
                                                   << QStringList { QStringLiteral("200x300@90") };
        // A sound-looking file with one object not where the cross-reference says, which the
        // catalog also names: MuPDF repaired it only when the save met that object, and the save
        // wrote the repaired file's tree instead of the pages shown.
        QTest::newRow("damage met only by the save") << QByteArray(
            "%PDF-1.7\n"
            "1 0 obj\n"
            "<</Type/Catalog/Pages 2 0 R/OpenAction[4 0 R/Fit]>>\n"
            "endobj\n"
            "2 0 obj\n"
            "<</Type/Pages/Kids[3 0 R 4 0 R]/Count 2>>\n"
            "endobj\n"
            "3 0 obj\n"
            "<</Type/Page/Parent 2 0 R/MediaBox[0 0 100 100]>>\n"
            "endobj\n"
            "4 0 obj\n"
            "<</Type/Page/Parent 2 0 R/MediaBox[0 0 300 300]>>\n"
            "endobj\n"
            "2 0 obj\n"
            "<</Type/Pages/Kids[4 0 R]/Count 1>>\n"
            "endobj\n"
            "xref\n"
            "0 5\n"
            "0000000000 65535 f \n"
            "0000000009 00000 n \n"
            "0000000076 00000 n \n"
            "0000000133 00000 n \n"
            "0000000201 00000 n \n"
            "trailer\n"
            "<</Size 5/Root 1 0 R>>\n"
            "startxref\n"
            "314\n"
            "%%EOF\n") << QStringList { QStringLiteral("300x300@0") };
        // The same damage in an object the tree walk does not reach (a page's content) under a
        // sound tree: the file opened as it claimed and saved as the repaired file.
        QTest::newRow("damage beyond the tree") << QByteArray(
            "%PDF-1.7\n"
            "1 0 obj\n"
            "<</Type/Catalog/Pages 2 0 R>>\n"
            "endobj\n"
            "2 0 obj\n"
            "<</Type/Pages/Kids[3 0 R]/Count 1>>\n"
            "endobj\n"
            "3 0 obj\n"
            "<</Type/Page/Parent 2 0 R/MediaBox[0 0 100 100]/Contents 4 0 R>>\n"
            "endobj\n"
            "4 0 obj\n"
            "<</Length 0>>stream\n"
            "\n"
            "endstream\n"
            "endobj\n"
            "2 0 obj\n"
            "<</Type/Pages/Kids[5 0 R]/Count 1>>\n"
            "endobj\n"
            "5 0 obj\n"
            "<</Type/Page/Parent 2 0 R/MediaBox[0 0 300 300]>>\n"
            "endobj\n"
            "xref\n"
            "0 6\n"
            "0000000000 65535 f \n"
            "0000000009 00000 n \n"
            "0000000054 00000 n \n"
            "0000000105 00000 n \n"
            "0000000188 00000 n \n"
            "0000000282 00000 n \n"
            "trailer\n"
            "<</Size 6/Root 1 0 R>>\n"
            "startxref\n"
            "347\n"
            "%%EOF\n") << QStringList { QStringLiteral("300x300@0") };
        // Damaged past qpdf's repair, with an object table that names offsets far beyond the
        // file: opening once loaded every object it could find and ran past the fuzzer's time.
        QTest::newRow("broken table, page labels in a damaged catalog") << bytes(
            "%PDF-1.7\n"
            "%\xe2\xe3\xcf\xd3\n"
            "1 0 obj\n"
            "<< /Type \x00\x00\x00\x00\x00\x00\x00"
            "D/Catalog /PsgeageLabels << /Nums [0 << /S"
            " /r >iaBox [0 0 612 792] /Rotate 90 /Resources << /Font << /F1 3 0 R >> >> /Conte"
            "nts 14 0 R >>\n"
            "endobj\n"
            "7 0 obj\n"
            "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Rotate 180 /Resources << /F"
            "ont << /F1 3 0 R >> >> /Contents 15 0 R >>\n"
            "endtents 10 0 R /Altern [11 0 R 12 0 R] >>\n"
            "endobj\n"
            "5 0 obj\n"
            "<< /Type /Page /Pare20 590 780] /Resources << /Font << /F /MediaBox [0 5 612 792}"
            " /RotateSemibold 180 /Resourcjs << /Font << /F1 3 0 R >> >> /C00000 n \n"
            "0000002017 00000 n \n"
            "00000\xd9\xcd/Count000 n \n"
            "0000002496 00000 n \n"
            "0000002630 00000 n \n"
            "0000010816 00000 n \n"
            "0000002824110 0 obj\n"
            "<<  /002991 00000 n \n"
            "00000/Size 00000 n \n"
            "0000006502 00000 n \n"
            "80000033/Image49 00000 n \n"
            "0000003251 n \n"
            "trialer\n"
            "<< /Size 27 /Root 1 0 R >>\n"
            "startxref\n"
            "3551\n"
            "%%EOF\n") << QStringList { QStringLiteral("612x792@180") };
        // A broken page whose array MuPDF's rescan reads on into the next page, and a header
        // ("obju") that passed for "obj": the repair came only when the save reached it, lost
        // the page shown and wrote the old tree of pages it no longer had.
        QTest::newRow("page lost by the repair's rescan")
            << RawPdf::pageLostByRescan() << QStringList { QStringLiteral("290x300@90") };
    }

    void savedDocumentReadsBackWithItsPages()
    {
        QFETCH(QByteArray, input);
        QFETCH(QStringList, pages);
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY2(doc->initWithData(input), qPrintable(doc->errorString()));
        QCOMPARE(pagesOf(*doc), pages);

        const QByteArray saved = doc->dataRepresentation();
        QVERIFY2(!saved.isEmpty(), qPrintable(doc->errorString()));
        // Object numbers the damaged file names but does not use cost nothing in the saved file.
        QVERIFY2(saved.size() < 64 * 1024 + 16 * input.size(),
            qPrintable(QString::number(saved.size())));
        auto again = std::make_shared<PDFDocument>();
        QVERIFY2(again->initWithData(saved), qPrintable(again->errorString()));
        QCOMPARE(pagesOf(*again), pages);

        const QString qpdf = TestTools::findTool(QStringLiteral("qpdf"));
        if (qpdf.isEmpty())
            QSKIP("checking tool 'qpdf' is not installed");
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("saved.pdf"));
        QVERIFY(RawPdf::writeFile(path, saved));
        const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), path });
        QVERIFY2(check.exitCode == 0, check.out.right(400) + check.err.right(400));
    }
};

QTEST_MAIN(FuzzFindingsTest)
#include "FuzzFindingsTest.moc"
