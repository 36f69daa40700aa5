#include "ContentBound.h"

namespace mu {
namespace {

// Deflate codes at most 258 repeated bytes in one symbol of at least two bits, so its output is
// at most 1032 times its input; the slack covers the stream's header and last block.
constexpr qint64 MaxInflation = 1032;
constexpr qint64 InflationSlack = 4096;

// The most one stream can decode to, or -1 when its filters allow any length. MuPDF reads no
// more of a stream than its /Length.
qint64 decodedBound(fz_context *ctx, pdf_obj *stream)
{
    pdf_obj *const length = pdf_dict_get(ctx, stream, PDF_NAME(Length));
    if (!pdf_is_int(ctx, length) || pdf_to_int64(ctx, length) < 0)
        return -1;
    const qint64 encoded = pdf_to_int64(ctx, length);
    pdf_obj *filter = pdf_dict_get(ctx, stream, PDF_NAME(Filter));
    if (pdf_is_array(ctx, filter)) {
        if (pdf_array_len(ctx, filter) > 1)
            return -1;
        filter = pdf_array_get(ctx, filter, 0);
    }
    if (!filter)
        return encoded;
    // A predictor gives back at most the bytes it was given.
    if (pdf_name_eq(ctx, filter, PDF_NAME(FlateDecode)) || pdf_name_eq(ctx, filter, PDF_NAME(Fl))) {
        if (encoded > (qint64(1) << 40) / MaxInflation)
            return -1;
        return encoded * MaxInflation + InflationSlack;
    }
    return -1;
}

} // namespace

bool contentsDecodeWithin(fz_context *ctx, pdf_obj *contents, qint64 limit)
{
    if (pdf_is_stream(ctx, contents)) {
        const qint64 bound = decodedBound(ctx, contents);
        return bound >= 0 && bound <= limit;
    }
    if (!pdf_is_array(ctx, contents))
        return false;
    const int count = pdf_array_len(ctx, contents);
    qint64 total = 0;
    for (int i = 0; i < count; ++i) {
        pdf_obj *const stream = pdf_array_get(ctx, contents, i);
        // MuPDF skips what is not a stream.
        if (!pdf_is_stream(ctx, stream))
            continue;
        const qint64 bound = decodedBound(ctx, stream);
        if (bound < 0)
            return false;
        total += bound;
        if (total > limit)
            return false;
    }
    return true;
}

} // namespace mu
