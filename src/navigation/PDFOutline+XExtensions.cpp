#include "PDFOutline+XExtensions.h"

#include <kit/engine/PDFActionGoTo.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFOutline.h>

std::shared_ptr<PDFPage> page(const PDFOutline &outline)
{
    if (const auto destination = outline.destination())
        return destination->page();
    const auto action = outline.action();
    if (action && action->type() == QLatin1String("GoTo")) {
        if (const auto destination = static_cast<const PDFActionGoTo &>(*action).destination())
            return destination->page();
    }
    return nullptr;
}
