#include "OutlineIO.h"

#include "PDFActionGoTo.h"
#include "PDFActionRemoteGoTo.h"
#include "PDFActionURL.h"
#include "PDFDestination.h"
#include "PDFOutline.h"
#include "mupdf/MuOwned.h"

#include <QSet>

#include <cstring>

namespace OutlineIO {
namespace {

constexpr int MaxDepth = 64;
constexpr double Unspecified = PDFDestination::UnspecifiedValue;

struct ParsedDestination
{
    int pageObject = 0; // page object number, or
    int pageNumber = -1; // a page number (remote destinations)
    double x = Unspecified;
    double y = Unspecified;
    double zoom = Unspecified;
    bool valid = false;
};

// Reads an explicit destination array, or a dictionary holding one under /D.
void parseArray(fz_context *ctx, pdf_obj *array, ParsedDestination &result)
{
    if (pdf_is_dict(ctx, array))
        array = pdf_dict_get(ctx, array, PDF_NAME(D));
    if (!pdf_is_array(ctx, array) || pdf_array_len(ctx, array) < 1)
        fz_throw(ctx, FZ_ERROR_GENERIC, "not a destination");
    pdf_obj *page = pdf_array_get(ctx, array, 0);
    if (pdf_is_int(ctx, page))
        result.pageNumber = pdf_to_int(ctx, page);
    else
        result.pageObject = pdf_to_num(ctx, page);
    pdf_obj *kind = pdf_array_get(ctx, array, 1);
    const auto number = [&](int i) {
        pdf_obj *value = pdf_array_get(ctx, array, i);
        return pdf_is_number(ctx, value) ? static_cast<double>(pdf_to_real(ctx, value))
                                         : Unspecified;
    };
    if (pdf_name_eq(ctx, kind, PDF_NAME(XYZ))) {
        result.x = number(2);
        result.y = number(3);
        result.zoom = number(4);
        if (result.zoom == 0)
            result.zoom = Unspecified;
    } else if (pdf_name_eq(ctx, kind, PDF_NAME(FitH)) || pdf_name_eq(ctx, kind, PDF_NAME(FitBH))) {
        result.y = number(2);
    } else if (pdf_name_eq(ctx, kind, PDF_NAME(FitV)) || pdf_name_eq(ctx, kind, PDF_NAME(FitBV))) {
        result.x = number(2);
    } else if (pdf_name_eq(ctx, kind, PDF_NAME(FitR))) {
        result.x = number(2);
        result.y = number(5);
    }
    result.valid = true;
}

// Reads a destination; names and strings are looked up first.
ParsedDestination parseDestination(fz_context *ctx, pdf_document *doc, pdf_obj *dest)
{
    ParsedDestination result;
    mu::Error error;
    mu::run(ctx, error, [&] {
        pdf_obj *array = dest;
        if (pdf_is_name(ctx, array) || pdf_is_string(ctx, array))
            array = pdf_lookup_dest(ctx, doc, array);
        parseArray(ctx, array, result);
    });
    return result;
}

} // namespace

class Reader
{
public:
    Reader(fz_context *ctx, pdf_document *doc, const UnreadDestination &stamp)
        : m_ctx(ctx)
        , m_doc(doc)
        , m_stamp(stamp)
    { }

    void readChildren(pdf_obj *first, PDFOutline &parent, int depth)
    {
        if (depth > MaxDepth)
            return;
        for (pdf_obj *item = first; item; item = next(item)) {
            const int number = objectNumber(item);
            if (number <= 0 || m_seen.contains(number))
                return;
            m_seen.insert(number);
            auto outline = std::make_shared<PDFOutline>();
            readItem(item, *outline);
            parent.insertChild(outline, parent.numberOfChildren());
            readChildren(get(item, PDF_NAME(First)), *outline, depth + 1);
        }
    }

private:
    pdf_obj *get(pdf_obj *dict, pdf_obj *key)
    {
        pdf_obj *value = nullptr;
        mu::Error error;
        mu::run(m_ctx, error, [&] { value = pdf_dict_get(m_ctx, dict, key); });
        return value;
    }
    pdf_obj *next(pdf_obj *item) { return get(item, PDF_NAME(Next)); }
    int objectNumber(pdf_obj *obj)
    {
        int number = 0;
        mu::Error error;
        mu::run(m_ctx, error, [&] { number = pdf_to_num(m_ctx, obj); });
        return number;
    }
    QString text(pdf_obj *dict, pdf_obj *key)
    {
        const char *value = nullptr;
        mu::Error error;
        mu::run(m_ctx, error, [&] { value = pdf_dict_get_text_string(m_ctx, dict, key); });
        return value ? QString::fromUtf8(value) : QString();
    }

    void readItem(pdf_obj *item, PDFOutline &outline)
    {
        outline.setLabel(text(item, PDF_NAME(Title)));
        int count = 0;
        pdf_obj *dest = nullptr;
        pdf_obj *action = nullptr;
        bool isGoTo = false;
        bool isURI = false;
        bool isRemote = false;
        mu::Error error;
        mu::run(m_ctx, error, [&] {
            count = pdf_dict_get_int(m_ctx, item, PDF_NAME(Count));
            dest = pdf_dict_get(m_ctx, item, PDF_NAME(Dest));
            action = pdf_dict_get(m_ctx, item, PDF_NAME(A));
            pdf_obj *kind = pdf_dict_get(m_ctx, action, PDF_NAME(S));
            isGoTo = pdf_name_eq(m_ctx, kind, PDF_NAME(GoTo));
            isURI = pdf_name_eq(m_ctx, kind, PDF_NAME(URI));
            isRemote = pdf_name_eq(m_ctx, kind, PDF_NAME(GoToR));
        });
        outline.setIsOpen(count > 0);
        if (!dest && isGoTo)
            dest = get(action, PDF_NAME(D));
        if (dest) {
            outline.m_unread = unreadFor(dest);
        } else if (isURI) {
            outline.setAction(std::make_shared<PDFActionURL>(QUrl(text(action, PDF_NAME(URI)))));
        } else if (isRemote) {
            pdf_obj *file = get(action, PDF_NAME(F));
            QString name = text(action, PDF_NAME(F));
            if (name.isEmpty() && file) {
                name = text(file, PDF_NAME(UF));
                if (name.isEmpty())
                    name = text(file, PDF_NAME(F));
            }
            const ParsedDestination parsed
                = parseDestination(m_ctx, m_doc, get(action, PDF_NAME(D)));
            outline.setAction(std::make_shared<PDFActionRemoteGoTo>(
                parsed.valid ? parsed.pageNumber : 0, QPointF(parsed.x, parsed.y), QUrl(name)));
        }
    }

    // Names are kept as they stand; an array is read now, as it lies in the item or near it.
    std::shared_ptr<const UnreadDestination> unreadFor(pdf_obj *dest)
    {
        auto unread = std::make_shared<UnreadDestination>(m_stamp);
        ParsedDestination parsed;
        const char *bytes = nullptr;
        size_t length = 0;
        mu::Error error;
        mu::run(m_ctx, error, [&] {
            if (pdf_is_name(m_ctx, dest) || pdf_is_string(m_ctx, dest)) {
                unread->nameIsString = pdf_is_string(m_ctx, dest);
                bytes
                    = unread->nameIsString ? pdf_to_str_buf(m_ctx, dest) : pdf_to_name(m_ctx, dest);
                length = unread->nameIsString ? pdf_to_str_len(m_ctx, dest) : std::strlen(bytes);
            } else {
                parseArray(m_ctx, dest, parsed);
            }
        });
        // The bytes belong to the item's dictionary, which the document holds meanwhile.
        if (!error.failed && bytes)
            unread->name = QByteArray(bytes, qsizetype(length));
        if (error.failed || (unread->name.isEmpty() && parsed.pageObject <= 0))
            return nullptr;
        unread->pageObject = parsed.pageObject;
        unread->x = parsed.x;
        unread->y = parsed.y;
        unread->zoom = parsed.zoom;
        return unread;
    }

    fz_context *m_ctx;
    pdf_document *m_doc;
    const UnreadDestination &m_stamp;
    QSet<int> m_seen;
};

namespace {

// Count of items shown under an item when it is open.
int visibleCount(const PDFOutline &item)
{
    int count = 0;
    for (int i = 0; i < item.numberOfChildren(); ++i) {
        const auto child = item.childAtIndex(i);
        count += 1 + (child->isOpen() ? visibleCount(*child) : 0);
    }
    return count;
}

// Puts a destination array [page /XYZ x y zoom] (or /Fit) under key into dict.
void putDestination(fz_context *ctx, pdf_document *doc, pdf_obj *dict, pdf_obj *key, pdf_obj *page,
    int pageNumber, double x, double y, double zoom)
{
    pdf_obj *array = pdf_dict_put_array(ctx, dict, key, 5);
    if (page)
        pdf_array_push(ctx, array, page);
    else
        pdf_array_push_int(ctx, array, pageNumber);
    if (x == Unspecified && y == Unspecified && zoom == Unspecified) {
        pdf_array_push(ctx, array, PDF_NAME(Fit));
        return;
    }
    pdf_array_push(ctx, array, PDF_NAME(XYZ));
    for (const double value : { x, y, zoom }) {
        if (value == Unspecified)
            pdf_array_push(ctx, array, PDF_NULL);
        else
            pdf_array_push_real(ctx, array, value);
    }
    (void)doc;
}

class Writer
{
public:
    Writer(fz_context *ctx, pdf_document *doc,
        const std::function<pdf_obj *(const PDFPage &)> &objectForPage, mu::Error &error)
        : m_ctx(ctx)
        , m_doc(doc)
        , m_objectForPage(objectForPage)
        , m_error(error)
    { }

    // Writes the children of item under parentRef; returns false on failure.
    bool writeChildren(const PDFOutline &item, pdf_obj *parentRef, int depth)
    {
        if (depth > MaxDepth)
            return true;
        pdf_obj *previous = nullptr;
        for (int i = 0; i < item.numberOfChildren(); ++i) {
            const auto child = item.childAtIndex(i);
            pdf_obj *ref = writeItem(*child, parentRef, previous);
            if (!ref)
                return false;
            if (!writeChildren(*child, ref, depth + 1))
                return false;
            previous = ref;
        }
        return true;
    }

private:
    pdf_obj *writeItem(const PDFOutline &item, pdf_obj *parentRef, pdf_obj *previous)
    {
        const QByteArray title = item.label().toUtf8();
        const char *const titleText = title.constData();
        const bool last = item.index() == item.parent()->numberOfChildren() - 1;
        const bool first = item.index() == 0;
        const int children = item.numberOfChildren();
        const int count = children ? (item.isOpen() ? 1 : -1) * visibleCount(item) : 0;

        pdf_obj *destPage = nullptr;
        double x = Unspecified, y = Unspecified, zoom = Unspecified;
        int remotePage = -1;
        QByteArray uri;
        QByteArray remoteFile;
        auto destination = item.destination();
        const auto action = item.action();
        if (!destination && action && action->type() == QLatin1String("GoTo"))
            destination = static_cast<const PDFActionGoTo &>(*action).destination();
        if (destination && destination->page()) {
            destPage = m_objectForPage(*destination->page());
            x = destination->point().x();
            y = destination->point().y();
            zoom = destination->zoom();
        } else if (action && action->type() == QLatin1String("URI")) {
            uri = static_cast<const PDFActionURL &>(*action).URL().toString().toUtf8();
        } else if (action && action->type() == QLatin1String("GoToR")) {
            const auto &remote = static_cast<const PDFActionRemoteGoTo &>(*action);
            remotePage = remote.pageIndex();
            x = remote.point().x();
            y = remote.point().y();
            remoteFile = remote.URL().toString().toUtf8();
        }
        const char *const uriText = uri.isEmpty() ? nullptr : uri.constData();
        const char *const fileText = remoteFile.isEmpty() ? nullptr : remoteFile.constData();

        pdf_obj *ref = nullptr;
        fz_context *ctx = m_ctx;
        pdf_document *doc = m_doc;
        mu::run(ctx, m_error, [&] {
            ref = pdf_add_new_dict(ctx, doc, 6);
            pdf_dict_put_text_string(ctx, ref, PDF_NAME(Title), titleText);
            pdf_dict_put(ctx, ref, PDF_NAME(Parent), parentRef);
            if (previous) {
                pdf_dict_put(ctx, ref, PDF_NAME(Prev), previous);
                pdf_dict_put(ctx, previous, PDF_NAME(Next), ref);
            }
            if (first)
                pdf_dict_put(ctx, parentRef, PDF_NAME(First), ref);
            if (last)
                pdf_dict_put(ctx, parentRef, PDF_NAME(Last), ref);
            if (count)
                pdf_dict_put_int(ctx, ref, PDF_NAME(Count), count);
            if (destPage) {
                putDestination(ctx, doc, ref, PDF_NAME(Dest), destPage, 0, x, y, zoom);
            } else if (uriText) {
                pdf_obj *a = pdf_dict_put_dict(ctx, ref, PDF_NAME(A), 2);
                pdf_dict_put(ctx, a, PDF_NAME(S), PDF_NAME(URI));
                pdf_dict_put_string(ctx, a, PDF_NAME(URI), uriText, strlen(uriText));
            } else if (fileText) {
                pdf_obj *a = pdf_dict_put_dict(ctx, ref, PDF_NAME(A), 3);
                pdf_dict_put(ctx, a, PDF_NAME(S), PDF_NAME(GoToR));
                pdf_dict_put_text_string(ctx, a, PDF_NAME(F), fileText);
                putDestination(ctx, doc, a, PDF_NAME(D), nullptr, remotePage, x, y, Unspecified);
            }
        });
        if (m_error.failed) {
            if (ref)
                mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, ref); });
            return nullptr;
        }
        // The document's xref keeps the object; the links above hold it from here on.
        m_keep.push_back(ref);
        return ref;
    }

public:
    ~Writer()
    {
        fz_context *ctx = m_ctx;
        for (pdf_obj *ref : m_keep)
            mu::runQuietly(ctx, [&] { pdf_drop_obj(ctx, ref); });
    }

private:
    fz_context *m_ctx;
    pdf_document *m_doc;
    const std::function<pdf_obj *(const PDFPage &)> &m_objectForPage;
    mu::Error &m_error;
    std::vector<pdf_obj *> m_keep;
};

} // namespace

std::shared_ptr<PDFOutline> read(fz_context *ctx, pdf_document *doc, const UnreadDestination &stamp)
{
    pdf_obj *outlines = nullptr;
    pdf_obj *first = nullptr;
    mu::Error error;
    mu::run(ctx, error, [&] {
        outlines = pdf_dict_get(
            ctx, pdf_dict_get(ctx, pdf_trailer(ctx, doc), PDF_NAME(Root)), PDF_NAME(Outlines));
        first = pdf_dict_get(ctx, outlines, PDF_NAME(First));
    });
    if (!outlines || !first)
        return nullptr;
    auto root = std::make_shared<PDFOutline>();
    Reader(ctx, doc, stamp).readChildren(first, *root, 0);
    return root;
}

std::shared_ptr<PDFDestination> readDestination(fz_context *ctx, pdf_document *doc,
    const UnreadDestination &unread, const PageForObject &pageForObject)
{
    ParsedDestination parsed;
    parsed.pageObject = unread.pageObject;
    parsed.x = unread.x;
    parsed.y = unread.y;
    parsed.zoom = unread.zoom;
    if (!unread.name.isEmpty()) {
        mu::Object name;
        mu::Error error;
        mu::run(ctx, error, [&] {
            name.p = unread.nameIsString
                ? pdf_new_string(ctx, unread.name.constData(), size_t(unread.name.size()))
                : pdf_new_name(ctx, unread.name.constData());
        });
        if (error.failed)
            return nullptr;
        parsed = parseDestination(ctx, doc, name.p);
    }
    if (parsed.pageObject <= 0)
        return nullptr;
    const auto page = pageForObject(parsed.pageObject);
    if (!page)
        return nullptr;
    auto destination = std::make_shared<PDFDestination>(page, QPointF(parsed.x, parsed.y));
    destination->setZoom(parsed.zoom);
    return destination;
}

bool write(fz_context *ctx, pdf_document *doc, const PDFOutline *root,
    const std::function<pdf_obj *(const PDFPage &)> &objectForPage, mu::Error &error)
{
    const bool any = root && root->numberOfChildren() > 0;
    const int count = any ? visibleCount(*root) : 0;
    mu::Object outlines;
    mu::run(ctx, error, [&] {
        pdf_obj *catalog = pdf_dict_get(ctx, pdf_trailer(ctx, doc), PDF_NAME(Root));
        pdf_dict_del(ctx, catalog, PDF_NAME(Outlines));
        if (any) {
            outlines.p = pdf_add_new_dict(ctx, doc, 4);
            pdf_dict_put(ctx, outlines.p, PDF_NAME(Type), PDF_NAME(Outlines));
            pdf_dict_put_int(ctx, outlines.p, PDF_NAME(Count), count);
            pdf_dict_put(ctx, catalog, PDF_NAME(Outlines), outlines.p);
        }
    });
    if (error.failed || !any)
        return !error.failed;
    return Writer(ctx, doc, objectForPage, error).writeChildren(*root, outlines.p, 0);
}

} // namespace OutlineIO
