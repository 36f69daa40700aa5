#pragma once

// Opening a PDF document held in memory. Any thread, with that thread's context.

#include "MuTry.h"

#include <QByteArray>

struct pdf_document;

namespace mu {

// The document the bytes hold (the caller owns it), or null with failure set. MuPDF keeps its
// own copy of the bytes.
pdf_document *openDocumentFromBytes(const QByteArray &bytes, Error &failure);

} // namespace mu
