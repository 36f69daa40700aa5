#pragma once

// One open MuPDF document and the mutex that whoever calls into it must hold, main thread and
// workers alike. Shared: pages, render sources and find workers keep it alive while they need it.

#include "MuOwned.h"

#include <QtGlobal>

#include <atomic>
#include <memory>
#include <mutex>

namespace mu {

// The lock around one document. A worker whose piece of work under it can start over (the text
// of a page for the find) offers to give way while it holds the lock; the main thread, finding
// the lock taken, asks such a holder to stop at once instead of waiting out the whole piece.
class DocumentMutex
{
public:
    void lock();
    bool try_lock();
    void unlock();

    // Called by the holder: while abort is set, a waiting main thread stores 1 into it. Clearing
    // it (null) tells whether the main thread asked.
    bool offerToGiveWay(int *abort);
    // The holder, having stopped and unlocked, waits until the main thread that asked is through.
    void waitForMainThread() const;

private:
    std::mutex m_mutex;
    std::mutex m_offerMutex;
    int *m_abort = nullptr; // guarded by m_offerMutex
    bool m_asked = false; // guarded by m_offerMutex
    std::atomic<int> m_mainWaiting { 0 };
};

class DocumentHandle
{
public:
    // Takes over the reference to doc.
    explicit DocumentHandle(pdf_document *doc);
    ~DocumentHandle();
    DocumentHandle(const DocumentHandle &) = delete;
    DocumentHandle &operator=(const DocumentHandle &) = delete;

    pdf_document *doc() const { return m_doc; }
    DocumentMutex &mutex() const { return m_mutex; }

    // How often the objects were readied for a write; the write made ahead of time checks it.
    // Read and written under mutex().
    quint64 writePreparations = 0;

    // A new, empty document of the calling thread's context; null when MuPDF fails.
    static std::shared_ptr<DocumentHandle> createEmpty(QString *error = nullptr);

private:
    pdf_document *m_doc;
    mutable DocumentMutex m_mutex;
};

using Lock = std::lock_guard<DocumentMutex>;

} // namespace mu
