#include "MuOpen.h"

#include "MuOwned.h"

namespace mu {

pdf_document *openDocumentFromBytes(const QByteArray &bytes, Error &failure)
{
    fz_context *ctx = context();
    const auto *data = reinterpret_cast<const unsigned char *>(bytes.constData());
    const size_t size = static_cast<size_t>(bytes.size());
    Buffer buffer;
    Stream stream;
    pdf_document *doc = nullptr;
    run(ctx, failure, [&] {
        buffer.p = fz_new_buffer_from_copied_data(ctx, data, size);
        stream.p = fz_open_buffer(ctx, buffer.p);
        doc = pdf_open_document_with_stream(ctx, stream.p);
    });
    return failure.failed ? nullptr : doc;
}

} // namespace mu
