#pragma once

// A walk of the page tree that stops after any page and goes on from there later, so that
// opening a long document reads only the pages it shows first. It follows no loop, trusts no
// count, and says when the tree does not add up, for the caller to read it whole instead.

#include "mupdf/MuOwned.h"
#include "mupdf/MuTry.h"

#include <unordered_set>
#include <vector>

class PageTreeWalk
{
public:
    enum class Step { Page, End, Broken, Unread };
    // Whether a step may read objects from the file, or only take those MuPDF holds already.
    enum class Reading { File, HeldOnly };

    PageTreeWalk() = default;
    PageTreeWalk(const PageTreeWalk &) = delete;
    PageTreeWalk &operator=(const PageTreeWalk &) = delete;
    ~PageTreeWalk();

    // Starts at the tree's root; answers the number of pages the root claims, or 0 when the
    // root cannot be walked this way. The caller holds the document's lock here and below.
    int start(fz_context *ctx, pdf_document *doc);
    // The next page in tree order as a new reference in page (Page), the end of a tree whose
    // counts all added up (End), or a loop, a node that is not one, a wrong count (Broken). Held
    // only, it stops before a node that would have to be read from the file (Unread), and takes
    // it up again from there on the next call.
    Step next(fz_context *ctx, pdf_obj *&page, Reading reading = Reading::File);
    void clear();
    bool active() const { return !m_path.empty(); }

private:
    struct Node
    {
        pdf_obj *kids = nullptr; // kept
        int next = 0;
        int claimed = 0;
        int leaves = 0;
    };
    Step broken();

    std::vector<Node> m_path;
    std::unordered_set<int> m_seen;
};
