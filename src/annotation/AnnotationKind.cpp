#include "AnnotationKind.h"

#include "FDAnnotationFreeText.h"
#include "FDAnnotationMarkup.h"
#include "FDAnnotationText.h"

#include <kit/engine/PDFAnnotationCircle.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationSquare.h>
#include <kit/engine/PDFAnnotationStamp.h>

#include <array>
#include <typeinfo>

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
    // A handful of classes exist, so a short list scanned by pointer beats any hash. Plain thread
    // data with no destructor, so that a destructor running as the thread ends may still ask.
    struct Known
    {
        const std::type_info *type;
        unsigned flags;
    };
    constexpr int Capacity = 32;
    thread_local constinit std::array<Known, Capacity> known {};
    thread_local constinit int count = 0;
    const std::type_info *const type = &typeid(annotation);
    for (int i = 0; i < count; ++i) {
        if (known[size_t(i)].type == type)
            return known[size_t(i)].flags;
    }
    // The same class may have two type_info objects across libraries: one entry each.
    unsigned flags = 0;
    bool found = false;
    for (int i = 0; i < count && !found; ++i) {
        if (*known[size_t(i)].type == *type) {
            flags = known[size_t(i)].flags;
            found = true;
        }
    }
    if (!found)
        flags = classify(annotation);
    if (count < Capacity)
        known[size_t(count++)] = { type, flags };
    return flags;
}
