#pragma once

// Opening a PDF document, from a file or from bytes in memory, within memory bounded by the
// file's size. Any thread, with that thread's context.

#include "MuTry.h"
#include "WorkBudget.h"

#include <QByteArray>

struct pdf_document;

namespace mu {

// Bounds the MuPDF memory the calling thread takes while a file of that many bytes is opened and
// repaired. MuPDF makes its object table as long as the highest object number a file names (or
// its trailer claims), so a damaged file of a few hundred bytes could otherwise take gigabytes;
// a real file holds every object it numbers, which keeps its table within a small multiple of
// its size.
class OpeningScope
{
public:
    explicit OpeningScope(qint64 fileBytes);
    // Whether the bound was reached; then failure (set or not) tells the reader why.
    bool refused(Error &failure) const;

private:
    BudgetScope m_budget;
};

// The document the file holds (the caller owns it), or null with failure set.
pdf_document *openDocumentFromFile(const QByteArray &encodedPath, qint64 fileBytes, Error &failure);
// The document the bytes hold (the caller owns it), or null with failure set. MuPDF keeps its
// own copy of the bytes.
pdf_document *openDocumentFromBytes(const QByteArray &bytes, Error &failure);

} // namespace mu
