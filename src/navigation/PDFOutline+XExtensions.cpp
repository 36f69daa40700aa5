#include "PDFOutline+XExtensions.h"

#include <kit/engine/PDFActionGoTo.h>
#include <kit/engine/PDFActionRemoteGoTo.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFOutline.h>
#include <kit/engine/PDFPage.h>

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

QString pageLabel(const PDFOutline &outline)
{
    if (const auto target = page(outline))
        return target->label();
    const auto action = outline.action();
    if (action && action->type() == QLatin1String("GoToR"))
        return QString::asprintf("%lu",
            (unsigned long)(static_cast<const PDFActionRemoteGoTo &>(*action).pageIndex() + 1));
    return QString();
}

int pageIndex(const PDFOutline &outline)
{
    const auto target = page(outline);
    const auto document = target ? target->document() : nullptr;
    return document ? document->indexForPage(target) : -1;
}
