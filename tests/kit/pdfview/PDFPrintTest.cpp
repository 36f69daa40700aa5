// Printing through "Print to File" and the print queue, the printed PDF read back with poppler:
// pages, sizes, rotations and text kept, annotations only when asked, and the dialog's choices.

#include "support/FixtureDocuments.h"

#include "support/PdfFixtures.h"
#include "support/TestTools.h"

#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/pdfview/PDFPrintJob.h>
#include <kit/pdfview/PDFView.h>

#include <QFileInfo>
#include <QImage>
#include <QPageRanges>
#include <QPrinter>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

// A red square annotation with the print flag over (100, 100)-(200, 200) of the first page, below
// the text of the fixtures.
PdfFixtures::Document annotated(PdfFixtures::Document document)
{
    document.pages[0].annotations.append(
        { "/Subtype /Square /Rect [100 100 200 200] /C [1 0 0] /F 4", "1 0 0 rg 0 0 100 100 re f",
            QRectF(0, 0, 100, 100) });
    return document;
}

// "Page N size: ..." and "Page N rot: ..." of every page, as poppler reads them.
QStringList pageShapes(const QString &pdfinfo, const QString &path)
{
    const auto result = TestTools::run(pdfinfo, { "-f", "1", "-l", "9999", path });
    QStringList shapes;
    for (const QString &line : QString::fromUtf8(result.out).split('\n')) {
        if (line.startsWith(QStringLiteral("Page ")) && !line.startsWith(QStringLiteral("Pages")))
            shapes << line.simplified();
    }
    return shapes;
}

QString text(const QString &pdftotext, const QString &path)
{
    return QString::fromUtf8(TestTools::run(pdftotext, { "-layout", path, "-" }).out);
}

// The colour at a point of the first page (PDF user space of a 612 × 792 page) at 36 dpi.
QColor colourAt(const QString &pdftoppm, const QString &path, const QPointF &point)
{
    const QString prefix = path + QStringLiteral(".render");
    TestTools::run(
        pdftoppm, { "-r", "36", "-f", "1", "-l", "1", "-singlefile", "-png", path, prefix });
    const QImage image(prefix + QStringLiteral(".png"));
    if (image.isNull())
        return {};
    return image.pixelColor(QPointF(point.x() / 2, (792 - point.y()) / 2).toPoint());
}

} // namespace

class PDFPrintTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    std::shared_ptr<PDFDocument> open(const PdfFixtures::Document &fixture, const QString &name)
    {
        return FixtureDocuments::open(m_dir, fixture, name);
    }

    // Prints as "Print to File" does after the dialog; setUp changes what the person chose.
    bool printToFile(const std::shared_ptr<PDFDocument> &document, const QString &path,
        const std::function<void(QPrinter &)> &setUp = {}, QString *error = nullptr)
    {
        PDFView view;
        view.setDocument(document);
        QPrinter printer(QPrinter::HighResolution);
        view.preparePrintInfo(printer);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(path);
        if (setUp)
            setUp(printer);
        const bool printed = view.printToPrinter(printer, true);
        if (error)
            *error = view.printErrorString();
        return printed;
    }

private slots:
    void keepsTheDocument_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("withAnnotations");
        QTest::newRow("cropped and rotated pages, annotated") << "standard" << true;
        QTest::newRow("long text, without annotations") << "text" << false;
    }
    void keepsTheDocument()
    {
        QFETCH(QString, kind);
        QFETCH(bool, withAnnotations);
        FOLIDOC_REQUIRE_TOOL(pdfinfo, "pdfinfo");
        FOLIDOC_REQUIRE_TOOL(pdftotext, "pdftotext");
        FOLIDOC_REQUIRE_TOOL(pdftoppm, "pdftoppm");
        const PdfFixtures::Document fixture = annotated(
            kind == "standard" ? PdfFixtures::standard() : PdfFixtures::textPages(150, 30));
        const auto document = open(fixture, kind + ".pdf");
        QVERIFY(document);
        // What the print commands do to their copy of the document.
        for (int index = 0; index < document->pageCount(); ++index) {
            for (const auto &annotation : document->pageAtIndex(index)->annotations()) {
                annotation->setShouldDisplay(withAnnotations);
                annotation->setShouldPrint(withAnnotations);
            }
        }
        const QString in = m_dir.filePath(kind + ".pdf");
        const QString out
            = m_dir.filePath(QStringLiteral("%1-%2.out.pdf").arg(kind).arg(withAnnotations));
        QString error;
        QVERIFY2(printToFile(document, out, {}, &error), qPrintable(error));

        const QStringList shapes = pageShapes(pdfinfo, in);
        QCOMPARE(shapes.size(), 2 * document->pageCount());
        QCOMPARE(pageShapes(pdfinfo, out), shapes);
        QCOMPARE(text(pdftotext, out), text(pdftotext, in));

        const QColor square = colourAt(pdftoppm, out, QPointF(150, 150));
        QVERIFY(square.isValid());
        if (withAnnotations)
            QVERIFY2(square.red() > 200 && square.green() < 60, qPrintable(square.name()));
        else
            QVERIFY2(square.green() > 200, qPrintable(square.name()));

        // Text stays text: the print is the size of the file, not of pictures of its pages.
        if (kind == "text")
            QVERIFY2(QFileInfo(out).size() <= QFileInfo(in).size() * 3 / 2,
                qPrintable(QString::number(QFileInfo(out).size())));
    }

    void annotationsInFontsThatCannotBeCarriedPrintAsPictures()
    {
        FOLIDOC_REQUIRE_TOOL(python, "python3");
        FOLIDOC_REQUIRE_TOOL(pdftotext, "pdftotext");
        FOLIDOC_REQUIRE_TOOL(pdftoppm, "pdftoppm");
        // A square annotation whose appearance is red text in a Type 3 font of square glyphs.
        const QString in = m_dir.filePath(QStringLiteral("type3.pdf"));
        const auto made = TestTools::run(python,
            { "-c", QStringLiteral(R"(import pikepdf, sys
from pikepdf import Name as N, Dictionary as D, Array as A
pdf = pikepdf.new()
page = pdf.add_blank_page(page_size=(612, 792))
helv = pdf.make_indirect(D(Type=N.Font, Subtype=N.Type1, BaseFont=N.Helvetica))
page.obj.Resources = D(Font=D(F1=helv))
page.obj.Contents = pdf.make_stream(b"BT /F1 24 Tf 72 700 Td (Body text) Tj ET")
glyph = pdf.make_stream(b"1000 0 0 0 1000 1000 d1 0 0 1000 1000 re f")
t3 = pdf.make_indirect(D(Type=N.Font, Subtype=N.Type3, FontBBox=A([0, 0, 1000, 1000]),
    FontMatrix=A([0.001, 0, 0, 0.001, 0, 0]), CharProcs=D(sq=glyph), FirstChar=65, LastChar=65,
    Encoding=D(Type=N.Encoding, Differences=A([65, N.sq])), Widths=A([1000]), Resources=D()))
ap = pdf.make_stream(b"1 0 0 rg BT /T3 50 Tf 0 0 Td (AA) Tj ET", Type=N.XObject, Subtype=N.Form,
    BBox=A([0, 0, 100, 100]), Resources=D(Font=D(T3=t3)))
page.obj.Annots = A([pdf.make_indirect(D(Type=N.Annot, Subtype=N.Square, F=4,
    Rect=A([100, 100, 200, 200]), AP=D(N=ap)))])
pdf.save(sys.argv[1]))"),
                in });
        if (made.exitCode != 0)
            QSKIP("pikepdf could not write the document");
        auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(in)));
        const QString out = m_dir.filePath(QStringLiteral("type3.out.pdf"));
        QString error;
        QVERIFY2(printToFile(document, out, {}, &error), qPrintable(error));
        const QColor square = colourAt(pdftoppm, out, QPointF(150, 125));
        QVERIFY2(square.red() > 200 && square.green() < 60, qPrintable(square.name()));
        QCOMPARE(text(pdftotext, out).trimmed(), QStringLiteral("Body text"));
    }

    void printsTheChosenPagesInOrder_data()
    {
        QTest::addColumn<QString>("ranges");
        QTest::addColumn<bool>("lastFirst");
        QTest::addColumn<QList<int>>("pages");
        QTest::newRow("all") << "" << false << QList<int> { 1, 2, 3, 4, 5, 6 };
        QTest::newRow("one range") << "2-3" << false << QList<int> { 2, 3 };
        QTest::newRow("several ranges") << "1,4-5" << false << QList<int> { 1, 4, 5 };
        QTest::newRow("range past the end") << "5-40" << false << QList<int> { 5, 6 };
        QTest::newRow("last page first") << "2-4" << true << QList<int> { 4, 3, 2 };
    }
    void printsTheChosenPagesInOrder()
    {
        QFETCH(QString, ranges);
        QFETCH(bool, lastFirst);
        QFETCH(QList<int>, pages);
        FOLIDOC_REQUIRE_TOOL(pdftotext, "pdftotext");
        const auto document = open(PdfFixtures::textPages(6, 3, 0), QStringLiteral("six.pdf"));
        QVERIFY(document);
        const QString out = m_dir.filePath(QStringLiteral("range.pdf"));
        QVERIFY(printToFile(document, out, [&](QPrinter &printer) {
            if (!ranges.isEmpty()) {
                printer.setPrintRange(QPrinter::PageRange);
                printer.setPageRanges(QPageRanges::fromString(ranges));
            }
            printer.setPageOrder(lastFirst ? QPrinter::LastPageFirst : QPrinter::FirstPageFirst);
        }));
        QList<int> printed;
        const QRegularExpression first(QStringLiteral("Page (\\d+) line 1\\b"));
        for (const QString &page : text(pdftotext, out).split('\f', Qt::SkipEmptyParts)) {
            const auto match = first.match(page);
            if (match.hasMatch())
                printed << match.captured(1).toInt();
        }
        QCOMPARE(printed, pages);
    }

    void choosingAPaperLaysEveryPageOnIt()
    {
        FOLIDOC_REQUIRE_TOOL(pdfinfo, "pdfinfo");
        FOLIDOC_REQUIRE_TOOL(pdftotext, "pdftotext");
        const auto document = open(PdfFixtures::standard(), QStringLiteral("standard.pdf"));
        QVERIFY(document);
        const QString out = m_dir.filePath(QStringLiteral("a5.pdf"));
        QVERIFY(printToFile(document, out, [](QPrinter &printer) {
            printer.setPageLayout(
                QPageLayout(QPageSize(QPageSize::A5), QPageLayout::Portrait, QMarginsF()));
        }));
        const QStringList shapes = pageShapes(pdfinfo, out);
        QCOMPARE(shapes.size(), 12);
        for (const QString &shape : shapes) {
            if (shape.contains(QStringLiteral(" size: ")))
                QVERIFY2(shape.contains(QStringLiteral("420 x 595")), qPrintable(shape));
            else
                QVERIFY2(shape.endsWith(QStringLiteral("rot: 0")), qPrintable(shape));
        }
        const QString printed = text(pdftotext, out);
        for (const char *words : { "Rotated ninety degrees", "Rotated three quarters",
                 "Cropped page text", "Picture page" })
            QVERIFY2(printed.contains(QLatin1String(words)), words);
    }

    void printToFileWritesWhereTheDialogSays_data()
    {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<bool>("written");
        QTest::newRow("a new file") << "out/printed.pdf" << true;
        QTest::newRow("a folder that is missing") << "missing/printed.pdf" << false;
    }
    void printToFileWritesWhereTheDialogSays()
    {
        QFETCH(QString, relative);
        QFETCH(bool, written);
        QVERIFY(QDir(m_dir.path()).mkpath(QStringLiteral("out")));
        const auto document = open(PdfFixtures::standard(), QStringLiteral("Report v1.2.pdf"));
        QVERIFY(document);
        const QString path = m_dir.filePath(relative);
        QString name, error;
        const auto named = [&name](QPrinter &printer) { name = printer.docName(); };
        QCOMPARE(printToFile(document, path, named, &error), written);
        // The dialog suggests the document's own name for the file.
        QCOMPARE(name, QStringLiteral("Report v1.2.pdf"));
        QCOMPARE(QFileInfo::exists(path), written);
        if (written) {
            PDFDocument printed;
            QVERIFY(printed.initWithURL(QUrl::fromLocalFile(path)));
            QCOMPARE(printed.pageCount(), document->pageCount());
        } else {
            QVERIFY2(error.contains(path), qPrintable(error));
        }
    }

    void theQueueGetsTheDialogsChoices_data()
    {
        QTest::addColumn<int>("copies");
        QTest::addColumn<int>("duplex");
        QTest::addColumn<bool>("grey");
        QTest::addColumn<QSizeF>("paper");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QStringList>("absent");
        QTest::newRow("one copy, own paper") << 1 << int(QPrinter::DuplexNone) << false << QSizeF()
                                             << QStringList { "sides=one-sided" }
                                             << QStringList { "-n", "print-color-mode=monochrome" };
        QTest::newRow("three collated copies, both sides")
            << 3 << int(QPrinter::DuplexLongSide) << false << QSizeF()
            << QStringList { "-n", "3", "collate=true", "sides=two-sided-long-edge" }
            << QStringList {};
        QTest::newRow("A4 landscape in grey, short side")
            << 1 << int(QPrinter::DuplexShortSide) << true << QSizeF(842, 595)
            << QStringList { "media=A4", "print-color-mode=monochrome",
                   "sides=two-sided-short-edge" }
            << QStringList {};
        QTest::newRow("a paper of no standard size")
            << 1 << int(QPrinter::DuplexNone) << false << QSizeF(300, 500)
            << QStringList { "media=Custom.300x500pt" } << QStringList {};
    }
    void theQueueGetsTheDialogsChoices()
    {
        QFETCH(int, copies);
        QFETCH(int, duplex);
        QFETCH(bool, grey);
        QFETCH(QSizeF, paper);
        QFETCH(QStringList, expected);
        QFETCH(QStringList, absent);
        PDFPrintJob::Choices choices;
        choices.copies = copies;
        choices.duplex = QPrinter::DuplexMode(duplex);
        choices.grey = grey;
        choices.paper = paper;
        const QStringList arguments = PDFPrintJob(choices, QStringLiteral("Report")).lpArguments();
        for (const QString &argument : expected)
            QVERIFY2(arguments.contains(argument), qPrintable(arguments.join(' ')));
        for (const QString &argument : absent)
            QVERIFY2(!arguments.contains(argument), qPrintable(arguments.join(' ')));
        QCOMPARE(arguments.mid(arguments.indexOf("-t"), 2), QStringList({ "-t", "Report" }));
    }
};

QTEST_MAIN(PDFPrintTest)
#include "PDFPrintTest.moc"
