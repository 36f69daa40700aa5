#include "PDFDocument+XExtensions.h"

#include "FDDocument.h"

QUrl fileURL(const PDFDocument &document)
{
    const auto *own = dynamic_cast<const FDDocument *>(&document);
    return own ? own->fileURL() : QUrl();
}

void setFileURL(PDFDocument &document, const QUrl &url)
{
    if (auto *own = dynamic_cast<FDDocument *>(&document))
        own->setFileURL(url);
}

int numberOfChanges(const PDFDocument &document)
{
    const auto *own = dynamic_cast<const FDDocument *>(&document);
    return own ? own->numberOfChanges() : 0;
}

void setNumberOfChanges(PDFDocument &document, int count)
{
    if (auto *own = dynamic_cast<FDDocument *>(&document))
        own->setNumberOfChanges(count);
}
