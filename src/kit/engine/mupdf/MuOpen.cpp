#include "MuOpen.h"

#include "MuOwned.h"

#include <algorithm>
#include <limits>

namespace mu {
namespace {

// A fixed allowance for the tables and caches of any file, and per byte of the file room for
// the table entries of objects a few bytes long each, as in compressed object streams.
constexpr qint64 OpeningAllowance = qint64(256) << 20;
constexpr qint64 OpeningBytesPerFileByte = 16;

qint64 openingLimit(qint64 fileBytes)
{
    const qint64 most
        = (std::numeric_limits<qint64>::max() - OpeningAllowance) / OpeningBytesPerFileByte;
    return OpeningAllowance + std::clamp<qint64>(fileBytes, 0, most) * OpeningBytesPerFileByte;
}

pdf_document *refuseOrKeep(
    fz_context *ctx, const OpeningScope &scope, pdf_document *doc, Error &failure)
{
    if (!scope.refused(failure))
        return failure.failed ? nullptr : doc;
    runQuietly(ctx, [&] { pdf_drop_document(ctx, doc); });
    return nullptr;
}

} // namespace

OpeningScope::OpeningScope(qint64 fileBytes)
    : m_budget(nullptr, openingLimit(fileBytes), 0)
{ }

bool OpeningScope::refused(Error &failure) const
{
    if (!m_budget.memoryExceeded())
        return false;
    Error refusal;
    refusal.fail("its objects are numbered far beyond how many it holds");
    failure = refusal;
    return true;
}

pdf_document *openDocumentFromFile(const QByteArray &encodedPath, qint64 fileBytes, Error &failure)
{
    fz_context *ctx = context();
    const OpeningScope scope(fileBytes);
    pdf_document *doc = nullptr;
    run(ctx, failure, [&] { doc = pdf_open_document(ctx, encodedPath.constData()); });
    return refuseOrKeep(ctx, scope, doc, failure);
}

pdf_document *openDocumentFromBytes(const QByteArray &bytes, Error &failure)
{
    fz_context *ctx = context();
    const auto *data = reinterpret_cast<const unsigned char *>(bytes.constData());
    const size_t size = static_cast<size_t>(bytes.size());
    Buffer buffer;
    Stream stream;
    pdf_document *doc = nullptr;
    // The copy of the bytes MuPDF keeps is not part of what opening them may take.
    run(ctx, failure, [&] {
        buffer.p = fz_new_buffer_from_copied_data(ctx, data, size);
        stream.p = fz_open_buffer(ctx, buffer.p);
    });
    if (failure.failed)
        return nullptr;
    const OpeningScope scope(bytes.size());
    run(ctx, failure, [&] { doc = pdf_open_document_with_stream(ctx, stream.p); });
    return refuseOrKeep(ctx, scope, doc, failure);
}

} // namespace mu
