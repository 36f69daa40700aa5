#include "FixtureDocuments.h"

#include <kit/engine/PDFDocument.h>

#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

namespace FixtureDocuments {

std::shared_ptr<PDFDocument> open(
    const QTemporaryDir &dir, const PdfFixtures::Document &fixture, const QString &name)
{
    const QString path = dir.filePath(name);
    if (!QFile::exists(path) && !PdfFixtures::write(fixture, path))
        return nullptr;
    auto document = std::make_shared<PDFDocument>();
    return document->initWithURL(QUrl::fromLocalFile(path)) ? document : nullptr;
}

} // namespace FixtureDocuments
