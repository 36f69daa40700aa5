#pragma once

// The MuPDF context of the calling thread: one base context with a lock table, and one clone per
// other thread, made on first use and dropped when the thread ends. Private to the engine.

extern "C" {
#include <mupdf/fitz.h>
#include <mupdf/pdf.h>
}

namespace mu {

// The context every MuPDF call of this thread must use.
fz_context *context();
// The most MuPDF's store (its cache of decoded fonts and images) holds, in bytes.
size_t storeBytes();
// Whether the calling thread is the one that loaded the library, the application's main thread.
bool isMainThread();

} // namespace mu
