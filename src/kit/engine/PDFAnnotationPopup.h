#pragma once

// The window in which another annotation's text may be shown; it draws nothing of its own.
// Main thread only.

#include "PDFAnnotation.h"

class PDFAnnotationPopup : public PDFAnnotation
{
public:
    PDFAnnotationPopup();

    bool isOpen() const { return m_open; }
    void setIsOpen(bool open);

    void drawWithBox(QPainter &painter, PDFDisplayBox box) const override;

    // Adds "isOpen" (bool).
    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;
    QStringList archivedKeys() const override;

private:
    bool m_open = false;
};
