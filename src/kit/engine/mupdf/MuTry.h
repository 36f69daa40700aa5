#pragma once

// The one place where MuPDF's setjmp/longjmp errors meet C++: run() executes a block of plain
// MuPDF C calls inside fz_try and records a failure by flag, with the message copied into a plain
// buffer. The block must create no object with a destructor and must not return, break or throw.

#include "MuContext.h"

#include <QString>

#include <cstring>

namespace mu {

struct Error
{
    bool failed = false;
    char message[400] = {};

    QString text() const { return QString::fromUtf8(message); }
    // Keeps the first failure of a sequence of blocks.
    void fail(const char *text)
    {
        if (failed)
            return;
        failed = true;
        std::strncpy(message, text ? text : "unknown MuPDF error", sizeof message - 1);
    }
};

template <class Block> bool run(fz_context *ctx, Error &error, Block &&block) noexcept
{
    bool ok = true;
    fz_var(ok);
    fz_try(ctx)
    {
        block();
    }
    fz_catch(ctx)
    {
        ok = false;
        error.fail(fz_caught_message(ctx));
    }
    return ok;
}

// For drops and other calls whose failure nobody can act on.
template <class Block> void runQuietly(fz_context *ctx, Block &&block) noexcept
{
    Error ignored;
    run(ctx, ignored, static_cast<Block &&>(block));
}

} // namespace mu
