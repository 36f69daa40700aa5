#pragma once

// A box of text as the application makes and edits it: font, colours and no border from the
// user's last settings, an editing flag the editors keep, and the box a bare click opens.
// Main thread only.

#include <kit/engine/PDFAnnotationFreeText.h>

class FDAnnotationFreeText : public PDFAnnotationFreeText
{
public:
    // Not editing.
    bool init() override;
    using PDFAnnotationFreeText::initWithBounds;
    // Font of "Ann_FreeTextFontName" and "Ann_FreeTextFontSize" (the system font for an unknown
    // name), text colour of "Ann_FreeTextColor", a clear background, no border.
    bool initWithBounds(const QRectF &bounds) override;
    // Takes its properties as given, without the user's settings.
    bool initWithBounds(
        const QRectF &bounds, const QString &type, const QVariantMap &properties) override;

    // True while an editor is open on it.
    bool isEditing() const { return m_isEditing; }
    void setIsEditing(bool editing) { m_isEditing = editing; }

    // See adjustBoundsIfNeeded of the free text extension.
    void adjustBoundsIfNeeded();

    // The view tells of changes itself.
    void postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect) override;

private:
    bool m_isEditing = false;
    bool m_takesProperties = false;
};
