#include "AppFixtures.h"

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QImage>
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
