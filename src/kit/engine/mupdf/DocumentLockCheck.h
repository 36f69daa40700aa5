#pragma once

// A check, built into test builds, that every MuPDF call reading a shared document (resolving an
// object, loading a page or a font, keeping or dropping a page) is made holding that document's
// lock. A call without it ends the process with the call's stack, so that a test running into a
// data race on a document fails where the race is, every time, instead of corrupting memory now
// and then.

#include <mupdf/pdf.h>

namespace mu {

class DocumentMutex;

namespace DocumentLockCheck {

#ifdef FOLIDOC_LOCK_CHECK
// From now on, calls into doc must hold mutex. Before, the document is its opener's alone.
void shareDocument(const pdf_document *doc, const DocumentMutex *mutex);
void forgetDocument(const pdf_document *doc);
void lockTaken(const DocumentMutex *mutex);
void lockReleased(const DocumentMutex *mutex);
#else
inline void shareDocument(const pdf_document *, const DocumentMutex *) { }
inline void forgetDocument(const pdf_document *) { }
inline void lockTaken(const DocumentMutex *) { }
inline void lockReleased(const DocumentMutex *) { }
#endif

} // namespace DocumentLockCheck
} // namespace mu
