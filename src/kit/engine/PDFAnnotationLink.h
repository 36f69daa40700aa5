#pragma once

// A link area: a URL to open or a destination in the same document. The reading view finds one
// with PDFPage::annotationAtPoint and type() "Link". Main thread only.

#include "PDFAnnotation.h"

#include <QUrl>

class PDFAction;
class PDFDestination;

class PDFAnnotationLink : public PDFAnnotation
{
public:
    PDFAnnotationLink();

    QUrl URL() const { return m_url; } // empty for a link inside the document
    void setURL(const QUrl &url);
    // A link read from a file finds its destination there when first asked.
    std::shared_ptr<PDFDestination> destination() const;
    void setDestination(const std::shared_ptr<PDFDestination> &destination);
    // The explicit action (a go-to into another file, read from the file), else a PDFActionURL
    // or a PDFActionGoTo; null for a link that goes nowhere.
    std::shared_ptr<PDFAction> action() const;
    void setAction(const std::shared_ptr<PDFAction> &action) { m_action = action; }

    // Links draw nothing of their own.
    void drawWithBox(QPainter &painter, PDFDisplayBox box) const override;

    // Adds "URL" (QUrl).
    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;
    QStringList archivedKeys() const override;

private:
    QUrl m_url;
    std::shared_ptr<PDFDestination> m_destination;
    std::shared_ptr<PDFAction> m_action;
};
