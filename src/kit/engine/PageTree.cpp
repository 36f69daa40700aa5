#include "PageTree.h"

#include <array>
#include <climits>
#include <cstring>
#include <system_error>
#include <thread>
#include <unordered_set>
#include <vector>

namespace PageTree {
namespace {

constexpr int MaxDepth = 64;
// Below this many objects the check takes under a millisecond: a thread would cost more.
constexpr int SharedCheckFrom = 16384;

class Walker
{
public:
    explicit Walker(fz_context *ctx)
        : m_ctx(ctx)
    { }

    // Leaves under an intermediate node; a node, page or /Count that is not what it should be
    // marks the tree unsound, and the node or page is left out.
    int walk(pdf_obj *node, int depth)
    {
        pdf_obj *kids = nullptr;
        int count = 0;
        int claimed = -1;
        mu::Error error;
        mu::run(m_ctx, error, [&] {
            kids = pdf_dict_get(m_ctx, node, PDF_NAME(Kids));
            count = pdf_array_len(m_ctx, kids);
            claimed = pdf_dict_get_int(m_ctx, node, PDF_NAME(Count));
        });
        int leaves = 0;
        for (int i = 0; i < count && !error.failed; ++i) {
            pdf_obj *kid = nullptr;
            int number = 0;
            bool dict = false;
            bool inner = false;
            mu::Error kidError;
            // Classified as MuPDF's own page lookup does, so a sound tree means the same to both.
            mu::run(m_ctx, kidError, [&] {
                kid = pdf_array_get(m_ctx, kids, i);
                number = pdf_to_num(m_ctx, kid);
                dict = pdf_is_dict(m_ctx, kid);
                pdf_obj *type = pdf_dict_get(m_ctx, kid, PDF_NAME(Type));
                inner = type ? pdf_name_eq(m_ctx, type, PDF_NAME(Pages))
                             : pdf_dict_get(m_ctx, kid, PDF_NAME(Kids))
                        && !pdf_dict_get(m_ctx, kid, PDF_NAME(MediaBox));
            });
            if (kidError.failed || !dict || number <= 0 || !m_seen.insert(number).second
                || (inner && depth >= MaxDepth)) {
                sound = false;
                continue;
            }
            if (inner) {
                leaves += walk(kid, depth + 1);
                continue;
            }
            mu::runQuietly(m_ctx, [&] { pages.push_back(pdf_keep_obj(m_ctx, kid)); });
            ++leaves;
        }
        if (error.failed || claimed != leaves)
            sound = false;
        return leaves;
    }

    void markSeen(int number) { m_seen.insert(number); }

    std::vector<pdf_obj *> pages;
    bool sound = true;

private:
    fz_context *m_ctx;
    std::unordered_set<int> m_seen;
};

// Every object of the file that is a page, in object order.
std::vector<pdf_obj *> scanObjects(fz_context *ctx, pdf_document *doc)
{
    std::vector<pdf_obj *> found;
    int count = 0;
    mu::runQuietly(ctx, [&] { count = pdf_xref_len(ctx, doc); });
    for (int number = 1; number < count; ++number) {
        pdf_obj *page = nullptr;
        mu::runQuietly(ctx, [&] {
            pdf_xref_entry *entry = pdf_get_xref_entry_no_null(ctx, doc, number);
            if (entry->type != 'n' && entry->type != 'o')
                fz_throw(ctx, FZ_ERROR_GENERIC, "no object");
            page = pdf_new_indirect(ctx, doc, number, 0);
            if (!pdf_name_eq(ctx, pdf_dict_get(ctx, page, PDF_NAME(Type)), PDF_NAME(Page))) {
                pdf_drop_obj(ctx, page);
                page = nullptr;
            }
        });
        if (page)
            found.push_back(page);
    }
    return found;
}

// Replaces the page tree by one node holding the pages, each page keeping what it inherited.
void rebuild(
    fz_context *ctx, pdf_document *doc, const std::vector<pdf_obj *> &pages, mu::Error &error)
{
    pdf_obj *const *const list = pages.data();
    const int count = static_cast<int>(pages.size());
    mu::Object kids;
    mu::run(ctx, error, [&] {
        for (int i = 0; i < count; ++i)
            pdf_flatten_inheritable_page_items(ctx, list[i]);
        // An object that is a page cannot also be the catalog or the tree's root.
        const auto isPage = [&](pdf_obj *obj) {
            return pdf_name_eq(ctx, pdf_dict_get(ctx, obj, PDF_NAME(Type)), PDF_NAME(Page));
        };
        pdf_obj *catalog = pdf_dict_get(ctx, pdf_trailer(ctx, doc), PDF_NAME(Root));
        if (!pdf_is_dict(ctx, catalog) || isPage(catalog)) {
            catalog = pdf_add_new_dict(ctx, doc, 2);
            pdf_dict_put(ctx, catalog, PDF_NAME(Type), PDF_NAME(Catalog));
            // Asked again: the first new object of an unchanged document starts a section of
            // its own with a copy of the trailer, and only that copy is written.
            pdf_dict_put_drop(ctx, pdf_trailer(ctx, doc), PDF_NAME(Root), catalog);
        }
        pdf_obj *root = pdf_dict_get(ctx, catalog, PDF_NAME(Pages));
        if (!pdf_is_dict(ctx, root) || !pdf_is_indirect(ctx, root) || isPage(root)) {
            root = pdf_add_new_dict(ctx, doc, 3);
            pdf_dict_put_drop(ctx, catalog, PDF_NAME(Pages), root);
        }
        pdf_dict_put(ctx, root, PDF_NAME(Type), PDF_NAME(Pages));
        pdf_dict_del(ctx, root, PDF_NAME(Parent));
        kids.p = pdf_new_array(ctx, doc, count);
        for (int i = 0; i < count; ++i) {
            pdf_array_push(ctx, kids.p, list[i]);
            pdf_dict_put(ctx, list[i], PDF_NAME(Parent), root);
        }
        pdf_dict_put(ctx, root, PDF_NAME(Kids), kids.p);
        pdf_dict_put_int(ctx, root, PDF_NAME(Count), count);
    });
}

// Loads every object once, so that MuPDF meets a broken one now rather than while saving.
void touchEveryObject(fz_context *ctx, pdf_document *doc)
{
    int count = 0;
    mu::runQuietly(ctx, [&] { count = pdf_xref_len(ctx, doc); });
    for (int number = 1; number < count; ++number)
        mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, pdf_load_object(ctx, doc, number)); });
}

// PDF white space: the bytes MuPDF's lexer skips between tokens.
constexpr std::array<bool, 256> spaceBytes = [] {
    std::array<bool, 256> table {};
    for (const unsigned char c : { ' ', '\n', '\r', '\t', '\f', '\0' })
        table[c] = true;
    return table;
}();

inline bool isSpace(char c)
{
    return spaceBytes[static_cast<unsigned char>(c)];
}

bool isDelimiter(char c)
{
    return std::strchr("()<>[]{}/%", c) != nullptr && c != '\0';
}

// Reads a decimal number at pos of the size bytes at data, moving past it; -1 when there is none.
// Called twice for every object of a long file before its first page shows, so it stays inline.
inline long long readNumber(const char *data, qsizetype size, qsizetype &pos)
{
    while (pos < size && isSpace(data[pos]))
        ++pos;
    const qsizetype first = pos;
    long long value = 0;
    for (; pos < size; ++pos) {
        const unsigned digit = static_cast<unsigned char>(data[pos]) - unsigned('0');
        if (digit > 9)
            break;
        if (pos - first > 12)
            return -1;
        value = value * 10 + digit;
    }
    return pos == first ? -1 : value;
}

// The entries of a file read from one cross-reference section that MuPDF holds as a single table
// from object 0 on, as it does for most files once opened; null for any other shape (updates
// appended, a section with gaps, a local table active), which is asked object by object.
const pdf_xref_entry *solidTable(pdf_document *doc, int count)
{
    if (doc->num_xref_sections != 1 || doc->xref_base != 0 || doc->local_xref
        || !doc->xref_sections)
        return nullptr;
    const pdf_xref &xref = doc->xref_sections[0];
    const pdf_xref_subsec *const sub = xref.subsec;
    if (!sub || sub->next || sub->start != 0 || sub->len < count || xref.num_objects < count
        || !sub->table)
        return nullptr;
    return sub->table;
}

// Whether objects numbered [first, last) start where entryOf(number) places them in the file.
template <typename EntryOf>
bool placedRange(const EntryOf &entryOf, QByteArrayView file, int first, int last)
{
    const char *const data = file.data();
    const qsizetype size = file.size();
    for (int number = first; number < last; ++number) {
        const PlacedObject entry = entryOf(number);
        if (entry.held || entry.type != 'n')
            continue;
        if (entry.offset <= 0 || entry.offset >= size)
            return false;
        qsizetype pos = qsizetype(entry.offset);
        if (readNumber(data, size, pos) != number
            || readNumber(data, size, pos) != entry.generation)
            return false;
        while (pos < size && isSpace(data[pos]))
            ++pos;
        // The keyword ends where MuPDF's lexer ends it: "obju" is another word, not "obj".
        if (pos + 3 > size || std::memcmp(data + pos, "obj", 3) != 0
            || (pos + 3 < size && !isSpace(data[pos + 3]) && !isDelimiter(data[pos + 3])))
            return false;
    }
    return true;
}

// placedRange over objects [1, count), the second half on another thread when asked to share.
template <typename EntryOf>
bool allPlaced(const EntryOf &entryOf, QByteArrayView file, int count, CheckSharing share)
{
    // Most of the time goes into mapping in the file's pages, one fault per few pages: a
    // caller that waits for the answer has the second half read on another thread.
    if (share != CheckSharing::Shared || count < SharedCheckFrom)
        return placedRange(entryOf, file, 1, count);
    const int middle = count / 2;
    bool secondHalf = false;
    std::thread helper;
    try {
        helper = std::thread([&] { secondHalf = placedRange(entryOf, file, middle, count); });
    } catch (const std::system_error &) {
        return placedRange(entryOf, file, 1, count); // no thread to be had: the caller reads it all
    }
    const bool firstHalf = placedRange(entryOf, file, 1, middle);
    helper.join();
    return firstHalf && secondHalf;
}

PlacedObject placedObject(const pdf_xref_entry &entry)
{
    // An object MuPDF already holds (a new one, or one met before) is not read again.
    return { entry.ofs, entry.gen, entry.type, entry.obj != nullptr };
}

// Whether every object the cross-reference places in the file starts there with its own number,
// which is what MuPDF checks before it decides to repair. Reads the header only: no object is
// parsed, so a long sound file pays a few milliseconds instead of loading all its objects. The
// table is read where MuPDF keeps it when it is one block; otherwise the entries are copied in
// one pass of MuPDF calls, since a try block per object costs as much as the check itself.
bool objectsInPlace(fz_context *ctx, pdf_document *doc, QByteArrayView file, CheckSharing share)
{
    int count = 0;
    mu::runQuietly(ctx, [&] { count = pdf_xref_len(ctx, doc); });
    if (count <= 1)
        return true;
    // Nothing changes the table meanwhile: the caller has the document to itself.
    if (const pdf_xref_entry *const solid = solidTable(doc, count))
        return allPlaced(
            [solid](int number) { return placedObject(solid[number]); }, file, count, share);
    const ObjectPlaces places(ctx, doc);
    return places.inFile(file, share);
}

// Walks the tree from the catalog's /Pages; false when there is no such dictionary.
bool walkFromRoot(fz_context *ctx, pdf_document *doc, Walker &walker)
{
    pdf_obj *root = nullptr;
    int rootNumber = 0;
    mu::runQuietly(ctx, [&] {
        root = pdf_dict_getp(ctx, pdf_trailer(ctx, doc), "Root/Pages");
        rootNumber = pdf_is_dict(ctx, root) ? pdf_to_num(ctx, root) : 0;
    });
    if (rootNumber <= 0)
        return false;
    walker.markSeen(rootNumber);
    walker.walk(root, 0);
    return true;
}

struct HeldPage
{
    int number = 0;
    pdf_obj *dict = nullptr; // kept
};

// The page dictionaries the tree reaches as the file stands, each with its object number.
std::vector<HeldPage> pagesBeforeRepair(fz_context *ctx, pdf_document *doc)
{
    Walker walker(ctx);
    walkFromRoot(ctx, doc, walker);
    std::vector<HeldPage> held;
    for (pdf_obj *page : walker.pages) {
        mu::runQuietly(ctx, [&] {
            const int number = pdf_to_num(ctx, page);
            pdf_obj *dict = pdf_resolve_indirect(ctx, page);
            if (number > 0 && pdf_is_dict(ctx, dict))
                held.push_back({ number, pdf_keep_obj(ctx, dict) });
        });
        mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, page); });
    }
    return held;
}

// Whether the object table holds a dictionary under that number (not free, missing or null).
bool holdsDict(fz_context *ctx, pdf_document *doc, int number)
{
    bool dict = false;
    mu::runQuietly(ctx, [&] {
        if (number >= pdf_xref_len(ctx, doc))
            return;
        pdf_obj *obj = pdf_load_object(ctx, doc, number);
        dict = pdf_is_dict(ctx, obj);
        pdf_drop_obj(ctx, obj);
    });
    return dict;
}

bool wasRepaired(fz_context *ctx, pdf_document *doc)
{
    bool repaired = false;
    mu::runQuietly(ctx, [&] { repaired = pdf_was_repaired(ctx, doc); });
    return repaired;
}

} // namespace

ObjectPlaces::ObjectPlaces(fz_context *ctx, pdf_document *doc)
{
    int count = 0;
    mu::runQuietly(ctx, [&] { count = pdf_xref_len(ctx, doc); });
    if (count <= 1)
        return;
    m_entries.resize(static_cast<size_t>(count));
    PlacedObject *const table = m_entries.data();
    if (const pdf_xref_entry *const solid = solidTable(doc, count)) {
        for (int number = 1; number < count; ++number)
            table[number] = placedObject(solid[number]);
        return;
    }
    mu::Error error;
    mu::run(ctx, error, [&] {
        for (int number = 1; number < count; ++number)
            table[number] = placedObject(*pdf_get_xref_entry_no_null(ctx, doc, number));
    });
    m_readable = !error.failed;
}

bool ObjectPlaces::inFile(QByteArrayView file, CheckSharing share) const
{
    if (!m_readable || file.isEmpty())
        return false;
    if (m_entries.size() <= 1)
        return true;
    const PlacedObject *const table = m_entries.data();
    return allPlaced(
        [table](int number) { return table[number]; }, file, int(m_entries.size()), share);
}

bool repairIfDamaged(fz_context *ctx, pdf_document *doc, QByteArrayView file, CheckSharing share)
{
    if (wasRepaired(ctx, doc))
        return false;
    // MuPDF repairs the file by itself when it first meets an object that is not where the
    // cross-reference says, and drops every change made before: were that the next save, it
    // would write the repaired file's pages, not those shown. A file whose objects are all in
    // place has nothing to repair; any other file meets every object now.
    if (!file.isEmpty() && objectsInPlace(ctx, doc, file, share))
        return false;
    // The rescan can lose a sound page: a broken object before it is read on into its bytes.
    // Pages the tree reaches now, before the repair, are put back where the rescan lost them.
    const std::vector<HeldPage> held = pagesBeforeRepair(ctx, doc);
    touchEveryObject(ctx, doc);
    const bool repaired = wasRepaired(ctx, doc);
    for (const HeldPage &page : held) {
        mu::runQuietly(ctx, [&] {
            if (repaired && !holdsDict(ctx, doc, page.number))
                pdf_update_object(ctx, doc, page.number, page.dict);
        });
        mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, page.dict); });
    }
    return repaired;
}

int indexOf(fz_context *ctx, pdf_document *doc, int pageObject)
{
    int index = 0;
    bool found = false;
    mu::Error error;
    mu::run(ctx, error, [&] {
        pdf_obj *node = pdf_load_object(ctx, doc, pageObject);
        pdf_drop_obj(ctx, node); // the document's table holds it
        if (!pdf_name_eq(ctx, pdf_dict_get(ctx, node, PDF_NAME(Type)), PDF_NAME(Page)))
            return;
        pdf_obj *top = pdf_dict_getp(ctx, pdf_trailer(ctx, doc), "Root/Pages");
        int number = pageObject;
        for (int depth = 0; depth < MaxDepth; ++depth) {
            pdf_obj *parent = pdf_dict_get(ctx, node, PDF_NAME(Parent));
            if (!pdf_is_dict(ctx, parent))
                return;
            pdf_obj *kids = pdf_dict_get(ctx, parent, PDF_NAME(Kids));
            const int count = pdf_array_len(ctx, kids);
            int before = 0;
            bool listed = false;
            for (int i = 0; i < count && !listed; ++i) {
                pdf_obj *kid = pdf_array_get(ctx, kids, i);
                if (pdf_to_num(ctx, kid) == number) {
                    listed = true;
                } else if (pdf_name_eq(
                               ctx, pdf_dict_get(ctx, kid, PDF_NAME(Type)), PDF_NAME(Pages))) {
                    const int pages = pdf_dict_get_int(ctx, kid, PDF_NAME(Count));
                    if (pages < 0 || before > INT_MAX - pages)
                        return;
                    before += pages;
                } else {
                    ++before;
                }
            }
            if (!listed || index > INT_MAX - before)
                return;
            index += before;
            number = pdf_to_num(ctx, parent);
            if (number > 0 && number == pdf_to_num(ctx, top)) {
                found = true;
                return;
            }
            node = parent;
        }
    });
    return found && !error.failed ? index : -1;
}

Result load(fz_context *ctx, pdf_document *doc, bool scan, mu::Error &error)
{
    Result result;
    Walker walker(ctx);
    if (!walkFromRoot(ctx, doc, walker))
        walker.sound = false;
    result.pages = std::move(walker.pages);
    if (result.pages.empty() && scan) {
        result.pages = scanObjects(ctx, doc);
        // Pages that the tree does not hold reach MuPDF and a saved file only through a new one.
        if (!result.pages.empty())
            walker.sound = false;
    }
    result.broken = !walker.sound;
    if (!walker.sound && !result.pages.empty()) {
        rebuild(ctx, doc, result.pages, error);
        result.rebuilt = true;
    }
    return result;
}

} // namespace PageTree
