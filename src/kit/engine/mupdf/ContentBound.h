#pragma once

// The most bytes a page's content streams can decode to, told from their encoded lengths and
// filters alone, so that a page whose streams cannot reach a limit is not decoded twice.

#include "MuContext.h"

#include <QtGlobal>

namespace mu {

// Whether the streams of a page's /Contents (one stream or an array of them) decode to at most
// limit bytes whatever they hold; false when that cannot be told without decoding them. Plain
// MuPDF calls: runs inside a guarded block.
bool contentsDecodeWithin(fz_context *ctx, pdf_obj *contents, qint64 limit);

} // namespace mu
