#include "AppFixtures.h"

#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QImage>
#include <QStringList>
#include <QUrl>

bool AppFixtures::writeColourPDF(const QString &path, const QColor &colour, const QSize &size)
{
    auto document = std::make_shared<PDFDocument>();
    auto page = std::make_shared<PDFPage>();
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    if (!document->init() || !page->initWithImage(image))
        return false;
    document->insertPage(page, 0);
    return document->writeToURL(QUrl::fromLocalFile(path));
}

QString AppFixtures::whitePDF(const QString &path)
{
    writeColourPDF(path, Qt::white);
    return path;
}

PdfFixtures::Document AppFixtures::taggedPages(const QByteArray &tag, int count)
{
    PdfFixtures::Document document = PdfFixtures::textPages(count, 3, 0);
    for (int index = 0; index < count; ++index) {
        document.pages[index].annotations.append(
            { "/Subtype /Square /Rect [100 100 200 200] /C [1 0 0] /Contents (" + tag
                    + QByteArray::number(index + 1) + ")",
                {}, {} });
    }
    return document;
}

QStringList AppFixtures::pageTags(const QString &path)
{
    const auto document = std::make_shared<PDFDocument>();
    if (!document->initWithURL(QUrl::fromLocalFile(path)))
        return { document->errorString() };
    QStringList pages;
    for (int index = 0; index < document->pageCount(); ++index) {
        const auto page = document->pageAtIndex(index);
        QStringList notes;
        for (const auto &annotation : page->annotations())
            notes << annotation->contents();
        QString tag = notes.join(QLatin1Char(','));
        if (tag.isEmpty())
            tag = page->string().simplified().section(QLatin1Char(' '), 0, 1);
        if (tag.isEmpty()) {
            // The shape, as the resolution a picture states (or lacks) sets its size.
            const QSizeF size = page->boundsForBox(PDFDisplayBox::MediaBox).size();
            tag = QStringLiteral("image %1:1").arg(size.width() / size.height());
        }
        if (page->rotation() != 0)
            tag += QLatin1Char('/') + QString::number(page->rotation());
        pages << tag;
    }
    return pages;
}
