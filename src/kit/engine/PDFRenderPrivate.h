#pragma once

// Engine-internal state of render sources and display lists.

#include "PDFDisplayBox.h"
#include "PageGeometry.h"
#include "mupdf/DocumentHandle.h"
#include "mupdf/WorkBudget.h"

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

struct PDFPageRenderSourcePrivate
{
    ~PDFPageRenderSourcePrivate();

    std::shared_ptr<mu::DocumentHandle> handle;
    pdf_page *page = nullptr; // kept; dropped under the handle's lock
    PDFDisplayBox displayBox = PDFDisplayBox::CropBox;
    PageGeometry geometry { {}, 0 };
    quint64 revision = 0;
    // Object numbers of the annotations to run; nullopt runs every annotation of the page.
    std::optional<std::vector<int>> annotations;
    std::shared_ptr<std::atomic<qint64>> contentWithin; // the page's, for its content revision
    // The page's contents as read ahead with the file, in page space: only the annotations are
    // left to record.
    mu::DisplayList contents;
};

struct PDFDisplayListPrivate
{
    mu::DisplayList contents; // in page space, drawn before list when recorded ahead
    mu::DisplayList list; // in page space
    PageGeometry geometry { {}, 0 };
    quint64 revision = 0;
};

namespace mu {

fz_matrix toFz(const QTransform &t);
QTransform fromFz(const fz_matrix &m);
QRectF fromFz(const fz_rect &r);
fz_rect toFz(const QRectF &r);

// Page space to MuPDF's page space of a loaded page (y down, crop origin, rotated), and back.
fz_matrix pageSpaceToFz(fz_context *ctx, pdf_page *page);
fz_matrix fzToPageSpace(fz_context *ctx, pdf_page *page);

// A cookie registered with a cancellation for the time of one piece of work, which runs within
// the work limits: past its memory MuPDF fails, past its time the cookie aborts.
class CookieScope
{
public:
    explicit CookieScope(PDFCancellation *cancel);
    ~CookieScope();
    CookieScope(const CookieScope &) = delete;
    CookieScope &operator=(const CookieScope &) = delete;
    fz_cookie *cookie() { return &m_cookie; }
    bool aborted() const;
    // The decoded content a page may have, for checkContentLength.
    qint64 contentLimit() const { return m_contentLimit; }

private:
    PDFCancellation *m_cancel;
    fz_cookie m_cookie {};
    qint64 m_contentLimit = 0;
    std::optional<BudgetScope> m_budget;
};

} // namespace mu
