#pragma once

// Pages of one document loaded on a background thread before the reader reaches them. Loading a
// page parses its objects and resources, which can take milliseconds on a long document's pages;
// done here, ahead of the scroll, the main thread later finds the page open in MuPDF and takes it
// at no cost. A few pages are held at a time; older ones are let go as new ones are loaded.

#include "mupdf/MuOwned.h"

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace mu {
class DocumentHandle;
}

class PageLoadAhead : public std::enable_shared_from_this<PageLoadAhead>
{
public:
    struct Wanted
    {
        int index = 0; // MuPDF's page number now
        int object = 0; // the page object's number, checked before the page is kept
    };

    explicit PageLoadAhead(std::shared_ptr<mu::DocumentHandle> handle);
    // Lets go of the pages held, under the document's lock.
    ~PageLoadAhead();
    PageLoadAhead(const PageLoadAhead &) = delete;
    PageLoadAhead &operator=(const PageLoadAhead &) = delete;

    const std::shared_ptr<mu::DocumentHandle> &handle() const { return m_handle; }
    // The pages to load, nearest first, replacing the last wish; as many as are held at most.
    // Any thread.
    void want(std::vector<Wanted> pages);
    // Lets go of the pages held and forgets the wish: the places they were loaded for no longer
    // hold. The document's lock is held.
    void dropLocked();

private:
    void loadOn();
    void loadLocked(const Wanted &wanted);

    const std::shared_ptr<mu::DocumentHandle> m_handle;
    std::mutex m_wantedMutex;
    std::vector<Wanted> m_wanted; // next first; guarded by m_wantedMutex
    bool m_loading = false; // a job is queued or runs; guarded by m_wantedMutex
    std::deque<pdf_page *> m_held; // oldest first; guarded by the document's lock
};
