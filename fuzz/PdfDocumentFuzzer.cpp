// Fuzz target: a PDF read from bytes the way a tab reads it, its pages laid out, drawn small
// (straight and through a recorded list, within the work limits), its text read and searched,
// then saved and the saved bytes read back, which must succeed with the same pages.

#include "FuzzEnvironment.h"

#include <kit/engine/PDFCancellation.h>
#include <kit/engine/PDFDisplayList.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFPageRenderSource.h>
#include <kit/pdfview/PDFLayout.h>

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace {

constexpr int maxLaidOutPages = 2000;
constexpr int maxDrawnPages = 6;
constexpr int thumbnailPixels = 48;

const PDFDisplayBox boxes[] = { PDFDisplayBox::MediaBox, PDFDisplayBox::CropBox,
    PDFDisplayBox::BleedBox, PDFDisplayBox::TrimBox, PDFDisplayBox::ArtBox };

// The pixel size of a thumbnail of a page of that shown size, as the thumbnails work it out.
QSize thumbnailSize(const QSizeF &shown)
{
    const double longest = std::max(shown.width(), shown.height());
    if (!(longest > 0) || !std::isfinite(longest))
        return QSize(thumbnailPixels, thumbnailPixels);
    const double scale = thumbnailPixels / longest;
    return QSize(std::clamp(int(shown.width() * scale), 1, thumbnailPixels),
        std::clamp(int(shown.height() * scale), 1, thumbnailPixels));
}

void layOut(const PDFDocument &document)
{
    std::vector<QSizeF> sizes;
    const int count = std::min(document.pageCount(), maxLaidOutPages);
    for (int index = 0; index < count; ++index) {
        const auto page = document.pageAtIndex(index);
        if (!page)
            FuzzEnvironment::fail("a page within the count is missing");
        for (const PDFDisplayBox box : boxes)
            page->boundsForBox(box);
        const int rotation = page->rotation();
        if (rotation % 90 != 0 || rotation < 0 || rotation >= 360)
            FuzzEnvironment::fail("a rotation outside 0, 90, 180, 270");
        sizes.push_back(
            PageGeometry(page->boundsForBox(PDFDisplayBox::CropBox), rotation).viewSize());
    }
    PDFLayout layout;
    layout.setPageSizes(sizes);
    for (int mode = PDFLayout::SinglePage; mode <= PDFLayout::TwoUpContinuous; ++mode) {
        layout.setDisplayMode(mode);
        layout.setDisplaysPageBreaks(mode % 2 == 1);
        layout.setDisplaysAsBook(mode >= PDFLayout::TwoUp);
        layout.setAnchorPage(count / 2);
        layout.update();
        const QSizeF canvas = layout.documentSize();
        layout.pageAtPoint(QPointF(canvas.width() / 2, canvas.height() / 2));
        layout.nearestPage(QPointF(canvas.width(), canvas.height()));
        layout.pagesInRect(QRectF(QPointF(0, 0), canvas));
    }
}

void draw(const PDFPage &page)
{
    const PageGeometry geometry(page.boundsForBox(PDFDisplayBox::CropBox), page.rotation());
    page.imageForBox(PDFDisplayBox::CropBox, thumbnailSize(geometry.viewSize()));
    // The view's path: a recorded list, rasterised as one tile at a small scale.
    const auto source = page.renderSource(PDFDisplayBox::CropBox);
    if (!source)
        return;
    PDFCancellation cancel;
    if (const auto list = source->buildDisplayList(&cancel))
        list->renderTile(QRect(0, 0, thumbnailPixels, thumbnailPixels), 0.1, &cancel);
}

// The first word of the page's text, as a reader would type it into the search field.
QString readText(const PDFPage &page)
{
    const QString text = page.string();
    const int characters = page.numberOfCharacters();
    for (int index = 0; index < std::min(characters, 64); ++index)
        page.characterBoundsAtIndex(index);
    const QRectF bounds = page.boundsForBox(PDFDisplayBox::CropBox);
    page.characterIndexAtPoint(bounds.center());
    if (const auto selection = page.selectionForRect(bounds))
        selection->string();
    page.selectionForWordAtPoint(bounds.center());
    static const QRegularExpression word(QStringLiteral("\\w{2,}"));
    const QRegularExpressionMatch match = word.match(text);
    return match.hasMatch() ? match.captured() : QString();
}

void find(PDFDocument &document, const QString &word)
{
    if (word.isEmpty())
        return;
    document.beginFindString(word, PDFDocument::CaseInsensitiveSearch);
    if (!FuzzEnvironment::spinUntil([&] { return !document.isFinding(); }, 5000))
        document.cancelFindString();
}

void saveAndReopen(const PDFDocument &document)
{
    const QByteArray saved = document.dataRepresentation();
    if (saved.isEmpty())
        return; // refused with a message, which is allowed
    auto reopened = std::make_shared<PDFDocument>();
    if (!reopened->initWithData(saved))
        FuzzEnvironment::fail("the saved bytes of a readable document do not open");
    if (reopened->pageCount() != document.pageCount())
        FuzzEnvironment::fail("the saved document has another number of pages");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    FuzzEnvironment::setUp(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    auto document = std::make_shared<PDFDocument>();
    if (!document->initWithData(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size))))
        return 0;
    if (document->isLocked() && !document->unlockWithPassword(QString()))
        return 0;
    layOut(*document);
    QString word;
    for (int index = 0; index < std::min(document->pageCount(), maxDrawnPages); ++index) {
        const auto page = document->pageAtIndex(index);
        draw(*page);
        const QString found = readText(*page);
        if (word.isEmpty())
            word = found;
    }
    find(*document, word);
    saveAndReopen(*document);
    return 0;
}
