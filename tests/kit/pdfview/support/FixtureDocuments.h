#pragma once

// Opens a generated fixture through the engine, writing it into the folder on first use.

#include <support/PdfFixtures.h>

#include <QString>

#include <memory>

class PDFDocument;
class QTemporaryDir;

namespace FixtureDocuments {

// The document of the fixture written as name in dir; null when it cannot be written or read.
std::shared_ptr<PDFDocument> open(
    const QTemporaryDir &dir, const PdfFixtures::Document &fixture, const QString &name);

} // namespace FixtureDocuments
