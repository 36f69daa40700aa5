#pragma once

// The page objects of a document as its page tree really holds them, found without trusting any
// count or shape the file claims. A tree that is broken (a loop, a wrong /Count, a missing page)
// is rebuilt flat from what was found, so MuPDF's page numbers and a saved file follow the list.

#include "mupdf/MuOwned.h"
#include "mupdf/MuTry.h"

#include <QByteArrayView>

#include <cstdint>
#include <vector>

namespace PageTree {

struct Result
{
    std::vector<pdf_obj *> pages; // new references, in order
    bool broken = false; // the tree was missing or did not add up
    bool rebuilt = false; // and has been replaced by one holding the pages found
};

// Whether the check of a file's objects may take a second thread: for a caller waiting on it,
// not for one reading ahead while other threads build the window.
enum class CheckSharing { Alone, Shared };

// Where the cross-reference places an object in the file.
struct PlacedObject
{
    int64_t offset = 0;
    int generation = 0;
    char type = 0;
    bool held = false; // MuPDF holds the object already, and does not read it again
};

// A copy of where the cross-reference places every object, taken while the caller holds the
// document, to be checked against the file on any thread while the document is used meanwhile.
class ObjectPlaces
{
public:
    ObjectPlaces(fz_context *ctx, pdf_document *doc);
    // Whether every object starts where it was placed, with its own number, which is what MuPDF
    // checks before it decides to repair; false also when the table could not be read.
    bool inFile(QByteArrayView file, CheckSharing share = CheckSharing::Alone) const;

private:
    std::vector<PlacedObject> m_entries;
    bool m_readable = true;
};

// Makes MuPDF meet now, before any page is listed, an object that is not where the
// cross-reference says (file: the bytes MuPDF reads; empty when they cannot be had, and then
// every object is loaded). Pages the tree reaches before the repair and its rescan loses are put
// back under their numbers. Answers whether MuPDF repaired the file. The caller holds the lock.
bool repairIfDamaged(fz_context *ctx, pdf_document *doc, QByteArrayView file,
    CheckSharing share = CheckSharing::Alone);

// The place in the tree of the page object with the number, counted up from its parents: each
// parent must list the node below it, the top one must be the catalog's /Pages, and a parent's
// other kids count by their /Count. -1 when the page does not lead back so; the caller then walks
// the tree. The caller holds the document's lock.
int indexOf(fz_context *ctx, pdf_document *doc, int pageObject);

// Every page object under the tree, walked whole. The caller holds the document's lock. With scan
// set, a tree without pages is replaced by the page objects found among all the file's objects (in
// object order). No pages is no error.
Result load(fz_context *ctx, pdf_document *doc, bool scan, mu::Error &error);

} // namespace PageTree
