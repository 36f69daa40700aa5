#pragma once

// Writes real PDF files from a description, as raw PDF syntax with a correct cross-reference
// table, so that tests need no binary fixtures and no PDF library. Text is Helvetica; coordinates
// are PDF user space (y up).

#include <QByteArray>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>

namespace PdfFixtures {

struct Image
{
    int width = 0;
    int height = 0;
    QByteArray data; // RGB bytes (width × height × 3), or JPEG file bytes when jpeg is set
    bool jpeg = false;
};

struct Link
{
    QRectF rect;
    QString uri; // an external link, or
    int targetPage = -1; // a link to a page of the same document
    QPointF targetPoint;
};

// A rectangle filled with an RGB colour (components 0 to 1).
struct Fill
{
    QRectF rect;
    double red = 0;
    double green = 0;
    double blue = 0;
};

// An annotation written as it stands: its dictionary entries after /Type /Annot (no /P) and,
// when appearance is not empty, a normal appearance stream with that content over bbox.
struct RawAnnotation
{
    QByteArray entries; // e.g. "/Subtype /Square /Rect [10 10 50 50] /C [1 0 0]"
    QByteArray appearance;
    QRectF bbox;
};

struct Page
{
    QRectF mediaBox { 0, 0, 612, 792 };
    QRectF cropBox; // none when empty
    int rotate = 0;
    QStringList lines; // drawn top down from textStart
    QPointF textStart { 72, 720 };
    double fontSize = 12;
    double leading = 16;
    bool textObjectPerLine = false; // each line a text object of its own, as long pages have
    Image image;
    QRectF imageRect; // where the image is drawn
    QList<Link> links;
    QList<Fill> fills; // drawn before the text
    QList<RawAnnotation> annotations; // after the links in /Annots
};

struct OutlineItem
{
    QString title;
    int page = -1; // -1: no destination
    QPointF point; // destination point in page space
    double zoom = 0; // 0: unspecified
    bool open = true;
    QList<OutlineItem> children;
};

struct LabelRange
{
    int firstPage = 0;
    char style = 'D'; // 'D', 'R', 'r', 'A', 'a', or 0 for a prefix only
    QString prefix;
    int start = 1;
};

struct Document
{
    QList<Page> pages;
    QList<OutlineItem> outline;
    QList<LabelRange> labels;
};

QByteArray build(const Document &document);
bool write(const Document &document, const QString &path);

// The shared test document: six pages with known words.
//  0: "The quick brown fox jumps over the lazy dog" / "Alpha beta gamma delta" /
//     "Folio one marker"; a URI link to https://example.org/folidoc and a link to page 2
//  1: crop box [10 20 590 780], "Cropped page text" / "Second line here"
//  2: /Rotate 90, "Rotated ninety degrees"     3: /Rotate 180, "Rotated half turn"
//  4: /Rotate 270, "Rotated three quarters"    5: an image page with "Picture page"
// Outline: "Chapter One" (page 0) > "Section 1.1" (page 1 at (10, 700)), "Section 1.2"
// (page 2); "Chapter Two" (page 4) > "Deep" > "Deeper" (page 5); "Résumé – ünïcode" (page 3).
// Labels: i, ii, then A-5, A-6, A-7, A-8.
Document standard();
// count pages of text; each page has lines "Page N line L word..." with the word "needle" on
// every page whose number is a multiple of needleEvery (0: nowhere).
Document textPages(int count, int linesPerPage = 40, int needleEvery = 1);
// count pages that each embed fontsPerPage copies of a TrueType font file as fonts of their own,
// one line of text in each, as documents put together from many others do.
QByteArray ownFontPages(int count, const QByteArray &font, int fontsPerPage = 1);
// A photo-like RGB image (smooth colour fields with grain), deterministic for a seed.
Image photo(int width, int height, quint32 seed);

// A file of the objects as written (object n is objects[n - 1], the catalog is object 1), with a
// correct cross-reference table and the trailer's entries besides /Size: for structures the
// description above cannot say.
QByteArray fromObjects(const QList<QByteArray> &objects, const QByteArray &trailer = "/Root 1 0 R");

// The same file with its cross-reference table destroyed, so that a reader has to repair it.
QByteArray withoutXref(const QByteArray &pdf);
// The first fraction of the file.
QByteArray truncated(const QByteArray &pdf, double fraction);
// An AES-256 encrypted copy made by qpdf (path to the tool); false with a message on failure.
bool encryptWithQpdf(const QString &qpdf, const QString &in, const QString &out,
    const QString &userPassword, const QString &ownerPassword, bool allowPrinting,
    bool allowCopying, QString *error);

} // namespace PdfFixtures
