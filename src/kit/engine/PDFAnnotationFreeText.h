#pragma once

// A box of text on the page: font, font colour and alignment; the colour is the background and
// there is no border. Main thread only.

#include "PDFAnnotation.h"

#include <QFont>

class PDFAnnotationFreeText : public PDFAnnotation
{
public:
    // As the platform numbers text alignments.
    enum Alignment { Left = 0, Right = 1, Center = 2, Justified = 3, Natural = 4 };

    PDFAnnotationFreeText();
    // Helvetica 12, black text, left aligned, no border.
    bool init() override;

    QFont font() const { return m_font; }
    void setFont(const QFont &font);
    QColor fontColor() const { return m_fontColor; }
    void setFontColor(const QColor &color);
    int alignment() const { return m_alignment; }
    void setAlignment(int alignment);

    bool isAppearanceSynthesised() const override { return true; }
    // Background, then the contents wrapped in the bounds; nothing for empty bounds.
    void drawWithBox(QPainter &painter, PDFDisplayBox box) const override;

    // Adds "font" (QFont), "fontColor" (QColor), "alignment" (int).
    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;
    QStringList archivedKeys() const override;

private:
    QFont m_font;
    QColor m_fontColor = Qt::black;
    int m_alignment = Left;
};
