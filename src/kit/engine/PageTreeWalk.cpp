#include "PageTreeWalk.h"

#include "mupdf/MuContext.h"

namespace {

constexpr size_t MaxDepth = 64;

// Whether the object is at hand without a read of the file: a direct one, or one MuPDF parsed
// before.
bool isHeld(fz_context *ctx, pdf_obj *obj)
{
    bool held = true;
    mu::runQuietly(ctx, [&] {
        if (pdf_is_indirect(ctx, obj))
            held = pdf_get_xref_entry_no_null(
                       ctx, pdf_get_indirect_document(ctx, obj), pdf_to_num(ctx, obj))
                       ->obj
                != nullptr;
    });
    return held;
}

} // namespace

PageTreeWalk::~PageTreeWalk()
{
    clear();
}

void PageTreeWalk::clear()
{
    fz_context *ctx = mu::context();
    for (const Node &node : m_path)
        mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, node.kids); });
    m_path.clear();
    m_seen.clear();
}

PageTreeWalk::Step PageTreeWalk::broken()
{
    clear();
    return Step::Broken;
}

int PageTreeWalk::start(fz_context *ctx, pdf_document *doc)
{
    clear();
    Node root;
    int number = 0;
    mu::runQuietly(ctx, [&] {
        pdf_obj *node = pdf_dict_getp(ctx, pdf_trailer(ctx, doc), "Root/Pages");
        if (!pdf_is_dict(ctx, node) || !pdf_is_array(ctx, pdf_dict_get(ctx, node, PDF_NAME(Kids))))
            return;
        number = pdf_to_num(ctx, node);
        root.claimed = pdf_dict_get_int(ctx, node, PDF_NAME(Count));
        root.kids = pdf_keep_obj(ctx, pdf_dict_get(ctx, node, PDF_NAME(Kids)));
    });
    if (number <= 0 || root.claimed <= 0) {
        mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, root.kids); });
        return 0;
    }
    m_path.reserve(MaxDepth + 1);
    m_path.push_back(root);
    m_seen.insert(number);
    return root.claimed;
}

PageTreeWalk::Step PageTreeWalk::next(fz_context *ctx, pdf_obj *&page, Reading reading)
{
    page = nullptr;
    while (!m_path.empty()) {
        Node &node = m_path.back();
        pdf_obj *const kids = node.kids;
        const int at = node.next;
        bool done = false;
        pdf_obj *kid = nullptr;
        int number = 0;
        bool dict = false;
        bool inner = false;
        int claimed = 0;
        if (reading == Reading::HeldOnly) {
            bool unread = !isHeld(ctx, kids);
            mu::runQuietly(ctx, [&] {
                unread = unread
                    || (at < pdf_array_len(ctx, kids)
                        && !isHeld(ctx, pdf_array_get(ctx, kids, at)));
            });
            if (unread)
                return Step::Unread;
        }
        mu::Error error;
        // Classified as MuPDF's own page lookup does, so a sound tree means the same to both.
        mu::run(ctx, error, [&] {
            if (at >= pdf_array_len(ctx, kids)) {
                done = true;
                return;
            }
            kid = pdf_array_get(ctx, kids, at);
            number = pdf_to_num(ctx, kid);
            dict = pdf_is_dict(ctx, kid);
            pdf_obj *type = pdf_dict_get(ctx, kid, PDF_NAME(Type));
            inner = type ? pdf_name_eq(ctx, type, PDF_NAME(Pages))
                         : pdf_dict_get(ctx, kid, PDF_NAME(Kids))
                    && !pdf_dict_get(ctx, kid, PDF_NAME(MediaBox));
            if (inner)
                claimed = pdf_dict_get_int(ctx, kid, PDF_NAME(Count));
        });
        if (error.failed)
            return broken();
        if (done) {
            if (node.leaves != node.claimed)
                return broken();
            const int leaves = node.leaves;
            mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, kids); });
            m_path.pop_back();
            if (m_path.empty())
                return Step::End;
            m_path.back().leaves += leaves;
            continue;
        }
        ++node.next;
        if (!dict || number <= 0 || !m_seen.insert(number).second)
            return broken();
        if (inner) {
            Node child;
            child.claimed = claimed;
            mu::run(ctx, error, [&] {
                pdf_obj *grandKids = pdf_dict_get(ctx, kid, PDF_NAME(Kids));
                if (!pdf_is_array(ctx, grandKids))
                    fz_throw(ctx, FZ_ERROR_GENERIC, "a page tree node without kids");
                child.kids = pdf_keep_obj(ctx, grandKids);
            });
            if (error.failed || m_path.size() > MaxDepth) {
                mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, child.kids); });
                return broken();
            }
            m_path.push_back(child);
            continue;
        }
        ++node.leaves;
        mu::runQuietly(ctx, [&] { page = pdf_keep_obj(ctx, kid); });
        return Step::Page;
    }
    return Step::End;
}
