#pragma once

// What one render of a page shows besides its content: the choice that printing makes, and
// annotations drawn this once although engine drawing hides them. Made on the main thread.

#include <memory>
#include <vector>

class PDFAnnotation;

struct PDFRenderOptions
{
    // Leaves out the annotations whose shouldPrint is false as well.
    bool forPrinting = false;
    // Annotations of the rendered page that this render shows although their shouldDisplay is
    // false (those an application draws itself). Neither they nor the page change, so the page's
    // revision stays and nothing else re-renders. Annotations of other pages are passed over.
    std::vector<std::shared_ptr<PDFAnnotation>> includedAnnotations;
};
