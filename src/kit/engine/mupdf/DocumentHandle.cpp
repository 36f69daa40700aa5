#include "DocumentHandle.h"

#include "DocumentLockCheck.h"

#include <chrono>
#include <thread>

namespace mu {

void DocumentMutex::lock()
{
    if (try_lock())
        return;
    if (!isMainThread()) {
        m_mutex.lock();
        DocumentLockCheck::lockTaken(this);
        return;
    }
    ++m_mainWaiting;
    {
        const std::lock_guard offer(m_offerMutex);
        if (m_abort) {
            std::atomic_ref<int>(*m_abort).store(1);
            m_asked = true;
        }
    }
    m_mutex.lock();
    DocumentLockCheck::lockTaken(this);
    --m_mainWaiting;
}

bool DocumentMutex::try_lock()
{
    if (!m_mutex.try_lock())
        return false;
    DocumentLockCheck::lockTaken(this);
    return true;
}

void DocumentMutex::unlock()
{
    DocumentLockCheck::lockReleased(this);
    m_mutex.unlock();
}

bool DocumentMutex::offerToGiveWay(int *abort)
{
    const std::lock_guard offer(m_offerMutex);
    const bool asked = m_asked;
    m_abort = abort;
    m_asked = false;
    // A worker that won the lock while the main thread waited for it stops at once too.
    if (abort && m_mainWaiting.load() > 0) {
        std::atomic_ref<int>(*abort).store(1);
        m_asked = true;
    }
    return asked;
}

void DocumentMutex::waitForMainThread() const
{
    // A plain mutex is not fair: unlocking and locking again at once would often win it back.
    while (m_mainWaiting.load() > 0)
        std::this_thread::sleep_for(std::chrono::microseconds(50));
}

DocumentHandle::DocumentHandle(pdf_document *doc)
    : m_doc(doc)
{
    DocumentLockCheck::shareDocument(doc, &m_mutex);
}

DocumentHandle::~DocumentHandle()
{
    const Lock lock(m_mutex);
    fz_context *ctx = context();
    pdf_document *const doc = m_doc;
    DocumentLockCheck::forgetDocument(doc);
    runQuietly(ctx, [&] { pdf_drop_document(ctx, doc); });
}

std::shared_ptr<DocumentHandle> DocumentHandle::createEmpty(QString *error)
{
    fz_context *ctx = context();
    pdf_document *doc = nullptr;
    Error failure;
    if (!run(ctx, failure, [&] { doc = pdf_create_document(ctx); })) {
        if (error)
            *error = failure.text();
        return nullptr;
    }
    return std::make_shared<DocumentHandle>(doc);
}

} // namespace mu
