#pragma once

// The delegate a view gives its document: besides the engine's class hooks it names the view, so
// that the document can point back to it. Main thread only.

#include <kit/engine/PDFDocumentDelegate.h>

class QObject;

class FDDocumentDelegate : public PDFDocumentDelegate
{
public:
    // The view this delegate speaks for; null when it speaks for none.
    virtual QObject *pdfView() const = 0;
};
