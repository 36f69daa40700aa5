#include "DocumentHandle.h"

namespace mu {

DocumentHandle::DocumentHandle(pdf_document *doc)
    : m_doc(doc)
{ }

DocumentHandle::~DocumentHandle()
{
    const Lock lock(m_mutex);
    fz_context *ctx = context();
    pdf_document *const doc = m_doc;
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
