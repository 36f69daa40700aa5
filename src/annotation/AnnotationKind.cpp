#include "AnnotationKind.h"

#include "FDAnnotationFreeText.h"
#include "FDAnnotationMarkup.h"
#include "FDAnnotationText.h"

#include <kit/engine/PDFAnnotationCircle.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationSquare.h>
#include <kit/engine/PDFAnnotationStamp.h>

#include <typeinfo>
#include <utility>
#include <vector>

namespace {

unsigned classify(const PDFAnnotation &annotation)
{
    using namespace AnnotationKind;
    const PDFAnnotation *const a = &annotation;
    unsigned flags = None;
    if (dynamic_cast<const PDFAnnotationMarkup *>(a))
        flags |= Markup;
    if (dynamic_cast<const FDAnnotationMarkup *>(a))
        flags |= AppMarkup;
    if (dynamic_cast<const PDFAnnotationInk *>(a))
        flags |= Ink;
    if (dynamic_cast<const PDFAnnotationLine *>(a))
        flags |= Line;
    if (dynamic_cast<const PDFAnnotationCircle *>(a))
        flags |= Circle | Shape;
    if (dynamic_cast<const PDFAnnotationSquare *>(a))
        flags |= Square | Shape;
    if (dynamic_cast<const PDFAnnotationShape *>(a))
        flags |= Shape;
    if (dynamic_cast<const PDFAnnotationFreeText *>(a))
        flags |= FreeText;
    if (dynamic_cast<const FDAnnotationFreeText *>(a))
        flags |= AppFreeText;
    if (dynamic_cast<const PDFAnnotationText *>(a))
        flags |= Text;
    if (dynamic_cast<const FDAnnotationText *>(a))
        flags |= AppText;
    if (dynamic_cast<const PDFAnnotationStamp *>(a))
        flags |= Stamp;
    return flags;
}

} // namespace

unsigned AnnotationKind::of(const PDFAnnotation &annotation)
{
    // A handful of classes exist, so a short list scanned by pointer beats any hash.
    thread_local std::vector<std::pair<const std::type_info *, unsigned>> known;
    const std::type_info *const type = &typeid(annotation);
    for (const auto &[seen, flags] : known) {
        if (seen == type)
            return flags;
    }
    // The same class may have two type_info objects across libraries: still one entry each.
    for (const auto &[seen, flags] : known) {
        if (*seen == *type) {
            known.emplace_back(type, flags);
            return flags;
        }
    }
    const unsigned flags = classify(annotation);
    known.emplace_back(type, flags);
    return flags;
}
