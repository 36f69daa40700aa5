// PDFPage's annotations: building them from the file, adding and removing, writing changes
// through, keeping appearances fresh and choosing what engine drawing shows.

#include "PDFPage.h"

#include "AnnotationIO.h"
#include "PDFAnnotation.h"
#include "PDFAnnotationLink.h"
#include "PDFAnnotationPrivate.h"
#include "PDFAnnotationText.h"
#include "PDFDocument.h"
#include "PDFDocumentPrivate.h"
#include "PDFPagePrivate.h"
#include "PDFRenderPrivate.h"

#include <kit/base/Geometry.h>
#include <kit/base/MainQueue.h>

#include <QHash>
#include <QPainter>

#include <algorithm>
#include <mutex>
#include <optional>

namespace {

bool sameObject(fz_context *ctx, pdf_obj *a, pdf_obj *b)
{
    return a && b && pdf_resolve_indirect(ctx, a) == pdf_resolve_indirect(ctx, b);
}

} // namespace

namespace PDFPageInternals {

pdf_annot *findAnnot(fz_context *ctx, pdf_page *page, pdf_obj *object)
{
    pdf_annot *found = nullptr;
    mu::Error error;
    mu::run(ctx, error, [&] {
        for (pdf_annot *a = pdf_first_annot(ctx, page); a && !found; a = pdf_next_annot(ctx, a)) {
            if (sameObject(ctx, pdf_annot_obj(ctx, a), object))
                found = a;
        }
        for (pdf_annot *w = pdf_first_widget(ctx, page); w && !found; w = pdf_next_widget(ctx, w)) {
            if (sameObject(ctx, pdf_annot_obj(ctx, w), object))
                found = w;
        }
    });
    return found;
}

bool onPageInFile(const PDFPagePrivate &pd, const PDFAnnotationPrivate &ad)
{
    return ad.inFile && ad.object && pd.handle && ad.handle == pd.handle;
}

void resolveMovedLocked(PDFPagePrivate &pd, fz_context *ctx)
{
    if (!pd.annotationsMoved || !pd.handle)
        return;
    pd.annotationsMoved = false;
    pdf_obj *const pageObject = pd.object;
    for (const auto &annotation : pd.annotations) {
        PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(*annotation);
        const int index = std::exchange(ad.pendingIndex, -1);
        if (index < 0)
            continue;
        pdf_obj *copy = nullptr;
        mu::Error error;
        mu::run(ctx, error, [&] {
            pdf_obj *entry
                = pdf_array_get(ctx, pdf_dict_get(ctx, pageObject, PDF_NAME(Annots)), index);
            if (pdf_is_dict(ctx, entry))
                copy = pdf_keep_obj(ctx, entry);
        });
        if (!copy)
            continue;
        ad.bind(pd.handle, copy, true);
        ad.inFile = true;
        // The copy's picture was made before the move; one the engine makes is made again.
        if (!ad.ownAppearance && annotation->isAppearanceSynthesised())
            ad.appearanceDirty = true;
    }
    pd.appearancesStale = true;
}

} // namespace PDFPageInternals

using namespace PDFPageInternals;

namespace {

bool isListed(const PDFPagePrivate &pd, const PDFAnnotation &annotation)
{
    return std::any_of(pd.annotations.begin(), pd.annotations.end(),
        [&](const auto &a) { return a.get() == &annotation; });
}

AnnotationIO::ObjectForPage objectsIn(const PDFPagePrivate &pd)
{
    const auto handle = pd.handle;
    return [handle](const PDFPage &page) -> pdf_obj * {
        const PDFPagePrivate &other = PDFPagePrivate::of(page);
        return other.handle == handle ? other.object : nullptr;
    };
}

// Puts an annotation that is in no file into the page's file. Both files' locks are held.
void insertLocked(PDFPagePrivate &pd, fz_context *ctx, pdf_page *loaded, PDFAnnotation &annotation)
{
    PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(annotation);
    pdf_document *const doc = pd.handle->doc();
    pdf_obj *const pageObject = pd.object;
    const QByteArray type = annotation.type().toLatin1();
    const char *const typeName = type.constData();
    const bool synthesised = annotation.isAppearanceSynthesised();
    pdf_obj *const old = ad.object;
    const bool sameFile = ad.handle == pd.handle;
    pdf_obj *created = nullptr;
    mu::GraftMap map;
    mu::Error error;
    mu::run(ctx, error, [&] {
        const enum pdf_annot_type kind = pdf_annot_type_from_string(ctx, typeName);
        bool listed = kind != PDF_ANNOT_UNKNOWN && kind != PDF_ANNOT_LINK && kind != PDF_ANNOT_POPUP
            && kind != PDF_ANNOT_WIDGET && typeName[0];
        if (!sameFile && old)
            map.p = pdf_new_graft_map(ctx, doc);
        pdf_obj *annots = pdf_dict_get(ctx, pageObject, PDF_NAME(Annots));
        if (!pdf_is_array(ctx, annots))
            annots = pdf_dict_put_array(ctx, pageObject, PDF_NAME(Annots), 1);
        // A reference to an object a damaged file lost would take the number of the object
        // made next, and list it twice: such entries go first.
        for (int i = pdf_array_len(ctx, annots) - 1; i >= 0; --i) {
            if (!pdf_is_dict(ctx, pdf_array_get(ctx, annots, i)))
                pdf_array_delete(ctx, annots, i);
        }
        // Kinds MuPDF lists are made by MuPDF, so that it draws them; the others (and kinds it
        // cannot make) are plain dictionaries.
        pdf_annot *annot = nullptr;
        fz_var(annot);
        if (listed) {
            fz_try(ctx)
            {
                annot = pdf_create_annot(ctx, loaded, kind);
            }
            fz_catch(ctx)
            {
                annot = nullptr;
            }
        }
        listed = annot != nullptr;
        if (listed) {
            created = pdf_keep_obj(ctx, pdf_annot_obj(ctx, annot));
            // A note has no popup here; the one MuPDF adds would be an annotation of its own.
            pdf_obj *popup = pdf_dict_get(ctx, created, PDF_NAME(Popup));
            if (popup) {
                const int at = pdf_array_find(ctx, annots, popup);
                if (at >= 0)
                    pdf_array_delete(ctx, annots, at);
                pdf_dict_del(ctx, created, PDF_NAME(Popup));
            }
        } else {
            created = pdf_add_new_dict(ctx, doc, 8);
            pdf_dict_put(ctx, created, PDF_NAME(Type), PDF_NAME(Annot));
            if (typeName[0])
                pdf_dict_put_name(ctx, created, PDF_NAME(Subtype), typeName);
            pdf_array_push(ctx, annots, created);
        }
        // Everything the annotation's former dictionary held that the properties do not say
        // (a stamp's picture, a file attachment, rich text...) comes along.
        const int n = old ? pdf_dict_len(ctx, old) : 0;
        for (int i = 0; i < n; ++i) {
            pdf_obj *key = pdf_dict_get_key(ctx, old, i);
            if (pdf_name_eq(ctx, key, PDF_NAME(P)) || pdf_name_eq(ctx, key, PDF_NAME(Popup))
                || pdf_name_eq(ctx, key, PDF_NAME(Parent)) || pdf_name_eq(ctx, key, PDF_NAME(IRT))
                || (synthesised && pdf_name_eq(ctx, key, PDF_NAME(AP))))
                continue;
            pdf_obj *value = pdf_dict_get_val(ctx, old, i);
            if (map.p)
                pdf_dict_put_drop(ctx, created, key, pdf_graft_mapped_object(ctx, map.p, value));
            else
                pdf_dict_put(ctx, created, key, value);
        }
        pdf_dict_put(ctx, created, PDF_NAME(P), pageObject);
        if (annot) {
            // MuPDF must not replace a picture that came along with its own.
            if (!synthesised && pdf_dict_get(ctx, created, PDF_NAME(AP)))
                pdf_set_annot_resynthesised(ctx, annot);
            pdf_drop_annot(ctx, annot);
        }
    });
    if (!created)
        return;
    ad.bind(pd.handle, created, true);
    ad.inFile = true;
    ad.appearanceDirty = synthesised;
    if (synthesised)
        ad.ownAppearance = false;
    mu::Error ignored;
    AnnotationIO::write(ctx, doc, created, annotation, objectsIn(pd), ignored);
}

} // namespace

namespace PDFPageInternals {

void graftAnnotations(
    fz_context *ctx, pdf_document *target, pdf_graft_map *map, pdf_obj *source, pdf_obj *copy)
{
    pdf_obj *annots = pdf_dict_get(ctx, source, PDF_NAME(Annots));
    const int n = pdf_is_array(ctx, annots) ? pdf_array_len(ctx, annots) : 0;
    if (n <= 0)
        return;
    pdf_obj *out = pdf_dict_put_array(ctx, copy, PDF_NAME(Annots), n);
    for (int i = 0; i < n; ++i) {
        pdf_obj *annot = pdf_array_get(ctx, annots, i);
        if (!pdf_is_dict(ctx, annot)) {
            pdf_array_push(ctx, out, PDF_NULL);
            continue;
        }
        pdf_obj *dict = pdf_add_new_dict(ctx, target, pdf_dict_len(ctx, annot));
        pdf_array_push_drop(ctx, out, dict);
        for (int k = 0; k < pdf_dict_len(ctx, annot); ++k) {
            pdf_obj *key = pdf_dict_get_key(ctx, annot, k);
            pdf_obj *value = pdf_dict_get_val(ctx, annot, k);
            // References to the old page, its other annotations or its file's pages would drag
            // the old page tree along.
            if (pdf_name_eq(ctx, key, PDF_NAME(P)) || pdf_name_eq(ctx, key, PDF_NAME(Parent))
                || pdf_name_eq(ctx, key, PDF_NAME(Popup)) || pdf_name_eq(ctx, key, PDF_NAME(IRT))
                || pdf_name_eq(ctx, key, PDF_NAME(Dest)))
                continue;
            if (pdf_name_eq(ctx, key, PDF_NAME(A))
                && pdf_name_eq(ctx, pdf_dict_get(ctx, value, PDF_NAME(S)), PDF_NAME(GoTo)))
                continue;
            pdf_dict_put_drop(ctx, dict, key, pdf_graft_mapped_object(ctx, map, value));
        }
        pdf_dict_put(ctx, dict, PDF_NAME(P), copy);
    }
    for (int i = 0; i < n; ++i) {
        pdf_obj *annot = pdf_array_get(ctx, annots, i);
        pdf_obj *links[] = { PDF_NAME(Popup), PDF_NAME(Parent) };
        for (pdf_obj *key : links) {
            pdf_obj *other = pdf_dict_get(ctx, annot, key);
            const int at = other ? pdf_array_find(ctx, annots, other) : -1;
            if (at >= 0)
                pdf_dict_put(ctx, pdf_array_get(ctx, out, i), key, pdf_array_get(ctx, out, at));
        }
    }
}

void loadAnnotations(const PDFPage &page)
{
    PDFPagePrivate &pd = PDFPagePrivate::of(page);
    if (pd.annotationsLoaded || pd.annotationsLoading)
        return;
    if (!pd.handle) {
        pd.annotationsLoaded = true;
        return;
    }
    // The list and its flag are published together under the lock: a worker serialising the
    // document (a save still running when the file is reopened) reads both under it.
    pd.annotationsLoading = true;
    fz_context *ctx = mu::context();
    std::vector<pdf_obj *> objects;
    std::vector<QString> types;
    {
        const mu::Lock lock(pd.handle->mutex());
        pdf_obj *const pageObject = pd.object;
        int count = 0;
        mu::Error error;
        mu::run(ctx, error, [&] {
            pdf_obj *annots = pdf_dict_get(ctx, pageObject, PDF_NAME(Annots));
            count = pdf_is_array(ctx, annots) ? pdf_array_len(ctx, annots) : 0;
        });
        objects.assign(static_cast<size_t>(std::max(count, 0)), nullptr);
        pdf_obj **const out = objects.data();
        mu::run(ctx, error, [&] {
            pdf_obj *annots = pdf_dict_get(ctx, pageObject, PDF_NAME(Annots));
            for (int i = 0; i < count; ++i) {
                pdf_obj *entry = pdf_array_get(ctx, annots, i);
                if (pdf_is_dict(ctx, entry))
                    out[i] = pdf_keep_obj(ctx, entry);
            }
        });
        std::erase(objects, nullptr);
        for (pdf_obj *obj : objects)
            types.push_back(AnnotationIO::subtypeOf(ctx, obj));
    }

    const auto document = page.document();
    if (document)
        pd.delegate = document->delegate();
    const auto delegate = pd.delegate.lock();
    std::vector<std::shared_ptr<PDFAnnotation>> built;
    for (const QString &type : types) {
        const PDFAnnotationFactory factory
            = delegate ? delegate->classForAnnotationClass(type) : PDFAnnotationFactory();
        std::shared_ptr<PDFAnnotation> annotation = factory ? factory() : nullptr;
        if (!annotation)
            annotation = PDFAnnotation::classForType(type)();
        built.push_back(annotation);
    }

    const auto self = std::const_pointer_cast<PDFPage>(page.shared_from_this());
    {
        const mu::Lock lock(pd.handle->mutex());
        // Link targets by object number, from a table the document keeps.
        const auto pageForObject = [&](int number) -> std::shared_ptr<PDFPage> {
            return document ? PDFDocumentPrivate::of(*document).pageForObjectNumberLocked(number)
                            : nullptr;
        };
        for (size_t i = 0; i < built.size(); ++i) {
            PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(*built[i]);
            ad.type = types[i];
            AnnotationIO::read(ctx, objects[i], *built[i], pageForObject);
            ad.bind(pd.handle, objects[i], true);
            ad.inFile = true;
            ad.page = self;
        }
        pd.annotations = std::move(built);
        pd.annotationsLoaded = true;
        pd.annotationsLoading = false;
    }
    // The page is looked at by its own class before anything draws or edits its annotations.
    PDFPagePrivate::didLoadAnnotations(*self);
}

void readLinkDestinationLocked(const PDFAnnotationLink &link, fz_context *ctx)
{
    PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(link);
    if (!std::exchange(ad.destinationUnread, false) || !ad.object)
        return;
    const auto page = ad.page.lock();
    const auto document = page ? page->document() : nullptr;
    // Its page's object numbers are those of the file its dictionary is in, whose lock is held.
    if (!document || PDFDocumentPrivate::of(*document).handle != ad.handle)
        return;
    const auto destination = AnnotationIO::readDestination(ctx, ad.object, [&](int number) {
        return PDFDocumentPrivate::of(*document).pageForObjectNumberLocked(number);
    });
    // Read, not set: nothing is written back or reported.
    const bool wasLoading = std::exchange(ad.loading, true);
    const_cast<PDFAnnotationLink &>(link).setDestination(destination);
    ad.loading = wasLoading;
}

void detachAnnotationsLocked(PDFPagePrivate &pd, fz_context *ctx)
{
    pdf_obj *const pageObject = pd.object;
    bool any = false;
    for (const auto &annotation : pd.annotations) {
        PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(*annotation);
        if (!onPageInFile(pd, ad))
            continue;
        pdf_obj *const object = ad.object;
        int index = -1;
        mu::Error error;
        mu::run(ctx, error, [&] {
            index = pdf_array_find(ctx, pdf_dict_get(ctx, pageObject, PDF_NAME(Annots)), object);
        });
        ad.dropObjectLocked();
        ad.handle.reset();
        ad.inFile = false;
        ad.pendingIndex = index;
        any = any || index >= 0;
    }
    pd.annotationsMoved = any;
}

void writePendingLocked(PDFPagePrivate &pd, fz_context *ctx)
{
    if (!pd.writesPending || !pd.handle)
        return;
    pd.writesPending = false;
    resolveMovedLocked(pd, ctx);
    for (const auto &annotation : pd.annotations) {
        PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(*annotation);
        if (!std::exchange(ad.writePending, false) || !onPageInFile(pd, ad))
            continue;
        mu::Error error;
        AnnotationIO::write(ctx, pd.handle->doc(), ad.object, *annotation, objectsIn(pd), error);
    }
}

// Writes the dictionary at the next turn of the main event loop when the lock is free then;
// otherwise a later turn tries again.
void scheduleWrite(const PDFPage &page)
{
    PDFPagePrivate &pd = PDFPagePrivate::of(page);
    if (pd.writeScheduled)
        return;
    pd.writeScheduled = true;
    std::weak_ptr<const PDFPage> weak = page.shared_from_this();
    MainQueue::async([weak] {
        const auto alive = weak.lock();
        if (!alive)
            return;
        PDFPagePrivate &later = PDFPagePrivate::of(*alive);
        later.writeScheduled = false;
        if (!later.writesPending || !later.handle)
            return;
        std::unique_lock<mu::DocumentMutex> lock(later.handle->mutex(), std::try_to_lock);
        if (!lock.owns_lock()) {
            scheduleWrite(*alive);
            return;
        }
        writePendingLocked(later, mu::context());
    });
}

void annotationDidChange(PDFAnnotation &annotation, bool drawn)
{
    const auto page = annotation.page();
    if (!page)
        return;
    PDFPagePrivate &pd = PDFPagePrivate::of(*page);
    if (!isListed(pd, annotation))
        return;
    PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(annotation);
    if (pd.handle) {
        ad.writePending = true;
        pd.writesPending = true;
        scheduleWrite(*page);
    }
    if (!drawn)
        return;
    if (annotation.isAppearanceSynthesised()) {
        ad.appearanceDirty = true;
        ad.ownAppearance = false;
    }
    pd.appearancesStale = true;
    // An annotation engine drawing does not show changes no rendered page.
    if (ad.shouldDisplay)
        ++pd.revision;
}

void annotationVisibilityChanged(PDFAnnotation &annotation)
{
    if (const auto page = annotation.page())
        ++PDFPagePrivate::of(*page).revision;
}

} // namespace PDFPageInternals

const std::vector<std::shared_ptr<PDFAnnotation>> &PDFPage::annotations() const
{
    PDFPageInternals::loadAnnotations(*this);
    return d->annotations;
}

void PDFPage::addAnnotation(const std::shared_ptr<PDFAnnotation> &annotation)
{
    if (!annotation)
        return;
    PDFPageInternals::loadAnnotations(*this);
    if (isListed(*d, *annotation))
        return;
    if (const auto previous = annotation->page(); previous && previous.get() != this)
        previous->removeAnnotation(annotation);
    PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(*annotation);
    if (d->handle) {
        const int index = PDFPageInternals::treeIndex(*this);
        const auto other = ad.handle && ad.handle != d->handle ? ad.handle : nullptr;
        std::unique_lock<mu::DocumentMutex> lock(d->handle->mutex(), std::defer_lock);
        std::unique_lock<mu::DocumentMutex> otherLock;
        if (other) {
            otherLock = std::unique_lock<mu::DocumentMutex>(other->mutex(), std::defer_lock);
            std::lock(lock, otherLock);
        } else {
            lock.lock();
        }
        fz_context *ctx = mu::context();
        mu::Error error;
        pdf_page *const loaded = d->pageLocked(ctx, index, error);
        if (loaded) {
            PDFPageInternals::prepareAnnotationsLocked(*this, ctx, nullptr);
            insertLocked(*d, ctx, loaded, *annotation);
        }
        // Still under the lock: a worker writing the document reads the list.
        d->annotations.push_back(annotation);
        d->appearancesStale = true;
    } else {
        d->annotations.push_back(annotation);
        d->appearancesStale = true;
    }
    ad.page = std::const_pointer_cast<PDFPage>(shared_from_this());
    // One that engine drawing hides changes no rendered page.
    if (ad.shouldDisplay)
        ++d->revision;
}

void PDFPage::removeAnnotation(const std::shared_ptr<PDFAnnotation> &annotation)
{
    if (!annotation)
        return;
    PDFPageInternals::loadAnnotations(*this);
    if (std::find(d->annotations.begin(), d->annotations.end(), annotation) == d->annotations.end())
        return;
    // Kept until the lock is released: the annotation's destructor takes it.
    const std::shared_ptr<PDFAnnotation> held = annotation;
    PDFAnnotationPrivate &ad = PDFAnnotationPrivate::of(*held);
    // Annotations dropped along with this one die after the lock is released: their
    // destructors take it.
    std::vector<std::shared_ptr<PDFAnnotation>> dropped;
    if (d->handle) {
        const int index = PDFPageInternals::treeIndex(*this);
        const mu::Lock lock(d->handle->mutex());
        fz_context *ctx = mu::context();
        // The dictionary leaves with its last values, for an undo that adds it again.
        writePendingLocked(*d, ctx);
        // Under the lock: a worker writing the document reads the list.
        std::erase(d->annotations, held);
        resolveMovedLocked(*d, ctx);
        if (onPageInFile(*d, ad)) {
            mu::Error error;
            pdf_page *const loaded = d->pageLocked(ctx, index, error);
            pdf_annot *const annot = loaded ? findAnnot(ctx, loaded, ad.object) : nullptr;
            pdf_obj *const pageObject = d->object;
            pdf_obj *const object = ad.object;
            mu::run(ctx, error, [&] {
                if (annot) {
                    pdf_delete_annot(ctx, loaded, annot);
                } else {
                    pdf_obj *annots = pdf_dict_get(ctx, pageObject, PDF_NAME(Annots));
                    const int at = pdf_array_find(ctx, annots, object);
                    if (at >= 0)
                        pdf_array_delete(ctx, annots, at);
                }
            });
            ad.inFile = false;
            // MuPDF takes a note's popup out with it: its object leaves the list as well.
            std::erase_if(d->annotations, [&](const std::shared_ptr<PDFAnnotation> &other) {
                PDFAnnotationPrivate &od = PDFAnnotationPrivate::of(*other);
                if (!onPageInFile(*d, od))
                    return false;
                int at = 0;
                pdf_obj *const otherObject = od.object;
                mu::Error ignored;
                mu::run(ctx, ignored, [&] {
                    at = pdf_array_find(
                        ctx, pdf_dict_get(ctx, pageObject, PDF_NAME(Annots)), otherObject);
                });
                if (at >= 0)
                    return false;
                od.inFile = false;
                od.page.reset();
                dropped.push_back(other);
                return true;
            });
        }
    } else {
        std::erase(d->annotations, held);
    }
    ad.page.reset();
    d->appearancesStale = true;
    if (ad.shouldDisplay)
        ++d->revision;
}

std::shared_ptr<PDFAnnotation> PDFPage::annotationAtPoint(const QPointF &point) const
{
    const auto &all = annotations();
    for (auto it = all.rbegin(); it != all.rend(); ++it) {
        const PDFAnnotation &annotation = **it;
        if (!annotation.shouldDisplay() || annotation.type() == QLatin1String("Popup"))
            continue;
        if (Geometry::pointInRect(point, annotation.bounds()))
            return *it;
    }
    return nullptr;
}
