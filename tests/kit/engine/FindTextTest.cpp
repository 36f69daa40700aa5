// The find over text as real writers put it on pages, searched as a user types the word.

#include "support/FindRecorder.h"
#include "support/RawPdf.h"

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>
#include <kit/engine/PDFSelection.h>
#include <support/PdfFixtures.h>

#include <QFontDatabase>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

namespace {

// Draws each line in the font family, one under the other, on one A4 page.
bool writeLines(const QString &path, const QString &family, const QStringList &lines)
{
    QPdfWriter writer(path);
    writer.setResolution(72);
    QPainter painter;
    if (!painter.begin(&writer))
        return false;
    QFont font(family);
    font.setPixelSize(14);
    painter.setFont(font);
    int y = 80;
    for (const QString &line : lines) {
        painter.drawText(QPoint(72, y), line);
        y += 22;
    }
    return painter.end();
}

// One line of two-byte codes in a composite font (Identity-H) whose text comes from toUnicode: a
// ToUnicode stream's body, which uses the map named uses when there is one, or a map's name.
QByteArray compositeFontPage(
    const QByteArray &toUnicode, const QByteArray &uses, const QByteArray &codes)
{
    const bool named = toUnicode.startsWith('/');
    QList<QByteArray> objects { "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Resources << /Font << /F1 5 0 R "
        ">> >> /Contents 4 0 R >>",
        RawPdf::stream({}, "BT /F1 24 Tf 72 700 Td <" + codes + "> Tj ET"),
        "<< /Type /Font /Subtype /Type0 /BaseFont /Composite /Encoding /Identity-H "
        "/DescendantFonts [6 0 R] /ToUnicode "
            + (named ? toUnicode : QByteArray("8 0 R")) + " >>",
        "<< /Type /Font /Subtype /CIDFontType2 /BaseFont /Composite /CIDSystemInfo << /Registry "
        "(Adobe) /Ordering (Identity) /Supplement 0 >> /CIDToGIDMap /Identity /DW 600 "
        "/FontDescriptor 7 0 R >>",
        "<< /Type /FontDescriptor /FontName /Composite /Flags 32 /FontBBox [0 -200 1000 900] "
        "/ItalicAngle 0 /Ascent 800 /Descent -200 /CapHeight 700 /StemV 80 >>" };
    if (!named) {
        const QByteArray map = "/CIDInit /ProcSet findresource begin 12 dict begin begincmap\n"
                               "/CMapName /Own def\n"
            + toUnicode + "\nendcmap CMapName currentdict /CMap defineresource pop end end";
        objects.append(RawPdf::stream(uses.isEmpty() ? QByteArray() : "/UseCMap " + uses, map));
    }
    return RawPdf::build(objects);
}

} // namespace

class FindTextTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void wordsAreFoundAsTyped_data()
    {
        QTest::addColumn<QString>("family");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("word");
        QTest::addColumn<QStringList>("hits"); // each hit's text, line breaks as they stand

        const QString sans = QStringLiteral("DejaVu Sans");
        const QString serif = QStringLiteral("DejaVu Serif");
        QTest::newRow("any case") << sans
                                  << QStringList { "Needle in the hay, NEEDLE on top", "needless" }
                                  << "neEDle"
                                  << QStringList { "Needle", "NEEDLE",
                                         "need"
                                         "le" };
        QTest::newRow("words across a line break")
            << sans << QStringList { "the end of one", "line and the next" } << "one line"
            << QStringList { "one\nline" };
        QTest::newRow("a word hyphenated at the line's end")
            << sans << QStringList { "this is a long exam-", "ple of a broken word" } << "example"
            << QStringList { "exam-\nple" };
        QTest::newRow("a compound broken at its hyphen")
            << sans << QStringList { "it is self-", "contained" } << "self-contained"
            << QStringList { "self-\ncontained" };
        // Ligature glyphs as the text has them, and as the font's shaping makes them.
        QTest::newRow("ligatures")
            << serif << QStringList { "the \uFB01le and the \uFB02ow", "a file" } << "file"
            << QStringList { "file", "file" };
        QTest::newRow("Chinese") << QStringLiteral("WenQuanYi Micro Hei")
                                 << QStringList { "我们在北京大学学习中文", "北京很大" } << "北京"
                                 << QStringList { "北京", "北京" };
        QTest::newRow("Arabic") << sans << QStringList { "مرحبا بالعالم العربي" } << "بالعالم"
                                << QStringList { "بالعالم" };
        QTest::newRow("Hebrew") << sans << QStringList { "שלום עולם יפה" } << "עולם"
                                << QStringList { "עולם" };
    }
    void wordsAreFoundAsTyped()
    {
        QFETCH(QString, family);
        QFETCH(QStringList, lines);
        QFETCH(QString, word);
        QFETCH(QStringList, hits);
        if (!QFontDatabase::families().contains(family))
            QSKIP("The font is not installed (scripts/packages.sh lists it)");
        const QString path = m_dir.filePath(
            QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-') + ".pdf");
        QVERIFY(writeLines(path, family, lines));
        const auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(path)));
        FindRecorder recorder(document);
        document->beginFindString(word, PDFDocument::CaseInsensitiveSearch);
        QVERIFY(recorder.waitForEnd(20000));
        // Shaped scripts come back as the letters typed, whatever forms the font drew.
        QStringList normalized;
        for (const QString &hit : recorder.strings())
            normalized.append(hit.normalized(QString::NormalizationForm_KC));
        if (normalized != hits)
            qWarning() << "page text:" << document->pageAtIndex(0)->string();
        QCOMPARE(normalized, hits);
    }

    // A font's text comes through its ToUnicode map for every code it names, at the edges of
    // its ranges too, and through the maps it uses; codes it does not name give no letter.
    void compositeFontTextComesThroughItsToUnicodeMap_data()
    {
        QTest::addColumn<QByteArray>("toUnicode");
        QTest::addColumn<QByteArray>("uses");
        QTest::addColumn<QByteArray>("codes");
        QTest::addColumn<QString>("text");

        const QByteArray space = "1 begincodespacerange <0000> <FFFF> endcodespacerange\n";
        QTest::newRow("ranges, at their ends")
            << space + "2 beginbfrange <0003> <0005> <0041> <FFFE> <FFFF> <0061> endbfrange"
            << QByteArray() << QByteArray("00030004000500060002FFFEFFFF")
            << QStringLiteral("ABCab");
        QTest::newRow("single codes, ligature and beyond the basic plane")
            << space + "3 beginbfchar <0100> <00660069> <0007> <0034> <0200> <D835DC00> endbfchar"
            << QByteArray() << QByteArray("010000070200") << QStringLiteral("fi4\U0001D400");
        QTest::newRow("a range given as a list")
            << space + "1 beginbfrange <0010> <0012> [<0078> <0079> <007A>] endbfrange"
            << QByteArray() << QByteArray("0012001000110013") << QStringLiteral("zxy");
        QTest::newRow("a map that uses another")
            << space + "1 beginbfchar <0041> <0058> endbfchar" << QByteArray("/Identity-H")
            << QByteArray("004100420043") << QStringLiteral("XBC");
        QTest::newRow("a named map") << QByteArray("/Identity-H") << QByteArray()
                                     << QByteArray("0048006900A9") << QStringLiteral("Hi\u00A9");
    }
    void compositeFontTextComesThroughItsToUnicodeMap()
    {
        QFETCH(QByteArray, toUnicode);
        QFETCH(QByteArray, uses);
        QFETCH(QByteArray, codes);
        QFETCH(QString, text);
        const auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithData(compositeFontPage(toUnicode, uses, codes)));
        QString found = document->pageAtIndex(0)->string().trimmed();
        found.remove(QChar::ReplacementCharacter);
        QCOMPARE(found, text);
    }

    // A page whose text takes long to read holds the document's lock only until the main thread
    // wants it: the read starts over afterwards, and every hit still arrives, in page order.
    void mainThreadDoesNotWaitOutAPageRead()
    {
        constexpr int Pages = 3;
        constexpr int Lines = 6000;
        PdfFixtures::Document description;
        for (int p = 0; p < Pages; ++p) {
            PdfFixtures::Page page;
            page.fontSize = 2;
            page.leading = 0.1;
            page.textObjectPerLine = true;
            for (int l = 0; l < Lines; ++l)
                page.lines.append(QStringLiteral("line %1 of page %2 with a needle").arg(l).arg(p));
            description.pages.append(page);
        }
        const QString path = m_dir.filePath(QStringLiteral("heavy.pdf"));
        QVERIFY(PdfFixtures::write(description, path));
        const auto document = std::make_shared<PDFDocument>();
        QVERIFY(document->initWithURL(QUrl::fromLocalFile(path)));
        // What one page's read costs on this machine now, under its present load.
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(document->pageAtIndex(Pages - 1)->string().count(QStringLiteral("needle")), Lines);
        const double pageRead = double(timer.nsecsElapsed()) / 1e6;

        FindRecorder recorder(document);
        document->beginFindString(QStringLiteral("needle"), PDFDocument::CaseInsensitiveSearch);
        double longestWait = 0;
        // Twice in a page read, as a busy main thread might, while the find runs.
        for (int ask = 0; ask < 2 * Pages && !recorder.ends; ++ask) {
            QTest::qWait(std::max(3, int(pageRead / 2)));
            // Drawing a page asks for the lock on the main thread.
            timer.restart();
            QVERIFY(document->pageAtIndex(ask % Pages)->renderSource(PDFDisplayBox::CropBox));
            longestWait = std::max(longestWait, double(timer.nsecsElapsed()) / 1e6);
        }
        QVERIFY(recorder.waitForEnd());
        const QList<int> hitPages = recorder.pages();
        QCOMPARE(int(hitPages.size()), Pages * Lines);
        QVERIFY(std::is_sorted(hitPages.begin(), hitPages.end()));
        QCOMPARE(hitPages.front(), 0);
        QCOMPARE(hitPages.back(), Pages - 1);
        QVERIFY2(longestWait < pageRead / 2,
            qPrintable(QStringLiteral("waited %1 ms, a page read takes %2 ms")
                           .arg(longestWait)
                           .arg(pageRead)));
    }

private:
    QTemporaryDir m_dir;
};

QTEST_MAIN(FindTextTest)
#include "FindTextTest.moc"
