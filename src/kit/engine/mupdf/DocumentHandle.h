#pragma once

// One open MuPDF document and the mutex that whoever calls into it must hold, main thread and
// workers alike. Shared: pages, render sources and find workers keep it alive while they need it.

#include "MuOwned.h"

#include <QtGlobal>

#include <memory>
#include <mutex>

namespace mu {

class DocumentHandle
{
public:
    // Takes over the reference to doc.
    explicit DocumentHandle(pdf_document *doc);
    ~DocumentHandle();
    DocumentHandle(const DocumentHandle &) = delete;
    DocumentHandle &operator=(const DocumentHandle &) = delete;

    pdf_document *doc() const { return m_doc; }
    std::mutex &mutex() const { return m_mutex; }

    // How often the objects were readied for a write; the write made ahead of time checks it.
    // Read and written under mutex().
    quint64 writePreparations = 0;

    // A new, empty document of the calling thread's context; null when MuPDF fails.
    static std::shared_ptr<DocumentHandle> createEmpty(QString *error = nullptr);

private:
    pdf_document *m_doc;
    mutable std::mutex m_mutex;
};

using Lock = std::lock_guard<std::mutex>;

} // namespace mu
