#include "PDFDocument.h"

#include "OutlineIO.h"
#include "PDFDocumentPrivate.h"
#include "PDFPage.h"
#include "PDFPagePrivate.h"

#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>

#include <cstring>

// Writing the document to bytes and to files.

namespace {

// Full rewrite; garbage collection drops objects nothing refers to any more (removed pages, old
// outline items) but never renumbers the live document, so pages and handles stay valid.
// Objects are written spaced out: the compact form runs an empty name into the token after it
// ("/ 1" becomes the name "/1"), which changes the file or makes it unreadable.
constexpr const char *WriteOptions = "garbage=1,pretty=yes";
// A damaged file can name an object number in the millions, and MuPDF's repair then makes its
// table that long: written as it stands, every unused number costs a line of the saved file
// (an 800-byte file saved as 56 MB). Such a file is written once more from a scratch copy that
// numbers its objects afresh; the live document keeps its numbers.
constexpr const char *CompactingWriteOptions = "garbage=compact,pretty=yes";
constexpr int SparseTableFrom = 65536;

} // namespace

namespace {

// The bytes MuPDF writes go straight into a QByteArray, so the file is never copied whole.
struct ByteSink
{
    QByteArray bytes;
    bool failed = false;
};

void appendToSink(fz_context *, void *state, const void *data, size_t size)
{
    auto *sink = static_cast<ByteSink *>(state);
    if (sink->failed)
        return;
    try {
        // Doubling: QByteArray's own growth copies the whole file far too often.
        const qsizetype needed = sink->bytes.size() + static_cast<qsizetype>(size);
        if (needed > sink->bytes.capacity())
            sink->bytes.reserve(std::max(needed, sink->bytes.capacity() * 2));
        sink->bytes.append(static_cast<const char *>(data), static_cast<qsizetype>(size));
    } catch (...) {
        // An exception may not cross MuPDF's frames; the failure is read after writing.
        sink->failed = true;
    }
}

int64_t sinkPosition(fz_context *, void *state)
{
    return static_cast<const ByteSink *>(state)->bytes.size();
}

// Inside a guarded block; output is the caller's, so that it is dropped however this ends.
void writeInto(fz_context *ctx, pdf_document *doc, const char *writeOptions, ByteSink &sink,
    mu::Output &output)
{
    pdf_write_options options;
    pdf_parse_write_options(ctx, &options, writeOptions);
    output.p = fz_new_output(ctx, 64 * 1024, &sink, appendToSink, nullptr, nullptr);
    output.p->tell = sinkPosition;
    pdf_write_document(ctx, doc, output.p, &options);
    fz_close_output(ctx, output.p);
}

// Mostly unused numbers: the table's lines are at least half of what was written.
bool isSparse(fz_context *ctx, pdf_document *doc, qsizetype written)
{
    const qint64 length = pdf_xref_len(ctx, doc);
    return length >= SparseTableFrom && written < 40 * length && !doc->crypt;
}

// MuPDF links the table's free entries into a list headed by entry 0 and raises entry 0's
// generation past 65535. Poppler reads entry 0's field as an offset and cuts short every string
// over 128 bytes that lies before that offset ("Unterminated string"): a long note, title or
// action early in a saved file would reach poppler's readers truncated. Every free entry is
// written as the list's end instead, the form other writers use and every reader accepts.
void endFreeEntries(QByteArray &bytes)
{
    constexpr qsizetype EntrySize = 20;
    const qsizetype startxref = bytes.lastIndexOf("startxref");
    if (startxref < 0)
        return;
    bool ok = false;
    const qsizetype table
        = bytes.mid(startxref + 9, 24).simplified().split(' ').value(0).toLongLong(&ok);
    if (!ok || table < 0 || table >= startxref || !bytes.mid(table, 4).startsWith("xref"))
        return;
    qsizetype at = bytes.indexOf('\n', table) + 1;
    while (at > 0 && at < startxref && !bytes.mid(at, 7).startsWith("trailer")) {
        const qsizetype lineEnd = bytes.indexOf('\n', at);
        const QList<QByteArray> header = bytes.mid(at, lineEnd - at).simplified().split(' ');
        const qint64 count = header.size() == 2 ? header[1].toLongLong(&ok) : -1;
        if (lineEnd < 0 || !ok || count < 0 || count > (startxref - lineEnd) / EntrySize)
            return;
        at = lineEnd + 1;
        for (qint64 i = 0; i < count; ++i, at += EntrySize) {
            char *entry = bytes.data() + at;
            if (entry[10] != ' ' || entry[19] != '\n')
                return;
            if (entry[17] != 'f')
                continue;
            std::memset(entry, '0', 10);
            if (std::strncmp(entry + 11, "65535", 5) > 0)
                std::memcpy(entry + 11, "65535", 5);
        }
    }
}

} // namespace

QByteArray PDFDocumentPrivate::writeLocked(
    const mu::DocumentHandle &handle, QString *errorText, qsizetype sizeHint)
{
    fz_context *ctx = mu::context();
    pdf_document *const doc = handle.doc();
    ByteSink sink;
    sink.bytes.reserve(sizeHint + sizeHint / 8 + 64 * 1024);
    ByteSink compacted;
    mu::Output output;
    mu::Output compactedOutput;
    mu::Buffer buffer;
    mu::Stream stream;
    mu::Document scratch;
    mu::Error failure;
    mu::run(ctx, failure, [&] { writeInto(ctx, doc, WriteOptions, sink, output); });
    if (sink.failed)
        failure.fail("out of memory while writing the document");
    if (failure.failed) {
        if (errorText)
            *errorText = failure.text();
        return {};
    }
    bool sparse = false;
    mu::runQuietly(ctx, [&] { sparse = isSparse(ctx, doc, sink.bytes.size()); });
    if (!sparse) {
        endFreeEntries(sink.bytes);
        return std::move(sink.bytes);
    }
    // The first form stays the answer when the scratch copy cannot be made.
    mu::Error compacting;
    mu::run(ctx, compacting, [&] {
        buffer.p = fz_new_buffer_from_shared_data(ctx,
            reinterpret_cast<const unsigned char *>(sink.bytes.constData()),
            static_cast<size_t>(sink.bytes.size()));
        stream.p = fz_open_buffer(ctx, buffer.p);
        scratch.p = pdf_open_document_with_stream(ctx, stream.p);
        writeInto(ctx, scratch.p, CompactingWriteOptions, compacted, compactedOutput);
    });
    QByteArray &written = compacting.failed || compacted.failed || compacted.bytes.isEmpty()
        ? sink.bytes
        : compacted.bytes;
    endFreeEntries(written);
    return std::move(written);
}

QByteArray PDFDocumentPrivate::write(const mu::DocumentHandle &handle, QString *errorText)
{
    const mu::Lock lock(handle.mutex());
    return writeLocked(handle, errorText);
}

QByteArray PDFDocument::dataRepresentation() const
{
    const DataWriter write = prepareDataRepresentation();
    if (!write)
        return {};
    WrittenData written = write();
    if (written.bytes.isEmpty())
        d->error = written.error;
    return std::move(written.bytes);
}

PDFDocument::DataWriter PDFDocument::prepareDataRepresentation() const
{
    if (!d->handle) {
        d->error = QCoreApplication::translate("PDFDocument", "The document has no content");
        return {};
    }
    if (d->contentLoaded) {
        d->loadOutline();
        d->resolveAll();
        d->readOutlineDestinations();
    }
    const std::shared_ptr<mu::DocumentHandle> handle = d->handle;
    const mu::Lock lock(handle->mutex());
    if (d->contentLoaded) {
        fz_context *ctx = mu::context();
        // Annotations changed since they were last drawn get fresh pictures first.
        for (size_t i = 0; i < d->pages.size(); ++i) {
            if (d->pages[i]->d->handle == handle)
                PDFPageInternals::prepareForOutputLocked(*d->pages[i], ctx, static_cast<int>(i));
        }
        mu::Error failure;
        const auto objectForPage = [this](const PDFPage &page) -> pdf_obj * {
            return page.d->handle == d->handle && page.d->document.lock().get() == this
                ? page.d->object
                : nullptr;
        };
        if (!OutlineIO::write(ctx, handle->doc(), d->outlineRoot.get(), objectForPage, failure)) {
            d->error = failure.text();
            return {};
        }
    }
    const quint64 preparation = ++handle->writePreparations;
    return [handle, preparation, sizeHint = d->sourceSize] {
        WrittenData written;
        const mu::Lock writeLock(handle->mutex());
        // Another preparation since has written another outline into the objects.
        if (handle->writePreparations != preparation) {
            written.isStale = true;
            return written;
        }
        written.bytes = PDFDocumentPrivate::writeLocked(*handle, &written.error, sizeHint);
        return written;
    };
}

bool PDFDocument::writeToURL(const QUrl &url) const
{
    const QByteArray bytes = dataRepresentation();
    if (bytes.isEmpty())
        return false;
    QSaveFile file(url.toLocalFile());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        d->error = file.errorString();
        return false;
    }
    return true;
}
