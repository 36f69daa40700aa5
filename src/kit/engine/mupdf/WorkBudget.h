#pragma once

// Memory and time bounds for MuPDF work. Every MuPDF allocation goes through budgetAllocator(),
// which counts the live bytes each thread has allocated; a BudgetScope refuses allocations past
// its limit (MuPDF then fails with an out-of-memory error) and raises its cookie's abort word at
// its deadline.

#include "MuContext.h"

#include <QtGlobal>

#include <chrono>

namespace mu {

const fz_alloc_context *budgetAllocator();
// The bytes MuPDF holds now, in all threads.
qint64 liveBytes();
// Makes liveBytes() count the calling thread, before its first MuPDF call; endThreadBytes()
// keeps what it leaves behind in the count as it ends.
void countThreadBytes();
void endThreadBytes();

class BudgetScope
{
public:
    // abortWord may be null (no deadline); limits <= 0 mean none. Scopes nest: an inner one
    // never allows more than what its outer one has left.
    BudgetScope(int *abortWord, qint64 memoryLimit, int milliseconds);
    ~BudgetScope();
    BudgetScope(const BudgetScope &) = delete;
    BudgetScope &operator=(const BudgetScope &) = delete;

    bool memoryExceeded() const;
    bool timedOut() const;

private:
    int *m_abortWord;
    qint64 m_savedCeiling;
    bool m_savedExceeded;
    std::chrono::steady_clock::time_point m_deadline;
    bool m_hasDeadline;
};

// Throws (inside a guarded block) when the page's content streams decode to more than limit
// bytes; stops early when the cookie is aborted. Plain MuPDF calls.
void checkContentLength(fz_context *ctx, pdf_page *page, fz_cookie *cookie, qint64 limit);
// The same for a page's /Contents read from its object, without loading the page.
void checkContentLength(
    fz_context *ctx, pdf_document *doc, pdf_obj *contents, fz_cookie *cookie, qint64 limit);

} // namespace mu
