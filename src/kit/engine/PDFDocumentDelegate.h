#pragma once

// What a document asks its delegate: the class of every page and annotation it builds, as a
// factory that makes an uninitialised object of the caller's subclass. An empty factory means the
// engine's own class. Main thread only.

#include <QString>

#include <functional>
#include <memory>

class PDFPage;
class PDFAnnotation;

using PDFPageFactory = std::function<std::shared_ptr<PDFPage>()>;
using PDFAnnotationFactory = std::function<std::shared_ptr<PDFAnnotation>()>;

class PDFDocumentDelegate
{
public:
    virtual ~PDFDocumentDelegate() = default;

    virtual PDFPageFactory classForPage() const { return {}; }
    // type is the annotation's subtype ("Ink", "Highlight", ...).
    virtual PDFAnnotationFactory classForAnnotationClass(const QString &type) const
    {
        Q_UNUSED(type);
        return {};
    }
};
