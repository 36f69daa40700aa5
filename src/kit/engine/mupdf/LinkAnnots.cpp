// Pages loaded without MuPDF's own list of their links.
//
// Loading a page, MuPDF reads each of its link annotations into a list of its own: a named
// destination is looked up in the document's name tree and its page found by walking the page
// tree. On a long document's pages of contents, each with hundreds of links, that was most of
// loading the page, and paid again for every object a release had let go. The engine reads links
// as annotations of its own (AnnotationIO) and never asks MuPDF for that list, so it is linked
// with --wrap=pdf_load_link_annots (see src/CMakeLists.txt) and a page's list stays empty.

#include <mupdf/pdf.h>

extern "C" fz_link *__wrap_pdf_load_link_annots(
    fz_context *, pdf_document *, pdf_page *, pdf_obj *, int, fz_matrix)
{
    return nullptr;
}
