#pragma once

// A long document's page tree read ahead on a background thread, a page at a time under the
// document's lock, so that the main thread's walk through it (the view's page sizes, the pages
// of links and outline items) finds each page's node parsed, rather than parsing the object
// stream that holds it in the middle of a frame. It ends with the tree, once the main thread's
// walk has reached the end (walked), or once nothing else holds the document; running is set
// until it ends.

#include <atomic>
#include <memory>

namespace mu {
class DocumentHandle;
}

namespace PageTreeReadAhead {

void start(const std::shared_ptr<mu::DocumentHandle> &handle,
    const std::shared_ptr<const std::atomic<bool>> &walked,
    const std::shared_ptr<std::atomic<bool>> &running);

} // namespace PageTreeReadAhead
