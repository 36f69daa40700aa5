// Adding pages from files: images become one page each, PDF files give copies of their pages,
// in the order the files come, at a running index that only moves for what went in.

#include "PDFCollectionView.h"
#include "PDFPagesEditor.h"

#include <app/FDFilePanel.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <kit/engine/PDFDocumentDelegate.h>
#include <view/FDPDFView.h>

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QMimeDatabase>

namespace {

// An image file larger than this is not read: no page needs it, and it would only fill memory.
constexpr qint64 MaxImageFileSize = 256LL * 1024 * 1024;

enum class FileKind { Image, PDF, Other };

FileKind kindOf(const QUrl &url)
{
    if (!url.isLocalFile())
        return FileKind::Other;
    const QMimeType type = QMimeDatabase().mimeTypeForFile(url.toLocalFile());
    if (type.inherits(QStringLiteral("application/pdf")))
        return FileKind::PDF;
    if (type.name().startsWith(QLatin1String("image/")))
        return FileKind::Image;
    return FileKind::Other;
}

// A page showing the image, or null when the file is no image this system can read. The image is
// decoded once to be sure of it; the page keeps the file's own bytes (a JPEG stays a JPEG).
std::shared_ptr<FDPage> pageWithImageAt(const QString &path)
{
    QFile file(path);
    if (file.size() > MaxImageFileSize || !file.open(QIODevice::ReadOnly))
        return nullptr;
    QByteArray bytes = file.readAll();
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    if (reader.read().isNull())
        return nullptr;
    auto page = std::make_shared<FDPage>();
    if (!page->initWithImageData(bytes))
        return nullptr;
    return page;
}

} // namespace

// Pages read from files added here are of the application's classes from the start.
class PagesEditorDocumentDelegate : public PDFDocumentDelegate
{
public:
    PDFPageFactory classForPage() const override
    {
        return [] { return std::make_shared<FDPage>(); };
    }
    PDFAnnotationFactory classForAnnotationClass(const QString &type) const override
    {
        return FDPDFView::classForAnnotationClass(type);
    }
};

int PDFPagesEditor::insertURLs(const QList<QUrl> &urls, int index)
{
    return insertURLs(selectedCollectionView(), urls, index);
}

int PDFPagesEditor::insertURLs(PDFCollectionView *pane, const QList<QUrl> &urls, int index)
{
    const auto target = pane ? documentOf(pane) : nullptr;
    if (!target || index < 0 || index > target->pageCount())
        return 0;
    if (!m_documentDelegate)
        m_documentDelegate = std::make_shared<PagesEditorDocumentDelegate>();
    int running = index;
    for (const QUrl &url : urls) {
        switch (kindOf(url)) {
        case FileKind::Image:
            if (const auto page = pageWithImageAt(url.toLocalFile())) {
                target->insertPage(page, running);
                ++running;
            }
            break;
        case FileKind::PDF: {
            const auto source = std::make_shared<FDDocument>();
            if (!source->initWithURL(url, m_documentDelegate) || source->isLocked())
                break;
            const int count = source->pageCount();
            for (int from = 0; from < count; ++from) {
                const auto page = source->pageAtIndex(from);
                const auto copied
                    = page ? std::dynamic_pointer_cast<FDPage>(page->copy()) : nullptr;
                if (!copied)
                    continue;
                target->insertPage(copied, running);
                ++running;
            }
            break;
        }
        case FileKind::Other:
            break;
        }
    }
    const int inserted = running - index;
    if (inserted == 0)
        return 0;
    QList<int> rows;
    for (int row = index; row < running; ++row)
        rows.append(row);
    pane->performBatchUpdates([] {},
        [this, pane, rows] {
            didChangePages();
            pane->selectRows(rows);
            pane->scrollTo(pane->model()->index(rows.first(), 0));
        });
    return inserted;
}

void PDFPagesEditor::addPagesWithImages()
{
    addPagesFromPanel({ QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("jpeg"),
                          QStringLiteral("gif"), QStringLiteral("PNG"), QStringLiteral("JPG"),
                          QStringLiteral("JPEG"), QStringLiteral("GIF") },
        tr("Images"));
}

void PDFPagesEditor::addPagesWithPDF()
{
    addPagesFromPanel({ QStringLiteral("pdf"), QStringLiteral("PDF") }, tr("PDF documents"));
}

void PDFPagesEditor::addPagesFromPanel(const QStringList &types, const QString &typesTitle)
{
    PDFCollectionView *const pane = selectedCollectionView();
    const auto target = documentOf(pane);
    if (!target)
        return;
    FilePanelRequest request;
    request.kind = FilePanelRequest::Open;
    request.allowsMultipleSelection = true;
    request.allowedFileTypes = types;
    request.fileTypesTitle = typesTitle;
    request.parent = this;
    const QList<QUrl> chosen = FDFilePanel::runModalForURLs(request);
    if (chosen.isEmpty())
        return;
    insertURLs(pane, chosen, insertionIndex(pane->selectedRows(), target->pageCount()));
}
