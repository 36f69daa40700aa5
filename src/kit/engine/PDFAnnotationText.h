#pragma once

// A note: an icon on the page whose text is its contents. It has no popup. Main thread only.

#include "PDFAnnotation.h"

class PDFAnnotationPopup;

class PDFAnnotationText : public PDFAnnotation
{
public:
    // As the platform numbers note icons.
    enum IconType {
        Comment = 0,
        Key = 1,
        Note = 2,
        Help = 3,
        NewParagraph = 4,
        Paragraph = 5,
        Insert = 6
    };

    PDFAnnotationText();
    using PDFAnnotation::initWithBounds;
    // Bounds of zero size become 24 by 24.
    bool initWithBounds(const QRectF &bounds) override;

    int iconType() const { return m_iconType; }
    void setIconType(int iconType);
    std::shared_ptr<PDFAnnotationPopup> popup() const { return nullptr; }

    // The file's icon name of a type, and back (unknown names give Note).
    static QString iconName(int iconType);
    static int iconTypeForName(const QString &name);

    bool isAppearanceSynthesised() const override { return true; }
    // A note icon in the colour; nothing for empty bounds.
    void drawWithBox(QPainter &painter, PDFDisplayBox box) const override;

    // Adds "iconType" (int).
    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;
    QStringList archivedKeys() const override;

private:
    int m_iconType = Note;
};
